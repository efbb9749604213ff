#include "core/datenbank.hpp"

#include "core/fehler.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace flurix {
namespace {

using Wert = std::optional<std::string>;

// The first column of every row of a Jet query; nullopt for NULL.
std::vector<Wert> Spalte(Datenbank& db, const std::string& abfrage) {
    auto anweisung = db.Vorbereiten(abfrage);
    std::vector<Wert> werte;
    while (anweisung.Schritt())
        werte.push_back(anweisung.IstNull(0) ? Wert() : Wert(anweisung.Text(0)));
    return werte;
}

std::string FehlerText(const std::function<void()>& arbeit) {
    try {
        arbeit();
    } catch (const Fehler& fehler) {
        return fehler.what();
    }
    return {};
}

bool Enthält(const std::string& text, const std::string& teil) {
    return text.find(teil) != std::string::npos;
}

// --- connection, errors, the one-statement rule ---------------------------------------------

TEST(Datenbank, OhneOrdnerNenntDieMeldungDieDatei) {
    test::TempOrdner ordner;
    const auto datei = ordner / "fehlt" / "tmp_flurix.sqlite";
    const auto meldung = FehlerText([&] { Datenbank db(datei); });
    EXPECT_TRUE(Enthält(meldung, datei.string())) << meldung;
    EXPECT_TRUE(Enthält(meldung, "kann nicht geöffnet werden")) << meldung;
}

TEST(Datenbank, FehlermeldungNenntDateiSqliteTextUndAnweisung) {
    test::TempOrdner ordner;
    const auto datei = ordner / "tmp_flurix.sqlite";
    Datenbank db(datei);
    db.Ausführen("CREATE TABLE t (a TEXT)");
    db.AusführenNativ("CREATE UNIQUE INDEX i ON t (a)");
    db.Ausführen("INSERT INTO t VALUES ('x')");
    // One failure while preparing, one while running.
    const std::pair<std::string, std::string> fälle[] = {
        {"SELECT * FROM fehlt", "no such table: fehlt"},
        {"INSERT INTO t VALUES ('x')", "UNIQUE constraint failed: t.a"},
    };
    for (const auto& [anweisung, sqliteText] : fälle) {
        const auto meldung = FehlerText([&] { db.Ausführen(anweisung); });
        EXPECT_TRUE(Enthält(meldung, datei.filename().string())) << meldung;
        EXPECT_TRUE(Enthält(meldung, sqliteText)) << meldung;
        EXPECT_TRUE(Enthält(meldung, anweisung)) << meldung;
    }
    const auto lang = "SELECT '" + std::string(1000, 'x') + "' FROM fehlt";
    EXPECT_LT(FehlerText([&] { db.Ausführen(lang); }).size(), 500u);
}

TEST(Datenbank, TextAusDateienFührtNieEineZweiteAnweisungAus) {
    Datenbank db(":memory:");
    db.Ausführen("CREATE TABLE t (a TEXT)");
    const std::string böse = "x'; DROP TABLE t; --";
    db.Vorbereiten("INSERT INTO t VALUES (?)").Binde(böse).Schritt();
    db.Ausführen("INSERT INTO t VALUES ('sicher')");

    struct Fall {
        std::string beschreibung;
        std::string anweisung;
        bool läuft;
    };
    constexpr char mitNul[] = "SELECT 1\0; DROP TABLE t";
    const Fall fälle[] = {
        {"mit SqlText gequotet", "SELECT count(*) FROM t WHERE a = " + SqlText(böse), true},
        {"in Anführungszeichen ohne SqlText", "SELECT count(*) FROM t WHERE a = '" + böse + "'",
         false},
        {"UPDATE ohne SqlText", "UPDATE t SET a = '" + böse + "' WHERE a = 'sicher'", false},
        {"ohne Anführungszeichen", "SELECT count(*) FROM t WHERE a = 5; DROP TABLE t", false},
        {"in Jets Anführungszeichen", "SELECT count(*) FROM t WHERE a = \"x\"; DROP TABLE t; --\"",
         false},
        {"zwei Anweisungen", "SELECT 1; SELECT 2", false},
        {"hinter einem NUL-Byte", std::string(mitNul, sizeof mitNul - 1), false},
        {"Semikolon und Kommentar", "SELECT 1; -- DROP TABLE t", true},
        {"Blockkommentar", "SELECT 1 /* ; DROP TABLE t */ ;; /* offen", true},
    };
    const std::pair<std::string, std::function<void(const std::string&)>> wege[] = {
        {"Ausführen", [&](const std::string& a) { db.Ausführen(a); }},
        {"AusführenNativ", [&](const std::string& a) { db.AusführenNativ(a); }},
        {"Vorbereiten", [&](const std::string& a) { db.Vorbereiten(a).Schritt(); }},
        {"VorbereitenNativ", [&](const std::string& a) { db.VorbereitenNativ(a).Schritt(); }},
    };
    for (const auto& f : fälle) {
        for (const auto& [weg, ausführen] : wege) {
            const auto meldung = FehlerText([&] { ausführen(f.anweisung); });
            if (f.läuft)
                EXPECT_EQ(meldung, "") << f.beschreibung << ", " << weg;
            else
                EXPECT_TRUE(Enthält(meldung, "mehr als eine SQL-Anweisung"))
                    << f.beschreibung << ", " << weg << ": " << meldung;
            ASSERT_TRUE(db.TabelleVorhanden("t")) << f.beschreibung << ", " << weg;
            EXPECT_EQ(Spalte(db, "SELECT a FROM t ORDER BY a"), (std::vector<Wert>{"sicher", böse}))
                << f.beschreibung << ", " << weg;
        }
    }
    // Quoted, the value from the file is found as the value it is.
    EXPECT_EQ(Spalte(db, "SELECT count(*) FROM t WHERE a = " + SqlText(böse)),
              std::vector<Wert>{"1"});
}

TEST(Datenbank, OhneAnweisungIstEsEinFehler) {
    Datenbank db(":memory:");
    for (const std::string text : {"", "  ;", "-- nur ein Kommentar", "/* */"}) {
        EXPECT_TRUE(Enthält(FehlerText([&] { db.Ausführen(text); }), "keine SQL-Anweisung"))
            << text;
        EXPECT_THROW(db.VorbereitenNativ(text), Fehler) << text;
    }
}

TEST(Datenbank, ZeilenIdUndÄnderungen) {
    Datenbank db(":memory:");
    db.Ausführen("CREATE TABLE t (a TEXT)");
    for (const auto* wert : {"x", "y", "x"})
        db.Vorbereiten("INSERT INTO t VALUES (?)").Binde(std::string_view(wert)).Schritt();
    EXPECT_EQ(db.LetzteZeilenId(), 3);
    db.Ausführen("UPDATE t SET a = 'z' WHERE a = 'x'");
    EXPECT_EQ(db.Änderungen(), 2);
}

// --- transactions ----------------------------------------------------------------------------

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
    try {
        Transaktion abgebrochen(db);
        db.Ausführen("INSERT INTO t VALUES (3)");
        db.Ausführen("INSERT INTO fehlt VALUES (3)");
        abgebrochen.Bestätigen();
    } catch (const Fehler&) {
    }
    EXPECT_FALSE(db.TransaktionOffen());
    EXPECT_EQ(Spalte(db, "SELECT a FROM t"), std::vector<Wert>{"1"});

