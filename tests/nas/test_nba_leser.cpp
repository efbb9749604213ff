// The operations of an update delivery: GDAL's three samples with what GDAL's own tests read from
// them, a generated delivery of many megabytes (operations across the read blocks), and a file cut
// inside an operation.

#include "nas/nba_leser.hpp"

#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace flurix::nas {
namespace {

namespace fs = std::filesystem;

std::vector<NbaOperation> Alle(const fs::path& datei, bool* abgeschnitten = nullptr) {
    NbaLeser leser(datei);
    std::vector<NbaOperation> ops;
    while (auto op = leser.Nächste())
        ops.push_back(std::move(*op));
    if (abgeschnitten != nullptr)
        *abgeschnitten = leser.Abgeschnitten();
    return ops;
}

TEST(NbaLeser, DieBeispieleWieGdal) {
    const fs::path ordner = test::GemeinsameTestdaten() / "gdal-autotest-nas";
    if (!fs::exists(ordner / "delete_nas.xml"))
        GTEST_SKIP() << "NBA-Beispiele fehlen: " << ordner;
    const auto löschen = Alle(ordner / "delete_nas.xml");
    ASSERT_EQ(löschen.size(), 3U);
    for (const auto& op : löschen) {
        EXPECT_EQ(op.art, NbaOperation::Art::Löschen);
        EXPECT_EQ(op.typName, "AX_Namensnummer");
        EXPECT_TRUE(op.objekt.empty());
    }
    EXPECT_EQ(löschen[0].kennung, "DENW44AL00000HJU20100730T092847Z");
    EXPECT_EQ(Objektkennung(löschen[0].kennung), "DENW44AL00000HJU");

    const auto ersetzen = Alle(ordner / "replace_nas.xml");
    ASSERT_EQ(ersetzen.size(), 1U);
    const NbaOperation& r = ersetzen.front();
    EXPECT_EQ(r.art, NbaOperation::Art::Ersetzen);
    EXPECT_EQ(r.typName, "AX_Flurstueck");
    EXPECT_EQ(r.neueKennung, "DENW44AL00003IkM20110429T070635Z");
    EXPECT_EQ(r.kennung, "DENW44AL00003IkM20100809T071726Z");
    EXPECT_FALSE(r.ignorierbar);
    EXPECT_TRUE(r.objekt.starts_with("<AX_Flurstueck gml:id=")) << r.objekt.substr(0, 80);
    EXPECT_TRUE(r.objekt.ends_with("</AX_Flurstueck>"));
    EXPECT_NE(r.objekt.find("<stelle>5212</stelle>"), std::string::npos);

    EXPECT_TRUE(Alle(ordner / "empty_nas.xml").empty());
}

TEST(NbaLeser, VieleOperationenUndEinAbgeschnittenes) {
    test::TempOrdner ordner;
    std::string text =
        "<AX_NutzerbezogeneBestandsdatenaktualisierung_NBA><geaenderteObjekte><wfs:Transaction>\n";
    constexpr int Anzahl = 20000;
    for (int i = 0; i < Anzahl; ++i) {
        const std::string id = "DENW44AL" + std::to_string(10000000 + i);
        if (i % 2 == 0)
            text += "<wfs:Delete typeName=\"AX_Gebaeude\"><ogc:Filter><ogc:FeatureId fid=\"" + id +
                    "20200101T000000Z\" /></ogc:Filter></wfs:Delete>\n";
        else
            text += "<wfs:Insert><AX_Gebaeude gml:id=\"" + id + "20200101T000000Z\"><name>" +
                    std::string(150, 'x') + "</name></AX_Gebaeude></wfs:Insert>\n";
    }
    const fs::path ganz = ordner / "ganz.xml";
    test::DateiSchreiben(ganz, text + "</wfs:Transaction></geaenderteObjekte></"
                                      "AX_NutzerbezogeneBestandsdatenaktualisierung_NBA>\n");
    ASSERT_GT(fs::file_size(ganz), 3u << 20) << "across several read blocks";
    bool abgeschnitten = true;
    const auto ops = Alle(ganz, &abgeschnitten);
    ASSERT_EQ(ops.size(), static_cast<std::size_t>(Anzahl));
    EXPECT_FALSE(abgeschnitten);
    for (int i = 0; i < Anzahl; i += 997) {
        SCOPED_TRACE(i);
        const std::string id = "DENW44AL" + std::to_string(10000000 + i) + "20200101T000000Z";
        EXPECT_EQ(ops[static_cast<std::size_t>(i)].art,
                  i % 2 == 0 ? NbaOperation::Art::Löschen : NbaOperation::Art::Einfügen);
        EXPECT_EQ(i % 2 == 0 ? ops[static_cast<std::size_t>(i)].kennung
                             : ops[static_cast<std::size_t>(i)].neueKennung,
                  id);
        EXPECT_EQ(ops[static_cast<std::size_t>(i)].typName, "AX_Gebaeude");
    }
    // Cut inside the last operation: the ones before it, and the cut is told.
    const fs::path halb = ordner / "halb.xml";
    test::DateiSchreiben(halb, text.substr(0, text.size() - 40));
    EXPECT_EQ(Alle(halb, &abgeschnitten).size(), static_cast<std::size_t>(Anzahl - 1));
    EXPECT_TRUE(abgeschnitten);
}

} // namespace
} // namespace flurix::nas
