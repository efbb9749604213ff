// The grid of the NAS work window without the window: the filter row's conditions against hostile
// texts, the SQL query box (one statement, its errors, nothing half done), paging against a plain
// SELECT in every way of reading, writes from a second connection between two scrolls, and the
// hidden columns of AX_Flurstueck.

#include "nas/nas_abfrage.hpp"

#include "core/datenbank.hpp"
#include "core/fehler.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace flurix::nas {
namespace {

/// A parcel table as the scan makes it (text columns compare without case), rows with quotes,
/// umlauts, a text that looks like SQL, and a table "x" that no statement of a test may drop.
struct Parzellen {
    test::TempOrdner ordner;
    Datenbank db{ordner / "nas.sqlite"};

    Parzellen() {
        db.TabelleAnlegen("AX_Flurstueck", std::vector<Feld>{{"gml:id"},
                                                             {"name"},
                                                             {"flur", Feldtyp::Ganzzahl},
                                                             {"Fläche", Feldtyp::Zahl}});
        db.AusführenNativ("CREATE TABLE x (a)");
        db.AusführenNativ("INSERT INTO x VALUES (1)");
        const std::vector<std::vector<std::string>> zeilen = {
            {"DEBBAL01", "Müller", "1", "100.5"},
            {"DEBBAL02", "muster", "2", "250"},
            {"DEBBAL03h'HH", "O'Brien", "3", "12.25"},
            {"DEBBAL04", "Say \"hi\"", "4", "1000"},
            {"DEBBAL05", "'); DROP TABLE x; --", "5", "7"},
            {"DEBBAL06", "100% [sicher] #1", "6", "-3"},
            {"DEBBAL07", "Mustermann", "7", "0.5"},
        };
        auto einfügen = db.VorbereitenNativ("INSERT INTO AX_Flurstueck VALUES (?, ?, ?, ?)");
        for (const auto& z : zeilen) {
            einfügen.Zurücksetzen();
            einfügen.Binde(z[0]).Binde(z[1]).Binde(std::stoll(z[2])).Binde(std::stod(z[3]));
            einfügen.Schritt();
        }
    }
    std::vector<std::string> Ids(const std::string& bedingung) {
        auto abfrage = Seitenabfrage::ÜberTabelle(db, "AX_Flurstueck");
        abfrage.Filtern(bedingung);
        std::vector<std::string> ids;
        for (std::int64_t i = 0; i < abfrage.Zeilenzahl(); ++i)
            ids.push_back(abfrage.Zeile(i)[0]);
        return ids;
    }
    std::string Wert(const std::string& sql) {
        auto a = db.VorbereitenNativ(sql);
        return a.Schritt() ? std::string(a.Text(0)) : "<keine Zeile>";
    }
    /// What every hostile test checks at its end: the table x and the parcels are untouched.
    void Unverändert() {
        EXPECT_EQ(Wert("SELECT count(*) FROM x"), "1");
        EXPECT_EQ(Wert("SELECT group_concat(name || '/' || flur, '|') FROM AX_Flurstueck"),
                  "Müller/1|muster/2|O'Brien/3|Say \"hi\"/4|'); DROP TABLE x; --/5|"
                  "100% [sicher] #1/6|Mustermann/7");
    }
};

TEST(NasFilterzeile, TexteWerdenBedingungenUndFindenGenauIhreZeilen) {
    struct Fall {
        std::vector<std::string> texte; // gml:id, name, flur, Fläche
        std::string bedingung;
        std::vector<std::string> ids;
    };
    const std::vector<Fall> fälle = {
        {{"", "Mu"}, R"([name] LIKE "Mu*")", {"DEBBAL02", "DEBBAL07"}},
        {{"", "mü"}, R"([name] LIKE "mü*")", {"DEBBAL01"}},
        {{"", "MÜ"}, R"([name] LIKE "MÜ*")", {}}, // LIKE folds ASCII letters only
        {{"", "Mü"}, R"([name] LIKE "Mü*")", {"DEBBAL01"}},
        {{"DEBBAL03h'"}, R"([gml:id] LIKE "DEBBAL03h'*")", {"DEBBAL03h'HH"}},
        {{"", "O'"}, R"([name] LIKE "O'*")", {"DEBBAL03h'HH"}},
        {{"", "Say \"h"}, R"([name] LIKE "Say ""h*")", {"DEBBAL04"}},
        {{"", "'); DROP TABLE x; --"}, R"([name] LIKE "'); DROP TABLE x; --*")", {"DEBBAL05"}},
        {{"", "\"); DROP TABLE x; --"}, R"([name] LIKE """); DROP TABLE x; --*")", {}},
        {{"", "100% [s"}, R"([name] LIKE "100% [[]s*")", {"DEBBAL06"}},
        {{"", "100_"}, R"([name] LIKE "100_*")", {}},
        {{"", "*#1"}, R"([name] LIKE "*[#]1*")", {"DEBBAL06"}},
        {{"", "M?ll"}, R"([name] LIKE "M?ll*")", {"DEBBAL01"}},
        {{"", "", "4"}, "[flur] >= 4", {"DEBBAL04", "DEBBAL05", "DEBBAL06", "DEBBAL07"}},
        {{"", "", "", "12,25"},
         "[Fläche] >= 12.25",
         {"DEBBAL01", "DEBBAL02", "DEBBAL03h'HH", "DEBBAL04"}},
        {{"", "", "", " -3 "},
         "[Fläche] >= -3",
         {"DEBBAL01", "DEBBAL02", "DEBBAL03h'HH", "DEBBAL04", "DEBBAL05", "DEBBAL06", "DEBBAL07"}},
        {{"", "M", "2", "200"},
         R"([name] LIKE "M*" AND [flur] >= 2 AND [Fläche] >= 200)",
         {"DEBBAL02"}},
        {{"  ", "", ""},
         "",
         {"DEBBAL01", "DEBBAL02", "DEBBAL03h'HH", "DEBBAL04", "DEBBAL05", "DEBBAL06", "DEBBAL07"}},
    };
    Parzellen p;
    const auto spalten = Seitenabfrage::ÜberTabelle(p.db, "AX_Flurstueck").Spalten();
    for (const Fall& fall : fälle) {
        SCOPED_TRACE(fall.bedingung);
        const std::string bedingung = Filterbedingung(spalten, fall.texte);
        EXPECT_EQ(bedingung, fall.bedingung);
        EXPECT_EQ(p.Ids(bedingung), fall.ids);
    }
    p.Unverändert();
}

TEST(NasFilterzeile, KeineZahlInZahlenspalteWirdAbgelehnt) {
    Parzellen p;
    const auto spalten = Seitenabfrage::ÜberTabelle(p.db, "AX_Flurstueck").Spalten();
    for (const std::string text : {"1; DROP TABLE x", "1)", "abc", "1e", "--1", "1,2,3", "inf"}) {
        SCOPED_TRACE(text);
        try {
            Filterbedingung(spalten, std::vector<std::string>{"", "", text});
            ADD_FAILURE() << "keine Ausnahme";
        } catch (const Fehler& f) {
            EXPECT_EQ(std::string(f.what()),
                      "Filtersuche: \"" + text + "\" ist keine Zahl (Spalte \"flur\")");
        }
    }
    p.Unverändert();
}

TEST(NasFilterzeile, FehlerhafteBedingungLässtDieZeilenStehen) {
    Parzellen p;
    auto abfrage = Seitenabfrage::ÜberTabelle(p.db, "AX_Flurstueck");
    abfrage.Filtern(R"([flur] >= 6)");
    ASSERT_EQ(abfrage.Zeilenzahl(), 2);
    for (const char* falsch : {"Unbekannt([flur]) >= 1", "[flur] >=", "1); DROP TABLE x; --"}) {
        SCOPED_TRACE(falsch);
        EXPECT_THROW(abfrage.Filtern(falsch), Fehler);
        EXPECT_EQ(abfrage.Zeilenzahl(), 2);
    }
    p.Unverändert();
}

TEST(NasSqlAbfrage, EineAnweisungLäuftGanzOderGarNicht) {
    using Art = SqlAbfrageErgebnis::Art;
    struct Fall {
        std::string anweisung;
        Art art;
        std::string meldungEnthält; // Art::Fehler; for Art::Auswahl: the translated text
        std::int64_t geändert;
        std::string prüfung; // SQL whose first cell is compared afterwards
        std::string erwartet;
    };
    const std::vector<Fall> fälle = {
        {R"(SELECT name FROM AX_Flurstueck WHERE name LIKE "Mu*";)", Art::Auswahl,
         R"(SELECT name FROM AX_Flurstueck WHERE name LIKE 'Mu%')", 0, "", ""},
        {"UPDATE AX_Flurstueck SET flur = 9 WHERE [gml:id] = \"DEBBAL01\"", Art::Änderung, "", 1,
         "SELECT flur FROM AX_Flurstueck WHERE rowid = 1", "9"},
        {"DELETE FROM AX_Flurstueck WHERE flur >= 7", Art::Änderung, "", 2,
         "SELECT count(*) FROM AX_Flurstueck", "5"},
        {"CREATE TABLE neu (a)", Art::Änderung, "", 0,
         "SELECT count(*) FROM sqlite_master WHERE name = 'neu'", "1"},
        {"UPDATE AX_Flurstueck SET flur = 0; DROP TABLE x", Art::Fehler,
         "der Text enthält mehr als eine SQL-Anweisung; es wurde nichts ausgeführt", 0,
         "SELECT count(*) FROM AX_Flurstueck WHERE flur = 0", "0"},
        {"SELECT * FROM x; DROP TABLE x; --", Art::Fehler, "mehr als eine SQL-Anweisung", 0,
         "SELECT count(*) FROM x", "1"},
        {"SELECT * FROM AX_Flurstueck WHERE name = ''); DROP TABLE x; --'", Art::Fehler,
         "near \")\": syntax error", 0, "SELECT count(*) FROM x", "1"},
        {"SELEC * FROM AX_Flurstueck", Art::Fehler, R"(near "SELEC": syntax error)", 0, "", ""},
        {"SELECT * FROM gibtsnicht", Art::Fehler, "no such table: gibtsnicht", 0, "", ""},
        // OR FAIL keeps what the statement changed before the failure: the SAVEPOINT takes it back.
        {"UPDATE OR FAIL AX_Flurstueck SET flur = flur * 10, [gml:id] = \"gleich\"", Art::Fehler,
         "UNIQUE constraint failed", 0, "SELECT group_concat(flur) FROM AX_Flurstueck",
         "2,3,4,5,6"},
        {"BEGIN", Art::Fehler, "Die SQL-Abfrage nimmt keine Anweisung BEGIN an", 0, "", ""},
        {"  /* x */ rollback", Art::Fehler, "keine Anweisung ROLLBACK an", 0, "", ""},
        {"", Art::Fehler, "der Text enthält keine SQL-Anweisung", 0, "", ""},
    };
    Parzellen p;
    p.db.AusführenNativ(R"(CREATE UNIQUE INDEX eindeutig ON AX_Flurstueck ("gml:id"))");
    for (const Fall& fall : fälle) {
        SCOPED_TRACE(fall.anweisung);
        const auto ergebnis = SqlAbfrageAusführen(p.db, fall.anweisung);
        EXPECT_EQ(ergebnis.art, fall.art) << ergebnis.meldung;
        if (fall.art == Art::Auswahl) {
            EXPECT_EQ(ergebnis.auswahl, fall.meldungEnthält);
        } else if (fall.art == Art::Fehler) {
            EXPECT_NE(ergebnis.meldung.find(fall.meldungEnthält), std::string::npos)
                << ergebnis.meldung;
        }
        EXPECT_EQ(ergebnis.geändert, fall.geändert);
        if (!fall.prüfung.empty()) {
            EXPECT_EQ(p.Wert(fall.prüfung), fall.erwartet);
        }
        EXPECT_FALSE(p.db.TransaktionOffen());
        EXPECT_EQ(p.Wert("SELECT count(*) FROM x"), "1");
    }
}

TEST(NasSqlAbfrage, AuswahlWirdAlsSeitenabfrageGezeigt) {
    Parzellen p;
    const auto ergebnis = SqlAbfrageAusführen(
        p.db, "SELECT [gml:id], flur * 2 AS doppelt, name FROM AX_Flurstueck WHERE flur <= 3 "
              "-- Kommentar am Ende");
    ASSERT_EQ(ergebnis.art, SqlAbfrageErgebnis::Art::Auswahl) << ergebnis.meldung;
    auto abfrage = Seitenabfrage::ÜberAbfrage(p.db, ergebnis.auswahl);
    ASSERT_EQ(abfrage.Spalten().size(), 3u);
    EXPECT_EQ(abfrage.Spalten()[0].name, "gml:id");
    EXPECT_EQ(abfrage.Spalten()[1].name, "doppelt");
    EXPECT_FALSE(abfrage.Spalten()[0].zahl);
    EXPECT_FALSE(abfrage.Spalten()[1].zahl); // computed: no declared type
    EXPECT_EQ(abfrage.Tabelle(), "");
    abfrage.Sortieren(2, true);
    ASSERT_EQ(abfrage.Zeilenzahl(), 3);
    EXPECT_EQ(abfrage.Zeile(0)[2], "O'Brien");
    EXPECT_EQ(abfrage.Zeile(2)[1], "4");
    abfrage.Filtern(Filterbedingung(abfrage.Spalten(), std::vector<std::string>{"", "", "m"}));
    ASSERT_EQ(abfrage.Zeilenzahl(), 2);
    EXPECT_EQ(abfrage.Zeile(0)[2], "Müller");
}

// --- paging ----------------------------------------------------------------------------------

/// A table of `zeilen` rows over more pages than are kept, with NULLs, repeated values and numbers.
void GroßeTabelle(Datenbank& db, int zeilen) {
    db.TabelleAnlegen("AX_Gebaeude", std::vector<Feld>{{"gml:id"},
                                                       {"lage"},
                                                       {"geschosse", Feldtyp::Ganzzahl},
                                                       {"hoehe", Feldtyp::Zahl}});
    Transaktion t(db);
    auto einfügen = db.VorbereitenNativ("INSERT INTO AX_Gebaeude VALUES (?, ?, ?, ?)");
    for (int n = 0; n < zeilen; ++n) {
        einfügen.Zurücksetzen();
        einfügen.Binde("DEBBAL" + std::to_string(100000 + n));
        if (n % 13 == 0)
            einfügen.Binde(nullptr);
        else
            einfügen.Binde((n % 3 ? "Hauptstraße " : "am Anger ") + std::to_string(n * 7919 % 101));
        einfügen.Binde(n * 31 % 9).Binde(n % 17 * 1.25);
        einfügen.Schritt();
    }
    t.Bestätigen();
}

std::vector<std::vector<std::string>> Alle(Datenbank& db, const std::string& sql) {
    std::vector<std::vector<std::string>> zeilen;
    auto a = db.VorbereitenNativ(sql);
    while (a.Schritt()) {
        zeilen.emplace_back();
        for (int s = 0; s < a.Spaltenanzahl(); ++s)
            zeilen.back().emplace_back(a.Text(s));
    }
    return zeilen;
}

TEST(NasSeitenabfrage, SeitenGebenDieZeilenEinesSelectInJederLeseart) {
    struct Fall {
        const char* name;
        std::function<Seitenabfrage(Datenbank&)> machen;
        std::string vergleich;
    };
    const auto tabelle = [](Datenbank& db) {
        return Seitenabfrage::ÜberTabelle(db, "AX_Gebaeude");
    };
    const std::vector<Fall> fälle = {
        {"lückenlos", tabelle, "SELECT * FROM AX_Gebaeude ORDER BY rowid"},
        {"sortiert absteigend",
         [&](Datenbank& db) {
             auto a = tabelle(db);
             a.Sortieren(1, true);
             return a;
         },
         "SELECT * FROM AX_Gebaeude ORDER BY lage DESC, rowid"},
        {"gefiltert und nach Zahl sortiert",
         [&](Datenbank& db) {
             auto a = tabelle(db);
             a.Filtern(R"([lage] LIKE "haupt*" AND [hoehe] >= 5)");
             a.Sortieren(2);
             return a;
         },
         "SELECT * FROM AX_Gebaeude WHERE lage LIKE 'haupt%' AND hoehe >= 5 "
         "ORDER BY geschosse, rowid"},
        {"Abfrage sortiert",
         [](Datenbank& db) {
             auto a = Seitenabfrage::ÜberAbfrage(db, "SELECT lage, hoehe FROM AX_Gebaeude;");
             a.Sortieren(1);
             return a;
         },
         "SELECT lage, hoehe FROM AX_Gebaeude ORDER BY hoehe, lage"},
    };
    test::TempOrdner ordner;
    Datenbank db(ordner / "nas.sqlite");
    constexpr int Zeilen = 5000; // 20 pages, more than are kept
    GroßeTabelle(db, Zeilen);
    for (const bool lücken : {false, true}) {
        if (lücken) // every seventh row gone: the rowids have gaps now
            db.AusführenNativ("DELETE FROM AX_Gebaeude WHERE rowid % 7 = 2");
        for (const Fall& fall : fälle) {
            SCOPED_TRACE(std::string(fall.name) + (lücken ? ", mit Lücken" : ""));
            auto abfrage = fall.machen(db);
            const auto erwartet = Alle(db, fall.vergleich);
            ASSERT_GT(erwartet.size(), static_cast<std::size_t>(SeitenGröße) * 3);
            ASSERT_EQ(abfrage.Zeilenzahl(), static_cast<std::int64_t>(erwartet.size()));
            // Back to front and in jumps, so that pages are read again after they were dropped.
            std::vector<std::int64_t> reihe;
            for (std::int64_t i = abfrage.Zeilenzahl() - 1; i >= 0; --i)
                reihe.push_back(i);
            for (std::int64_t i = 0; i < abfrage.Zeilenzahl(); i += 997)
                reihe.push_back(i);
            for (const auto i : reihe) {
                const auto zeile = abfrage.Zeile(i);
                ASSERT_EQ(std::vector<std::string>(zeile.begin(), zeile.end()),
                          erwartet[static_cast<std::size_t>(i)])
                    << "Zeile " << i;
            }
            // The SQL handed to "Speichern unter" gives the same rows.
            EXPECT_EQ(Alle(db, abfrage.Sql()), erwartet);
            const auto dahinter = abfrage.Zeile(abfrage.Zeilenzahl());
            EXPECT_EQ(std::vector<std::string>(dahinter.begin(), dahinter.end()),
                      std::vector<std::string>(abfrage.Spalten().size()));
        }
    }
}

TEST(NasSeitenabfrage, ZwischenZweiSeitenKannEineAndereVerbindungSchreiben) {
    test::TempOrdner ordner;
    Datenbank db(ordner / "nas.sqlite");
    GroßeTabelle(db, 3000);
    auto abfrage = Seitenabfrage::ÜberTabelle(db, "AX_Gebaeude");
    abfrage.Sortieren(1);
    EXPECT_EQ(abfrage.Zeile(0).size(), 4u);
    EXPECT_EQ(abfrage.Zeile(2999).size(), 4u);

    // The compilation writes through its own connection; an open read would make it wait.
    Datenbank schreiber(ordner / "nas.sqlite");
    EXPECT_NO_THROW(schreiber.AusführenNativ("UPDATE AX_Gebaeude SET lage = 'neu'"));
    EXPECT_NO_THROW(schreiber.AusführenNativ("DELETE FROM AX_Gebaeude WHERE rowid > 1500"));
    // A page not read before shows the rows as they are now, a row gone since the count as empty
    // cells; a page read before keeps what it read until the grid is told of the change.
    int neu = 0, weg = 0;
    for (std::int64_t i = 512; i < 768; ++i) {
        const auto zeile = abfrage.Zeile(i);
        if (zeile[0].empty())
            ++weg;
        else
            neu += zeile[1] == "neu" ? 1 : 1000;
    }
    EXPECT_GT(weg, 0);
    EXPECT_EQ(neu + weg, 256);
    EXPECT_NE(abfrage.Zeile(0)[1], "neu");
    abfrage.Verwerfen();
    EXPECT_EQ(abfrage.Zeilenzahl(), 1500);
    EXPECT_EQ(abfrage.Zeile(1499)[1], "neu");
}

TEST(NasSeitenabfrage, SichtUndTabelleOhneRowidWerdenÜberOffsetGelesen) {
    test::TempOrdner ordner;
    Datenbank db(ordner / "nas.sqlite");
    GroßeTabelle(db, 600);
    db.AusführenNativ("CREATE VIEW hoch AS SELECT * FROM AX_Gebaeude WHERE geschosse >= 4");
    db.AusführenNativ("CREATE TABLE ohne (k TEXT PRIMARY KEY, rowid TEXT) WITHOUT ROWID");
    db.AusführenNativ("INSERT INTO ohne VALUES ('b', 'zwei'), ('a', 'eins')");
    auto sicht = Seitenabfrage::ÜberTabelle(db, "hoch");
    EXPECT_EQ(sicht.Zeilenzahl(),
              static_cast<std::int64_t>(
                  Alle(db, "SELECT * FROM AX_Gebaeude WHERE geschosse >= 4").size()));
    EXPECT_EQ(Alle(db, sicht.Sql()).size(), static_cast<std::size_t>(sicht.Zeilenzahl()));
    auto ohne = Seitenabfrage::ÜberTabelle(db, "ohne");
    ohne.Sortieren(1, true);
    ASSERT_EQ(ohne.Zeilenzahl(), 2);
    EXPECT_EQ(ohne.Zeile(0)[1], "zwei");
    EXPECT_THROW(Seitenabfrage::ÜberTabelle(db, "gibtsnicht"), Fehler);
}

// --- columns and the warning -----------------------------------------------------------------

TEST(NasGrid, VerborgeneSpaltenNurInAxFlurstueck) {
    struct Fall {
        const char* tabelle;
        const char* spalte;
        bool verborgen;
    };
    const Fall fälle[] = {
        {"AX_Flurstueck", "UmringFlurstück", true},
        {"AX_Flurstueck", "InteriorFlurstück", true},
        {"AX_Flurstueck", "position", true},
        {"AX_Flurstueck", "gml:LineStringSegment", true},
        {"AX_Flurstueck", "gml:Arc", true},
        {"AX_Flurstueck", "gml:exterior", true},
        {"AX_Flurstueck", "gml:interior", true},
        {"AX_Flurstueck", "DAO_Index", true},
        {"ax_flurstueck", "DAO_", true},
        {"AX_Flurstueck", "gml:id", false},
        {"AX_Flurstueck", "dao_index", false},
        {"AX_Flurstueck", "Position", false},
        {"AX_Flurstueck", "amtlicheFlaeche", false},
        {"AX_Gebaeude", "position", false},
        {"AX_Gebaeude", "DAO_Index", false},
        {"Alkis", "UmringFlurstück", false},
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(std::string(f.tabelle) + "." + f.spalte);
        EXPECT_EQ(SpalteVerborgen(f.tabelle, f.spalte), f.verborgen);
    }
}

TEST(NasGrid, ZahlenspaltenNachDeklariertemTyp) {
    const std::pair<const char*, bool> fälle[] = {
        {"INTEGER", true},
        {"REAL", true},
        {"double", true},
        {"NUMERIC", true},
        {"DECIMAL(10,2)", true},
        {"BIGINT", true},
        {"TEXT COLLATE NOCASE", false},
        {"TEXT", false},
        {"VARCHAR(20)", false},
        {"BLOB", false},
        {"", false},
        {"CHARINT", true}, // SQLite's rule: INT anywhere comes first
    };
    for (const auto& [typ, zahl] : fälle) {
        SCOPED_TRACE(typ);
        EXPECT_EQ(IstZahlentyp(typ), zahl);
    }
}

} // namespace
} // namespace flurix::nas
