// The column mapping script (ALKIS_Zuordnung.dat) on small tables: ADD, CHG, DEL and SQL lines,
// their counts, messages and protocol, a block of DEL lines, PUNKTLISTE in SQL, and the shipped
// script on a reorganised Alkis. Reading the script text is in test_umformungen.cpp.

#include "nas/zuordnung.hpp"

#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "core/datenbank.hpp"
#include "core/text.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"
#include "nas/tabellentext.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace flurix::nas {
namespace {

const std::filesystem::path Konfig = std::filesystem::path(FLURIX_QUELLEN) / "config";
const std::filesystem::path Daten = test::Testdaten() / "nas";

/// An object database as a NAS import makes it, a protocol file beside it, the UI port of tests.
struct Umgebung {
    test::TempOrdner ordner;
    SkriptOberfläche ui;
    std::unique_ptr<Datenbank> db = DAO_DatenbankAnlegen(ordner / "nas.sqlite");
    std::unique_ptr<NasProtokoll> protokoll = std::make_unique<NasProtokoll>(ui, ordner / "nas.xml.prn");

    Zuordnungsbericht Ausführen(const std::vector<std::string>& zeilen) {
        return ZuordnungAusführen(*db, zeilen, *protokoll, ui);
    }
    std::vector<std::string> Protokolldatei() {
        protokoll.reset();
        const std::string text = Cp1252NachUtf8(test::DateiLesen(ordner / "nas.xml.prn"));
        const auto zeilen = TextZeilen(text);
        return {zeilen.begin(), zeilen.end()};
    }
    std::vector<std::string> Fenster() const { return ui.Texte(Ereignis::Art::Protokoll); }
};

std::string Wert(Datenbank& db, const std::string& sql) {
    const auto zeilen = test::Abfragezeilen(db, sql);
    return zeilen.empty() ? "<keine Zeile>" : zeilen.front();
}

std::string Deklaration(Datenbank& db, std::string_view spalte) {
    return Wert(db, "SELECT type FROM pragma_table_info('Alkis') WHERE name = '" + std::string(spalte) + "'");
}

/// A small Alkis with text columns a, b, c and two rows; with `schlüssel` a table constraint.
void KleineTabelle(Datenbank& db, bool schlüssel = false) {
    db.AusführenNativ(schlüssel ? "CREATE TABLE Alkis (a TEXT COLLATE NOCASE, b TEXT, c TEXT, PRIMARY KEY (a))"
                                : "CREATE TABLE Alkis (a TEXT COLLATE NOCASE, b TEXT COLLATE NOCASE, "
                                  "c TEXT COLLATE NOCASE)");
    db.AusführenNativ("INSERT INTO Alkis VALUES ('a1', 'b1', 'c1'), ('a2', 'b2', 'c2')");
}

TEST(ZuordnungBefehle, ZählungSpaltenInhaltUndMeldungJeZeilenfolge) {
    const auto golden = Daten / "zuordnung_befehle.txt";
    const std::string text = test::DateiLesen(golden);
    std::string transkript;
    std::vector<std::pair<std::string, std::vector<std::string>>> fälle;
    for (const auto zeile : Teilen(text, '\n')) {
        if (zeile.starts_with('#'))
            transkript += std::string(zeile) + "\n";
        else if (zeile.starts_with("%% "))
            fälle.push_back({std::string(zeile), {}});
        else if (zeile.starts_with("> "))
            fälle.back().second.emplace_back(zeile.substr(2));
    }
    for (const auto& [kopf, zeilen] : fälle) {
        Umgebung u;
        if (kopf.find("[ohne Tabelle]") == std::string::npos)
            KleineTabelle(*u.db, kopf.find("[Schlüssel]") != std::string::npos);
        const auto bericht = u.Ausführen(zeilen);
        transkript += kopf + "\n";
        for (const auto& zeile : zeilen)
            transkript += "> " + zeile + "\n";
        transkript += "  " + std::to_string(bericht.ausgeführt) + " ausgeführt, " +
                      std::to_string(bericht.fehlgeschlagen) + " fehlgeschlagen\n";
        if (DAO_TabelleVorhanden(*u.db, "Alkis")) {
            std::string spalten, zeile;
            for (const auto& s : u.db->Spaltennamen("Alkis")) {
                spalten += (spalten.empty() ? "" : "|") + s;
                zeile += (zeile.empty() ? "" : " || '|' || ") + ("ifnull(" + Bezeichner(s) + ", '')");
            }
            transkript += "  Spalten: " + spalten + "\n  Zeilen: " +
                          Wert(*u.db, "SELECT group_concat(z, ';') FROM (SELECT " + zeile +
                                          " AS z FROM Alkis ORDER BY rowid)") + "\n";
        }
        const auto ohneOrdner = [&u](const std::string& zeile) {
            return Ersetzen(zeile.substr(8), u.ordner.pfad().string(), "<ordner>") + "\n";
        };
        for (const auto& zeile : u.Fenster())
            transkript += "  Fenster: " + ohneOrdner(zeile);
        for (const auto& zeile : u.Protokolldatei()) {
            EXPECT_TRUE(zeile.size() > 10 && zeile[2] == ':' && zeile[5] == ':') << zeile;
            transkript += "  Protokoll: " + ohneOrdner(zeile);
        }
    }
    EXPECT_EQ(test::GoldenVergleich(transkript, golden), "");
    // Columns made by ADD or left by single deletes compare without regard to case.
    for (const bool schlüssel : {false, true}) {
        Umgebung u;
        KleineTabelle((*u.db), schlüssel);
        u.Ausführen({schlüssel ? "DEL b" : "ADD neu dbMemo"});
        if (!schlüssel) {
            EXPECT_EQ(Deklaration((*u.db), "neu"), "TEXT");
            (*u.db).AusführenNativ("UPDATE Alkis SET neu = 'Monzel'");
        }
        EXPECT_EQ(Wert((*u.db), schlüssel ? "SELECT count(*) FROM Alkis WHERE a = 'A2'"
                                        : "SELECT count(*) FROM Alkis WHERE neu = 'MONZEL'"),
                  schlüssel ? "1" : "2");
    }
}

TEST(ZuordnungSql, StatuszeileAlleZehnZeilen) {
    Umgebung u;
    KleineTabelle((*u.db));
    std::vector<std::string> zeilen;
    for (int i = 0; i < 25; ++i)
        zeilen.push_back(i % 2 == 0 ? "SQL UPDATE Alkis SET a = 'x'" : "* kein Befehl");
    u.Ausführen(zeilen);
    EXPECT_EQ(u.ui.Texte(Ereignis::Art::Status),
              (std::vector<std::string>{"Zusammenstellung, Zeile Zuordnung: 1 von 25",
                                        "Zusammenstellung, Zeile Zuordnung: 11 von 25",
                                        "Zusammenstellung, Zeile Zuordnung: 21 von 25"}));
}

TEST(ZuordnungDelBlock, BehältDatenReihenfolgeTypenUndIndizes) {
    Umgebung u;
    auto& db = (*u.db);
    db.AusführenNativ("CREATE TABLE Alkis (\"id\" TEXT COLLATE NOCASE, \"gml:exterior\" TEXT COLLATE NOCASE, "
                      "\"Gemarkung\" TEXT COLLATE NOCASE, \"anteil/AX_Anteil/zaehler\" TEXT COLLATE NOCASE, "
                      "\"Zahl\" REAL, \"Nummer\" INTEGER, \"Fläche\" TEXT COLLATE NOCASE)");
    db.AusführenNativ("INSERT INTO Alkis VALUES ('x1', '1 2 3 4', 'Monzel', '1', 1.5, 7, '49171.00'), "
                      "('x2', NULL, 'Kesten', '2', NULL, NULL, '12.00'), ('x3', '5 6', 'Osann', NULL, 2.25, 9, NULL)");
    db.AusführenNativ("DELETE FROM Alkis WHERE id = 'x2'"); // a gap in the rowids
    db.AusführenNativ("INSERT INTO Alkis VALUES ('x4', '', 'monzel', '4', 0, 0, '')");
    db.AusführenNativ("CREATE INDEX Alkis_Gemarkung ON Alkis (Gemarkung)");
    db.AusführenNativ("CREATE INDEX Alkis_id ON Alkis (id)");
    db.AusführenNativ("CREATE INDEX Alkis_beide ON Alkis (Gemarkung, \"gml:exterior\")");

    const auto bericht =
        u.Ausführen({"DEL id", "DEL gml:exterior", "DEL gibtsnicht", "DEL anteil/AX_Anteil/zaehler", "DEL ID"});
    EXPECT_EQ(bericht.fehlgeschlagen, 0);
    EXPECT_EQ(bericht.ausgeführt, 5);
    EXPECT_EQ(db.Spaltennamen("Alkis"), (std::vector<std::string>{"Gemarkung", "Zahl", "Nummer", "Fläche"}));
    EXPECT_EQ(Deklaration(db, "Zahl"), "REAL");
    EXPECT_EQ(Deklaration(db, "Nummer"), "INTEGER");
    EXPECT_EQ(Deklaration(db, "Gemarkung"), "TEXT");
    EXPECT_EQ(Wert(db, "SELECT group_concat(z, ';') FROM (SELECT rowid || ' ' || typeof(Zahl) || ' ' || "
                       "ifnull(Zahl, '') || ' ' || typeof(Nummer) || ' ' || ifnull(Nummer, '') || ' ' || "
                       "ifnull(Fläche, 'NULL') AS z FROM Alkis ORDER BY rowid)"),
              "1 real 1.5 integer 7 49171.00;3 real 2.25 integer 9 NULL;4 real 0.0 integer 0 ");
    EXPECT_EQ(Wert(db, "SELECT count(*) FROM Alkis WHERE Gemarkung = 'MONZEL'"), "2");
    EXPECT_EQ(Wert(db, "SELECT group_concat(Gemarkung, ',') FROM (SELECT Gemarkung FROM Alkis ORDER BY Gemarkung)"),
              "Monzel,monzel,Osann");
    EXPECT_EQ(Wert(db, "SELECT group_concat(name, ',') FROM (SELECT name FROM sqlite_master WHERE "
                       "type = 'index' AND tbl_name = 'Alkis' ORDER BY name)"),
              "Alkis_Gemarkung");
    EXPECT_FALSE(DAO_TabelleVorhanden(db, "Alkis_Zuordnung_Neubau"));

    Umgebung offen;
    KleineTabelle((*offen.db));
    (*offen.db).AusführenNativ("BEGIN");
    EXPECT_EQ(offen.Ausführen({"DEL a", "DEL c"}).fehlgeschlagen, 0);
    EXPECT_TRUE((*offen.db).TransaktionOffen());
    (*offen.db).AusführenNativ("COMMIT");
    EXPECT_EQ((*offen.db).Spaltennamen("Alkis"), (std::vector<std::string>{"b"}));
    EXPECT_EQ(Wert((*offen.db), "SELECT group_concat(b, ',') FROM Alkis"), "b1,b2");
}

TEST(ZuordnungPunktliste, AlsSqlFunktion) {
    Umgebung u;
    auto& db = (*u.db);
    db.AusführenNativ("CREATE TABLE Alkis (\"gml:exterior\" TEXT COLLATE NOCASE, u TEXT)");
    db.AusführenNativ("INSERT INTO Alkis VALUES ('1 2 1 2 3 4', NULL), (NULL, NULL), ('', NULL)");
    EXPECT_EQ(u.Ausführen({"SQL UPDATE Alkis SET u = PUNKTLISTE([gml:exterior])"}).fehlgeschlagen, 0);
    EXPECT_EQ(Wert(db, "SELECT group_concat(ifnull(u, 'NULL'), ',') FROM Alkis"), "1 2;3 4,NULL,");
    Datenbank andere(":memory:");
    ZuordnungsfunktionenRegistrieren(andere);
    EXPECT_EQ(Wert(andere, "SELECT PUNKTLISTE('5 6 7 8;1 1 2 2 1 1')"), "5 6;7 8|1 1;2 2;1 1");
}

TEST(ZuordnungSkript, MitgelieferteDateiErgibtDieFlurixTabelleUndDieImportvorlage) {
    const auto datei = Konfig / "ALKIS_Zuordnung.dat";
    ASSERT_TRUE(DateiVorhanden(datei)) << datei;
    const auto zeilen = ZuordnungLesen(DateitextNachUtf8(DateiKomplettLesen(datei)));
    ASSERT_FALSE(zeilen.empty());
    Umgebung u;
    auto& db = (*u.db);
    test::TabellenAnlegen(db, Daten / "alkis_reorganisiert.tab");
    const auto bericht = u.Ausführen(zeilen);
    EXPECT_EQ(bericht.fehlgeschlagen, 0);
    EXPECT_EQ(bericht.ausgeführt, static_cast<std::int64_t>(zeilen.size()));
    EXPECT_TRUE(u.Fenster().empty()) << u.Fenster().front();
    EXPECT_EQ(test::GoldenVergleich(test::ZellenText(db, "SELECT Flurstückskennzeichen || '/' || Namensnummer, * "
                                                         "FROM Alkis ORDER BY rowid"),
                                    Daten / "alkis_zugeordnet.txt"),
              "");
    EXPECT_EQ(Wert(db, "SELECT count(*) FROM Alkis WHERE Gemarkung = 'MONZEL'"), "2");
    EXPECT_EQ(Wert(db, "SELECT count(*) FROM Alkis WHERE Ort = 'musterdorf' AND BVNR = '0005'"), "2");
    EXPECT_FALSE(DAO_TabelleVorhanden(db, "Alkis_Zuordnung_Neubau"));

    // One UPDATE (each rewrites every row), and the DEL lines in one block.
    const auto del = [](const std::string& z) { return z.starts_with("DEL "); };
    const auto update = [](const std::string& z) { return z.starts_with("SQL UPDATE"); };
    EXPECT_EQ(std::count_if(zeilen.begin(), zeilen.end(), update), 1);
    const auto erste = std::find_if(zeilen.begin(), zeilen.end(), del);
    const auto nachBlock = std::find_if_not(erste, zeilen.end(), del);
    EXPECT_GT(nachBlock - erste, 50);
    EXPECT_EQ(std::find_if(nachBlock, zeilen.end(), del), zeilen.end()) << "die DEL-Zeilen stehen nicht in einem Block";

    const auto spalten = db.Spaltennamen("Alkis");
    const std::string vorlage = DateitextNachUtf8(DateiKomplettLesen(Konfig / "ALB_ALKISImport.dat"));
    std::set<std::string> gesehen;
    for (std::string_view name : TextZeilen(vorlage)) {
        if (name.empty())
            continue;
        EXPECT_NE(std::find(spalten.begin(), spalten.end(), name), spalten.end()) << "keine Spalte: " << name;
        EXPECT_TRUE(gesehen.emplace(name).second) << "doppelt: " << name;
    }
    for (const char* wichtig : {"Flurstückskennzeichen", "Gemarkung", "Flur", "Flurstück", "Grundbuchblatt", "Name",
                                "Straße", "Ort", "Fläche", "Lagebezeichnung", "Rechtswert", "Hochwert",
                                "UmringFlurstück", "Eigentümerposition", "IDlfd_Nr"})
        EXPECT_TRUE(gesehen.contains(wichtig)) << wichtig;
    EXPECT_LT(gesehen.size(), spalten.size());
}

} // namespace
} // namespace flurix::nas
