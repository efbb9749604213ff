#include "core/datenbank.hpp"

#include "core/fehler.hpp"
#include "core/jet_sql.hpp"
#include "core/text.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "kernhilfen.hpp"

#include <gtest/gtest.h>


namespace flurix {
namespace {

using test::Argumente;
using test::FehlerText;
using test::Zitat;
using Werte = std::vector<std::string>;

// The first column of every row of a Jet query; "NULL" for NULL.
Werte Spalte(Datenbank& db, const std::string& abfrage) {
    auto anweisung = db.Vorbereiten(abfrage);
    Werte werte;
    while (anweisung.Schritt())
        werte.emplace_back(anweisung.IstNull(0) ? "NULL" : anweisung.Text(0));
    return werte;
}

bool Enthält(const std::string& text, const std::string& teil) {
    return text.find(teil) != std::string::npos;
}

// The value of a Jet expression as SQLite computes it after the translation.
std::string Wert(Datenbank& db, const std::string& ausdruck) {
    auto anweisung = db.Vorbereiten("SELECT " + ausdruck);
    if (!anweisung.Schritt())
        return "keine Zeile";
    return anweisung.IstNull(0) ? "NULL" : Zitat(anweisung.Text(0));
}

// Both results when they differ, else the one.
std::string Beide(const std::string& a, const std::string& b) { return a == b ? a : a + " / " + b; }

// The SQL layer as tests/daten/core/datenbank.txt: Basic's text functions, the folding of names,
// the translation of Jet's statements and what SQLite computes from them, the one-statement rule,
// and the messages, which name the database file, SQLite's text and the statement.
TEST(Datenbank, Wertetabelle) {
    test::TempOrdner ordner;
    Datenbank db(ordner / "tmp_flurix.sqlite");
    db.Ausführen("CREATE TABLE t (a TEXT UNIQUE)");
    const std::string böse = "x'; DROP TABLE t; --";
    db.Vorbereiten("INSERT INTO t VALUES (?)").Binde(böse).Schritt();
    db.Ausführen("INSERT INTO t VALUES ('sicher')");
    const std::function<void(const std::string&)> wege[] = {
        [&](const std::string& a) { db.Ausführen(a); },
        [&](const std::string& a) { db.AusführenNativ(a); },
        [&](const std::string& a) { db.Vorbereiten(a).Schritt(); },
        [&](const std::string& a) { db.VorbereitenNativ(a).Schritt(); },
    };
    // Tables made by TabelleAnlegen: every name quoted, text compared without regard to case, the
    // index names within their table.
    db.TabelleAnlegen("tblFlurstück",
                      std::vector<Feld>{{"gml:id"}, {"IDlfd_Nr", Feldtyp::Zahl}, {"Anzahl", Feldtyp::Ganzzahl}});
    for (const auto* tabelle : {"tblBestand", "tblAdresse"})
        db.TabelleAnlegen(tabelle, std::vector<Feld>{{"IDKeyGb"}});
    db.IndexAnlegen("IDKeyGrundbuch", "tblBestand", Werte{"IDKeyGb"});
    db.IndexAnlegen("IDKeyGrundbuch", "tblAdresse", Werte{"IDKeyGb"}, true);
    Namensverzeichnis namen;
    for (const char* name : {"tblFlurstück", "Straßenschlüssel", "Straßenschlüsselname", "BZ-AZ-Fläche", "Land",
                             "Größe", "Grösse"})
        namen.Hinzufügen(name);
    const auto zahl = [](const std::string& s) { return std::int64_t{std::stoll(s)}; };
    EXPECT_EQ(test::Wertetabelle("datenbank.txt", {
        {"Mid", [&](const Argumente& a) {
             return Zitat(JetMid(a[0], zahl(a[1]), a.size() > 2 ? std::optional(zahl(a[2])) : std::nullopt));
         }},
        {"Instr", [&](const Argumente& a) { return std::to_string(JetInstr(zahl(a[0]), a[1], a[2], a[3] == "text")); }},
        {"Trim", [](const Argumente& a) { return Zitat(JetTrim(a[0])); }},
        {"CStr", [](const Argumente& a) { return Zitat(JetZahlText(std::stod(a[0]))); }},
        {"Auflösen", [&](const Argumente& a) {
             const auto name = namen.Auflösen(a[0]);
             return name ? Zitat(*name) : "NULL";
         }},
        {"Übersetzen", [&](const Argumente& a) { return Zitat(JetNachSqlite(a[0], &namen)); }},
        {"Wert", [&](const Argumente& a) { return Wert(db, a[0]); }},
        {"Like", [&](const Argumente& a) {
             return Beide(Wert(db, SqlText(a[0]) + " LIKE " + SqlText(a[1])),
                          Wert(db, SqlText(a[0]) + " LIKE \"" + a[1] + "\""));
         }},
        {"Literal", [&](const Argumente& a) {
             return Beide(Wert(db, SqlText(a[0])), Wert(db, "\"" + Ersetzen(a[0], "\"", "\"\"") + "\""));
         }},
        {"Jet", [&](const Argumente& a) { return test::Liste(Spalte(db, a[0])); }},
        {"Nativ", [&](const Argumente& a) { return db.AusführenNativ(a[0]), std::string("läuft"); }},
        {"Öffnen", [&](const Argumente& a) { Datenbank fehlt(ordner / a[0]); return std::string("offen"); }},
        {"Anweisung", [&](const Argumente& a) {
             std::string text;
             for (const auto& weg : wege) {
                 const std::string meldung = test::FehlerText([&] { weg(a[0]); });
                 const std::string ergebnis = meldung.empty() ? "läuft" : "Fehler " + test::Zitat(meldung);
                 if (text.find(ergebnis) == std::string::npos)
                     text += (text.empty() ? "" : " / ") + ergebnis;
             }
             if (!db.TabelleVorhanden("t") || Spalte(db, "SELECT a FROM t ORDER BY a") != Werte{"sicher", böse})
                 text += " – t verändert!";
             return text;
         }},
    }, ordner.pfad()), "");
    namen.Leeren();
    EXPECT_EQ(namen.Auflösen("Land"), std::nullopt);
    EXPECT_EQ(Spalte(db, "SELECT count(*) FROM t WHERE a = " + SqlText(böse)), Werte{"1"});
    const auto lang = "SELECT '" + std::string(1000, 'x') + "' FROM fehlt";
    EXPECT_LT(FehlerText([&] { db.Ausführen(lang); }).size(), 500u);
}

TEST(Transaktion, NurBestätigtesBleibt) {
    Datenbank db(":memory:");
    db.Ausführen("CREATE TABLE t (a INTEGER)");
    {
        Transaktion bestätigt(db);
        EXPECT_TRUE(db.TransaktionOffen());
        db.Ausführen("INSERT INTO t VALUES (1)");
        bestätigt.Bestätigen();
    }
    EXPECT_FALSE(db.TransaktionOffen());
    {
        Transaktion vergessen(db);
        db.Ausführen("INSERT INTO t VALUES (2)");
    }
    EXPECT_NE(FehlerText([&] {
                  Transaktion abgebrochen(db);
                  db.Ausführen("INSERT INTO t VALUES (3)");
                  db.Ausführen("INSERT INTO fehlt VALUES (3)");
                  abgebrochen.Bestätigen();
              }), "");
    EXPECT_FALSE(db.TransaktionOffen());
    EXPECT_EQ(Spalte(db, "SELECT a FROM t"), Werte{"1"});
    // Inside an open one: a savepoint. Its confirmed work waits for the outer commit, its undone
    // work goes alone.
    {
        Transaktion äußere(db);
        {
            Transaktion innere(db);
            db.Ausführen("INSERT INTO t VALUES (4)");
            innere.Bestätigen();
        }
        {
            Transaktion innere(db);
            db.Ausführen("INSERT INTO t VALUES (5)");
        }
        EXPECT_TRUE(db.TransaktionOffen());
        äußere.Bestätigen();
    }
    EXPECT_EQ(Spalte(db, "SELECT a FROM t ORDER BY a"), (Werte{"1", "4"}));
    {
        Transaktion äußere(db);
        Transaktion innere(db);
        db.Ausführen("INSERT INTO t VALUES (6)");
        innere.Bestätigen();
    }
    EXPECT_EQ(Spalte(db, "SELECT a FROM t ORDER BY a"), (Werte{"1", "4"})) << "the outer rollback takes the inner work";
}

TEST(Anweisung, BindenLesenZurücksetzenVerschieben) {
    Datenbank db(":memory:");
    db.Ausführen("CREATE TABLE t (a, b, c, d, e)");
    auto einfügen = db.Vorbereiten("INSERT INTO t VALUES (?, ?, ?, ?, ?)");
    einfügen.Binde(std::string("Grüße")).Binde(42).Binde(2.5).Binde(nullptr).Binde(std::string_view());
    EXPECT_TRUE(Enthält(FehlerText([&] { einfügen.Binde("zu viel"); }), "keinen Parameter Nr. 6"));
    EXPECT_FALSE(einfügen.Schritt());
    einfügen.Zurücksetzen();
    einfügen.Binde(7).Schritt(); // the other bindings were cleared: NULL
    // Each kind as bound; an empty text is text, not NULL; NULL reads as "".
    EXPECT_EQ(Spalte(db, "SELECT a & '|' & typeof(b) & '|' & c & '|' & typeof(d) & '|' & typeof(e) FROM t"),
              (Werte{"Grüße|integer|2.5|null|text", "7|null||null|null"}));
    auto zeile = db.Vorbereiten("SELECT b, c, d FROM t");
    ASSERT_TRUE(zeile.Schritt());
    EXPECT_EQ(zeile.Ganzzahl(0), 42);
    EXPECT_DOUBLE_EQ(zeile.Zahl(1), 2.5);
    EXPECT_TRUE(zeile.IstNull(2));
    EXPECT_EQ(zeile.Text(2), "");
    Anweisung weiter = std::move(zeile); // moved, it lives on; the one moved from throws
    EXPECT_THROW(zeile.Schritt(), Fehler); // NOLINT(bugprone-use-after-move): the moved-from state
    ASSERT_TRUE(weiter.Schritt());
    EXPECT_TRUE(weiter.IstNull(0));
    zeile = db.Vorbereiten("SELECT 'c'");
    ASSERT_TRUE(zeile.Schritt());
    EXPECT_EQ(zeile.Text(0), "c");
}

// Columns found by name as Jet compares names, and the table of each result column: a join of
// two tables with a field of the same name (the complete reader takes "Land" of the parcel).
TEST(Anweisung, SpaltenNachNameUndTabelle) {
    Datenbank db(":memory:");
    db.TabelleAnlegen("tblFlurstück", std::vector<Feld>{{"Land"}, {"IDKeyGb"}, {"Straßenschlüssel"}});
    db.TabelleAnlegen("tblBestand", std::vector<Feld>{{"Land"}, {"IDKeyGb"}});
    db.Ausführen("INSERT INTO tblFlurstück VALUES ('05', '053001-000123', '00123')");
    db.Ausführen("INSERT INTO tblBestand VALUES ('NW', '053001-0001230000000001000000')");
    auto verbindung = db.Vorbereiten("SELECT *, 2 AS [BZ-AZ-Fläche] FROM tblFlurstück, tblBestand "
                                     "WHERE tblFlurstück.IDKeyGb = MID(tblBestand.IDKeyGb,1,13)");
    ASSERT_TRUE(verbindung.Schritt());
    ASSERT_EQ(verbindung.Spaltenanzahl(), 6);
    Werte land;
    for (int i = 0; i < verbindung.Spaltenanzahl(); ++i)
        if (verbindung.Spaltenname(i) == "Land")
            land.push_back(std::string(verbindung.Spaltentabelle(i)) + "=" + std::string(verbindung.Text(i)));
    EXPECT_EQ(land, (Werte{"tblFlurstück=05", "tblBestand=NW"}));
    EXPECT_EQ(verbindung.Spaltenindex("BZ-AZ-Fläche"), 5);
    EXPECT_EQ(verbindung.Spaltentabelle(5), "");
    EXPECT_EQ(verbindung.Text(verbindung.Spaltenindex("STRASSENSCHLÜSSEL")), "00123");
    EXPECT_EQ(verbindung.Spaltenindex("Strassenschlüssel"), 2);
    EXPECT_THROW(verbindung.Spaltenindex("Gemarkung"), Fehler);
    EXPECT_THROW(verbindung.Text(6), Fehler);
    EXPECT_THROW(verbindung.Text(-1), Fehler);
}

TEST(Datenbank, TabellenAnlegen) {
    Datenbank db(":memory:");
    const Werte namen = {"Flurstück-Nachfolger", "Zähler/Nenner", "gml:id", "Nr#", "mit Blank"};
    std::vector<Feld> felder;
    for (const auto& name : namen)
        felder.push_back({name});
    db.TabelleAnlegen("tblFlurstück", felder);
    EXPECT_EQ(db.Spaltennamen("TBLFLURSTÜCK"), namen);
    EXPECT_TRUE(db.TabelleVorhanden("TBLFLURSTÜCK"));
    EXPECT_FALSE(db.TabelleVorhanden("tblFlurstueck"));
    EXPECT_THROW(db.Spaltennamen("tblFehlt"), Fehler);
    EXPECT_THROW(db.TabelleAnlegen("tblFlurstück", felder), Fehler);
    EXPECT_THROW(db.TabelleAnlegen("leer", {}), Fehler);
    EXPECT_THROW(db.IndexAnlegen("IDKeyGrundbuch", "tblFehlt", Werte{"IDKeyGb"}), Fehler);
}

TEST(JetNachSqlite, JetBezeichnerÜberstehtJedenNamen) {
    Datenbank db(":memory:");
    for (const std::string name : {"BZ-AZ-Fläche", "a]b", "Flurstück/Nenner", "x\"y", "mit Blank #1:2"}) {
        db.AusführenNativ("DROP TABLE IF EXISTS t");
        db.AusführenNativ("CREATE TABLE t (" + Bezeichner(name) + " TEXT)");
        db.Ausführen("INSERT INTO t (" + JetBezeichner(name) + ") VALUES ('wert')");
        EXPECT_EQ(Wert(db, JetBezeichner(name) + " FROM t"), "\"wert\"") << name;
    }
}

} // namespace
} // namespace flurix
