#include "core/jet_sql.hpp"

#include "core/datenbank.hpp"
#include "core/fehler.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace flurix {
namespace {

using Wert = std::optional<std::string>;

// The value of a Jet expression as SQLite computes it after the translation; nullopt for NULL.
Wert Auswerten(Datenbank& db, const std::string& ausdruck) {
    auto anweisung = db.Vorbereiten("SELECT " + ausdruck);
    EXPECT_TRUE(anweisung.Schritt()) << ausdruck;
    if (anweisung.IstNull(0))
        return std::nullopt;
    return std::string(anweisung.Text(0));
}

TEST(JetMid, ZähltZeichenNichtBytes) {
    struct Fall {
        std::string text;
        std::int64_t start;
        std::optional<std::int64_t> länge;
        std::string erwartet;
    };
    const Fall fälle[] = {
        {"Flurstück", 6, std::nullopt, "tück"},
        {"Flurstück", 6, 2, "tü"},
        {"äöüß", 2, 2, "öü"},
        {"äöüß", 4, 1, "ß"},
        {"12345678901234567890", 1, 13, "1234567890123"},
        {"abc", 3, 5, "c"},
        {"abc", 4, std::nullopt, ""},
        {"abc", 100, 2, ""},
        {"abc", 1, 0, ""},
        {"", 1, 3, ""},
        {"a\xFF"
         "b",
         2, 1, "\xFF"}, // a byte that is no UTF-8 counts as one character
    };
    for (const auto& f : fälle)
        EXPECT_EQ(JetMid(f.text, f.start, f.länge), f.erwartet) << f.text << " ab " << f.start;
}

TEST(JetMid, StartUnterEinsUndNegativeLängeSindFehler) {
    EXPECT_THROW(JetMid("abc", 0, std::nullopt), Fehler);
    EXPECT_THROW(JetMid("abc", -3, 1), Fehler);
    EXPECT_THROW(JetMid("abc", 1, -1), Fehler);
}

TEST(JetInstr, PositionNachBasicsRegeln) {
    struct Fall {
        std::int64_t start;
        std::string text;
        std::string suche;
        bool textvergleich;
        std::int64_t erwartet;
    };
    const Fall fälle[] = {
        {1, "12-345; 99-001", "99-001", true, 9},
        {1, "abc", "x", true, 0},
        {1, "abab", "ab", true, 1},
        {2, "abab", "ab", true, 3},
        {4, "abab", "ab", true, 0},
        {1, "Straße 5", "5", true, 8}, // ß is one character
        {1, "Grüße", "ÜSS", true, 0},  // text comparison folds case, not ß
        {1, "GRÜßE", "üß", true, 3},   // umlauts fold as ASCII does
        {1, "GRÜßE", "üß", false, 0},  // binary comparison
        {1, "abc", "", true, 1},       // empty search gives the start
        {3, "abc", "", true, 3},
        {1, "", "a", true, 0}, // empty text gives 0
        {1, "", "", true, 0},
        {5, "abc", "c", true, 0}, // start beyond the end
    };
    for (const auto& f : fälle)
        EXPECT_EQ(JetInstr(f.start, f.text, f.suche, f.textvergleich), f.erwartet)
            << f.start << ", " << f.text << ", " << f.suche;
    EXPECT_THROW(JetInstr(0, "abc", "a", true), Fehler);
}

TEST(JetTrim, NurLeerzeichenAnBeidenEnden) {
    const std::pair<std::string, std::string> fälle[] = {{"  Musterweg 3  ", "Musterweg 3"},
                                                         {"   ", ""},
                                                         {"", ""},
                                                         {"\tx ", "\tx"},
                                                         {"a  b", "a  b"}};
    for (const auto& [text, erwartet] : fälle)
        EXPECT_EQ(JetTrim(text), erwartet);
}

TEST(JetZahlText, WieBasicsCStr) {
    const std::pair<double, std::string> fälle[] = {
        {5.0, "5"},
        {1.5, "1.5"},
        {0.1, "0.1"},
        {-2.25, "-2.25"},
        {-0.0, "0"},
        {1e20, "1E+20"},
        {1e-5, "1E-05"},
        {123456789012345.0, "123456789012345"},
        {1.0 / 3.0, "0.333333333333333"},
    };
    for (const auto& [zahl, erwartet] : fälle)
        EXPECT_EQ(JetZahlText(zahl), erwartet);
}

TEST(Namensverzeichnis, FindetDieEchteSchreibweise) {
    Namensverzeichnis namen;
    for (const auto* name : {"tblFlurstück", "Straßenschlüssel", "Land", "Größe", "Grösse"})
        namen.Hinzufügen(name);
    const std::pair<std::string, Wert> fälle[] = {
        {"Strassenschlüssel", "Straßenschlüssel"},
        {"STRASSENSCHLÜSSEL", "Straßenschlüssel"},
        {"TBLFLURSTÜCK", "tblFlurstück"},
        {"LAND", "Land"},
        {"Größe", "Größe"},       // written as a real name: that one, though another folds alike
        {"GRÖSSE", std::nullopt}, // folds to two names: left to SQLite
        {"tblFlurstueck", std::nullopt},
        {"Gemarkung", std::nullopt},
    };
    for (const auto& [wort, erwartet] : fälle)
        EXPECT_EQ(namen.Auflösen(wort), erwartet) << wort;
    namen.Leeren();
    EXPECT_EQ(namen.Auflösen("Land"), std::nullopt);
}

TEST(JetNachSqlite, KlammernMusterUndNamenImText) {
    Namensverzeichnis namen;
    for (const auto* name :
         {"tblFlurstück", "Straßenschlüssel", "Straßenschlüsselname", "BZ-AZ-Fläche"})
        namen.Hinzufügen(name);
    const std::pair<std::string, std::string> fälle[] = {
        {"SELECT [BZ-AZ-Fläche] FROM tblFlurstück WHERE Strassenschlüssel LIKE '*12*'",
         "SELECT \"BZ-AZ-Fläche\" FROM tblFlurstück WHERE \"Straßenschlüssel\" LIKE '%12%'"},
        // Words in strings, comments and after AS stay as written; so do function names.
        {"SELECT 'Strassenschlüssel' AS Strassenschlüsselname -- Strassenschlüssel\nFROM "
         "TBLFLURSTÜCK",
         "SELECT 'Strassenschlüssel' AS Strassenschlüsselname -- Strassenschlüssel\nFROM "
         "\"tblFlurstück\""},
        {"SELECT TBLFLURSTÜCK.STRASSENSCHLÜSSEL, tblflurstück.Straßenschlüssel FROM tblFlurstück",
         "SELECT \"tblFlurstück\".\"Straßenschlüssel\", tblflurstück.Straßenschlüssel FROM "
         "tblFlurstück"},
        // A new table keeps the spelling its author chose.
        {"CREATE TABLE Kopie (Strassenschlüssel TEXT)",
         "CREATE TABLE Kopie (Strassenschlüssel TEXT)"},
        {"SELECT [a]]b], \"x\"\"y\", 'x\"y'", "SELECT \"a]b\", 'x\"y', 'x\"y'"},
        {"SELECT \"it's\"", "SELECT 'it''s'"},
        {"SELECT \"offen", "SELECT \"offen"},
    };
    for (const auto& [jet, sqlite] : fälle)
        EXPECT_EQ(JetNachSqlite(jet, &namen), sqlite);
}

TEST(JetNachSqlite, JetBezeichnerÜberstehtJedenNamen) {
    Datenbank db(":memory:");
    const std::string namen[] = {"BZ-AZ-Fläche", "a]b", "Flurstück/Nenner", "x\"y",
                                 "mit Blank #1:2"};
    for (const auto& name : namen) {
        db.AusführenNativ("DROP TABLE IF EXISTS t");
        db.AusführenNativ("CREATE TABLE t (" + Bezeichner(name) + " TEXT)");
        db.Ausführen("INSERT INTO t (" + JetBezeichner(name) + ") VALUES ('wert')");
        EXPECT_EQ(Auswerten(db, JetBezeichner(name) + " FROM t"), "wert") << name;
    }
}

TEST(JetNachSqlite, VerkettungRechnetWieJet) {
    Datenbank db(":memory:");
    const std::pair<std::string, Wert> fälle[] = {
        {"'a' & 'b'", "ab"},
        {"NULL & 'b'", "b"},
        {"'a' & NULL", "a"},
        {"NULL & NULL", std::nullopt},
        {"1.5 & 'x'", "1.5x"},
        {"CAST(2 AS REAL) & ''", "2"},
        {"2 + 3 & 'x'", "5x"},
        {"'x' & 2 * 3", "x6"},
        {"'x' & -1", "x-1"},
        {"'a' & 'b' = 'ab'", "1"},
        {"\"Jet\" & \"-\" & \"Text\"", "Jet-Text"},
        {"'it''s' & \"!\"", "it's!"},
        {"\"sag \"\"ja\"\"\"", "sag \"ja\""},
        {"'a' /* & */ & 'b'", "ab"},
        {"'--' & 'x' -- & 'y'", "--x"},
        {"Trim('  a ' & ' b  ')", "a  b"},
        {"Trim(NULL & ' ' & NULL)", ""},
        {"MID('Flurstück' & 'sname', 6)", "tücksname"},
        {"Instr('ab' & 'cd', 'c') & ''", "3"},
        {"CASE WHEN 1 = 1 THEN 'j' ELSE 'n' END & 'a'", "ja"},
        {"(1 + 1) & ('a' & 'b')", "2ab"},
        {"abs(-4) & 'x'", "4x"},
        {"1e3 & '|' & .5 & '|' & 0x1F", "1000|0.5|31"},
    };
    for (const auto& [ausdruck, erwartet] : fälle)
        EXPECT_EQ(Auswerten(db, ausdruck), erwartet) << ausdruck;
}

TEST(JetNachSqlite, LiteraleBleibenUnberührt) {
    Datenbank db(":memory:");
    const std::string inhalte[] = {"a & b",
                                   "*?%_",
                                   "[Flurstück]",
                                   "\"q\"",
                                   "-- kein Kommentar",
                                   "/* auch nicht */",
                                   "it's",
                                   "Straße; ",
                                   "",
                                   "x'; DROP TABLE t; --"};
    for (const auto& inhalt : inhalte) {
        EXPECT_EQ(Auswerten(db, SqlText(inhalt)), inhalt);
        std::string jetText = "\"";
        for (const char c : inhalt)
            jetText += c == '"' ? std::string("\"\"") : std::string(1, c);
        EXPECT_EQ(Auswerten(db, jetText + "\""), inhalt);
    }
}

TEST(JetNachSqlite, LikeMusterWieJet) {
    Datenbank db(":memory:");
    struct Fall {
        std::string wert;
        std::string muster;
        bool treffer;
    };
    const Fall fälle[] = {
        {"00456; 00123", "*00123*", true},
        {"00456", "*00123*", false},
        {"ABC", "a?c", true},
        {"abc", "a?", false},
        {"50%", "*%", true}, // % and _ are plain characters in Jet
        {"500", "*%", false},
        {"a_b", "a_b", true},
        {"axb", "a_b", false},
        {"a*b", "a[*]b", true},
        {"axb", "a[*]b", false},
        {"x\\y", "x\\y", true},
        {"Straße", "STRASSE", false},
    };
    for (const auto& f : fälle) {
        const std::string erwartet = f.treffer ? "1" : "0";
        EXPECT_EQ(Auswerten(db, SqlText(f.wert) + " LIKE " + SqlText(f.muster)), erwartet)
            << f.wert << " LIKE " << f.muster;
        EXPECT_EQ(Auswerten(db, SqlText(f.wert) + " LIKE \"" + f.muster + "\""), erwartet)
            << f.wert << " LIKE \"" << f.muster << "\"";
    }
    EXPECT_EQ(Auswerten(db, "'abc' LIKE 'a%c' ESCAPE '!'"), "1"); // native pattern: untouched
}

TEST(JetNachSqlite, WasNichtÜbersetztWerdenKannIstEinFehler) {
    const std::string fälle[] = {
        "SELECT 'a' LIKE '#1'",   "SELECT 'a' LIKE '[a-c]'",
        "SELECT 'a' LIKE '[!a]'", "SELECT 'a' LIKE '[ab'",
        "SELECT & 'a'",           "SELECT 'a' &",
        "SELECT 'a' & WHERE",     "SELECT 'a' & (1",
    };
    for (const auto& jet : fälle)
        EXPECT_THROW(JetNachSqlite(jet), Fehler) << jet;
}

TEST(JetFunktionen, InSqlMitNullUndFehlern) {
    Datenbank db(":memory:");
    const std::pair<std::string, Wert> fälle[] = {
        {"MID(NULL, 1)", std::nullopt},
        {"MID(12345, 2, 2)", "23"},
        {"MID('abc', 2.5)", "bc"},
        {"Instr(2, 'abcabc', 'c')", "3"},
        {"Instr(1, 'ÄBC', 'äbc', 0)", "0"},
        {"Instr(1, 'ÄBC', 'äbc', 1)", "1"},
        {"Instr(NULL, 'a')", std::nullopt},
        {"Instr('a', NULL)", std::nullopt},
        {"Trim('  x ')", "x"},
        {"Trim(NULL)", std::nullopt},
        {"trim('xax', 'x')", "a"}, // SQLite's own two-argument form stays
    };
    for (const auto& [ausdruck, erwartet] : fälle)
        EXPECT_EQ(Auswerten(db, ausdruck), erwartet) << ausdruck;
    for (const std::string falsch : {"MID('abc', 0)", "MID('abc', 1, -2)", "Instr(0, 'a', 'a')"}) {
        try {
            Auswerten(db, falsch);
            ADD_FAILURE() << falsch << " hätte fehlschlagen müssen";
        } catch (const Fehler& fehler) {
            EXPECT_NE(std::string(fehler.what()).find(falsch.substr(0, 3)), std::string::npos)
                << fehler.what();
        }
    }
}

} // namespace
} // namespace flurix