    Transaktion äußere(db);
    EXPECT_THROW(Transaktion innere(db), Fehler);
}

// --- prepared statements ---------------------------------------------------------------------

TEST(Anweisung, BindetUndLiestJedeArt) {
    Datenbank db(":memory:");
    db.Ausführen("CREATE TABLE t (a, b, c, d, e)");
    db.Vorbereiten("INSERT INTO t VALUES (?, ?, ?, ?, ?)")
        .Binde(std::string("Grüße"))
        .Binde(42)
        .Binde(2.5)
        .Binde(nullptr)
        .Binde(std::string_view())
        .Schritt();
    auto zeile = db.Vorbereiten("SELECT a, b, c, d, e, typeof(e) FROM t");
    ASSERT_TRUE(zeile.Schritt());
    EXPECT_EQ(zeile.Text(0), "Grüße");
    EXPECT_EQ(zeile.Ganzzahl(1), 42);
    EXPECT_EQ(zeile.Text(1), "42");
    EXPECT_DOUBLE_EQ(zeile.Zahl(2), 2.5);
    EXPECT_TRUE(zeile.IstNull(3));
    EXPECT_EQ(zeile.Text(3), "");
    EXPECT_FALSE(zeile.IstNull(4)); // an empty text is text, not NULL
    EXPECT_EQ(zeile.Text(5), "text");
    EXPECT_FALSE(zeile.Schritt());
}

TEST(Anweisung, ZurücksetzenFürNeueWerte) {
    Datenbank db(":memory:");
    db.Ausführen("CREATE TABLE t (nr INTEGER, text TEXT)");
    {
        Transaktion transaktion(db);
        auto einfügen = db.Vorbereiten("INSERT INTO t VALUES (?, ?)");
        for (int nr = 1; nr <= 1000; ++nr) {
            einfügen.Binde(nr).Binde("Zeile " + std::to_string(nr));
            EXPECT_FALSE(einfügen.Schritt());
            einfügen.Zurücksetzen();
        }
        einfügen.Binde(1001); // the second parameter was cleared: NULL
        einfügen.Schritt();
        transaktion.Bestätigen();
    }
    EXPECT_EQ(Spalte(db, "SELECT count(*) & '/' & sum(nr) & '/' & count(text) FROM t"),
              std::vector<Wert>{"1001/501501/1000"});
    EXPECT_EQ(Spalte(db, "SELECT text FROM t WHERE nr = 777"), std::vector<Wert>{"Zeile 777"});
}

