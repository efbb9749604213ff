// flurix export: every format from a table file, the marked rows, a view, and wrong calls.

#include "cli/cli.hpp"

#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <sstream>

namespace flurix::cli {
namespace {

namespace fs = std::filesystem;
using test::DateiLesen;
using test::DateiSchreiben;

class CliExport : public ::testing::Test {
protected:
    CliExport() {
        DateiSchreiben(ordner / "inst" / "config" / "Flurix.dat",
                       "tempArbeitsverzeichnis =" + (ordner / "arbeit").string() + "/\r\n");
        DateiSchreiben(ordner / "inst" / "config" / "WebService.fil", "");
        DateiSchreiben(ordner / "inst" / "config" / "ALB_DatenbankSpalten.dat",
                       "nurname=Name;Flur\r\n");
        umgebung.installation = ordner / "inst";
        umgebung.oberflächeStarten = [](const std::vector<std::string>&) { return 0; };
        DateiSchreiben(tabelle, "Gemarkung\tFlur\tName\tcheckdruck\n"
                                "Nord\t007\tMeier & Co\t1\n"
                                "Süd\t001\tŁukasz\t\n");
    }
    int Lauf(const std::vector<std::string>& argumente) {
        aus.str({});
        fehler.str({});
        return Ausführen(argumente, aus, fehler, umgebung);
    }

    test::TempOrdner ordner;
    fs::path tabelle = ordner / "t.tsv";
    Umgebung umgebung;
    std::ostringstream aus, fehler;
};

TEST_F(CliExport, JedesFormatSchreibtGenauDieGenannteDatei) {
    struct Fall {
        std::string format;
        std::string datei;
        std::string anfang; ///< the first bytes the file must have
    };
    const Fall fälle[] = {
        {"txt-tab", "a.txt", "Gemarkung\tFlur\tName\tcheckdruck\t\r\nNord\t007\tMeier & Co\t1\t\r\n"},
        {"txt-dollar", "a.dollar", "Gemarkung$Flur$Name$checkdruck$\r\n"},
        {"xlsx", "a.xlsx", "PK"},
        {"xml", "a.xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Kataster>"},
        {"fil", "a.fil", "FLURIX-TABELLE\t1\n"},
        {"sqlite", "a.sqlite", std::string("SQLite format 3\0", 16)},
        {"html", "a.htm", "<!DOCTYPE html>"},
        {"tsv", "a.tsv", "Gemarkung\tFlur\tName\tcheckdruck\nNord\t007\tMeier & Co\t1\n"},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.format);
        const fs::path out = ordner / "aus" / f.datei;
        fs::create_directories(out.parent_path());
        EXPECT_EQ(Lauf({"export", tabelle.string(), "--format", f.format, "--out", out.string()}), 0)
            << fehler.str();
        EXPECT_EQ(aus.str(), out.string() + "\n");
        ASSERT_TRUE(fs::exists(out));
        EXPECT_EQ(DateiLesen(out).substr(0, f.anfang.size()), f.anfang);
    }
    // Written again: the file is replaced without a question, the question is on stderr.
    const fs::path txt = ordner / "aus" / "a.txt";
    EXPECT_EQ(Lauf({"export", tabelle.string(), "--format", "txt-tab", "--out", txt.string()}), 0);
    EXPECT_NE(fehler.str().find("Datei " + txt.string() + " ersetzen?   "), std::string::npos);
}

TEST_F(CliExport, NurMarkierteUndAnsicht) {
    const fs::path out = ordner / "m.txt";
    EXPECT_EQ(Lauf({"export", tabelle.string(), "--format", "txt-tab", "--out", out.string(),
                    "--nur-markierte", "--ansicht", "nurname"}),
              0)
        << fehler.str();
    EXPECT_EQ(DateiLesen(out), "Name\tFlur\t\r\nMeier & Co\t007\t\r\n");
    EXPECT_NE(fehler.str().find("Es werden alle (1) selektierten Datenzeilen ausgegeben! Weiter?   "),
              std::string::npos);

    EXPECT_EQ(Lauf({"export", tabelle.string(), "--format", "xml", "--out", out.string(),
                    "--ansicht", "gibtsnicht"}),
              1);
    EXPECT_NE(fehler.str().find("Die Ansicht \"gibtsnicht\""), std::string::npos);
}

TEST_F(CliExport, FalscheAufrufeUndFehler) {
    struct Fall {
        std::vector<std::string> argumente;
        int code;
        std::string meldung;
    };
    const std::string t = tabelle.string();
    const std::string o = (ordner / "x.txt").string();
    const Fall fälle[] = {
        {{"export", t, "--format", "txt-tab"}, 2, "Bitte eine Tabelle, --format und --out angeben"},
        {{"export", t, "--format", "pdf", "--out", o}, 2, "unbekanntes Format \"pdf\""},
        {{"export", t, "--format", "txt-tab", "--out", (ordner / "fehlt" / "x.txt").string()}, 1,
         "ist nicht vorhanden oder nicht beschreibbar!   "},
        {{"export", t, "--format", "geograf", "--out", (ordner / "x.out").string()}, 1,
         "Der GEOgraf-Export ist in dieser Version von Flurix noch nicht verfügbar!   "},
        {{"export", (ordner / "fehlt.fil").string(), "--format", "xml", "--out", o}, 1, "fehlt.fil"},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.meldung);
        EXPECT_EQ(Lauf(f.argumente), f.code);
        EXPECT_NE(fehler.str().find(f.meldung), std::string::npos) << fehler.str();
    }
    // Without marks, --nur-markierte has nothing to write.
    DateiSchreiben(tabelle, "Gemarkung\tcheckdruck\nNord\t\n");
    EXPECT_EQ(Lauf({"export", t, "--format", "xml", "--out", o, "--nur-markierte"}), 1);
    EXPECT_NE(fehler.str().find("Keine Zeile der Tabelle ist markiert"), std::string::npos);
    EXPECT_EQ(Lauf({"export", "--help"}), 0);
    EXPECT_NE(aus.str().find("Ohne Fenster wird jede Frage mit Ja beantwortet"), std::string::npos);
}

} // namespace
} // namespace flurix::cli
