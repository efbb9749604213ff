// The column mapping script (ALKIS_Zuordnung.dat) on small tables: ADD, CHG, DEL and SQL lines,
// their counts, messages and protocol, a block of DEL lines, PUNKTLISTE in SQL, and the shipped
// script on a reorganised Alkis. Reading the script text is in test_umformungen.cpp.

#include "nas/zuordnung.hpp"

#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "core/datenbank.hpp"
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

/// An object database in a scratch folder (made with the settings of a NAS import: no journal),
/// a protocol file beside it, and the UI port of tests.
struct Umgebung {
    test::TempOrdner ordner;
    SkriptOberfläche ui;
    std::unique_ptr<Datenbank> db = DAO_DatenbankAnlegen(ordner / "nas.sqlite");
    std::unique_ptr<NasProtokoll> protokoll = std::make_unique<NasProtokoll>(ui, ordner / "nas.xml.prn");

    Zuordnungsbericht Ausführen(const std::vector<std::string>& zeilen) {
        return ZuordnungAusführen(*db, zeilen, *protokoll, ui);
    }
    /// The lines of the protocol file (UTF-8); closes the protocol.
    std::vector<std::string> Protokolldatei() {
        protokoll.reset();
        const std::string text = Cp1252NachUtf8(test::DateiLesen(ordner / "nas.xml.prn"));
        const auto zeilen = TextZeilen(text);
        return {zeilen.begin(), zeilen.end()};
    }
    /// The lines the protocol showed in the window.
    std::vector<std::string> Fenster() const { return ui.Texte(Ereignis::Art::Protokoll); }
};

/// The first row of a query, its cells joined with "|".
std::string Wert(Datenbank& db, const std::string& sql) {
    const auto zeilen = test::Abfragezeilen(db, sql);
    return zeilen.empty() ? "<keine Zeile>" : zeilen.front();
}

std::string Deklaration(Datenbank& db, std::string_view spalte) {
    return Wert(db, "SELECT type FROM pragma_table_info('Alkis') WHERE name = '" + std::string(spalte) + "'");
}

std::size_t Anzahl(const std::vector<std::string>& zeilen, std::string_view teil) {
    return static_cast<std::size_t>(
        std::count_if(zeilen.begin(), zeilen.end(), [&](const auto& z) { return z.find(teil) != std::string::npos; }));
}

/// A small Alkis with text columns a, b, c and two rows; with `schlüssel` a table constraint.
void KleineTabelle(Datenbank& db, bool schlüssel = false) {
    db.AusführenNativ(schlüssel ? "CREATE TABLE Alkis (a TEXT COLLATE NOCASE, b TEXT, c TEXT, PRIMARY KEY (a))"
                                : "CREATE TABLE Alkis (a TEXT COLLATE NOCASE, b TEXT COLLATE NOCASE, "
                                  "c TEXT COLLATE NOCASE)");
    db.AusführenNativ("INSERT INTO Alkis VALUES ('a1', 'b1', 'c1'), ('a2', 'b2', 'c2')");
}

