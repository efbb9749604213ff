// flurix nas: a NAS file into its object database, and a saved database opened again.

#include "cli/cli.hpp"

#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <sstream>

namespace flurix::cli {
namespace {

using test::DateiLesen;
using test::DateiSchreiben;

class CliNasTest : public ::testing::Test {
protected:
    CliNasTest() {
        const auto konfig = ordner / "inst" / "config";
        DateiSchreiben(konfig / "Flurix.dat", "tempArbeitsverzeichnis =" + (ordner / "arbeit").string() + "/\r\n");
        DateiSchreiben(konfig / "WebService.fil", "");
        for (const char* name : {"ALKIS_Knoten.dat", "ALKIS_Werteart.dat", "ALKIS_EPSG.dat"})
            std::filesystem::copy_file(std::filesystem::path(FLURIX_QUELLEN) / "config" / name, konfig / name);
        std::filesystem::copy_file(std::filesystem::path(FLURIX_QUELLEN) / "samples" /
                                       "musterstadt_bestandsdatenauszug.xml",
                                   ordner / "auszug.xml");
        umgebung.installation = ordner / "inst";
        umgebung.oberflächeStarten = [](const std::vector<std::string>&) { return 0; };
    }
    int Lauf(const std::vector<std::string>& argumente) {
        aus.str({});
        fehler.str({});
        return Ausführen(argumente, aus, fehler, umgebung);
    }
    // The "table<TAB>rows" lines with rows.
    std::vector<std::string> TabellenMitZeilen() const {
        std::istringstream ein(aus.str());
        std::vector<std::string> zeilen;
        for (std::string z; std::getline(ein, z);)
            if (!z.ends_with("\t0"))
                zeilen.push_back(z);
        return zeilen;
    }

    flurix::test::TempOrdner ordner;
    Umgebung umgebung;
    std::ostringstream aus, fehler;
};

TEST_F(CliNasTest, LiestDieDateiUndListetDieTabellen) {
    const auto db = (ordner / "nas.sqlite").string();
    ASSERT_EQ(Lauf({"nas", (ordner / "auszug.xml").string(), "--db", db}), 0) << fehler.str();
    const std::vector<std::string> erwartet{
        "AX_Flurstueck\t1", "AX_Flurstueck_istGebucht#AX_Buchungsstelle\t1", "AX_Buchungsstelle\t1",
        "AX_Buchungsstelle_istBestandteilVon#AX_Buchungsblatt\t1", "AX_Buchungsblatt\t1", "AX_Namensnummer\t1",
        "AX_Namensnummer_istBestandteilVon#AX_Buchungsblatt\t1", "AX_Namensnummer_benennt#AX_Person\t1",
        "AX_Person\t1", "AX_Person_hat#AX_Anschrift\t1", "AX_Anschrift\t1", "Antragsbeschreibung\t1"};
    EXPECT_EQ(TabellenMitZeilen(), erwartet);
    const auto protokoll = DateiLesen(ordner / "auszug.xml.prn");
    EXPECT_NE(protokoll.find(", Einlesen ALKIS/NAS-Daten...\r\n"), std::string::npos);
    EXPECT_NE(protokoll.find(", ALKIS importiert...\r\n"), std::string::npos);

    // Opened again from a saved copy: the same tables, no scan.
    std::filesystem::copy_file(db, ordner / "gespeichert.sqlite");
    const std::string liste = aus.str();
    ASSERT_EQ(Lauf({"nas", (ordner / "gespeichert.sqlite").string(), "--db", (ordner / "neu.sqlite").string()}), 0)
        << fehler.str();
    EXPECT_EQ(aus.str(), liste);
}

TEST_F(CliNasTest, OhneProtokollUndFalscheDateien) {
    ASSERT_EQ(Lauf({"nas", (ordner / "auszug.xml").string(), "--db", (ordner / "a.sqlite").string(),
                    "--ohne-protokoll"}),
              0);
    EXPECT_FALSE(std::filesystem::exists(ordner / "auszug.xml.prn"));

    DateiSchreiben(ordner / "kein.xml", "<?xml version=\"1.0\"?>\n<auszug/>\n");
    EXPECT_EQ(Lauf({"nas", (ordner / "kein.xml").string(), "--db", (ordner / "b.sqlite").string()}), 1);
    EXPECT_NE(fehler.str().find("ERR: Knoten AX_Bestandsdatenauszug nicht vorhanden!\nAbbruch Funktion!   "),
              std::string::npos);

    DateiSchreiben(ordner / "fremd.sqlite", "kein SQLite");
    EXPECT_EQ(Lauf({"nas", (ordner / "fremd.sqlite").string()}), 1);
    EXPECT_NE(fehler.str().find("Die ausgewählte Datei ist ungültig! Daten unvollständig!?   "), std::string::npos);

    EXPECT_EQ(Lauf({"nas"}), 2);
}

} // namespace
} // namespace flurix::cli
