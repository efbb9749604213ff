// The inputs the fuzzers found, and one input per target that takes its reader's error path, played
// again through the fuzz entries: tests/daten/fuzz/<target>/ holds them, one folder per target of
// fuzz/ziele.hpp. Each entry must return for each file (no exception, no crash; the sanitizers of
// the fuzz build are not needed to see a throw or most crashes again).

#include "fuzz/ziele.hpp"

#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace flurix::fuzz {
namespace {

namespace fs = std::filesystem;

const fs::path Eingaben = test::Testdaten() / "fuzz";

std::vector<fs::path> Dateien(const fs::path& ordner) {
    std::vector<fs::path> dateien;
    for (const auto& eintrag : fs::directory_iterator(ordner))
        if (eintrag.is_regular_file())
            dateien.push_back(eintrag.path());
    std::sort(dateien.begin(), dateien.end());
    return dateien;
}

class FuzzEingaben : public testing::TestWithParam<FuzzZiel> {};

TEST_P(FuzzEingaben, JedeDateiLäuftDurchOhneAusnahme) {
    const FuzzZiel ziel = GetParam();
    const fs::path ordner = Eingaben / ziel.name;
    ASSERT_TRUE(fs::is_directory(ordner)) << ordner;
    const auto dateien = Dateien(ordner);
    ASSERT_FALSE(dateien.empty()) << ordner;
    for (const auto& datei : dateien) {
        const std::string inhalt = test::DateiLesen(datei);
        const Eingabe daten(reinterpret_cast<const std::uint8_t*>(inhalt.data()), inhalt.size());
        EXPECT_NO_THROW(ziel.eintrag(daten)) << datei;
    }
}

INSTANTIATE_TEST_SUITE_P(Ziele, FuzzEingaben,
                         testing::ValuesIn(FuzzZiele().begin(), FuzzZiele().end()),
                         [](const testing::TestParamInfo<FuzzZiel>& parameter) {
                             return std::string(parameter.param.name);
                         });

TEST(FuzzEingabenOrdner, JederOrdnerGehörtZuEinemZiel) {
    std::set<std::string> namen;
    for (const auto& ziel : FuzzZiele())
        namen.emplace(ziel.name);
    EXPECT_EQ(namen.size(), FuzzZiele().size()) << "ein Zielname doppelt";
    for (const auto& eintrag : fs::directory_iterator(Eingaben)) {
        if (eintrag.is_directory()) {
            EXPECT_TRUE(namen.count(eintrag.path().filename().string())) << eintrag.path();
        }
    }
}

} // namespace
} // namespace flurix::fuzz
