// The command line as a user's machine treats it: a write that fails half-way (the file size limit
// of the shell stands for a full disk, with the signal ignored the program sees the error, without
// it the system stops the program) leaves the user's older file as it was, and a German locale
// changes no byte of any output.

#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>
#include <vector>

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
            if (argumente.starts_with("<muster>"))
                argumente.replace(0, 8, bank.Pfad("muster.xml"));
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
