#include "nas/zuordnung.hpp"

#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "core/datenbank.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/tabellentext.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
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

TEST(ZuordnungBefehle, ZählungSpaltenInhaltUndMeldungJeZeilenfolge) {
    struct Fall {
        std::string_view name;
        std::string_view tabelle; // "klein": KleineTabelle, "schlüssel": with a table constraint
        std::vector<std::string> zeilen;
        std::int64_t ausgeführt, fehlgeschlagen;
        std::vector<std::string> spalten; // of Alkis afterwards
        std::string inhalt;               // its rows, cells joined with "|", rows with ";"
        std::string fenster; // a text in one window line per failed line, at least in one
        int protokollzeilen = -1;         // lines ", Zeile Zuordnung: " in the file (-1: any)
    };
    const Fall fälle[] = {
        {"ADD einer vorhandenen Spalte ändert nichts", "klein", {"ADD b dbText", "ADD B dbMemo"}, 2, 0,
         {"a", "b", "c"}, "a1|b1|c1;a2|b2|c2", ""},
        {"ADD ohne Tabelle Alkis", "", {"ADD neu dbText"}, 0, 1, {}, "",
         ", Fehler Zeile Zuordnung: ADD neu dbText, die Tabelle \"Alkis\" fehlt"},
        {"DEL einer fehlenden Spalte ist kein Fehler", "klein", {"DEL gibtsnicht", "DEL b"}, 2, 0,
         {"a", "c"}, "a1|c1;a2|c2", ""},
        {"DEL ohne Spaltennamen", "klein", {"DEL", "DEL c"}, 1, 1, {"a", "b"}, "a1|b1;a2|b2",
         ", Fehler Zeile Zuordnung: DEL, Spaltenname fehlt"},
        {"DEL aller Spalten lässt die letzte stehen", "klein", {"DEL a", "DEL b", "DEL c"}, 2, 1, {"c"},
         "c1;c2", ", Fehler Zeile Zuordnung: DEL c, die Spalte \"c\" kann nicht gelöscht werden"},
        {"DEL ohne Tabelle", "", {"DEL a", "DEL b"}, 0, 2, {}, "", ""},
        {"Tabellenbedingung: Spalten einzeln gelöscht", "schlüssel", {"DEL b", "DEL c"}, 2, 0, {"a"},
         "a1;a2", ", Hinweis Zuordnung: Spalten werden einzeln gelöscht"},
        {"zwei Anweisungen in einer Zeile laufen beide nicht", "klein",
         {"SQL UPDATE Alkis SET a = 'eins'; UPDATE Alkis SET b = 'zwei'", "SQL UPDATE Alkis SET c = 'drei'"},
         1, 1, {"a", "b", "c"}, "a1|b1|drei;a2|b2|drei", ""},
        {"SQL ohne Anweisung", "klein", {"SQL", "SQL    "}, 0, 2, {"a", "b", "c"}, "a1|b1|c1;a2|b2|c2",
         "die Zeile enthält keine SQL-Anweisung"},
        {"andere Zeilen übergangen und nicht protokolliert", "klein",
         {"Hallo Welt", "SQLUPDATE Alkis SET a = 1", "XYZ a b", "SQL UPDATE Alkis SET a = 'ok'"}, 1, 0,
         {"a", "b", "c"}, "ok|b1|c1;ok|b2|c2", "", 1},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        Umgebung u;
        if (f.tabelle == "klein")
            KleineTabelle(u.db());
        if (f.tabelle == "schlüssel") {
            u.db().AusführenNativ("CREATE TABLE Alkis (a TEXT COLLATE NOCASE, b TEXT, c TEXT, PRIMARY KEY (a))");
            u.db().AusführenNativ("INSERT INTO Alkis VALUES ('a1', 'b1', 'c1'), ('a2', 'b2', 'c2')");
        }
        const auto bericht = u.Ausführen(f.zeilen);
        EXPECT_EQ(bericht.ausgeführt, f.ausgeführt);
        EXPECT_EQ(bericht.fehlgeschlagen, f.fehlgeschlagen);
        if (f.tabelle.empty())
            continue;
        EXPECT_EQ(Spalten(u.db()), f.spalten);
        std::string spalten;
        for (const auto& s : f.spalten)
            spalten += (spalten.empty() ? "" : " || '|' || ") + s;
        EXPECT_EQ(Wert(u.db(), "SELECT group_concat(z, ';') FROM (SELECT " + spalten +
                                   " AS z FROM Alkis ORDER BY rowid)"),
                  f.inhalt);
        if (!f.fenster.empty()) {
            EXPECT_EQ(Anzahl(u.Fenster(), f.fenster),
                      std::max<std::size_t>(1, static_cast<std::size_t>(f.fehlgeschlagen)));
        }
        if (f.protokollzeilen >= 0) {
            EXPECT_EQ(Anzahl(u.Protokolldatei(), ", Zeile Zuordnung: "),
                      static_cast<std::size_t>(f.protokollzeilen));
        }
    }
    // A text column of a table with a constraint still compares without regard to case.
    Umgebung u;
    u.db().AusführenNativ("CREATE TABLE Alkis (a TEXT COLLATE NOCASE, b TEXT, PRIMARY KEY (a))");
    u.db().AusführenNativ("INSERT INTO Alkis VALUES ('a1', 'b1'), ('a2', 'b2')");
    u.Ausführen({"DEL b"});
    EXPECT_EQ(Zahl(u.db(), "SELECT count(*) FROM Alkis WHERE a = 'A2'"), 1);
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

const std::filesystem::path Daten = test::Testdaten() / "nas";

std::vector<std::string> MitgelieferteZuordnung() {
    const auto datei = Konfig / "ALKIS_Zuordnung.dat";
    EXPECT_TRUE(DateiVorhanden(datei)) << datei;
    return ZuordnungLesen(DateitextNachUtf8(DateiKomplettLesen(datei)));
}

/// Alkis as the reorganisation makes it, three rows (one parcel with two owners, a second parcel
/// in another district, with a hole, booked with a four-digit BVNR, owned by a community of heirs
/// without a person), and the office tables the Katasteramt comes from.
void ReorganisierteAlkis(Datenbank& db) { test::TabellenAnlegen(db, Daten / "alkis_reorganisiert.tab"); }

TEST(ZuordnungSkript, MitgelieferteDateiErgibtDieFlurixTabelle) {
    const auto zeilen = MitgelieferteZuordnung();
    ASSERT_FALSE(zeilen.empty());
    Umgebung u;
    auto& db = u.db();
    ReorganisierteAlkis(db);
    const auto bericht = u.Ausführen(zeilen);

    EXPECT_EQ(bericht.fehlgeschlagen, 0);
    EXPECT_EQ(bericht.ausgeführt, static_cast<std::int64_t>(zeilen.size()));
    EXPECT_TRUE(u.Fenster().empty()) << u.Fenster().front();
    // Every column of the result in its order, every cell of the three rows: the columns named,
    // computed and renamed by the script, those left empty for "Daten ordnen", no raw column of
    // the reorganisation.
    EXPECT_EQ(test::GoldenVergleich(
                  test::ZellenText(db, "SELECT Flurstückskennzeichen || '/' || Namensnummer, * FROM Alkis "
                                       "ORDER BY rowid"),
                  Daten / "alkis_zugeordnet.txt"),
              "");

    // Text columns still compare without regard to case after the new build of the table.
    EXPECT_EQ(Zahl(db, "SELECT count(*) FROM Alkis WHERE Gemarkung = 'MONZEL'"), 2);
    EXPECT_EQ(Zahl(db, "SELECT count(*) FROM Alkis WHERE Ort = 'musterdorf' AND BVNR = '0005'"), 2);
    EXPECT_FALSE(DAO_TabelleVorhanden(db, "Alkis_Zuordnung_Neubau"));
}

TEST(ZuordnungSkript, MitgelieferteDateiKurzImDurchlauf) {
    // Every UPDATE rewrites every row: the script has one, and its DEL lines stand in one block.
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
    ReorganisierteAlkis(u.db());
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

} // namespace
} // namespace flurix::nas
