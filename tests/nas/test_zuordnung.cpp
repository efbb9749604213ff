#include "nas/zuordnung.hpp"

#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "core/datenbank.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace flurix::nas {
namespace {

using test::TempOrdner;

const std::filesystem::path Konfig = std::filesystem::path(FLURIX_QUELLEN) / "config";

// ---- helpers ----------------------------------------------------------------------------------

/// An object database in a scratch folder (made with the settings of a NAS import: no journal),
/// a protocol file beside it, and the UI port of tests.
class Umgebung {
public:
    Umgebung()
        : m_db(DAO_DatenbankAnlegen(m_ordner / "nas.sqlite")),
          m_protokoll(std::make_unique<NasProtokoll>(m_ui, m_ordner / "nas.xml.prn")) {}

    Datenbank& db() { return *m_db; }
    NasProtokoll& protokoll() { return *m_protokoll; }
    SkriptOberfläche& ui() { return m_ui; }

    Zuordnungsbericht Ausführen(const std::vector<std::string>& zeilen) {
        return ZuordnungAusführen(*m_db, zeilen, *m_protokoll, m_ui);
    }

    /// The lines of the protocol file (UTF-8); closes the protocol.
    std::vector<std::string> Protokolldatei() {
        m_protokoll.reset();
        const std::string text = Cp1252NachUtf8(test::DateiLesen(m_ordner / "nas.xml.prn"));
        std::vector<std::string> zeilen;
        for (std::string_view zeile : TextZeilen(text))
            zeilen.emplace_back(zeile);
        return zeilen;
    }

