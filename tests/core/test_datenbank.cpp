#include "core/datenbank.hpp"

#include "core/fehler.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <span>
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

TEST(Datenbank, DateiWirdAngelegtUndBehältIhreDaten) {
    test::TempOrdner ordner;
    const auto datei = ordner / "tmp_flurix.sqlite";
    {
        Datenbank db(datei);
        db.Ausführen("CREATE TABLE t (a TEXT)");
        db.Ausführen("INSERT INTO t VALUES ('Flurstück')");
    }
    EXPECT_TRUE(std::filesystem::exists(datei));
    Datenbank wieder(datei);
    EXPECT_EQ(Spalte(wieder, "SELECT a FROM t"), std::vector<Wert>{"Flurstück"});
}

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

// --- the staging database of the WLDGE import -----------------------------------------------

// One long list reads better packed than one name a line.
// clang-format off
// The fields of an owner row; tblBestand and tblAdresse share them in this order.
constexpr std::string_view Eigentümerfelder[] = {
    "Land", "Grundbuchbezirk", "Grundbuchbezirkschlüssel", "Grundbuchblatt_Bestand",
    "Anredekennung", "Namensnummer", "Name", "Vorname_sonstiges", "Zusatz", "Geburtsdatum",
    "Namenszusatz", "Straße", "Ort", "Eigentümerartschlüssel", "Eigentümerart",
    "Anteilsverhältnis", "Nummer_Bestand", "Prüfzeichen_Bestand", "Eigentümerzusatz",
    "Anteil_Grundstück", "Aufteilungsplannummer", "Sondereigentum", "Eigentümerposition",
    "IDKeyGb"};

// The parcel fields the statements below touch.
constexpr std::string_view Flurstücksfelder[] = {
    "Land", "Gemarkung", "Gemarkungsschlüssel", "Gemeinde", "Gemeindeschlüssel",
    "Grundbuchbezirk", "Amtsgerichtsschlüssel", "Landkreis", "Flur", "Flurstück", "IDKeyFlst",
    "IDKeyGb", "Straßenschlüssel", "Straßenschlüsselname", "Nutzungsart", "Nutzung_tatsächlich",
    "Klassifizierung", "Bezeichnung_Klassifizierung", "Schlüssel_Bezeichnung_Hinweis_Flurstück",
    "Bezeichnung_Hinweis_Flurstück", "Schlüssel_ausführende_Stelle", "Nummer_Verfahren",
    "Bemerkung_zum_Verfahren_Schlüssel", "sonstigesBOV", "Flurstück-Nachfolger", "BZ-AZ-Fläche"};
// clang-format on

// Text fields with these names, and the running number IDlfd_Nr (a double) behind them.
std::vector<Feld> MitLaufnummer(std::span<const std::string_view> namen) {
    std::vector<Feld> felder;
    for (const auto name : namen)
        felder.push_back({std::string(name)});
    felder.push_back({"IDlfd_Nr", Feldtyp::Zahl});
    return felder;
}

class Staging : public ::testing::Test {
protected:
    Staging() {
        db.TabelleAnlegen("tblBestand", MitLaufnummer(Eigentümerfelder));
        db.TabelleAnlegen("tblFlurstück", MitLaufnummer(Flurstücksfelder));
        db.TabelleAnlegen("tblAdresse", MitLaufnummer(Eigentümerfelder));
        db.TabelleAnlegen("tblGemFlur", std::vector<Feld>{{"Gemarkung"}, {"Flur"}});
        const std::vector<std::string> idKeyGb = {"IDKeyGb"}, idLfdNr = {"IDlfd_Nr"};
        db.IndexAnlegen("IDKeyGrundbuch", "tblBestand", idKeyGb);
        db.IndexAnlegen("IDKeyLfd_Nr", "tblBestand", idLfdNr);
        db.IndexAnlegen("IDKeyLfd_Nr", "tblFlurstück", idLfdNr);
        db.IndexAnlegen("IDKeyGrundbuch", "tblFlurstück", idKeyGb);
        db.IndexAnlegen("IDKeyFlurstück", "tblFlurstück", std::vector<std::string>{"IDKeyFlst"});
        db.IndexAnlegen("IDKeyGrundbuch", "tblAdresse", idKeyGb, true);
        db.IndexAnlegen("IDKeyLfd_Nr", "tblAdresse", idLfdNr);
    }

