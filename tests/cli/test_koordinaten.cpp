// "flurix koordinaten" as a function: pairs of a file in both directions, with the expected
// values taken from PROJ (cs2cs EPSG:4258 <-> EPSG:25832/25833), bad lines and bad arguments.

#include "cli/cli.hpp"

#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

namespace flurix::cli {
namespace {

std::vector<std::string> Zeilen(const std::string& text) {
    std::vector<std::string> zeilen;
    std::istringstream ein(text);
    for (std::string z; std::getline(ein, z);)
        zeilen.push_back(z);
    return zeilen;
}

std::vector<double> Zahlen(const std::string& zeile) {
    std::vector<double> zahlen;
    std::istringstream ein(zeile);
    for (double z; ein >> z;)
        zahlen.push_back(z);
    return zahlen;
}

TEST(CliKoordinaten, RechnetZeilenweiseUm) {
    struct Fall {
        std::string name, von, nach, eingabe;
        std::vector<std::string> erwartet; // per output line; "" for an empty line
        double toleranz;
        int code = 0;
        std::string meldung = "";
    };
    const Fall fälle[] = {
        {"Mittelmeridian, Dezimalkomma, Semikolon",
         "25833",
         "geo",
         "500000 5816652,006335\n457000;5754000\n\n",
         {"52.5 15", "51.9350579590 14.3745410468", ""},
         1e-8},
        {"Grad, Minuten, Sekunden",
         "geo",
         "25833",
         "52°30'0\" 15\n51.9350579590\t14.3745410468\n",
         {"500000.000 5816652.006", "457000.000 5754000.000"},
         0.0015},
        {"Streifenwechsel am Rand beider Streifen",
         "25832",
         "25833",
         "703625.170197 5820882.978548\n",
         {"296374.830 5820882.979"},
         0.0015},
        {"schlechte Zeile bleibt leer",
         "25832",
         "geo",
         "500000 5816652.006335\nabc 5754000\n1 2 3\n",
         {"52.5 9", "", ""},
         1e-8,
         1,
         "Zeile 2 ist kein Koordinatenpaar: \"abc 5754000\""},
        {"negativer Winkel in Grad und Minuten",
         "geo",
         "25833",
         "-52°30' 15\n52,5 15\n",
         {"", "500000.000 5816652.006"},
         0.0015,
         1,
         "Zeile 1 ist kein Koordinatenpaar"},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        test::TempOrdner ordner;
        test::DateiSchreiben(ordner / "paare.txt", f.eingabe);
        std::ostringstream aus, fehler;
        const int code = Ausführen(
            {"koordinaten", "--von", f.von, "--nach", f.nach, (ordner / "paare.txt").string()}, aus,
            fehler);
        EXPECT_EQ(code, f.code);
        if (f.meldung.empty())
            EXPECT_EQ(fehler.str(), "");
        else
            EXPECT_NE(fehler.str().find(f.meldung), std::string::npos) << fehler.str();
        const auto zeilen = Zeilen(aus.str());
        ASSERT_EQ(zeilen.size(), f.erwartet.size()) << aus.str();
        for (std::size_t i = 0; i < zeilen.size(); ++i) {
            SCOPED_TRACE(zeilen[i]);
            const auto ist = Zahlen(zeilen[i]);
            const auto soll = Zahlen(f.erwartet[i]);
            ASSERT_EQ(ist.size(), soll.size());
            for (std::size_t k = 0; k < ist.size(); ++k)
                EXPECT_NEAR(ist[k], soll[k], f.toleranz);
        }
        // Metric output keeps millimetres, geographic 10 places.
        if (!zeilen.empty() && !zeilen[0].empty()) {
            const auto punkt = zeilen[0].find('.');
            const auto blank = zeilen[0].find(' ');
            EXPECT_EQ(blank - punkt - 1, f.nach == "geo" ? 10u : 3u);
        }
    }
}

TEST(CliKoordinaten, FalscherAufruf) {
    const std::vector<std::string> aufrufe[] = {
        {"koordinaten", "--von", "31467", "--nach", "geo"},
        {"koordinaten", "--von", "geo"},
        {"koordinaten", "--von", "geo", "--nach", "25832", "a.txt", "b.txt"},
        {"koordinaten", "--von", "geo", "--nach", "25832", "--unbekannt"},
    };
    for (const auto& aufruf : aufrufe) {
        SCOPED_TRACE(aufruf.back());
        std::ostringstream aus, fehler;
        EXPECT_EQ(Ausführen(aufruf, aus, fehler), 2);
        EXPECT_EQ(aus.str(), "");
        EXPECT_FALSE(fehler.str().empty());
    }
    std::ostringstream aus, fehler;
    EXPECT_EQ(Ausführen({"koordinaten", "--von", "geo", "--nach", "25832", "/gibt/es/nicht.txt"},
                        aus, fehler),
              1);
    EXPECT_EQ(fehler.str(),
              "flurix koordinaten: Die Datei /gibt/es/nicht.txt ist nicht vorhanden.\n");
}

} // namespace
} // namespace flurix::cli