    /// The lines the protocol showed in the window.
    std::vector<std::string> Fenster() const { return m_ui.Texte(Ereignis::Art::Protokoll); }

private:
    TempOrdner m_ordner;
    SkriptOberfläche m_ui;
    std::unique_ptr<Datenbank> m_db;
    std::unique_ptr<NasProtokoll> m_protokoll;
};

std::vector<std::string> Spalten(Datenbank& db, std::string_view tabelle = "Alkis") {
    return db.Spaltennamen(tabelle);
}

/// One cell, std::nullopt for NULL.
std::optional<std::string> Wert(Datenbank& db, const std::string& sql) {
    auto abfrage = db.VorbereitenNativ(sql);
    if (!abfrage.Schritt())
        ADD_FAILURE() << "keine Zeile: " << sql;
    else if (!abfrage.IstNull(0))
        return std::string(abfrage.Text(0));
    return std::nullopt;
}

std::int64_t Zahl(Datenbank& db, const std::string& sql) {
    auto abfrage = db.VorbereitenNativ(sql);
    EXPECT_TRUE(abfrage.Schritt()) << sql;
    return abfrage.Ganzzahl(0);
}

std::string Deklaration(Datenbank& db, std::string_view tabelle, std::string_view spalte) {
    auto abfrage = db.VorbereitenNativ("SELECT type FROM pragma_table_info(?) WHERE name = ?");
    abfrage.Binde(tabelle).Binde(spalte);
    return abfrage.Schritt() ? std::string(abfrage.Text(0)) : std::string("<fehlt>");
}

bool Enthält(const std::vector<std::string>& liste, std::string_view wert) {
    return std::find(liste.begin(), liste.end(), wert) != liste.end();
}

std::size_t Anzahl(const std::vector<std::string>& zeilen, std::string_view teil) {
    return static_cast<std::size_t>(std::count_if(zeilen.begin(), zeilen.end(), [&](const auto& z) {
        return z.find(teil) != std::string::npos;
    }));
}

/// A small Alkis with text columns a, b, c and two rows.
void KleineTabelle(Datenbank& db) {
    db.AusführenNativ("CREATE TABLE Alkis (a TEXT COLLATE NOCASE, b TEXT COLLATE NOCASE, "
                      "c TEXT COLLATE NOCASE)");
    db.AusführenNativ("INSERT INTO Alkis VALUES ('a1', 'b1', 'c1'), ('a2', 'b2', 'c2')");
}

// ---- reading the script text ------------------------------------------------------------------

TEST(ZuordnungLesen, TabsKommentareUndLeereZeilenFallenWeg) {
    struct Fall {
        std::string_view name;
        std::string_view text;
        std::vector<std::string> erwartet;
    };
    const Fall fälle[] = {
        {"Kommentar und Befehl", "* Kommentar\r\nADD Flur dbText\r\n", {"ADD Flur dbText"}},
        {"Tabs werden entfernt, nicht ersetzt",
         "ADD\tFlur dbText\nSQL UPDATE\tAlkis SET a = 1",
         {"ADDFlur dbText", "SQL UPDATEAlkis SET a = 1"}},
        {"Kommentar hinter Tab", "\t* eingerückt\nDEL x", {"DEL x"}},
        {"Kommentar hinter Leerzeichen", "   *\nDEL x", {"DEL x"}},
        {"leere Zeilen", "\r\n\n   \n\t\t\nDEL x\n\n", {"DEL x"}},
        {"Ränder abgeschnitten", "  CHG a b  \r\n", {"CHG a b"}},
        {"Stern im Inneren bleibt",
         "SQL UPDATE Alkis SET a = \"*\"",
         {"SQL UPDATE Alkis SET a = \"*\""}},
        {"letzte Zeile ohne Zeilenende", "ADD a dbText\nDEL b", {"ADD a dbText", "DEL b"}},
        {"andere Zeilen bleiben in der Liste", "Hallo Welt\nDEL b", {"Hallo Welt", "DEL b"}},
        {"nur Kommentar", "*** Kopf ***\r\n* Ende", {}},
        {"leerer Text", "", {}},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(ZuordnungLesen(f.text), f.erwartet) << f.name;
}

// ---- ADD, CHG, DEL ------------------------------------------------------------------------------

TEST(ZuordnungBefehle, AddLegtTextspalteAnWennSieFehlt) {
    struct Fall {
        std::string zeile;
        bool angelegt; // column "neu" exists afterwards
        std::int64_t fehler;
    };
    const Fall fälle[] = {
        {"ADD neu dbText", true, 0},
        {"ADD neu dbMemo", true, 0},
        {"add neu dbtext", true, 0},  // command and type word in any case
        {"ADD neu dbLong", false, 0}, // another type word: the line is passed over
        {"ADD neu dbDate", false, 0},
        {"ADD neu", false, 1},         // no type word
        {"ADD", false, 1},             // nothing at all
        {"ADD  neu dbText", false, 1}, // two blanks: the column name is empty
        {"ADDneu dbText", false, 0},   // no command: passed over, not logged
    };
    for (const auto& f : fälle) {
        Umgebung u;
        KleineTabelle(u.db());
        const auto bericht = u.Ausführen({f.zeile});
        EXPECT_EQ(DAO_FeldVorhanden(u.db(), "Alkis", "neu"), f.angelegt) << f.zeile;
        EXPECT_EQ(bericht.fehlgeschlagen, f.fehler) << f.zeile;
        EXPECT_EQ(Spalten(u.db()).size(), f.angelegt ? 4U : 3U) << f.zeile;
        if (f.angelegt) {
            EXPECT_EQ(Deklaration(u.db(), "Alkis", "neu"), "TEXT") << f.zeile;
            // A text column of the object database compares without regard to case.
            u.db().AusführenNativ("UPDATE Alkis SET neu = 'Monzel'");
            EXPECT_EQ(Zahl(u.db(), "SELECT count(*) FROM Alkis WHERE neu = 'MONZEL'"), 2)
                << f.zeile;
        }
    }
}

TEST(ZuordnungBefehle, AddEinerVorhandenenSpalteÄndertNichts) {
    Umgebung u;
    KleineTabelle(u.db());
    const auto bericht = u.Ausführen({"ADD b dbText", "ADD B dbMemo"});
    EXPECT_EQ(bericht.fehlgeschlagen, 0);
    EXPECT_EQ(bericht.ausgeführt, 2);
    EXPECT_EQ(Spalten(u.db()), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(Wert(u.db(), "SELECT b FROM Alkis WHERE a = 'a2'"), "b2");
}

TEST(ZuordnungBefehle, AddOhneTabelleAlkisIstEinFehler) {
    Umgebung u;
    const auto bericht = u.Ausführen({"ADD neu dbText"});
    EXPECT_EQ(bericht.fehlgeschlagen, 1);
    EXPECT_EQ(u.Fenster().size(), 1U);
    EXPECT_NE(u.Fenster().at(0).find(", Fehler Zeile Zuordnung: ADD neu dbText, die Tabelle "
                                     "\"Alkis\" fehlt"),
              std::string::npos)
        << u.Fenster().at(0);
}

TEST(ZuordnungBefehle, ChgBenenntNurUmWennAltDaUndNeuNichtDa) {
    struct Fall {
        std::string zeile;
        std::vector<std::string> spalten;
        std::int64_t fehler;
    };
    const Fall fälle[] = {
        {"CHG b Grundbuchblatt", {"a", "Grundbuchblatt", "c"}, 0},
        {"CHG b c", {"a", "b", "c"}, 0},       // the new name exists: nothing
        {"CHG b C", {"a", "b", "c"}, 0},       // names compare without regard to case
        {"CHG fehlt neu", {"a", "b", "c"}, 0}, // the old name is missing: nothing
        {"CHG b", {"a", "b", "c"}, 1},         // no new name
        {"CHG b Fläche-Neu", {"a", "Fläche-Neu", "c"}, 0},
    };
    for (const auto& f : fälle) {
        Umgebung u;
        KleineTabelle(u.db());
        const auto bericht = u.Ausführen({f.zeile});
        EXPECT_EQ(Spalten(u.db()), f.spalten) << f.zeile;
        EXPECT_EQ(bericht.fehlgeschlagen, f.fehler) << f.zeile;
        // The values stay where they were.
        EXPECT_EQ(Wert(u.db(), "SELECT " + Bezeichner(f.spalten[1]) + " FROM Alkis WHERE a = 'a1'"),
                  "b1")
            << f.zeile;
        EXPECT_EQ(Wert(u.db(), "SELECT c FROM Alkis WHERE a = 'a2'"), "c2") << f.zeile;
    }
}

TEST(ZuordnungBefehle, DelEinerFehlendenSpalteIstKeinFehler) {
    Umgebung u;
    KleineTabelle(u.db());
    const auto bericht = u.Ausführen({"DEL gibtsnicht", "DEL b"});
    EXPECT_EQ(bericht.fehlgeschlagen, 0);
    EXPECT_EQ(bericht.ausgeführt, 2);
    EXPECT_EQ(Spalten(u.db()), (std::vector<std::string>{"a", "c"}));
}

TEST(ZuordnungBefehle, DelOhneSpaltennamenIstEinFehler) {
    Umgebung u;
    KleineTabelle(u.db());
    const auto bericht = u.Ausführen({"DEL", "DEL c"});
    EXPECT_EQ(bericht.fehlgeschlagen, 1);
    EXPECT_EQ(Spalten(u.db()), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(Anzahl(u.Fenster(), ", Fehler Zeile Zuordnung: DEL, Spaltenname fehlt"), 1U);
}

// ---- SQL lines, failures and the protocol ------------------------------------------------------

TEST(ZuordnungSql, FehlerWirdGezähltGemeldetUndDieNächsteZeileLäuft) {
    Umgebung u;
    KleineTabelle(u.db());
    const std::vector<std::string> zeilen = {
        "SQL UPDATE Alkis SET a = \"x\" & b",
        "SQL UPDATE Alkis SET gibtsnicht = 1",
        "SQL UPDATE Alkis SET c = Trim(\"  neu  \")",
        "ADD d dbText",
    };
    const auto bericht = u.Ausführen(zeilen);
    EXPECT_EQ(bericht.ausgeführt, 3);
    EXPECT_EQ(bericht.fehlgeschlagen, 1);
    EXPECT_EQ(Wert(u.db(), "SELECT a FROM Alkis WHERE b = 'b1'"), "xb1");
    EXPECT_EQ(Zahl(u.db(), "SELECT count(*) FROM Alkis WHERE c = 'neu'"), 2);
    EXPECT_TRUE(DAO_FeldVorhanden(u.db(), "Alkis", "d"));

    // The window shows the failure only, with the line and SQLite's reason.
    const auto fenster = u.Fenster();
    ASSERT_EQ(fenster.size(), 1U);
    const std::string erwartet =
        ", Fehler Zeile Zuordnung: SQL UPDATE Alkis SET gibtsnicht = 1, SQL-Anweisung nicht "
        "ausgeführt: ";
    EXPECT_NE(fenster[0].find(erwartet), std::string::npos) << fenster[0];
    EXPECT_NE(fenster[0].find("no such column: gibtsnicht"), std::string::npos) << fenster[0];

    // The file lists every line that ran, the failing one too, with the time in front.
    const auto datei = u.Protokolldatei();
    for (const auto& zeile : zeilen)
        EXPECT_EQ(Anzahl(datei, ", Zeile Zuordnung: " + zeile), 1U) << zeile;
    EXPECT_EQ(Anzahl(datei, ", Fehler Zeile Zuordnung: "), 1U);
    for (const auto& zeile : datei)
        EXPECT_TRUE(zeile.size() > 10 && zeile[2] == ':' && zeile[5] == ':') << zeile;
}

TEST(ZuordnungSql, ZweiAnweisungenInEinerZeileLaufenBeideNicht) {
    Umgebung u;
    KleineTabelle(u.db());
    const auto bericht =
        u.Ausführen({"SQL UPDATE Alkis SET a = 'eins'; UPDATE Alkis SET b = 'zwei'",
                     "SQL UPDATE Alkis SET c = 'drei'"});
    EXPECT_EQ(bericht.fehlgeschlagen, 1);
    EXPECT_EQ(bericht.ausgeführt, 1);
    EXPECT_EQ(Zahl(u.db(), "SELECT count(*) FROM Alkis WHERE a = 'eins' OR b = 'zwei'"), 0);
    EXPECT_EQ(Zahl(u.db(), "SELECT count(*) FROM Alkis WHERE c = 'drei'"), 2);
}

TEST(ZuordnungSql, LeereAnweisungIstEinFehler) {
    Umgebung u;
    KleineTabelle(u.db());
    const auto bericht = u.Ausführen({"SQL", "SQL    "});
    EXPECT_EQ(bericht.fehlgeschlagen, 2);
    EXPECT_EQ(Anzahl(u.Fenster(), "die Zeile enthält keine SQL-Anweisung"), 2U);
}

TEST(ZuordnungSql, AndereZeilenWerdenÜbergangenUndNichtProtokolliert) {
    Umgebung u;
    KleineTabelle(u.db());
    const auto bericht = u.Ausführen(
        {"Hallo Welt", "SQLUPDATE Alkis SET a = 1", "XYZ a b", "SQL UPDATE Alkis SET a = 'ok'"});
    EXPECT_EQ(bericht.ausgeführt, 1);
    EXPECT_EQ(bericht.fehlgeschlagen, 0);
    EXPECT_EQ(Zahl(u.db(), "SELECT count(*) FROM Alkis WHERE a = 'ok'"), 2);
    const auto datei = u.Protokolldatei();
    EXPECT_EQ(Anzahl(datei, ", Zeile Zuordnung: "), 1U);
}

TEST(ZuordnungSql, StatuszeileAlleZehnZeilen) {
    Umgebung u;
    KleineTabelle(u.db());
    std::vector<std::string> zeilen;
    for (int i = 0; i < 25; ++i)
        zeilen.push_back(i % 2 == 0 ? "SQL UPDATE Alkis SET a = 'x'" : "* kein Befehl");
    u.Ausführen(zeilen);
    EXPECT_EQ(u.ui().Texte(Ereignis::Art::Status),
              (std::vector<std::string>{"Zusammenstellung, Zeile Zuordnung: 1 von 25",
                                        "Zusammenstellung, Zeile Zuordnung: 11 von 25",
                                        "Zusammenstellung, Zeile Zuordnung: 21 von 25"}));
}

// ---- a run of DEL lines
// --------------------------------------------------------------------------

TEST(ZuordnungDelBlock, BehältDatenReihenfolgeTypenUndIndizes) {
    Umgebung u;
    auto& db = u.db();
    db.AusführenNativ(
        "CREATE TABLE Alkis (\"id\" TEXT COLLATE NOCASE, \"gml:exterior\" TEXT "
        "COLLATE NOCASE, \"Gemarkung\" TEXT COLLATE NOCASE, \"anteil/AX_Anteil/zaehler\" "
        "TEXT COLLATE NOCASE, \"Zahl\" REAL, \"Nummer\" INTEGER, \"Fläche\" TEXT "
        "COLLATE NOCASE)");
    db.AusführenNativ("INSERT INTO Alkis VALUES ('x1', '1 2 3 4', 'Monzel', '1', 1.5, 7, "
                      "'49171.00'), ('x2', NULL, 'Kesten', '2', NULL, NULL, '12.00'), "
                      "('x3', '5 6', 'Osann', NULL, 2.25, 9, NULL)");
    db.AusführenNativ("DELETE FROM Alkis WHERE id = 'x2'"); // a gap in the rowids
    db.AusführenNativ("INSERT INTO Alkis VALUES ('x4', '', 'monzel', '4', 0, 0, '')");
    db.AusführenNativ("CREATE INDEX Alkis_Gemarkung ON Alkis (Gemarkung)");
    db.AusführenNativ("CREATE INDEX Alkis_id ON Alkis (id)");
    db.AusführenNativ("CREATE INDEX Alkis_beide ON Alkis (Gemarkung, \"gml:exterior\")");

    const auto vorher = Zahl(db, "SELECT sum(rowid) FROM Alkis");
    const auto bericht = u.Ausführen(
        {"DEL id", "DEL gml:exterior", "DEL gibtsnicht", "DEL anteil/AX_Anteil/zaehler", "DEL ID"});
    EXPECT_EQ(bericht.fehlgeschlagen, 0);
    EXPECT_EQ(bericht.ausgeführt, 5);

    EXPECT_EQ(Spalten(db), (std::vector<std::string>{"Gemarkung", "Zahl", "Nummer", "Fläche"}));
    EXPECT_EQ(Deklaration(db, "Alkis", "Zahl"), "REAL");
    EXPECT_EQ(Deklaration(db, "Alkis", "Nummer"), "INTEGER");
    EXPECT_EQ(Deklaration(db, "Alkis", "Gemarkung"), "TEXT");
    EXPECT_EQ(Zahl(db, "SELECT count(*) FROM Alkis"), 3);
    EXPECT_EQ(Zahl(db, "SELECT sum(rowid) FROM Alkis"), vorher);
    // The values with their storage classes.
    EXPECT_EQ(Wert(db, "SELECT Fläche FROM Alkis WHERE rowid = 1"), "49171.00");
    EXPECT_EQ(Wert(db, "SELECT typeof(Zahl) || ' ' || Zahl FROM Alkis WHERE rowid = 1"),
              "real 1.5");
    EXPECT_EQ(Wert(db, "SELECT typeof(Nummer) || ' ' || Nummer FROM Alkis WHERE rowid = 3"),
              "integer 9");
    EXPECT_EQ(Wert(db, "SELECT Fläche FROM Alkis WHERE rowid = 3"), std::nullopt);
    EXPECT_EQ(Wert(db, "SELECT Fläche FROM Alkis WHERE rowid = 4"), "");
    // Text still compares without regard to case, and through its index.
    EXPECT_EQ(Zahl(db, "SELECT count(*) FROM Alkis WHERE Gemarkung = 'MONZEL'"), 2);
    EXPECT_EQ(Wert(db, "SELECT group_concat(Gemarkung, ',') FROM (SELECT Gemarkung FROM Alkis "
                       "ORDER BY Gemarkung)"),
              "Monzel,monzel,Osann");
    EXPECT_EQ(Wert(db, "SELECT group_concat(name, ',') FROM (SELECT name FROM sqlite_master WHERE "
                       "type = 'index' AND tbl_name = 'Alkis' ORDER BY name)"),
              "Alkis_Gemarkung");
    EXPECT_FALSE(DAO_TabelleVorhanden(db, "Alkis_Zuordnung_Neubau"));
}

TEST(ZuordnungDelBlock, InEinerOffenenTransaktionDesAufrufers) {
    Umgebung u;
    KleineTabelle(u.db());
    u.db().AusführenNativ("BEGIN");
    const auto bericht = u.Ausführen({"DEL a", "DEL c"});
    EXPECT_TRUE(u.db().TransaktionOffen());
    u.db().AusführenNativ("COMMIT");
    EXPECT_EQ(bericht.fehlgeschlagen, 0);
    EXPECT_EQ(Spalten(u.db()), (std::vector<std::string>{"b"}));
    EXPECT_EQ(Wert(u.db(), "SELECT group_concat(b, ',') FROM Alkis"), "b1,b2");
}

TEST(ZuordnungDelBlock, TabelleMitTabellenbedingungVerliertSpaltenEinzeln) {
    Umgebung u;
    u.db().AusführenNativ("CREATE TABLE Alkis (a TEXT COLLATE NOCASE, b TEXT, c TEXT, "
                          "PRIMARY KEY (a))");
    u.db().AusführenNativ("INSERT INTO Alkis VALUES ('a1', 'b1', 'c1'), ('a2', 'b2', 'c2')");
    const auto bericht = u.Ausführen({"DEL b", "DEL c"});
    EXPECT_EQ(bericht.fehlgeschlagen, 0);
    EXPECT_EQ(bericht.ausgeführt, 2);
    EXPECT_EQ(Spalten(u.db()), (std::vector<std::string>{"a"}));
    EXPECT_EQ(Zahl(u.db(), "SELECT count(*) FROM Alkis WHERE a = 'A2'"), 1);
    EXPECT_EQ(Anzahl(u.Fenster(), ", Hinweis Zuordnung: Spalten werden einzeln gelöscht"), 1U);
}

TEST(ZuordnungDelBlock, AlleSpaltenLöschenLässtDieLetzteStehenUndZähltSie) {
    Umgebung u;
    KleineTabelle(u.db());
    const auto bericht = u.Ausführen({"DEL a", "DEL b", "DEL c"});
    EXPECT_EQ(bericht.ausgeführt, 2);
    EXPECT_EQ(bericht.fehlgeschlagen, 1);
    EXPECT_EQ(Spalten(u.db()), (std::vector<std::string>{"c"}));
    EXPECT_EQ(Anzahl(u.Fenster(), ", Fehler Zeile Zuordnung: DEL c, die Spalte \"c\" kann nicht "
                                  "gelöscht werden"),
              1U);
}

TEST(ZuordnungDelBlock, OhneTabelleIstJedeZeileEinFehler) {
    Umgebung u;
    const auto bericht = u.Ausführen({"DEL a", "DEL b"});
    EXPECT_EQ(bericht.fehlgeschlagen, 2);
    EXPECT_EQ(bericht.ausgeführt, 0);
}

// ---- PUNKTLISTE ---------------------------------------------------------------------------------

TEST(ZuordnungPunktliste, RingeAlsPunktlisten) {
    struct Fall {
        std::string_view name;
        std::string_view text;
        std::string_view erwartet;
    };
    const Fall fälle[] = {
        {"ein Ring", "1 2 3 4 5 6 1 2", "1 2;3 4;5 6;1 2"},
        {"zwei Ringe", "1 2 3 4 1 2;7 8 9 10 7 8", "1 2;3 4;1 2|7 8;9 10;7 8"},
        {"zwei Ringe mit Blank hinter dem Trenner", "1 2 3 4 1 2; 7 8 9 10 7 8",
         "1 2;3 4;1 2|7 8;9 10;7 8"},
        {"Wiederholte Punkte der Segmentenden", "1 2 3 4 3 4 5 6 5 6 1 2", "1 2;3 4;5 6;1 2"},
        {"Wiederholung erst später bleibt", "1 2 3 4 1 2 3 4", "1 2;3 4;1 2;3 4"},
        {"Koordinaten mit Nachkommastellen",
         "350821.045 5532031.370 350924.309 5532029.513 350924.309 5532029.513",
         "350821.045 5532031.37;350924.309 5532029.513"},
        {"Läufe von Leerzeichen", "  1   2  3 4  ", "1 2;3 4"},
        {"leerer Ring zwischen zwei", "1 2 3 4;;5 6 7 8", "1 2;3 4|5 6;7 8"},
        {"leer", "", ""},
        {"nur Leerzeichen", "   ", ""},
        {"nur Trenner", " ; ", ""},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(Punktliste(f.text), f.erwartet) << f.name;
}

TEST(ZuordnungPunktliste, AlsSqlFunktion) {
    Umgebung u;
    auto& db = u.db();
    db.AusführenNativ("CREATE TABLE Alkis (\"gml:exterior\" TEXT COLLATE NOCASE, u TEXT)");
    db.AusführenNativ("INSERT INTO Alkis VALUES ('1 2 1 2 3 4', NULL), (NULL, NULL), ('', NULL)");
    const auto bericht = u.Ausführen({"SQL UPDATE Alkis SET u = PUNKTLISTE([gml:exterior])"});
    EXPECT_EQ(bericht.fehlgeschlagen, 0);
    EXPECT_EQ(Wert(db, "SELECT u FROM Alkis WHERE rowid = 1"), "1 2;3 4");
    EXPECT_EQ(Wert(db, "SELECT u FROM Alkis WHERE rowid = 2"), std::nullopt);
    EXPECT_EQ(Wert(db, "SELECT u FROM Alkis WHERE rowid = 3"), "");
    // The function is there without the script's help too.
    Datenbank andere(":memory:");
    ZuordnungsfunktionenRegistrieren(andere);
    EXPECT_EQ(Wert(andere, "SELECT PUNKTLISTE('5 6 7 8;1 1 2 2 1 1')"), "5 6;7 8|1 1;2 2;1 1");
}

// ---- the shipped script -------------------------------------------------------------------------

/// The columns of Alkis as the XML reorganisation leaves them.
std::vector<std::string> ReorganisationsSpalten() {
    std::vector<std::string> spalten = {
        "id",
        "flurstueckskennzeichen",
        "flurstueckskennzeichenAlkis",
        "gemarkung",
        "gemarkung/AX_Gemarkung_Schluessel/land",
        "gemarkung/AX_Gemarkung_Schluessel/gemarkungsnummer",
        "flurnummer",
        "flurstuecksnummer/AX_Flurstuecksnummer/zaehler",
        "flurstuecksnummer/AX_Flurstuecksnummer/nenner",
        "gemeindezugehoerigkeit",
        "gemeindezugehoerigkeit/AX_Gemeindekennzeichen/land",
        "gemeindezugehoerigkeit/AX_Gemeindekennzeichen/regierungsbezirk",
        "gemeindezugehoerigkeit/AX_Gemeindekennzeichen/kreis",
        "gemeindezugehoerigkeit/AX_Gemeindekennzeichen/gemeinde",
        "Gemeinde",
        "amtlicheFlaeche",
        "zeitpunktDerEntstehung",
        "rechtsbehelfsverfahren",
        "abweichenderRechtszustand",
        "srsName",
        "gml:exterior",
        "gml:interior",
        "gml:LineStringSegment",
        "AlkisFlaeche",
        "AlkisNA",
        "AlkisOriNA",
        "AlkisNaFlaeche",
        "AlkisNaBeschreibung",
        "AlkisOriNaFlaeche",
        "BS_Bodenschaetzung",
        "BS_Flaeche",
        "BS_GesamtFlaeche",
        "BS_OriFlaeche",
        "BS_bodenart",
        "BS_kulturart",
        "BS_zustandsstufeOderBodenstufe",
        "BS_entstehungsartOderKlimastufeWasserverhaeltnisse",
        "BS_bodenzahlOderGruenlandgrundzahl",
        "BS_ackerzahlOderGruenlandzahl",
        "BS_Ertragsmesszahl",
        "BS_GesamtErtragsmesszahl",
        "BS_AzMittel",
        "BS_sonstigeAngaben",
        "KL_bodenart",
        "KL_entstehungsartOderKlimastufeWasserverhaeltnisse",
        "KL_funktion",
        "KL_kulturart",
        "KL_vegetationsmerkmal",
        "KL_zustandsstufeOderBodenstufe",
        "INFO_BauRaumOderBodenordnungsrecht",
        "AlkisNAFlaechenDifferenz",
        "AlkisBSFlaechenDifferenz",
        "AlkisAmtlichFlaechenDifferenz"};
    const std::vector<std::pair<std::string, std::vector<std::string>>> verbunden = {
        {"AX_Buchungsstelle",
         {"anlass", "anteil/AX_Anteil/zaehler", "anteil/AX_Anteil/nenner", "buchungsart",
          "laufendeNummer", "beschreibungDesSondereigentums"}},
        {"AX_Buchungsblatt",
         {"id", "buchungsblattkennzeichen", "buchungsblattbezirk",
          "buchungsblattnummerMitBuchstabenerweiterung", "blattart"}},
        {"AX_Buchungsblattbezirk",
         {"id", "schluesselGesamt", "bezeichnung", "schluessel", "gehoertZu"}},
        {"AX_Gemeinde", {"id", "schluesselGesamt", "bezeichnung", "gemeindekennzeichen"}},
        {"AX_Gemarkung", {"id", "schluesselGesamt", "bezeichnung", "schluessel"}},
        {"AX_Dienststelle", {"id", "schluesselGesamt", "bezeichnung", "schluessel", "stellenart"}},
        {"AX_LagebezeichnungKatalogeintrag",
         {"id", "schluesselGesamt", "bezeichnung", "schluessel"}},
        {"AX_LagebezeichnungMitHausnummer", {"lage", "lagebezeichnung", "hausnummer"}},
        {"AX_LagebezeichnungOhneHausnummer", {"lagebezeichnung", "lage"}},
        {"AX_Namensnummer",
         {"anteil", "artDerRechtsgemeinschaft", "beschriebDerRechtsgemeinschaft", "eigentuemerart",
          "laufendeNummerNachDIN1421", "nummer", "strichblattnummer"}},
        {"AX_Person",
         {"id", "akademischerGrad", "anrede", "beruf", "geburtsdatum", "geburtsname",
          "haushaltsstelleLandesgrundbesitz", "nachnameOderFirma", "namensbestandteil",
          "sonstigeEigenschaften", "vorname", "wirdVertretenVon", "wohnortOderSitz"}},
        {"AX_Anschrift",
         {"id", "bestimmungsland", "fax", "hausnummer", "ort_Post", "ortsteil",
          "ort_AmtlichesOrtsnamensverzeichnis", "postleitzahlPostzustellung",
          "postleitzahlPostfach", "postfach", "strasse", "telefon", "weitereAdressen"}},
    };
    for (const auto& [tabelle, attribute] : verbunden)
        for (const auto& attribut : attribute)
            spalten.push_back(attribut + "_" + tabelle);
    // id_AX_Buchungsblatt, id_AX_Person and id_AX_Anschrift are the attribute columns above.
    for (const char* weitere :
         {"id_AX_Buchungsstelle", "id_an_AX_Buchungsstelle", "Straßenschlüssel", "Lagebezeichnung",
          "id_AX_LagebezeichnungMitHausnummer", "id_AX_LagebezeichnungOhneHausnummer",
          "id_AX_Namensnummer", "AnzZeilen_AX_Namensnummer", "id_AP_PTO", "position_AP_PTO",
          "Hochwert", "Rechtswert"})
        spalten.emplace_back(weitere);
    return spalten;
}

using Zeile = std::map<std::string, std::string>;

/// Alkis as the reorganisation makes it, with the rows given (missing cells are NULL), and the
/// office tables the Katasteramt comes from.
void AlkisAnlegen(Datenbank& db, const std::vector<Zeile>& zeilen) {
    const auto spalten = ReorganisationsSpalten();
    std::string ddl;
    for (const auto& s : spalten)
        ddl += (ddl.empty() ? "" : ", ") + Bezeichner(s) + " TEXT COLLATE NOCASE";
    db.AusführenNativ("CREATE TABLE Alkis (" + ddl + ")");
    for (const auto& zeile : zeilen) {
        std::string namen;
        std::string werte;
        for (const auto& [spalte, wert] : zeile) {
            EXPECT_TRUE(Enthält(spalten, spalte)) << "keine Spalte der Reorganisation: " << spalte;
            namen += (namen.empty() ? "" : ", ") + Bezeichner(spalte);
            werte += (werte.empty() ? "" : ", ") + SqlText(wert);
        }
        db.AusführenNativ("INSERT INTO Alkis (" + namen + ") VALUES (" + werte + ")");
    }
    db.AusführenNativ("CREATE TABLE AX_Dienststelle (id TEXT COLLATE NOCASE, schluesselGesamt "
                      "TEXT COLLATE NOCASE, bezeichnung TEXT COLLATE NOCASE, schluessel TEXT "
                      "COLLATE NOCASE, stellenart TEXT COLLATE NOCASE)");
    db.AusführenNativ(
        "INSERT INTO AX_Dienststelle VALUES "
        "('DERP123400000a''GO', '070455', 'Vermessungs-u.Katasteramt Bernkastel-Kues', "
        "'07 0455', '1100'), "
        "('DERP123400000a''GP', '072401', 'Bernkastel-Kues', '07 2401', '1000'), "
        "('DERP123400000a''GR', '070043', 'Finanzamt Bernkastel-Wittlich', '07 0043', '1200'), "
        "('DERP123400000a''GX', '070460', 'Vermessungs- und Katasteramt Westeifel-Mosel', "
        "'07 0460', '1100')");
    db.AusführenNativ("CREATE TABLE \"AX_Gemarkung_id#istAmtsbezirkVon\" (id TEXT COLLATE "
                      "NOCASE, istAmtsbezirkVon TEXT COLLATE NOCASE)");
    db.AusführenNativ("CREATE INDEX \"AX_Gemarkung_id#istAmtsbezirkVon_id\" ON "
                      "\"AX_Gemarkung_id#istAmtsbezirkVon\" (id)");
    // Monzel belongs to one office; Kesten names the tax office first, then its survey office.
    db.AusführenNativ("INSERT INTO \"AX_Gemarkung_id#istAmtsbezirkVon\" VALUES "
                      "('DERP123400000a''Gt''', '07 0455'), ('DERP123400000a''Gr''', '07 0043'), "
                      "('DERP123400000a''Gr''', '07 0460')");
}

Zeile Gemeinsam() {
    return {
        {"id", "DERP1234000002DD"},
        {"flurstueckskennzeichen", "07256600400003000000"},
        {"flurstueckskennzeichenAlkis", "072566|4|3"},
        {"gemarkung", "07 2566"},
        {"gemarkung/AX_Gemarkung_Schluessel/land", "07"},
        {"gemarkung/AX_Gemarkung_Schluessel/gemarkungsnummer", "2566"},
        {"flurnummer", "4"},
        {"flurstuecksnummer/AX_Flurstuecksnummer/zaehler", "3"},
        {"gemeindezugehoerigkeit", "07 2 31 103"},
        {"gemeindezugehoerigkeit/AX_Gemeindekennzeichen/land", "07"},
        {"gemeindezugehoerigkeit/AX_Gemeindekennzeichen/regierungsbezirk", "2"},
        {"gemeindezugehoerigkeit/AX_Gemeindekennzeichen/kreis", "31"},
        {"gemeindezugehoerigkeit/AX_Gemeindekennzeichen/gemeinde", "103"},
        {"Gemeinde", "Osann-Monzel"},
        {"amtlicheFlaeche", "49171.00"},
        {"zeitpunktDerEntstehung", "2008-01-01"},
        {"rechtsbehelfsverfahren", "false"},
        {"srsName", "25832_32"},
        {"gml:exterior", "350821.045 5532031.370 350924.309 5532029.513 350924.309 5532029.513 "
                         "350930.100 5531950.000 350930.100 5531950.000 350821.045 5532031.370"},
        {"gml:interior", ""},
        {"AlkisNA", "AX_Landwirtschaft 49000.0"},
        {"AlkisNaBeschreibung", "Ackerland"},
        {"AlkisNaFlaeche", "49000.0"},
        {"AlkisOriNA", "Landwirtschaft"},
        {"AlkisAmtlichFlaechenDifferenz", "00171m² --> 0.3%"},
        {"BS_Bodenschaetzung", "Ackerland 48000"},
        {"BS_Flaeche", "48000"},
        {"BS_bodenart", "Lehm"},
        {"BS_kulturart", "Ackerland (A)"},
        {"BS_bodenzahlOderGruenlandgrundzahl", "52"},
        {"BS_ackerzahlOderGruenlandzahl", "50"},
        {"BS_Ertragsmesszahl", "24000"},
        {"BS_GesamtErtragsmesszahl", "24000"},
        {"BS_AzMittel", "050"},
        {"INFO_BauRaumOderBodenordnungsrecht", "Flurbereinigung Monzel; Flurbereinigungsgebiet"},
        {"anlass_AX_Buchungsstelle", "000000"},
        {"buchungsart_AX_Buchungsstelle", "Grundstück"},
        {"laufendeNummer_AX_Buchungsstelle", "5"},
        {"id_AX_Buchungsblatt", "DERP123400000a'WX"},
        {"buchungsblattkennzeichen_AX_Buchungsblatt", "0725660002279"},
        {"buchungsblattbezirk_AX_Buchungsblatt", "07 2566"},
        {"buchungsblattnummerMitBuchstabenerweiterung_AX_Buchungsblatt", "2279"},
        {"blattart_AX_Buchungsblatt", "Grundbuchblatt"},
        {"id_AX_Buchungsblattbezirk", "DERP123400000a'Gu'"},
        {"schluesselGesamt_AX_Buchungsblattbezirk", "072566"},
        {"bezeichnung_AX_Buchungsblattbezirk", "Monzel"},
        {"schluessel_AX_Buchungsblattbezirk", "07 2566"},
        {"gehoertZu_AX_Buchungsblattbezirk", "07 2408"},
        {"id_AX_Gemeinde", "DERP123400000a'Gq'"},
        {"schluesselGesamt_AX_Gemeinde", "07231103"},
        {"bezeichnung_AX_Gemeinde", "Osann-Monzel"},
        {"gemeindekennzeichen_AX_Gemeinde", "07 2 31 103"},
        {"id_AX_Gemarkung", "DERP123400000a'Gt'"},
        {"schluesselGesamt_AX_Gemarkung", "072566"},
        {"bezeichnung_AX_Gemarkung", "Monzel"},
        {"schluessel_AX_Gemarkung", "07 2566"},
        {"id_AX_Dienststelle", "DERP123400000a'GR"},
        {"bezeichnung_AX_Dienststelle", "Finanzamt Bernkastel-Wittlich"},
        {"id_AX_Buchungsstelle", "DERP123400000c'WC"},
        {"Straßenschlüssel", "00112"},
        {"Lagebezeichnung", "Am Ritzberg"},
        {"id_AX_LagebezeichnungOhneHausnummer", "DERP123400000d'X1"},
        {"lagebezeichnung_AX_LagebezeichnungOhneHausnummer", "Am Ritzberg"},
        {"lage_AX_LagebezeichnungOhneHausnummer", "00112"},
        {"AnzZeilen_AX_Namensnummer", "0002"},
        {"id_AP_PTO", "DERP123400000e'P1"},
        {"position_AP_PTO", "350880.120 5532000.450"},
        {"Rechtswert", "350880.120"},
        {"Hochwert", "5532000.450"},
    };
}

Zeile Mit(Zeile zeile, const Zeile& dazu) {
    for (const auto& [spalte, wert] : dazu)
        zeile[spalte] = wert;
    return zeile;
}

/// Three rows: one parcel with two owners, a second parcel (another cadastral district, with a
/// hole, booked with a four-digit BVNR) owned by a community of heirs without a person.
std::vector<Zeile> DreiZeilen() {
    const Zeile erste =
        Mit(Gemeinsam(), {
                             {"id_AX_Namensnummer", "DERP123400000f'N1"},
                             {"anteil_AX_Namensnummer", "1 2"},
                             {"eigentuemerart_AX_Namensnummer", "Natürliche Personen"},
                             {"laufendeNummerNachDIN1421_AX_Namensnummer", "0001"},
                             {"id_AX_Person", "DERP123400000b'5F"},
                             {"anrede_AX_Person", "Frau"},
                             {"nachnameOderFirma_AX_Person", "Schütz"},
                             {"vorname_AX_Person", "Katharina"},
                             {"geburtsname_AX_Person", "Meinzer"},
                             {"geburtsdatum_AX_Person", "1950-03-01"},
                             {"id_AX_Anschrift", "DERP123400000b'A1"},
                             {"strasse_AX_Anschrift", "Marienstraße"},
                             {"hausnummer_AX_Anschrift", "7"},
                             {"postleitzahlPostzustellung_AX_Anschrift", "54524"},
                             {"ort_Post_AX_Anschrift", "Klausen"},
                         });
    const Zeile zweite =
        Mit(Gemeinsam(), {
                             {"id_AX_Namensnummer", "DERP123400000f'N2"},
                             {"anteil_AX_Namensnummer", "1.000000000000 2.000000000000"},
                             {"laufendeNummerNachDIN1421_AX_Namensnummer", "0002"},
                             {"id_AX_Person", "DERP123400000b'5G"},
                             {"anrede_AX_Person", "Herr"},
                             {"akademischerGrad_AX_Person", "Dr."},
                             {"nachnameOderFirma_AX_Person", "Schütz"},
                             {"vorname_AX_Person", "Peter"},
                             {"geburtsname_AX_Person", ""},
                             {"geburtsdatum_AX_Person", "1948-11-23"},
                             {"strasse_AX_Anschrift", "Marienstraße"},
                             {"hausnummer_AX_Anschrift", "7"},
                             {"postleitzahlPostzustellung_AX_Anschrift", "54524"},
                             {"ort_Post_AX_Anschrift", "Klausen"},
                         });
    const Zeile dritte = Mit(
        Gemeinsam(),
        {
            {"id", "DERP1234000002EA"},
            {"flurstueckskennzeichen", "07242701200017000200"},
            {"flurstueckskennzeichenAlkis", "072427|12|17/2"},
            {"gemarkung", "07 2427"},
            {"flurnummer", "12"},
            {"flurstuecksnummer/AX_Flurstuecksnummer/zaehler", "17"},
            {"flurstuecksnummer/AX_Flurstuecksnummer/nenner", "2"},
            {"gemeindezugehoerigkeit", "07 2 31 066"},
            {"Gemeinde", "Kesten"},
            {"amtlicheFlaeche", "812.00"},
            {"gml:exterior", "100 200 110 200 110 200 110 210 100 210 100 200;300 400 301 400 300 "
                             "401 300 400"},
            {"gml:interior", "102 202 104 202 104 204 102 202"},
            {"buchungsart_AX_Buchungsstelle", "Wohnungs-/Teileigentum"},
            {"laufendeNummer_AX_Buchungsstelle", "5148"},
            {"anteil/AX_Anteil/zaehler_AX_Buchungsstelle", "2.000000000000"},
            {"anteil/AX_Anteil/nenner_AX_Buchungsstelle", "1000.000000000000"},
            {"beschreibungDesSondereigentums_AX_Buchungsstelle", "Wohnung Nr. 3 im 1. OG"},
            {"buchungsblattnummerMitBuchstabenerweiterung_AX_Buchungsblatt", "415A"},
            {"buchungsblattbezirk_AX_Buchungsblatt", "07 2427"},
            {"schluesselGesamt_AX_Buchungsblattbezirk", "072427"},
            {"bezeichnung_AX_Buchungsblattbezirk", "Kesten"},
            {"gehoertZu_AX_Buchungsblattbezirk", "07 2401"},
            {"id_AX_Gemarkung", "DERP123400000a'Gr'"},
            {"schluesselGesamt_AX_Gemarkung", "072427"},
            {"bezeichnung_AX_Gemarkung", "Kesten"},
            {"id_AX_Namensnummer", "DERP123400000f'N3"},
            {"artDerRechtsgemeinschaft_AX_Namensnummer", "Erbengemeinschaft"},
            {"laufendeNummerNachDIN1421_AX_Namensnummer", "0003"},
        });
    return {erste, zweite, dritte};
}

/// The columns the compilation's later steps and the cadastre table read, and what the script
/// adds beside them: the whole result, no raw column of the reorganisation.
const std::set<std::string> ErwarteteSpalten = {
    // named by the reorganisation already
    "Gemeinde", "Lagebezeichnung", "Straßenschlüssel", "Rechtswert", "Hochwert",
    // computed
    "Katasteramt", "Gemeindeschlüssel", "Flur", "Amtsgerichtsschlüssel", "BVNR", "Eigentümerzusatz",
    "Geburtsname", "Anteilsverhältnis", "UmringFlurstück", "InteriorFlurstück",
    // renamed
    "Flurstückskennzeichen", "Gemarkung", "Gemarkungsschlüssel", "Flurstück-Zähler",
    "Flurstück-Nenner", "Fläche", "Entstehung", "Nutzungsart", "Nutzung_tatsächlich",
    "NA_Klassifizierung", "NA-Fläche", "Flächendifferenz", "sonstigesBOV", "Bodenart",
    "Klassifizierung", "Bezeichnung_Klassifizierung", "BZ", "AZ", "AZ-Mittel", "EMZ", "EMZ-Summe",
    "BZ-AZ-Fläche", "buchungsblattbezirk", "Grundbuchblatt", "Grundbuchbezirk",
    "Grundbuchbezirkschlüssel", "Buchungsart", "Anteil_Buchungsstelle_Zähler",
    "Anteil_Buchungsstelle_Nenner", "Beschreibung Sondereigentum", "Namensnummer",
    "Anteil_Grundstück", "Nachname_sonstiges", "Vorname_sonstiges", "Namenszusatz", "Geburtsdatum",
    "Strassenname", "Hausnummer", "PLZ", "Ort",
    // filled by "Daten ordnen"
    "IDlfd_Nr", "Eigentümerposition", "Flurstück", "FKZ-Original", "Name", "Straße", "Landkreis",
    "Dienststelle", "Amtsgericht", "Land", "AntragsNr", "Anteil_Sondereigentum",
    "Angaben_Klassifizierung", "MKZ", "EPSG"};

std::vector<std::string> MitgelieferteZuordnung() {
    const auto datei = Konfig / "ALKIS_Zuordnung.dat";
    EXPECT_TRUE(DateiVorhanden(datei)) << datei;
    return ZuordnungLesen(DateitextNachUtf8(DateiKomplettLesen(datei)));
}

/// A value of the result row of parcel `fkz` and owner number `nr`.
std::optional<std::string> Ergebnis(Datenbank& db, std::string_view spalte, std::string_view fkz,
                                    std::string_view nr) {
    return Wert(db, "SELECT " + Bezeichner(spalte) + " FROM Alkis WHERE Flurstückskennzeichen = " +
                        SqlText(fkz) + " AND Namensnummer = " + SqlText(nr));
}

TEST(ZuordnungSkript, MitgelieferteDateiErgibtDieSpaltenDerFlurixTabelle) {
    const auto zeilen = MitgelieferteZuordnung();
    ASSERT_FALSE(zeilen.empty());
    Umgebung u;
    auto& db = u.db();
    AlkisAnlegen(db, DreiZeilen());
    const auto bericht = u.Ausführen(zeilen);

    EXPECT_EQ(bericht.fehlgeschlagen, 0);
    EXPECT_EQ(bericht.ausgeführt, static_cast<std::int64_t>(zeilen.size()));
    EXPECT_TRUE(u.Fenster().empty()) << u.Fenster().front();

    const auto spalten = Spalten(db);
    EXPECT_EQ(std::set<std::string>(spalten.begin(), spalten.end()), ErwarteteSpalten);
    EXPECT_EQ(spalten.size(), ErwarteteSpalten.size()) << "eine Spalte doppelt";
    EXPECT_EQ(Zahl(db, "SELECT count(*) FROM Alkis"), 3);

    constexpr std::string_view a = "07256600400003000000";
    constexpr std::string_view b = "07242701200017000200";
    struct Fall {
        std::string_view spalte;
        std::string_view fkz;
        std::string_view nr;
        std::optional<std::string> erwartet;
    };
    const Fall fälle[] = {
        {"Gemeindeschlüssel", a, "0001", "07231103"},
        {"Gemeindeschlüssel", b, "0003", "07231066"},
        {"Gemeinde", a, "0001", "Osann-Monzel"},
        {"Gemarkung", a, "0001", "Monzel"},
        {"Gemarkung", b, "0003", "Kesten"},
        {"Gemarkungsschlüssel", a, "0002", "072566"},
        {"Flur", a, "0001", "004"},
        {"Flur", b, "0003", "012"},
        {"Flurstück-Zähler", b, "0003", "17"},
        {"Flurstück-Nenner", b, "0003", "2"},
        {"Flurstück-Nenner", a, "0001", std::nullopt},
        {"Fläche", a, "0001", "49171.00"},
        {"Entstehung", a, "0001", "2008-01-01"},
        {"Katasteramt", a, "0001", "Vermessungs-u.Katasteramt Bernkastel-Kues"},
        {"Katasteramt", b, "0003", "Vermessungs- und Katasteramt Westeifel-Mosel"},
        {"Grundbuchblatt", a, "0001", "2279"},
        {"Grundbuchblatt", b, "0003", "415A"},
        {"buchungsblattbezirk", a, "0001", "07 2566"},
        {"Grundbuchbezirk", b, "0003", "Kesten"},
        {"Grundbuchbezirkschlüssel", b, "0003", "072427"},
        {"Amtsgerichtsschlüssel", a, "0001", "072408"},
        {"Amtsgerichtsschlüssel", b, "0003", "072401"},
        {"BVNR", a, "0002", "0005"},
        {"BVNR", b, "0003", "5148"},
        {"Buchungsart", a, "0001", "Grundstück"},
        {"Buchungsart", b, "0003", "Wohnungs-/Teileigentum"},
        {"Anteil_Buchungsstelle_Zähler", b, "0003", "2"},
        {"Anteil_Buchungsstelle_Nenner", b, "0003", "1000"},
        {"Beschreibung Sondereigentum", b, "0003", "Wohnung Nr. 3 im 1. OG"},
        {"Anteil_Grundstück", a, "0001", "1 2"},
        {"Anteil_Grundstück", a, "0002", "1.000000000000 2.000000000000"},
        {"Anteilsverhältnis", a, "0001", "1/2"},
        {"Anteilsverhältnis", a, "0002", "1/2"},
        {"Anteilsverhältnis", b, "0003", std::nullopt},
        {"Nachname_sonstiges", a, "0001", "Schütz"},
        {"Vorname_sonstiges", a, "0002", "Peter"},
        {"Namenszusatz", a, "0001", "Meinzer"},
        {"Geburtsname", a, "0001", "Meinzer"},
        {"Geburtsname", a, "0002", ""},
        {"Geburtsname", b, "0003", std::nullopt},
        {"Geburtsdatum", a, "0002", "1948-11-23"},
        {"Eigentümerzusatz", b, "0003", "Erbengemeinschaft"},
        {"Eigentümerzusatz", a, "0001", std::nullopt},
        {"Strassenname", a, "0001", "Marienstraße"},
        {"Hausnummer", a, "0001", "7"},
        {"PLZ", a, "0001", "54524"},
        {"Ort", a, "0001", "Klausen"},
        {"Nutzungsart", a, "0001", "AX_Landwirtschaft 49000.0"},
        {"Nutzung_tatsächlich", a, "0001", "Ackerland"},
        {"NA-Fläche", a, "0001", "49000.0"},
        {"NA_Klassifizierung", a, "0001", "Landwirtschaft"},
        {"Flächendifferenz", a, "0001", "00171m² --> 0.3%"},
        {"sonstigesBOV", a, "0001", "Flurbereinigung Monzel; Flurbereinigungsgebiet"},
        {"Bodenart", a, "0001", "Lehm"},
        {"Klassifizierung", a, "0001", "Ackerland 48000"},
        {"Bezeichnung_Klassifizierung", a, "0001", "Ackerland (A)"},
        {"BZ", a, "0001", "52"},
        {"AZ", a, "0001", "50"},
        {"AZ-Mittel", a, "0001", "050"},
        {"EMZ", a, "0001", "24000"},
        {"EMZ-Summe", a, "0001", "24000"},
        {"BZ-AZ-Fläche", a, "0001", "48000"},
        {"Lagebezeichnung", a, "0001", "Am Ritzberg"},
        {"Straßenschlüssel", a, "0001", "00112"},
        {"Rechtswert", a, "0001", "350880.120"},
        {"Hochwert", a, "0001", "5532000.450"},
        {"UmringFlurstück", a, "0001",
         "350821.045 5532031.37;350924.309 5532029.513;350930.1 5531950;350821.045 5532031.37"},
        {"InteriorFlurstück", a, "0001", ""},
        {"UmringFlurstück", b, "0003",
         "100 200;110 200;110 210;100 210;100 200|300 400;301 400;"
         "300 401;300 400"},
        {"InteriorFlurstück", b, "0003", "102 202;104 202;104 204;102 202"},
        // left for "Daten ordnen"
        {"Name", a, "0001", std::nullopt},
        {"Flurstück", a, "0001", std::nullopt},
        {"EPSG", a, "0001", std::nullopt},
    };
    for (const auto& f : fälle)
        EXPECT_EQ(Ergebnis(db, f.spalte, f.fkz, f.nr), f.erwartet)
            << f.spalte << " von " << f.fkz << "/" << f.nr;

    // Text columns still compare without regard to case after the new build of the table.
    EXPECT_EQ(Zahl(db, "SELECT count(*) FROM Alkis WHERE Gemarkung = 'MONZEL'"), 2);
    EXPECT_EQ(Zahl(db, "SELECT count(*) FROM Alkis WHERE Ort = 'klausen' AND BVNR = '0005'"), 2);
    EXPECT_FALSE(DAO_TabelleVorhanden(db, "Alkis_Zuordnung_Neubau"));
}

TEST(ZuordnungSkript, MitgelieferteDateiIstWindows1252UndKurzImDurchlauf) {
    const std::string roh = DateiKomplettLesen(Konfig / "ALKIS_Zuordnung.dat");
    ASSERT_FALSE(roh.empty());
    // Saved as the other configuration files are: Windows-1252 with CR LF.
    EXPECT_FALSE(IstGültigesUtf8(roh));
    EXPECT_NE(roh.find("Gemeindeschl\xfc"
                       "ssel"),
              std::string::npos);
    EXPECT_NE(roh.find("\r\n"), std::string::npos);

    // Every UPDATE rewrites every row: the script has one.
    const auto zeilen = MitgelieferteZuordnung();
    std::size_t updates = 0;
    std::size_t dels = 0;
    bool delBlockZuEnde = false;
    bool einBlock = true;
    for (const auto& zeile : zeilen) {
        if (zeile.starts_with("SQL UPDATE"))
            ++updates;
        if (zeile.starts_with("DEL ")) {
            ++dels;
            einBlock = einBlock && !delBlockZuEnde;
        } else if (dels > 0) {
            delBlockZuEnde = true;
        }
    }
    EXPECT_EQ(updates, 1U);
    EXPECT_GT(dels, 50U);
    EXPECT_TRUE(einBlock) << "die DEL-Zeilen stehen nicht in einem Block";
}

TEST(ZuordnungSkript, ImportvorlageNenntNurSpaltenDesErgebnisses) {
    const auto datei = Konfig / "ALB_ALKISImport.dat";
    ASSERT_TRUE(DateiVorhanden(datei));
    const std::string text = DateitextNachUtf8(DateiKomplettLesen(datei));
    std::vector<std::string> namen;
    for (std::string_view zeile : TextZeilen(text))
        if (!zeile.empty())
            namen.emplace_back(zeile);

    // The names against the table the shipped script makes.
    Umgebung u;
    AlkisAnlegen(u.db(), DreiZeilen());
    ASSERT_EQ(u.Ausführen(MitgelieferteZuordnung()).fehlgeschlagen, 0);
    const auto spalten = Spalten(u.db());

    std::set<std::string> gesehen;
    for (const auto& name : namen) {
        EXPECT_TRUE(Enthält(spalten, name)) << "keine Spalte von Alkis: \"" << name << "\"";
        EXPECT_TRUE(gesehen.insert(name).second) << "doppelt: " << name;
    }
    for (const char* wichtig :
         {"Flurstückskennzeichen", "Gemarkung", "Flur", "Flurstück", "Grundbuchblatt", "Name",
          "Straße", "Ort", "Fläche", "Lagebezeichnung", "Rechtswert", "Hochwert", "UmringFlurstück",
          "Eigentümerposition", "IDlfd_Nr"})
        EXPECT_TRUE(gesehen.contains(wichtig)) << wichtig;
    EXPECT_LT(namen.size(), spalten.size());
}

// ---- speed on a district of 150,000 rows (run by hand with --gtest_also_run_disabled_tests)
// ------

TEST(ZuordnungSkript, DISABLED_Geschwindigkeit150000Zeilen) {
    constexpr int zeilenzahl = 150'000;
    TempOrdner ordner;
    SkriptOberfläche ui;
    auto db = DAO_DatenbankAnlegen(ordner / "gross.sqlite");
    AlkisAnlegen(*db, {});
    const auto spalten = ReorganisationsSpalten();
    const Zeile vorlage = DreiZeilen()[0];
    std::string namen;
    std::string platzhalter;
    for (const auto& s : spalten) {
        namen += (namen.empty() ? "" : ", ") + Bezeichner(s);
        platzhalter += platzhalter.empty() ? "?" : ", ?";
    }
    // A ring of 20 points, each segment's end written twice as NAS has it: about 900 characters.
    auto ring = [](int n) {
        std::string text;
        double x = 350000 + n % 1000;
        double y = 5530000 + n / 1000;
        for (int i = 0; i < 20; ++i) {
            const std::string punkt = std::to_string(x + i * 1.234567).substr(0, 10) + " " +
                                      std::to_string(y + (i % 7) * 2.345678).substr(0, 11);
            text += (text.empty() ? "" : " ") + punkt + (i > 0 && i < 19 ? " " + punkt : "");
        }
        return text;
    };
    {
        Transaktion t(*db);
        auto einfügen =
            db->VorbereitenNativ("INSERT INTO Alkis (" + namen + ") VALUES (" + platzhalter + ")");
        for (int n = 0; n < zeilenzahl; ++n) {
            einfügen.Zurücksetzen();
            for (const auto& s : spalten) {
                if (s == "gml:exterior" || s == "gml:LineStringSegment")
                    einfügen.Binde(ring(n));
                else if (s == "flurstueckskennzeichen")
                    einfügen.Binde("0725660040" + std::to_string(10000000 + n / 2) + "00");
                else if (s == "laufendeNummerNachDIN1421_AX_Namensnummer")
                    einfügen.Binde(n % 2 == 0 ? "0001" : "0002");
                else if (const auto it = vorlage.find(s); it != vorlage.end())
                    einfügen.Binde(it->second);
                else if (s.starts_with("id"))
                    einfügen.Binde("DERP1234000002" + std::to_string(n));
                else
                    einfügen.Binde(nullptr);
            }
            einfügen.Schritt();
        }
        t.Bestätigen();
    }
    db->AusführenNativ("CREATE INDEX Alkis_fkz ON Alkis (flurstueckskennzeichen)");
    const auto seiten = Zahl(*db, "SELECT page_count * page_size FROM pragma_page_count, "
                                  "pragma_page_size");
    NasProtokoll protokoll(ui, ordner / "gross.xml.prn");
    // The script in pieces, as ZuordnungAusführen runs it (a run of DEL lines is one piece), with
    // the time of each kind of line.
    const auto zeilen = MitgelieferteZuordnung();
    std::map<std::string, double> sekunden;
    Zuordnungsbericht bericht;
    const auto anfang = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < zeilen.size();) {
        std::size_t bis = i + 1;
        if (zeilen[i].starts_with("DEL "))
            while (bis < zeilen.size() && zeilen[bis].starts_with("DEL "))
                ++bis;
        const std::vector<std::string> stück(zeilen.begin() + static_cast<std::ptrdiff_t>(i),
                                             zeilen.begin() + static_cast<std::ptrdiff_t>(bis));
        const auto vorher = std::chrono::steady_clock::now();
        const auto teil = ZuordnungAusführen(*db, stück, protokoll, ui);
        sekunden[zeilen[i].starts_with("SQL UPDATE") ? "SQL UPDATE" : zeilen[i].substr(0, 3)] +=
            std::chrono::duration<double>(std::chrono::steady_clock::now() - vorher).count();
        bericht.ausgeführt += teil.ausgeführt;
        bericht.fehlgeschlagen += teil.fehlgeschlagen;
        i = bis;
    }
    const auto dauer = std::chrono::duration<double>(std::chrono::steady_clock::now() - anfang);
    std::cout << zeilenzahl << " Zeilen, Datenbank " << seiten / 1'000'000 << " MB vorher, "
              << "Zuordnung in " << dauer.count() << " s\n";
    for (const auto& [art, zeit] : sekunden)
        std::cout << "  " << art << ": " << zeit << " s\n";
    EXPECT_EQ(bericht.fehlgeschlagen, 0);
    EXPECT_EQ(Zahl(*db, "SELECT count(*) FROM Alkis"), zeilenzahl);
    EXPECT_EQ(Zahl(*db, "SELECT count(*) FROM Alkis WHERE Flur = '004' AND "
                        "UmringFlurstück LIKE '% %;% %'"),
              zeilenzahl);
}

} // namespace
} // namespace flurix::nas
