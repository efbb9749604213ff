// The operations of an update delivery: GDAL's three samples as GDAL's NAS driver reads them, a
// generated delivery of many megabytes (operations across the read blocks), and a file cut inside
// an operation.

#include "nas/nba_leser.hpp"

#include "gemeinsam/testumgebung.hpp"
#include "nas/gdal_testbezirk.hpp"

#include <gtest/gtest.h>

#include <sstream>
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

// GDAL's NAS driver lists the deletes and replaces of an update in its layer "Delete": type name,
// identifier, context, the ignore flag and the replacing identifier. Ours in the same form.
std::string WieGdal(const std::vector<NbaOperation>& ops) {
    std::string text;
    for (const auto& op : ops) {
        if (op.art != NbaOperation::Art::Löschen && op.art != NbaOperation::Art::Ersetzen)
            continue;
        const bool ersetzen = op.art == NbaOperation::Art::Ersetzen;
        text += op.typName + " " + op.kennung + (ersetzen ? " Replace" : " Delete");
        if (ersetzen)
            text += std::string(op.ignorierbar ? " true " : " false ") + op.neueKennung;
        text += "\n";
    }
    return text;
}

std::string GdalsLöschungen(const fs::path& datei) {
    test::TempOrdner ordner;
    const auto lauf = test::GdalAuf(ordner.pfad(), datei, "ogrinfo -ro -q", "Delete");
    std::istringstream zeilen(lauf.ausgabe);
    std::string text, zeile, satz;
    const auto wert = [](const std::string& z) { return z.substr(z.find(" = ") + 3); };
    while (std::getline(zeilen, zeile)) {
        if (zeile.find("OGRFeature(Delete)") != std::string::npos && !satz.empty()) {
            text += satz + "\n";
            satz.clear();
        }
        for (const char* feld : {"typeName (", "FeatureId (", "context (", "replacedBy (", "safeToIgnore ("})
            if (zeile.find(feld) != std::string::npos)
                satz += (satz.empty() ? "" : " ") + wert(zeile);
    }
    return satz.empty() ? text : text + satz + "\n";
}

TEST(NbaLeser, DieBeispieleWieGdal) {
    const fs::path ordner = test::GemeinsameTestdaten() / "gdal-autotest-nas";
    if (!fs::exists(ordner / "delete_nas.xml"))
        GTEST_SKIP() << "NBA-Beispiele fehlen: " << ordner;
    const auto löschen = Alle(ordner / "delete_nas.xml");
    ASSERT_EQ(löschen.size(), 3U);
    for (const auto& op : löschen)
        EXPECT_TRUE(op.objekt.empty());
    EXPECT_EQ(Objektkennung(löschen[0].kennung), "DENW44AL00000HJU");

    const auto ersetzen = Alle(ordner / "replace_nas.xml");
    ASSERT_EQ(ersetzen.size(), 1U);
    const NbaOperation& r = ersetzen.front();
    EXPECT_TRUE(r.objekt.starts_with("<AX_Flurstueck gml:id=\"" + r.neueKennung + "\"")) << r.objekt.substr(0, 80);
    EXPECT_TRUE(r.objekt.ends_with("</AX_Flurstueck>"));
    EXPECT_NE(r.objekt.find("<stelle>5212</stelle>"), std::string::npos);
    EXPECT_TRUE(Alle(ordner / "empty_nas.xml").empty());

    if (!test::ImSuchpfad("ogrinfo"))
        GTEST_SKIP() << "ogrinfo (gdal-bin) fehlt: kein Vergleich mit GDAL.";
    for (const auto& [datei, ops] : {std::pair{"delete_nas.xml", &löschen}, std::pair{"replace_nas.xml", &ersetzen}}) {
        SCOPED_TRACE(datei);
        const std::string gdal = GdalsLöschungen(ordner / datei);
        EXPECT_FALSE(gdal.empty());
        EXPECT_EQ(WieGdal(*ops), gdal);
    }
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
