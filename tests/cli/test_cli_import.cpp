#include "cli/cli.hpp"

#include "gemeinsam/testumgebung.hpp"
#include "../import/wldge_satz_bauer.hpp"

#include <gtest/gtest.h>

#include <sstream>

namespace flurix::cli {
namespace {

using test::DateiLesen;
using test::DateiSchreiben;

class CliImportTest : public ::testing::Test {
protected:
    CliImportTest() {
        DateiSchreiben(ordner / "inst" / "config" / "Flurix.dat",
                       "tempArbeitsverzeichnis =" + (ordner / "arbeit").string() + "/\r\n");
        DateiSchreiben(ordner / "inst" / "config" / "WebService.fil", "");
        umgebung.installation = ordner / "inst";
        umgebung.oberflächeStarten = [](const std::vector<std::string>&) { return 0; };
    }
    int Lauf(const std::vector<std::string>& argumente) {
        aus.str({});
        fehler.str({});
        return Ausführen(argumente, aus, fehler, umgebung);
    }
    // The data lines of a .tsv table (without its header), and the header's keys.
    std::vector<std::string> Zeilen(const std::filesystem::path& tsv) {
        std::istringstream ein(DateiLesen(tsv));
        std::vector<std::string> zeilen;
        for (std::string z; std::getline(ein, z);)
            zeilen.push_back(z);
        return zeilen;
    }

    flurix::test::TempOrdner ordner;
    Umgebung umgebung;
    std::ostringstream aus, fehler;
};

std::string Quelle(std::string_view name) {
    return (std::filesystem::path(FLURIX_QUELLEN) / "samples" / name).string();
}

TEST_F(CliImportTest, SchnellFormat35) {
    const auto datei = ordner / "kreis.wldge";
    std::filesystem::copy_file(Quelle("musterkreis_format35.wldge"), datei);
    const auto tsv = ordner / "kreis.tsv";
    for (const auto& schalter : {std::vector<std::string>{}, {"--schnell"}, {"--schnell", "--alle-eigentuemer-in-einer-zeile"}}) {
        std::vector<std::string> argumente{"import", datei.string(), "--out", tsv.string()};
        argumente.insert(argumente.end(), schalter.begin(), schalter.end());
        EXPECT_EQ(Lauf(argumente), 0);
        EXPECT_EQ(aus.str(), "4 Zeilen eingelesen\n");
        EXPECT_EQ(fehler.str(), "In der ALB-Datei wurde(n) 1 Flurstück(e) ohne Eigentümer vorgefunden!   \n");
        const auto zeilen = Zeilen(tsv);
        ASSERT_EQ(zeilen.size(), 5u);
        EXPECT_TRUE(zeilen[0].starts_with("Landkreis\tKatasteramt\tGemeinde\t"));
        EXPECT_NE(zeilen[2].find("\t00042/000\t"), std::string::npos);
        EXPECT_NE(zeilen[2].find("\tDr. Max Mustermann\t"), std::string::npos);
    }
}

TEST_F(CliImportTest, SchnellFormat32MitUndOhneAlleEigentümerInEinerZeile) {
    using test::Satz;
    std::vector<std::string> zeilen{test::Kopf("32")};
    for (const char* name : {"Erster", "Zweiter"})
        for (char nr : {'0', '1'})
            zeilen.push_back(Satz('2', "051234-000123", '1').Setze(28, "0001.00.00000.00").Setze(48, std::string(1, nr)).Setze(49, nr == '1' ? name : "").Text());
    zeilen.push_back(Satz('2', "051234-000123", '0').Setze(16, "0001").Setze(26, "1").Setze(31, "051234-001-00042/000.00").Text());
    zeilen.push_back(Satz('3', "051234-001-00042/000", 'B').Setze(22, ".00").Setze(84, "000000512").Text());
    const auto datei = ordner / "klein.wldge";
    DateiSchreiben(datei, test::Datei(zeilen));
    const auto tsv = ordner / "klein.tsv";
    EXPECT_EQ(Lauf({"import", datei.string(), "--out", tsv.string()}), 0);
    EXPECT_EQ(aus.str(), "2 Zeilen eingelesen\n");
    EXPECT_EQ(Lauf({"import", datei.string(), "--alle-eigentuemer-in-einer-zeile", "--out", tsv.string()}), 0);
    EXPECT_EQ(aus.str(), "1 Zeilen eingelesen\n");
    EXPECT_NE(DateiLesen(tsv).find("\tErster; Zweiter\t"), std::string::npos);
    EXPECT_EQ(fehler.str(), "");
}

TEST_F(CliImportTest, WebXmlMehrereDateienUndAnfügen) {
    const auto a = ordner / "a.xml";
    const auto b = ordner / "b.xml";
    std::filesystem::copy_file(Quelle("musterstadt_webxml_auszug.xml"), a);
    std::filesystem::copy_file(Quelle("musterstadt_webxml_auszug.xml"), b);
    const auto tsv = ordner / "auszug.tsv";
    EXPECT_EQ(Lauf({"import", a.string(), b.string(), "--out", tsv.string()}), 0);
    EXPECT_EQ(aus.str(), "8 Zeilen eingelesen\n");
    EXPECT_EQ(fehler.str(), "Es werden 2 ausgewählte XML-Dateien eingelesen! Weiter?   \n");
    EXPECT_TRUE(Zeilen(tsv)[0].starts_with("Auszug Format\tLandkreis\t"));

    EXPECT_EQ(Lauf({"import", a.string(), "--anfuegen", "--out", tsv.string()}), 0);
    EXPECT_EQ(aus.str(), "12 Zeilen eingelesen\n");
    EXPECT_EQ(fehler.str(), "Sollen die Daten an die vorhandene Datenbank angefügt werden?   \n");
    EXPECT_EQ(Zeilen(tsv).size(), 13u);

    EXPECT_EQ(Lauf({"import", a.string(), "--out", tsv.string()}), 0); // without: replaced
    EXPECT_EQ(aus.str(), "4 Zeilen eingelesen\n");
    EXPECT_EQ(fehler.str(), "");

    EXPECT_EQ(Lauf({"import", Quelle("musterkreis_format35.wldge"), "--anfuegen", "--out", tsv.string()}), 2);
    EXPECT_EQ(fehler.str(), "flurix import: --anfuegen gilt nur für Web-XML-Dateien.\n");
    EXPECT_EQ(Lauf({"import", "--help"}), 0);
    EXPECT_NE(aus.str().find("angefügt werden?\" mit Ja"), std::string::npos);
}

} // namespace
} // namespace flurix::cli