TEST(ZuordnungBefehle, ZählungSpaltenInhaltUndMeldungJeZeilenfolge) {
    struct Fall {
        std::vector<std::string> zeilen;
        std::int64_t ausgeführt, fehlgeschlagen;
        std::vector<std::string> spalten; // of Alkis afterwards; empty: no table Alkis
        std::string inhalt;               // its rows, cells joined with "|" (NULL as ""), rows with ";"
        std::string fenster; // a text in one window line per failed line, at least in one
        int protokollzeilen = -1;         // lines ", Zeile Zuordnung: " in the file (-1: any)
        bool schlüssel = false;           // Alkis with a table constraint
    };
    const std::string alt = "a1|b1|c1;a2|b2|c2";
    const std::vector<std::string> abc = {"a", "b", "c"}, neu = {"a", "b", "c", "neu"};
    const Fall fälle[] = {
        // ADD makes a text column where it is missing; another type word: the line is passed over.
        {{"ADD neu dbText"}, 1, 0, neu, "a1|b1|c1|;a2|b2|c2|", ""},
        {{"ADD neu dbMemo"}, 1, 0, neu, "a1|b1|c1|;a2|b2|c2|", ""},
        {{"add neu dbtext"}, 1, 0, neu, "a1|b1|c1|;a2|b2|c2|", ""}, // command and type in any case
        {{"ADD neu dbLong"}, 1, 0, abc, alt, ""},
        {{"ADD neu dbDate"}, 1, 0, abc, alt, ""},
        {{"ADD neu"}, 0, 1, abc, alt, ""},                    // no type word
        {{"ADD"}, 0, 1, abc, alt, ""},                        // nothing at all
        {{"ADD  neu dbText"}, 0, 1, abc, alt, ""},            // two blanks: the column name is empty
        {{"ADDneu dbText"}, 0, 0, abc, alt, "", 0},           // no command: passed over, not logged
        {{"ADD b dbText", "ADD B dbMemo"}, 2, 0, abc, alt, ""}, // an existing column: nothing
        {{"ADD neu dbText"}, 0, 1, {}, "", ", Fehler Zeile Zuordnung: ADD neu dbText, die Tabelle \"Alkis\" fehlt"},
        // CHG renames only where the old name is there and the new one is not; the values stay.
        {{"CHG b Grundbuchblatt"}, 1, 0, {"a", "Grundbuchblatt", "c"}, alt, ""},
        {{"CHG b c"}, 1, 0, abc, alt, ""},
        {{"CHG b C"}, 1, 0, abc, alt, ""}, // names compare without regard to case
        {{"CHG fehlt neu"}, 1, 0, abc, alt, ""},
        {{"CHG b"}, 0, 1, abc, alt, ""}, // no new name
        {{"CHG b Fläche-Neu"}, 1, 0, {"a", "Fläche-Neu", "c"}, alt, ""},
        // DEL
        {{"DEL gibtsnicht", "DEL b"}, 2, 0, {"a", "c"}, "a1|c1;a2|c2", ""},
        {{"DEL", "DEL c"}, 1, 1, {"a", "b"}, "a1|b1;a2|b2", ", Fehler Zeile Zuordnung: DEL, Spaltenname fehlt"},
        {{"DEL a", "DEL b", "DEL c"}, 2, 1, {"c"}, "c1;c2",
         ", Fehler Zeile Zuordnung: DEL c, die Spalte \"c\" kann nicht gelöscht werden"},
        {{"DEL a", "DEL b"}, 0, 2, {}, "", ""},
        {{"DEL b", "DEL c"}, 2, 0, {"a"}, "a1;a2", ", Hinweis Zuordnung: Spalten werden einzeln gelöscht", -1, true},
        // SQL: one statement a line; a line without one fails.
        {{"SQL UPDATE Alkis SET a = 'eins'; UPDATE Alkis SET b = 'zwei'", "SQL UPDATE Alkis SET c = 'drei'"}, 1, 1,
         abc, "a1|b1|drei;a2|b2|drei", ""},
        {{"SQL", "SQL    "}, 0, 2, abc, alt, "die Zeile enthält keine SQL-Anweisung"},
        {{"Hallo Welt", "SQLUPDATE Alkis SET a = 1", "XYZ a b", "SQL UPDATE Alkis SET a = 'ok'"}, 1, 0, abc,
         "ok|b1|c1;ok|b2|c2", "", 1},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(::testing::PrintToString(f.zeilen));
        Umgebung u;
        if (!f.spalten.empty())
            KleineTabelle((*u.db), f.schlüssel);
        const auto bericht = u.Ausführen(f.zeilen);
        EXPECT_EQ(bericht.ausgeführt, f.ausgeführt);
        EXPECT_EQ(bericht.fehlgeschlagen, f.fehlgeschlagen);
        if (!f.spalten.empty()) {
            EXPECT_EQ((*u.db).Spaltennamen("Alkis"), f.spalten);
            std::string zeile;
            for (const auto& s : f.spalten)
                zeile += (zeile.empty() ? "" : " || '|' || ") + ("ifnull(" + Bezeichner(s) + ", '')");
            EXPECT_EQ(Wert((*u.db), "SELECT group_concat(z, ';') FROM (SELECT " + zeile +
                                       " AS z FROM Alkis ORDER BY rowid)"),
                      f.inhalt);
        }
        if (!f.fenster.empty()) {
            EXPECT_EQ(Anzahl(u.Fenster(), f.fenster),
                      std::max<std::size_t>(1, static_cast<std::size_t>(f.fehlgeschlagen)));
        }
        if (f.protokollzeilen >= 0) {
            EXPECT_EQ(Anzahl(u.Protokolldatei(), ", Zeile Zuordnung: "), static_cast<std::size_t>(f.protokollzeilen));
        }
    }
    // A column made by ADD, or left by single deletes in a table with a constraint, is text that
    // compares without regard to case.
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

TEST(ZuordnungSql, FehlerWirdGezähltGemeldetUndDieNächsteZeileLäuft) {
    Umgebung u;
    KleineTabelle((*u.db));
    const std::vector<std::string> zeilen = {
        "SQL UPDATE Alkis SET a = \"x\" & b",
        "SQL UPDATE Alkis SET gibtsnicht = 1",
        "SQL UPDATE Alkis SET c = Trim(\"  neu  \")",
        "ADD d dbText",
    };
    const auto bericht = u.Ausführen(zeilen);
    EXPECT_EQ(bericht.ausgeführt, 3);
    EXPECT_EQ(bericht.fehlgeschlagen, 1);
    EXPECT_EQ(Wert((*u.db), "SELECT a FROM Alkis WHERE b = 'b1'"), "xb1");
    EXPECT_EQ(Wert((*u.db), "SELECT count(*) FROM Alkis WHERE c = 'neu'"), "2");
    EXPECT_TRUE(DAO_FeldVorhanden((*u.db), "Alkis", "d"));

    // The window shows the failure only, with the line and SQLite's reason.
    const auto fenster = u.Fenster();
    ASSERT_EQ(fenster.size(), 1U);
    EXPECT_NE(fenster[0].find(", Fehler Zeile Zuordnung: SQL UPDATE Alkis SET gibtsnicht = 1, SQL-Anweisung "
                              "nicht ausgeführt: "),
              std::string::npos)
        << fenster[0];
    EXPECT_NE(fenster[0].find("no such column: gibtsnicht"), std::string::npos) << fenster[0];

    // The file lists every line that ran, the failing one too, with the time in front.
    const auto datei = u.Protokolldatei();
    for (const auto& zeile : zeilen)
        EXPECT_EQ(Anzahl(datei, ", Zeile Zuordnung: " + zeile), 1U) << zeile;
    EXPECT_EQ(Anzahl(datei, ", Fehler Zeile Zuordnung: "), 1U);
    for (const auto& zeile : datei)
        EXPECT_TRUE(zeile.size() > 10 && zeile[2] == ':' && zeile[5] == ':') << zeile;
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
    // The rows under their rowids, the values with their storage classes.
    EXPECT_EQ(Wert(db, "SELECT group_concat(z, ';') FROM (SELECT rowid || ' ' || typeof(Zahl) || ' ' || "
                       "ifnull(Zahl, '') || ' ' || typeof(Nummer) || ' ' || ifnull(Nummer, '') || ' ' || "
                       "ifnull(Fläche, 'NULL') AS z FROM Alkis ORDER BY rowid)"),
              "1 real 1.5 integer 7 49171.00;3 real 2.25 integer 9 NULL;4 real 0.0 integer 0 ");
    // Text still compares without regard to case, and through its index.
    EXPECT_EQ(Wert(db, "SELECT count(*) FROM Alkis WHERE Gemarkung = 'MONZEL'"), "2");
    EXPECT_EQ(Wert(db, "SELECT group_concat(Gemarkung, ',') FROM (SELECT Gemarkung FROM Alkis ORDER BY Gemarkung)"),
              "Monzel,monzel,Osann");
    EXPECT_EQ(Wert(db, "SELECT group_concat(name, ',') FROM (SELECT name FROM sqlite_master WHERE "
                       "type = 'index' AND tbl_name = 'Alkis' ORDER BY name)"),
              "Alkis_Gemarkung");
    EXPECT_FALSE(DAO_TabelleVorhanden(db, "Alkis_Zuordnung_Neubau"));

    // In an open transaction of the caller the block runs inside it.
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
    // The function is there without the script's help too.
    Datenbank andere(":memory:");
    ZuordnungsfunktionenRegistrieren(andere);
    EXPECT_EQ(Wert(andere, "SELECT PUNKTLISTE('5 6 7 8;1 1 2 2 1 1')"), "5 6;7 8|1 1;2 2;1 1");
}

TEST(ZuordnungSkript, MitgelieferteDateiErgibtDieFlurixTabelleUndDieImportvorlage) {
    const auto datei = Konfig / "ALKIS_Zuordnung.dat";
    ASSERT_TRUE(DateiVorhanden(datei)) << datei;
    const auto zeilen = ZuordnungLesen(DateitextNachUtf8(DateiKomplettLesen(datei)));
    ASSERT_FALSE(zeilen.empty());
    // Alkis as the reorganisation makes it: one parcel with two owners, a second parcel in another
    // district, with a hole, booked with a four-digit BVNR, owned by a community of heirs without
    // a person; and the office tables the Katasteramt comes from.
    Umgebung u;
    auto& db = (*u.db);
    test::TabellenAnlegen(db, Daten / "alkis_reorganisiert.tab");
    const auto bericht = u.Ausführen(zeilen);
    EXPECT_EQ(bericht.fehlgeschlagen, 0);
    EXPECT_EQ(bericht.ausgeführt, static_cast<std::int64_t>(zeilen.size()));
    EXPECT_TRUE(u.Fenster().empty()) << u.Fenster().front();
    // Every column of the result in its order, every cell of the three rows: the columns named,
    // computed and renamed by the script, those left empty for "Daten ordnen", no raw column of
    // the reorganisation.
    EXPECT_EQ(test::GoldenVergleich(test::ZellenText(db, "SELECT Flurstückskennzeichen || '/' || Namensnummer, * "
                                                         "FROM Alkis ORDER BY rowid"),
                                    Daten / "alkis_zugeordnet.txt"),
              "");
    // Text columns still compare without regard to case after the new build of the table.
    EXPECT_EQ(Wert(db, "SELECT count(*) FROM Alkis WHERE Gemarkung = 'MONZEL'"), "2");
    EXPECT_EQ(Wert(db, "SELECT count(*) FROM Alkis WHERE Ort = 'musterdorf' AND BVNR = '0005'"), "2");
    EXPECT_FALSE(DAO_TabelleVorhanden(db, "Alkis_Zuordnung_Neubau"));

    // Every UPDATE rewrites every row: the script has one, and its DEL lines stand in one block.
    const auto del = [](const std::string& z) { return z.starts_with("DEL "); };
    const auto update = [](const std::string& z) { return z.starts_with("SQL UPDATE"); };
    EXPECT_EQ(std::count_if(zeilen.begin(), zeilen.end(), update), 1);
    const auto erste = std::find_if(zeilen.begin(), zeilen.end(), del);
    const auto nachBlock = std::find_if_not(erste, zeilen.end(), del);
    EXPECT_GT(nachBlock - erste, 50);
    EXPECT_EQ(std::find_if(nachBlock, zeilen.end(), del), zeilen.end()) << "die DEL-Zeilen stehen nicht in einem Block";

    // The import template names columns of the result only, each once, the important ones too.
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
