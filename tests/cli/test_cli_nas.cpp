// flurix nas: a NAS file into its object database, and a saved database opened again.

#include "cli/cli.hpp"

#include "core/cp1252.hpp"
#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
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
        for (const char* name : {"ALKIS_Knoten.dat", "ALKIS_Werteart.dat", "ALKIS_EPSG.dat",
                                 "ALKIS_Zuordnung.dat", "ALB_ALKISImport.dat",
                                 "ALKIS_Amtsgerichte.dat", "ALB_DatenbankSpalten.dat"})
            std::filesystem::copy_file(std::filesystem::path(FLURIX_QUELLEN) / "config" / name, konfig / name);
        std::filesystem::copy_file(std::filesystem::path(FLURIX_QUELLEN) / "samples" /
                                       "musterstadt_bestandsdatenauszug.xml",
                                   ordner / "auszug.xml");
        std::filesystem::copy_file(std::filesystem::path(FLURIX_QUELLEN) / "samples" /
                                       "musterstadt_nas.xml",
                                   ordner / "muster.xml");
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

// The rows of one parcel key, each as "position|name|name addition|street|town".
std::vector<std::string> Eigentümer(const Kataster& k, std::string_view kennzeichen) {
    std::vector<std::string> zeilen;
    for (std::size_t z = 0; z < k.Zeilenzahl(); ++z)
        if (k.Zelle(z, "Flurstückskennzeichen") == kennzeichen)
            zeilen.push_back(std::string(k.Zelle(z, "Eigentümerposition")) + "|" +
                             std::string(k.Zelle(z, "Name")) + "|" +
                             std::string(k.Zelle(z, "Namenszusatz")) + "|" +
                             std::string(k.Zelle(z, "Straße")) + "|" + std::string(k.Zelle(z, "Ort")));
    return zeilen;
}

TEST_F(CliNasTest, OutStelltDieTabelleZusammen) {
    const auto tabelle = ordner / "nas.tsv";
    ASSERT_EQ(Lauf({"nas", (ordner / "muster.xml").string(), "--out", tabelle.string()}), 0)
        << fehler.str();
    Kataster k;
    KatasterLaden(k, tabelle);
    EXPECT_EQ(aus.str(), std::to_string(k.Zeilenzahl()) + " Zeilen, 24 Flurstücke\n");
    // The catalogue's columns come first, in its order; the rings and the mark at the end.
    ASSERT_GE(k.Spaltenzahl(), 30U);
    EXPECT_EQ(k.Spalte(0).schlüssel, "Landkreis");
    EXPECT_EQ(k.Spalte(1).schlüssel, "Katasteramt");
    EXPECT_EQ(k.Spalte(k.Spaltenzahl() - 1).schlüssel, "checkdruck");
    EXPECT_TRUE(k.SpaltenIndex("UmringFlurstück"));
    EXPECT_FALSE(k.SpaltenIndex("gml:exterior")) << "the raw columns of the joins are dropped";
    // The sample's first sheet: Erika Mustermann, née Gabler, and Max Mustermann at one address.
    const auto erste = Eigentümer(k, "07600100100001000000");
    ASSERT_EQ(erste.size(), 2U);
    EXPECT_TRUE(erste[0].starts_with("0001|Mustermann, Erika|geb. Gabler|")) << erste[0];
    EXPECT_TRUE(erste[1].starts_with("0002|Mustermann, Max||")) << erste[1];
    // One address for the couple.
    EXPECT_EQ(erste[0].substr(erste[0].rfind("|", erste[0].rfind('|') - 1)),
              erste[1].substr(erste[1].rfind("|", erste[1].rfind('|') - 1)));
    // What could not be joined stands on stderr; the protocol beside the file has the steps.
    EXPECT_NE(fehler.str().find("Hinweis: 1 \"AX_PersonAnschrift\" ohne Bezug...\n"), std::string::npos)
        << fehler.str();
    const auto protokoll = Cp1252NachUtf8(DateiLesen(ordner / "muster.xml.prn"));
    for (const char* schritt : {", ALKIS-Zusammenstellung für \"", ", Daten ordnen...\r\n",
                                ", Zeile Zuordnung: ", ", Zeile ALKIS: 00001,FKZ: ",
                                ", Daten nach Flurix exportiert...\r\n"})
        EXPECT_NE(protokoll.find(schritt), std::string::npos) << schritt;

    // "flurix import" takes the same road for a NAS file.
    const auto importiert = ordner / "import.tsv";
    ASSERT_EQ(Lauf({"import", (ordner / "muster.xml").string(), "--out", importiert.string()}), 0)
        << fehler.str();
    EXPECT_EQ(DateiLesen(importiert), DateiLesen(tabelle));
}

TEST_F(CliNasTest, OutFormateUndFehler) {
    ASSERT_EQ(Lauf({"nas", (ordner / "muster.xml").string(), "--out", (ordner / "t.xlsx").string(),
                    "--ohne-protokoll"}),
              0)
        << fehler.str();
    EXPECT_EQ(DateiLesen(ordner / "t.xlsx").substr(0, 2), "PK");
    EXPECT_EQ(Lauf({"nas", (ordner / "muster.xml").string(), "--out", (ordner / "t.abc").string()}), 2);
    EXPECT_NE(fehler.str().find("Das Format der Tabelle ist unbekannt"), std::string::npos);
    EXPECT_EQ(Lauf({"nas", (ordner / "muster.xml").string(), "--format", "tsv"}), 2);

    std::filesystem::remove(ordner / "inst" / "config" / "ALKIS_Zuordnung.dat");
    EXPECT_EQ(Lauf({"nas", (ordner / "muster.xml").string(), "--out", (ordner / "t.tsv").string()}), 1);
    EXPECT_NE(fehler.str().find("ERR: Knotendatei \"ALKIS_Zuordnung.dat\" nicht vorhanden!\nAbbruch Funktion!"),
              std::string::npos)
        << fehler.str();
    EXPECT_FALSE(std::filesystem::exists(ordner / "t.tsv"));
}

} // namespace
} // namespace flurix::cli