    // Adds a row the way a reader does: a prepared INSERT over the named fields.
    void Einfügen(const std::string& tabelle,
                  const std::vector<std::pair<std::string, std::string>>& werte) {
        std::string felder, parameter;
        for (const auto& [feld, wert] : werte) {
            felder += (felder.empty() ? "" : ", ") + JetBezeichner(feld);
            parameter += parameter.empty() ? "?" : ", ?";
        }
        auto anweisung = db.Vorbereiten("INSERT INTO " + JetBezeichner(tabelle) + " (" + felder +
                                        ") VALUES (" + parameter + ")");
        for (const auto& [feld, wert] : werte)
            anweisung.Binde(wert);
        anweisung.Schritt();
    }

    std::vector<Wert> Spalte(const std::string& abfrage) { return flurix::Spalte(db, abfrage); }

    test::TempOrdner ordner;
    Datenbank db{ordner / "tmp_flurix.sqlite"};
};

TEST_F(Staging, StraßennamenFindenIhreFlurstücke) {
    const std::pair<std::string, std::string> flurstücke[] = {{"053340002002", "00123"},
                                                              {"053340002002", "00456; 00123"},
                                                              {"053340002002", "00456"},
                                                              {"053340002099", "00123"}};
    int nr = 0;
    for (const auto& [gemeinde, straßen] : flurstücke)
        Einfügen("tblFlurstück", {{"Flurstück", std::to_string(++nr)},
                                  {"Gemeindeschlüssel", gemeinde},
                                  {"Straßenschlüssel", straßen}});
    // As the reader composes it from a line "E09": values quoted, the field spelled with "ss".
    const auto straßenname = [](const std::string& gemeinde, const std::string& straße,
                                const std::string& name) {
        return "UPDATE tblFlurstück SET Straßenschlüsselname = Straßenschlüsselname & " +
               SqlText(name + "; ") + " WHERE Gemeindeschlüssel = " + SqlText(gemeinde) +
               " AND Strassenschlüssel LIKE " + SqlText("*" + straße + "*");
    };
    db.Ausführen(straßenname("053340002002", "00123", "Hauptstraße"));
    EXPECT_EQ(db.Änderungen(), 2);
    db.Ausführen(straßenname("053340002002", "00456", "Auf'm Berg"));
    EXPECT_EQ(Spalte("SELECT Straßenschlüsselname FROM tblFlurstück ORDER BY Flurstück"),
              (std::vector<Wert>{"Hauptstraße; ", "Hauptstraße; Auf'm Berg; ", "Auf'm Berg; ",
                                 std::nullopt}));
}

TEST_F(Staging, SchlüsseltexteMitInstrHängenAn) {
    const std::string schlüssel[] = {"12-345", "99-001; 12-345", "12-34"};
    for (const auto& wert : schlüssel)
        Einfügen("tblFlurstück", {{"Flurstück", wert},
                                  {"Nutzungsart", wert},
                                  {"Klassifizierung", wert},
                                  {"Schlüssel_Bezeichnung_Hinweis_Flurstück", wert}});
    Einfügen("tblFlurstück", {{"Flurstück", "ohne"}});
    // Block 9: lines "C", "D" and "E" append their text where the key stands in the field.
    const std::pair<std::string, std::string> felder[] = {
        {"Nutzung_tatsächlich", "Nutzungsart"},
        {"Bezeichnung_Klassifizierung", "Klassifizierung"},
        {"Bezeichnung_Hinweis_Flurstück", "Schlüssel_Bezeichnung_Hinweis_Flurstück"},
    };
    for (const auto& [ziel, quelle] : felder) {
        for (const auto& [schlüsselwert, text] :
             {std::pair{"12-345", "Wohnbaufläche; "}, std::pair{"99-001", "Ackerland; "}})
            db.Ausführen("UPDATE tblFlurstück SET " + ziel + " = " + ziel + " & '" + text +
                         "' WHERE Instr(" + quelle + ",  '" + schlüsselwert + "' ) > 0");
        EXPECT_EQ(Spalte("SELECT " + ziel + " FROM tblFlurstück ORDER BY Flurstück"),
                  (std::vector<Wert>{std::nullopt, "Wohnbaufläche; ", "Wohnbaufläche; Ackerland; ",
                                     std::nullopt}))
            << ziel;
    }
}