TEST(Anweisung, FalscheParameterOderSpaltenSindFehler) {
    Datenbank db(":memory:");
    auto anweisung = db.Vorbereiten("SELECT ? AS Straßenschlüssel, 2 AS [BZ-AZ-Fläche]");
    anweisung.Binde("00123");
    EXPECT_TRUE(Enthält(FehlerText([&] { anweisung.Binde("zu viel"); }), "Parameter Nr. 2"));
    ASSERT_TRUE(anweisung.Schritt());
    EXPECT_EQ(anweisung.Spaltenanzahl(), 2);
    EXPECT_EQ(anweisung.Spaltenindex("BZ-AZ-Fläche"), 1);
    EXPECT_EQ(anweisung.Spaltenindex("STRASSENSCHLÜSSEL"), 0);
    EXPECT_EQ(anweisung.Text(anweisung.Spaltenindex("Strassenschlüssel")), "00123");
    EXPECT_THROW(anweisung.Spaltenindex("Gemarkung"), Fehler);
    EXPECT_THROW(anweisung.Text(2), Fehler);
    EXPECT_THROW(anweisung.Text(-1), Fehler);
}

TEST(Anweisung, VerschobenLebtSieWeiter) {
    Datenbank db(":memory:");
    auto erste = db.Vorbereiten("SELECT 'a' UNION ALL SELECT 'b'");
    ASSERT_TRUE(erste.Schritt());
    Anweisung zweite = std::move(erste);
    EXPECT_EQ(zweite.Text(0), "a");
    ASSERT_TRUE(zweite.Schritt());
    EXPECT_EQ(zweite.Text(0), "b");
    EXPECT_THROW(erste.Schritt(), Fehler); // NOLINT(bugprone-use-after-move): the moved-from state
    erste = db.Vorbereiten("SELECT 'c'");
    ASSERT_TRUE(erste.Schritt());
    EXPECT_EQ(erste.Text(0), "c");
}

// --- tables, names, comparison --------------------------------------------------------------

TEST(Datenbank, TabelleAnlegenQuotetJedenNamen) {
    Datenbank db(":memory:");
    const std::vector<Feld> felder = {{"Flurstück-Nachfolger"},
                                      {"BZ-AZ-Fläche"},
                                      {"Zähler/Nenner"},
                                      {"gml:id"},
                                      {"Nr#"},
                                      {"mit Blank"},
                                      {"IDlfd_Nr", Feldtyp::Zahl},
                                      {"Anzahl", Feldtyp::Ganzzahl}};
    db.TabelleAnlegen("tblFlurstück", felder);
    std::vector<std::string> erwartet;
    for (const auto& feld : felder)
        erwartet.push_back(feld.name);
    EXPECT_EQ(db.Spaltennamen("tblFlurstück"), erwartet);
    EXPECT_EQ(db.Spaltennamen("TBLFLURSTÜCK"), erwartet);
    EXPECT_TRUE(db.TabelleVorhanden("tblFlurstück"));
    EXPECT_TRUE(db.TabelleVorhanden("TBLFLURSTÜCK"));
    EXPECT_FALSE(db.TabelleVorhanden("tblFlurstueck"));
    EXPECT_THROW(db.Spaltennamen("tblFehlt"), Fehler);
    EXPECT_THROW(db.TabelleAnlegen("tblFlurstück", felder), Fehler);
    EXPECT_THROW(db.TabelleAnlegen("leer", {}), Fehler);

    db.Ausführen(
        "INSERT INTO tblFlurstück ([gml:id], IDlfd_Nr, Anzahl) VALUES ('DENW1', '2', '7')");
    EXPECT_EQ(
        Spalte(db, "SELECT typeof(IDlfd_Nr) & typeof(Anzahl) & typeof([gml:id]) FROM tblFlurstück"),
        std::vector<Wert>{"realintegertext"});
}

TEST(Datenbank, TextfelderVergleichenOhneGroßUndKlein) {
    Datenbank db(":memory:");
    db.TabelleAnlegen("tblGemFlur", std::vector<Feld>{{"Gemarkung"}, {"Flur"}});
    for (const auto* gemarkung : {"Musterdorf", "MUSTERDORF", "musterdorf", "Beispielheim"})
        db.Vorbereiten("INSERT INTO tblGemFlur VALUES (?, '001')")
            .Binde(std::string_view(gemarkung))
            .Schritt();
    EXPECT_EQ(Spalte(db, "SELECT count(*) FROM tblGemFlur WHERE Gemarkung = 'musterDorf'"),
              std::vector<Wert>{"3"});
    EXPECT_EQ(Spalte(db, "SELECT count(*) FROM (SELECT DISTINCT Gemarkung FROM tblGemFlur)"),
              std::vector<Wert>{"2"});
}

