// The command line as a user's machine treats it: a write that fails half-way (the file size limit
// of the shell stands for a full disk, with the signal ignored the program sees the error, without
// it the system stops the program) leaves the user's older file as it was, and a German locale
// changes no byte of any output.

#include "core/text.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <regex>
#include <string>
#include <vector>

#include <sys/wait.h>

namespace flurix::cli {
namespace {

namespace fs = std::filesystem;

const fs::path Quellen = FLURIX_QUELLEN;
const std::string Programm = std::string(FLURIX_BINAER) + "/flurix";

// A folder with the samples and the NAS sample's table, made once without any limit.
struct Werkbank {
    Werkbank() {
        fs::copy_file(Quellen / "samples" / "musterkreis_format32.wldge", ordner / "muster.wldge");
        fs::copy_file(Quellen / "samples" / "musterstadt_nas.xml", ordner / "muster.xml");
        lauf = Flurix("", "nas " + Pfad("muster.xml") + " --out " + Pfad("nas.tsv"));
    }
    std::string Pfad(const std::string& name) const { return test::Wort(ordner / name); }
    /// `flurix <argumente>` in the folder, after the shell lines `vorher`.
    test::Programmlauf Flurix(const std::string& vorher, const std::string& argumente) const {
        return test::Ausführen("cd " + test::Wort(ordner.pfad()) + " && bash -c " +
                               test::Wort(vorher + " exec " + Programm + " " + argumente) +
                               " 2>&1");
    }