TEST_F(Staging, MidVergleichtDenVorderenTeilDesSchlüssels) {
    for (const auto* gb : {"053001-0001230000000001000000", "053001-0001240000000001000000"})
        Einfügen("tblAdresse", {{"IDKeyGb", gb}});
    const std::pair<std::string, std::string> flurstücke[] = {
        {"05300100100001000", "053340002002"},
        {"05300200100001000", "053340002002"},
        {"05300100200002000", "053350001001"}};
    for (const auto& [idKeyFlst, gemeinde] : flurstücke)
        Einfügen("tblFlurstück", {{"IDKeyFlst", idKeyFlst}, {"Gemeindeschlüssel", gemeinde}});

    struct Fall {
        std::string anweisung;
        std::string abfrage;
        std::vector<Wert> erwartet;
    };
    const Fall fälle[] = {
        {"UPDATE tblAdresse SET Eigentümerzusatz = 'Erbengemeinschaft' WHERE MID(IDKeyGb,1,13) = "
         "'053001-000123'",
         "SELECT Eigentümerzusatz FROM tblAdresse ORDER BY IDKeyGb",
         {"Erbengemeinschaft", std::nullopt}},
        {"UPDATE tblFlurstück SET Landkreis = 'Aachen' WHERE MID(Gemeindeschlüssel,1,5) = '05334'",
         "SELECT Landkreis FROM tblFlurstück ORDER BY IDKeyFlst",
         {"Aachen", std::nullopt, "Aachen"}},
        {"UPDATE tblFlurstück SET Grundbuchbezirk = 'Musterdorf' WHERE MID(IDKeyFlst,1,6) = "
         "'053001'",
         "SELECT Grundbuchbezirk FROM tblFlurstück ORDER BY IDKeyFlst",
         {"Musterdorf", "Musterdorf", std::nullopt}},
        {"UPDATE tblFlurstück SET Gemarkungsschlüssel = '053001' WHERE MID(IDKeyFlst,1,6) = "
         "'053001'",
         "SELECT Gemarkungsschlüssel FROM tblFlurstück ORDER BY IDKeyFlst",
         {"053001", "053001", std::nullopt}},
        {"UPDATE tblFlurstück SET Amtsgerichtsschlüssel = 'A123' WHERE MID(IDKeyFlst,1,6) = "
         "'053002'",
         "SELECT Amtsgerichtsschlüssel FROM tblFlurstück ORDER BY IDKeyFlst",
         {std::nullopt, std::nullopt, "A123"}},
    };
    for (const auto& f : fälle) {
        db.Ausführen(f.anweisung);
        EXPECT_EQ(Spalte(f.abfrage), f.erwartet) << f.anweisung;
    }
}

TEST_F(Staging, EigentümerWandernInDenBestand) {
    Einfügen(
        "tblAdresse",
        {{"Name", "Muster, Max"}, {"IDKeyGb", "053001-0001230000000001000000"}, {"IDlfd_Nr", "2"}});
    Einfügen(
        "tblAdresse",
        {{"Name", "Muster, Eva"}, {"IDKeyGb", "053001-0001230000000002000000"}, {"IDlfd_Nr", "4"}});
    // The unique key of tblAdresse: a second owner with the same key is refused.
    EXPECT_THROW(Einfügen("tblAdresse", {{"IDKeyGb", "053001-0001230000000002000000"}}), Fehler);
    db.Ausführen("INSERT INTO tblBestand SELECT * FROM tblAdresse");
    db.Ausführen("DELETE FROM tblAdresse");
    EXPECT_EQ(Spalte("SELECT Name & ' ' & IDlfd_Nr FROM tblBestand ORDER BY IDlfd_Nr"),
              (std::vector<Wert>{"Muster, Max 2", "Muster, Eva 4"}));
    EXPECT_EQ(Spalte("SELECT count(*) FROM tblAdresse"), std::vector<Wert>{"0"});
}

TEST_F(Staging, WeitereBuchungKopiertDasFlurstück) {
    Einfügen("tblFlurstück", {{"Flurstück", "00012/000"}, {"IDlfd_Nr", "1"}});
    Einfügen(
        "tblFlurstück",
        {{"Flurstück", "00013/001"}, {"Flurstück-Nachfolger", "00014/000"}, {"IDlfd_Nr", "2"}});
    db.Ausführen("INSERT INTO tblFlurstück SELECT * FROM tblFlurstück WHERE IDlfd_Nr = 2");
    EXPECT_EQ(
        Spalte(
            "SELECT Flurstück & '|' & [Flurstück-Nachfolger] FROM tblFlurstück WHERE IDlfd_Nr = 2"),
        (std::vector<Wert>{"00013/001|00014/000", "00013/001|00014/000"}));
    EXPECT_EQ(Spalte("SELECT count(*) FROM tblFlurstück"), std::vector<Wert>{"3"});
}