TEST(Datenbank, IndexnamenGeltenJeTabelle) {
    Datenbank db(":memory:");
    for (const auto* tabelle : {"tblBestand", "tblAdresse"})
        db.TabelleAnlegen(tabelle, std::vector<Feld>{{"IDKeyGb"}});
    const std::vector<std::string> feld = {"IDKeyGb"};
    db.IndexAnlegen("IDKeyGrundbuch", "tblBestand", feld);
    db.IndexAnlegen("IDKeyGrundbuch", "tblAdresse", feld, true);
    db.Ausführen("INSERT INTO tblBestand VALUES ('053001-000123'), ('053001-000123')");
    db.Ausführen("INSERT INTO tblAdresse VALUES ('053001-000123')");
    EXPECT_TRUE(Enthält(
        FehlerText([&] { db.Ausführen("INSERT INTO tblAdresse VALUES ('053001-000123')"); }),
        "UNIQUE"));
    EXPECT_THROW(db.IndexAnlegen("IDKeyGrundbuch", "tblFehlt", feld), Fehler);
}

TEST(Datenbank, NamenFolgenDenTabellen) {
    Datenbank db(":memory:");
    EXPECT_THROW(db.Ausführen("SELECT STRASSE FROM t"), Fehler);
    db.AusführenNativ("CREATE TABLE t (Straße TEXT)");
    db.Ausführen("INSERT INTO t (STRASSE) VALUES ('Hauptstraße')");
    EXPECT_EQ(Spalte(db, "SELECT Strasse FROM T"), std::vector<Wert>{"Hauptstraße"});
    // A new spelling after the table was made again: the names are read anew.
    db.Ausführen("DROP TABLE t");
    db.Ausführen("CREATE TABLE t (GRÖSSE TEXT)");
    db.Ausführen("INSERT INTO t (Größe) VALUES ('12')");
    EXPECT_EQ(Spalte(db, "SELECT größe FROM t"), std::vector<Wert>{"12"});
    // A new table keeps its spelling, though an old one folds alike.
    db.Ausführen("CREATE TABLE u (größe TEXT)");
    EXPECT_EQ(db.Spaltennamen("u"), std::vector<std::string>{"größe"});
}

TEST(Datenbank, NamenNachEinemRückgängigNeuGelesen) {
    Datenbank db(":memory:");
    {
        Transaktion verworfen(db);
        db.AusführenNativ("CREATE TABLE a (Straße TEXT)");
        db.Ausführen("SELECT STRASSE FROM a");
    }
    // The schema is back at its old version; the next table reaches the same number again.
    db.AusführenNativ("CREATE TABLE b (Größe TEXT)");
    db.Ausführen("INSERT INTO b (GRÖSSE) VALUES ('1')");
    EXPECT_EQ(Spalte(db, "SELECT GRÖSSE FROM b"), std::vector<Wert>{"1"});
}

// A join of two tables with a field of the same name: the table of each result column tells
// them apart (the complete reader takes "Land" of the parcel, not of the owner).
TEST(Anweisung, SpaltentabelleTrenntGleicheNamen) {
    Datenbank db(":memory:");
    db.TabelleAnlegen("tblFlurstück", std::vector<Feld>{{"Land"}, {"IDKeyGb"}});
    db.TabelleAnlegen("tblBestand", std::vector<Feld>{{"Land"}, {"IDKeyGb"}});
    db.Ausführen("INSERT INTO tblFlurstück VALUES ('05', '053001-000123')");
    db.Ausführen("INSERT INTO tblBestand VALUES ('NW', '053001-0001230000000001000000')");
    auto verbindung = db.Vorbereiten("SELECT * FROM tblFlurstück, tblBestand WHERE "
                                     "tblFlurstück.IDKeyGb = MID(tblBestand.IDKeyGb,1,13)");
    ASSERT_TRUE(verbindung.Schritt());
    std::vector<std::string> land;
    for (int i = 0; i < verbindung.Spaltenanzahl(); ++i)
        if (verbindung.Spaltenname(i) == "Land")
            land.push_back(std::string(verbindung.Spaltentabelle(i)) + "=" + std::string(verbindung.Text(i)));
    EXPECT_EQ(land, (std::vector<std::string>{"tblFlurstück=05", "tblBestand=NW"}));
}

} // namespace
} // namespace flurix