    test::TempOrdner ordner;
    test::Programmlauf lauf;
};

TEST(CliSchreiben, EinAbbruchMittenImSchreibenLässtDieAlteDatei) {
    if (!fs::exists(Programm))
        GTEST_SKIP() << "flurix nicht gebaut";
    const Werkbank bank;
    ASSERT_EQ(bank.lauf.status, 0) << bank.lauf.ausgabe;
    struct Fall {
        const char* ziel;
        std::string argumente;
    };
    const Fall fälle[] = {
        {"ziel.tsv", "export nas.tsv --format tsv --out ziel.tsv"},
        {"ziel.txt", "export nas.tsv --format txt-tab --out ziel.txt"},
        {"ziel.xlsx", "export nas.tsv --format xlsx --out ziel.xlsx"},
        {"ziel.fil", "export nas.tsv --format fil --out ziel.fil"},
        {"ziel.xml", "export nas.tsv --format xml --out ziel.xml"},
        {"ziel.html", "export nas.tsv --format html --out ziel.html"},
        {"ziel.out", "export nas.tsv --format geograf --form alle --spalten Flurstück,Fläche,Name "
                     "--out ziel.out"},
        {"ziel.pdf", "auszug nas.tsv --zeile 1 --out ziel.pdf"},
        {"ziel.tsv", "nas muster.xml --out ziel.tsv"},
        {"muster.dxf", bank.Pfad("muster.xml") + " /dxfout /still"},
    };
    const std::string alt = "die ältere Datei des Benutzers\n";
    // 4 KiB: every output of the sample is larger.
    for (const std::string grenze : {"trap '' XFSZ; ulimit -f 4;", "ulimit -f 4;"}) {
        for (const Fall& fall : fälle) {
            SCOPED_TRACE(grenze + " " + fall.argumente);
            test::DateiSchreiben(bank.ordner / fall.ziel, alt);
            const auto lauf = bank.Flurix(grenze, fall.argumente);
            EXPECT_NE(lauf.status, 0) << lauf.ausgabe;
            EXPECT_EQ(test::DateiLesen(bank.ordner / fall.ziel), alt);
            if (!grenze.starts_with("trap"))
                continue; // stopped by the system: its temporary file may stay, the old file stays
                          // too
            for (const auto& eintrag : fs::directory_iterator(bank.ordner.pfad()))
                EXPECT_FALSE(eintrag.path().extension() == ".tmp") << eintrag.path();
        }
    }
}

// Two NAS runs started in the same second (a script's jobs with "&") share the work folder: each
// has a work database of its own, and neither's start or end clears away the other's.
TEST(CliSchreiben, ZweiNasLäufeZugleich) {
    if (!fs::exists(Programm))
        GTEST_SKIP() << "flurix nicht gebaut";
    const Werkbank bank;
    ASSERT_EQ(bank.lauf.status, 0) << bank.lauf.ausgabe;
    const std::string einer = Programm + " nas muster.xml --out ";
    const auto lauf = test::Ausführen("cd " + test::Wort(bank.ordner.pfad()) + " && (" + einer +
                                      "a.tsv > a.txt 2>&1 & " + einer + "b.tsv > b.txt 2>&1 & " +
                                      einer + "c.tsv > c.txt 2>&1 & wait)");
    ASSERT_EQ(lauf.status, 0);
    const std::string erwartet = test::DateiLesen(bank.ordner / "nas.tsv");
    for (const char* name : {"a", "b", "c"}) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(fs::exists(bank.ordner / (std::string(name) + ".tsv")))
            << test::DateiLesen(bank.ordner / (std::string(name) + ".txt"));
        EXPECT_TRUE(test::DateiLesen(bank.ordner / (std::string(name) + ".tsv")) == erwartet);
    }
}

// Texts that would end an SQL string, start a comment or a second statement reach the table as
// they stand in the file: the hostile file gives the table of the plain one with those texts in
// place of the plain ones, row for row, and a search finds them.
TEST(CliEingaben, SqlZeichenInDenDatenKommenUnverändertInDieTabelle) {
    if (!fs::exists(Programm))
        GTEST_SKIP() << "flurix nicht gebaut";
    const Werkbank bank;
    struct Ersetzung {
        std::string schlicht, feindlich, inDerDatei;
    };
    // The WLDGE sample is Windows-1252 and its location field 30 characters wide: ASCII, short.
    const Ersetzung name{"Mustermann", "O'Brien'); DROP TABLE tblBestand; --", ""};
    const Ersetzung straße{"Musterweg", "W\"; DROP TABLE t;/*", ""};
    const Ersetzung nasName{"Hartmann", "X'); DROP TABLE AX_Flurstueck; --",
                            "X&apos;); DROP TABLE AX_Flurstueck; --"};
    const Ersetzung nasStraße{"Schulweg", "Schul\"weg'; DELETE FROM Alkis; /*",
                              "Schul&quot;weg&apos;; DELETE FROM Alkis; /*"};
    struct Fall {
        std::string eingabe, befehl;
        std::vector<Ersetzung> ersetzungen;
        bool semikolonAlsKomma = false; ///< the quick reader's rule: ";" separates its owners
    };
    const Fall fälle[] = {
        {"muster.wldge", "import <ein> --komplett --out <aus>", {name, straße}},
        {"muster.wldge", "import <ein> --out <aus>", {name, straße}, true},
        {"muster.xml", "nas <ein> --out <aus> --flaechen alle", {nasName, nasStraße}},
    };
    for (const Fall& fall : fälle) {
        SCOPED_TRACE(fall.befehl + " " + fall.eingabe);
        std::string feindlich = test::DateiLesen(bank.ordner / fall.eingabe);
        for (const auto& e : fall.ersetzungen) {
            ASSERT_NE(feindlich.find(e.schlicht), std::string::npos) << e.schlicht;
            feindlich =
                Ersetzen(feindlich, e.schlicht, e.inDerDatei.empty() ? e.feindlich : e.inDerDatei);
        }
        const std::string endung = fs::path(fall.eingabe).extension().string();
        test::DateiSchreiben(bank.ordner / ("feindlich" + endung), feindlich);
        std::string tabellen[2];
        for (int i = 0; i < 2; ++i) {
            const std::string ein = i == 0 ? fall.eingabe : "feindlich" + endung;
            const std::string aus = i == 0 ? "schlicht.tsv" : "feindlich.tsv";
            const auto lauf =
                bank.Flurix("", Ersetzen(Ersetzen(fall.befehl, "<ein>", ein), "<aus>", aus));
            ASSERT_EQ(lauf.status, 0) << lauf.ausgabe;
            tabellen[i] = test::DateiLesen(bank.ordner / aus);
        }
        std::string zurück = tabellen[1];
        for (const auto& e : fall.ersetzungen) {
            const std::string inDerTabelle =
                fall.semikolonAlsKomma ? Ersetzen(e.feindlich, ";", ",") : e.feindlich;
            EXPECT_NE(zurück.find(inDerTabelle), std::string::npos) << inDerTabelle;
            zurück = Ersetzen(zurück, inDerTabelle, e.schlicht);
        }
        EXPECT_TRUE(zurück == tabellen[0])
            << "die Tabelle der feindlichen Datei ist nicht die der schlichten";

        // The search bar takes the hostile text as a term like any other (the start of the cell).
        std::string begriff = fall.ersetzungen.front().feindlich;
        if (fall.semikolonAlsKomma)
            begriff = Ersetzen(begriff, ";", ",");
        const auto suche = bank.Flurix("", "suchen feindlich.tsv --spalte Name --begriff " +
                                               test::Wort(begriff + "*") + " --out treffer.tsv");
        ASSERT_EQ(suche.status, 0) << suche.ausgabe;
        const std::string treffer = test::DateiLesen(bank.ordner / "treffer.tsv");
        EXPECT_NE(treffer.find(begriff), std::string::npos) << treffer.substr(0, 300);
    }
}

// Every text reader of the command line against the encodings and line forms users' files come
// in: UTF-16 (with and without byte order mark) is refused with its message, the rest is read or
// refused with a message, never a crash.
TEST(CliEingaben, KodierungenUndZeilenformenJedesTextlesers) {
    if (!fs::exists(Programm))
        GTEST_SKIP() << "flurix nicht gebaut";
    const Werkbank bank;
    ASSERT_EQ(bank.lauf.status, 0) << bank.lauf.ausgabe;
    fs::copy_file(Quellen / "samples" / "musterstadt_webxml_auszug.xml",
                  bank.ordner / "webxml.xml");
    fs::copy_file(test::Testdaten() / "markierung" / "vier_formen_ein_schluessel_fehlt.lst",
                  bank.ordner / "liste.lst");
    ASSERT_EQ(bank.Flurix("", "export nas.tsv --format fil --out nas.fil").status, 0);
    struct Leser {
        std::string quelle, endung, befehl; // "<ein>" is the variant's file
    };
    const Leser leser[] = {
        {"muster.wldge", ".wldge", "import <ein> --komplett --out aus.tsv"},
        {"muster.wldge", ".wldge", "import <ein> --out aus.tsv"},
        {"webxml.xml", ".xml", "import <ein> --out aus.tsv"},
        {"muster.xml", ".xml", "nas <ein> --out aus.tsv"},
        {"nas.tsv", ".tsv", "export <ein> --format tsv --out aus.tsv"},
        {"nas.fil", ".fil", "export <ein> --format tsv --out aus.tsv"},
        {"liste.lst", ".lst", "markieren nas.tsv --liste <ein> --out aus.tsv"},
    };
    const auto utf16 = [](const std::string& text, bool bom) {
        std::string aus = bom ? "\xFF\xFE" : "";
        for (const char c : text)
            aus.append({c, '\0'});
        return aus;
    };
    const auto zeilenweise = [](const std::string& text, const auto& zeile) {
        std::string aus;
        std::size_t nummer = 0;
        for (std::size_t anfang = 0; anfang < text.size(); ++nummer) {
            std::size_t ende = text.find('\n', anfang);
            ende = ende == std::string::npos ? text.size() : ende + 1;
            aus += zeile(text.substr(anfang, ende - anfang), nummer);
            anfang = ende;
        }
        return aus;
    };
    struct Form {
        const char* name;
        std::function<std::string(const std::string&)> machen;
        bool utf16 = false;
    };
    const Form formen[] = {
        {"UTF-16 mit BOM", [&](const std::string& t) { return utf16(t, true); }, true},
        {"UTF-16 ohne BOM", [&](const std::string& t) { return utf16(t, false); }, true},
        {"UTF-8 mit BOM", [](const std::string& t) { return "\xEF\xBB\xBF" + t; }},
        {"gemischte Zeilenenden",
         [&](const std::string& t) {
             return zeilenweise(t, [](std::string z, std::size_t n) {
                 if (z.ends_with("\r\n") && n % 3 == 1)
                     z.erase(z.size() - 2, 1); // LF alone
                 else if (z.ends_with("\n") && n % 3 == 2)
                     z.back() = '\r'; // CR alone
                 return z;
             });
         }},
        {"NUL-Bytes",
         [&](const std::string& t) {
             return zeilenweise(t, [](std::string z, std::size_t n) {
                 return n % 4 == 1 ? z.insert(z.size() / 2, 1, '\0') : z;
             });
         }},
        {"Zeile von 10 MB",
         [&](const std::string& t) {
             return zeilenweise(t, [](std::string z, std::size_t n) {
                 return n == 2 ? std::string(10'000'000, 'A') + "\r\n" + z : z;
             });
         }},
    };
    for (const Leser& l : leser) {
        const std::string text = test::DateiLesen(bank.ordner / l.quelle);
        for (const Form& form : formen) {
            SCOPED_TRACE(l.befehl + ", " + l.quelle + ": " + form.name);
            const std::string name = std::string("form") + l.endung;
            test::DateiSchreiben(bank.ordner / name, form.machen(text));
            const auto lauf = bank.Flurix("", Ersetzen(l.befehl, "<ein>", name));
            ASSERT_TRUE(WIFEXITED(lauf.status)) << "abgestürzt: " << lauf.ausgabe.substr(0, 500);
            if (form.utf16) {
                EXPECT_EQ(WEXITSTATUS(lauf.status), 1);
                EXPECT_NE(lauf.ausgabe.find("ist in UTF-16 kodiert! Flurix liest Textdateien in "
                                            "Windows-1252 oder UTF-8"),
                          std::string::npos)
                    << lauf.ausgabe.substr(0, 500);
            } else {
                EXPECT_LE(WEXITSTATUS(lauf.status), 1) << lauf.ausgabe.substr(0, 500);
                if (WEXITSTATUS(lauf.status) == 1) {
                    EXPECT_FALSE(lauf.ausgabe.empty()) << "Abbruch ohne Meldung";
                }
            }
        }
    }
}

// One batch of jobs under the C locale and under German (comma decimals, other collation): every
// output file the same, byte for byte (the clock line of a NAS drawing masked).
TEST(CliSchreiben, GleicheBytesUnterDeutscherLocale) {
    if (!fs::exists(Programm))
        GTEST_SKIP() << "flurix nicht gebaut";
    if (test::Ausführen("locale -a 2>/dev/null").ausgabe.find("de_DE.utf8") == std::string::npos)
        GTEST_SKIP() << "Locale de_DE.UTF-8 fehlt (./flurix.sh setup erzeugt sie)";
    const std::vector<std::pair<std::string, std::string>> aufträge = {
        {"k.tsv", "import muster.wldge --komplett --out k.tsv"},
        {"s.tsv", "import muster.wldge --out s.tsv"},
        {"k.txt", "export k.tsv --format txt-dollar --out k.txt"},
        {"k.xml", "export k.tsv --format xml --out k.xml"},
        {"n.tsv", "nas muster.xml --out n.tsv --flaechen alle"},
        {"n.out", "export n.tsv --format geograf --form stempel-b --out n.out"},
        {"n.pdf", "auszug n.tsv --zeile 2 --out n.pdf"},
        {"muster.out", "<muster> /ggout /still /txt-sch"},
        {"muster.dxf", "<muster> /dxfout /still"},
    };
    static const std::regex uhrzeit("erstellt am: [0-9.]+, Uhrzeit: [0-9:]+");
    std::vector<std::string> ausgaben[2];
    for (int i = 0; i < 2; ++i) {
        const Werkbank bank;
        const std::string locale = i == 0 ? "C" : "de_DE.UTF-8";
        for (auto [datei, argumente] : aufträge) {
            SCOPED_TRACE(locale + ": " + argumente);
            // A job line names its file with the whole path.
            argumente = Ersetzen(argumente, "<muster>", bank.Pfad("muster.xml"));
            const auto lauf = bank.Flurix(
                "export LC_ALL=" + locale + " SOURCE_DATE_EPOCH=1700000000;", argumente);
            ASSERT_EQ(lauf.status, 0) << lauf.ausgabe;
            ausgaben[i].push_back(
                std::regex_replace(test::DateiLesen(bank.ordner / datei), uhrzeit, "Uhrzeit"));
        }
    }
    for (std::size_t a = 0; a < aufträge.size(); ++a) {
        SCOPED_TRACE(aufträge[a].first);
        EXPECT_GT(ausgaben[0][a].size(), 500U);
        EXPECT_TRUE(ausgaben[0][a] == ausgaben[1][a]) << "unter de_DE.UTF-8 andere Bytes";
    }
}

} // namespace
} // namespace flurix::cli