TEST_F(Staging, VerkettungMitLeerenFeldern) {
    Einfügen("tblFlurstück", {{"Flurstück", "1"},
                              {"Schlüssel_ausführende_Stelle", "12345"},
                              {"Nummer_Verfahren", "000042"},
                              {"Bemerkung_zum_Verfahren_Schlüssel", "01"}});
    Einfügen("tblFlurstück", {{"Flurstück", "2"},
                              {"Schlüssel_ausführende_Stelle", "12345"},
                              {"Bemerkung_zum_Verfahren_Schlüssel", "01"}});
    db.Ausführen("UPDATE tblFlurstück SET sonstigesBOV = Schlüssel_ausführende_Stelle & '-' & "
                 "Nummer_Verfahren & "
                 "', Flurbereinigung' WHERE Bemerkung_zum_Verfahren_Schlüssel = '01'");
    EXPECT_EQ(Spalte("SELECT sonstigesBOV FROM tblFlurstück ORDER BY Flurstück"),
              (std::vector<Wert>{"12345-000042, Flurbereinigung", "12345-, Flurbereinigung"}));

    Einfügen("tblBestand",
             {{"Name", "1"}, {"Zusatz", "geb. Muster"}, {"Geburtsdatum", "01.02.1950"}});
    Einfügen("tblBestand", {{"Name", "2"}, {"Geburtsdatum", "01.02.1950"}});
    Einfügen("tblBestand", {{"Name", "3"}});
    db.Ausführen("UPDATE tblBestand SET Namenszusatz = Trim(Zusatz & ' ' & Geburtsdatum)");
    EXPECT_EQ(Spalte("SELECT Namenszusatz FROM tblBestand ORDER BY Name"),
              (std::vector<Wert>{"geb. Muster 01.02.1950", "01.02.1950", ""}));
}

TEST_F(Staging, GemarkungUndFlurEinmalJePaar) {
    const std::pair<std::string, std::string> paare[] = {{"Musterdorf", "001"},
                                                         {"Musterdorf", "001"},
                                                         {"MUSTERDORF", "001"},
                                                         {"Musterdorf", "002"},
                                                         {"Beispielheim", "001"}};
    for (const auto& [gemarkung, flur] : paare)
        Einfügen("tblFlurstück", {{"Gemarkung", gemarkung}, {"Flur", flur}});
    db.Ausführen("INSERT INTO tblGemFlur SELECT DISTINCT Gemarkung,Flur FROM tblFlurstück");
    EXPECT_EQ(
        Spalte("SELECT Gemarkung & ', Flur: ' & Flur FROM tblGemFlur ORDER BY Gemarkung, Flur"),
        (std::vector<Wert>{"Beispielheim, Flur: 001", "Musterdorf, Flur: 001",
                           "Musterdorf, Flur: 002"}));
}

TEST_F(Staging, VerbindungVonFlurstückenUndEigentümern) {
    const std::pair<std::string, std::string> flurstücke[] = {
        {"P1", "053001-000123"}, {"P2", "053001-000124"}, {"P4", "053001-000123"}};
    for (const auto& [flurstück, idKeyGb] : flurstücke)
        Einfügen("tblFlurstück", {{"Flurstück", flurstück}, {"IDKeyGb", idKeyGb}, {"Land", "05"}});
    Einfügen("tblFlurstück", {{"Flurstück", "P3"}, {"Land", "05"}}); // no land register entry
    const std::pair<std::string, std::string> eigentümer[] = {
        {"O1", "053001-0001230000000001000000"},
        {"O2", "053001-0001230000000002000000"},
        {"O3", "053001-0001250000000001000000"}};
    for (const auto& [name, idKeyGb] : eigentümer)
        Einfügen("tblBestand", {{"Name", name}, {"IDKeyGb", idKeyGb}, {"Land", "NW"}});

    auto verbindung = db.Vorbereiten("SELECT * FROM tblFlurstück, tblBestand  WHERE "
                                     "tblFlurstück.IDKeyGb = MID(tblBestand.IDKeyGb,1,13)");
    const int flurstück = verbindung.Spaltenindex("Flurstück");
    const int name = verbindung.Spaltenindex("Name");
    std::vector<std::string> paare;
    while (verbindung.Schritt())
        paare.push_back(std::string(verbindung.Text(flurstück)) + "+" +
                        std::string(verbindung.Text(name)));
    std::sort(paare.begin(), paare.end());
    EXPECT_EQ(paare, (std::vector<std::string>{"P1+O1", "P1+O2", "P4+O1", "P4+O2"}));

    // Fields on both sides come twice; the table of each tells them apart.
    std::vector<std::string> landTabellen;
    for (int i = 0; i < verbindung.Spaltenanzahl(); ++i)
        if (verbindung.Spaltenname(i) == "Land")
            landTabellen.emplace_back(verbindung.Spaltentabelle(i));
    EXPECT_EQ(landTabellen, (std::vector<std::string>{"tblFlurstück", "tblBestand"}));
}

} // namespace
} // namespace flurix
