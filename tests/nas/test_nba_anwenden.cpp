// An update delivery applied to the object database of the sample district: a delete, a replace
// and an insert give the objects a fresh scan of the new state has; a delivery that fails half way
// leaves the database as it was.

#include "nas/nba_anwenden.hpp"

#include "core/datenbank.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/text.hpp"
#include "gemeinsam/nas_installation.hpp"
#include "nas/nas_einlesen.hpp"
#include "nas/nas_protokoll.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace flurix::nas {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view Kopf =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<AX_NutzerbezogeneBestandsdatenaktualisierung_NBA "
    "xmlns=\"http://www.adv-online.de/namespaces/adv/gid/6.0\" "
    "xmlns:gml=\"http://www.opengis.net/gml/3.2\" "
    "xmlns:wfs=\"http://www.adv-online.de/namespaces/adv/gid/wfs\" "
    "xmlns:wfsext=\"http://www.adv-online.de/namespaces/adv/gid/wfsext\" "
    "xmlns:ogc=\"http://www.adv-online.de/namespaces/adv/gid/"
    "ogc\">\n<geaenderteObjekte><wfs:Transaction>\n";
constexpr std::string_view Fuß =
    "</wfs:Transaction></geaenderteObjekte>\n</AX_NutzerbezogeneBestandsdatenaktualisierung_NBA>\n";

// The member element that holds the feature `id`, from "<gml:featureMember>" to its end tag.
std::pair<std::size_t, std::size_t> Mitglied(const std::string& text, std::string_view id) {
    const auto merkmal = text.find("gml:id=\"" + std::string(id) + "\"");
    const auto anfang = text.rfind("<gml:featureMember>", merkmal);
    const std::string ende = "</gml:featureMember>";
    return {anfang, text.find(ende, merkmal) + ende.size()};
}

// The feature inside a member.
std::string Merkmal(const std::string& mitglied) {
    const auto anfang = mitglied.find('<', mitglied.find('>') + 1);
    return mitglied.substr(anfang, mitglied.rfind("</gml:featureMember>") - anfang);
}

void Einlesen(const test::NasInstallation& inst, const fs::path& xml, const fs::path& db) {
    SkriptOberfläche ui;
    NasProtokoll protokoll(ui, {});
    NasStand stand;
    ASSERT_TRUE(
        DAO_ALKISEinlesen({xml, db, inst.ordner / "inst" / "config"}, stand, ui, protokoll));
}

// The rows of a table as text, by id, on the columns the scan writes (those of the update's rows).
std::vector<std::string> Zeilen(const fs::path& datei, const std::string& tabelle) {
    Datenbank db(datei);
    std::vector<std::string> zeilen;
    Anweisung a = db.VorbereitenNativ("SELECT * FROM \"" + tabelle + "\" ORDER BY id");
    while (a.Schritt()) {
        std::string zeile;
        for (int s = 0; s < a.Spaltenanzahl(); ++s)
            zeile += std::string(a.Spaltenname(s)) + "=" + std::string(a.Text(s)) + "|";
        zeilen.push_back(zeile);
    }
    return zeilen;
}

TEST(NbaAnwenden, BestandUndAktualisierungGleichNeuemBestand) {
    test::NasInstallation inst;
    const std::string basis = test::DateiLesen(inst.ordner / "muster.xml");
    std::string neu = basis;
    // The new state: an owner's name number gone, a parcel's area changed, a building added.
    const auto [nAnfang, nEnde] = Mitglied(neu, "DEMU00000000002N");
    neu.erase(nAnfang, nEnde - nAnfang);
    const auto [fAnfang, fEnde] = Mitglied(neu, "DEMU00000000000A");
    std::string flurstück = Merkmal(neu.substr(fAnfang, fEnde - fAnfang));
    flurstück = Ersetzen(flurstück, ">830.00<", ">831.00<");
    neu.replace(fAnfang, fEnde - fAnfang,
                "<gml:featureMember>" + flurstück + "</gml:featureMember>");
    const std::string gebäude =
        "<AX_Gebaeude "
        "gml:id=\"DEMU0000000009ZZ\"><gebaeudefunktion>2000</gebaeudefunktion></AX_Gebaeude>";
    const auto letztes =
        neu.rfind("</gml:featureMember>") + std::string_view("</gml:featureMember>").size();
    neu.insert(letztes, "\n<gml:featureMember>" + gebäude + "</gml:featureMember>");
    test::DateiSchreiben(inst.ordner / "neu.xml", neu);

    const std::string stempel = "20240101T000000Z";
    std::string nba(Kopf);
    nba += "<wfs:Delete typeName=\"AX_Namensnummer\"><ogc:Filter><ogc:FeatureId "
           "fid=\"DEMU00000000002N" +
           stempel + "\" /></ogc:Filter></wfs:Delete>\n";
    nba += "<wfsext:Replace vendorId=\"AdV\" safeToIgnore=\"false\">" +
           Ersetzen(flurstück, "gml:id=\"DEMU00000000000A\"",
                    "gml:id=\"DEMU00000000000A" + stempel + "\"") +
           "<ogc:Filter><ogc:FeatureId fid=\"DEMU00000000000A20230101T000000Z\" "
           "/></ogc:Filter></wfsext:Replace>\n";
    nba += "<wfs:Insert>" + Ersetzen(gebäude, "9ZZ\"", "9ZZ" + stempel + "\"") + "</wfs:Insert>\n";
    nba += Fuß;
    test::DateiSchreiben(inst.ordner / "nba.xml", nba);

    Einlesen(inst, inst.ordner / "muster.xml", inst.ordner / "bestand.sqlite");
    Einlesen(inst, inst.ordner / "neu.xml", inst.ordner / "neu.sqlite");
    SkriptOberfläche ui;
    NasProtokoll protokoll(ui, {});
    const NbaBericht bericht = NbaAnwenden(inst.ordner / "nba.xml", inst.ordner / "bestand.sqlite",
                                           inst.ordner / "inst" / "config", protokoll, ui);
    EXPECT_EQ(bericht.gelöscht, 1U);
    EXPECT_EQ(bericht.ersetzt, 1U);
    EXPECT_EQ(bericht.eingefügt, 1U);
    EXPECT_EQ(bericht.nichtVorhanden, 0U);
    for (const char* tabelle :
         {"AX_Namensnummer", "AX_Namensnummer_benennt#AX_Person", "AX_Gebaeude", "AX_Flurstueck",
          "AX_Flurstueck_istGebucht#AX_Buchungsstelle", "AX_Person", "AX_Buchungsstelle",
          "AX_Gemarkung", "AX_Gemarkung_id#istAmtsbezirkVon"}) {
        SCOPED_TRACE(tabelle);
        EXPECT_EQ(Zeilen(inst.ordner / "bestand.sqlite", tabelle),
                  Zeilen(inst.ordner / "neu.sqlite", tabelle));
    }
    // The parcel's own data as scanned; what a scan's enrichment adds to the row comes with the
    // next full scan.
    Datenbank bestand(inst.ordner / "bestand.sqlite");
    Anweisung a = bestand.VorbereitenNativ(
        "SELECT amtlicheFlaeche FROM AX_Flurstueck WHERE id = 'DEMU00000000000A'");
    ASSERT_TRUE(a.Schritt());
    EXPECT_EQ(a.Text(0), "831.00");
}

TEST(NbaAnwenden, FehlerLässtDieDatenbankWieSieWar) {
    test::NasInstallation inst;
    Einlesen(inst, inst.ordner / "muster.xml", inst.ordner / "bestand.sqlite");
    const auto vorher = Zeilen(inst.ordner / "bestand.sqlite", "AX_Namensnummer");
    // A delete that works, then a file cut inside the next operation.
    const std::string nba =
        std::string(Kopf) +
        "<wfs:Delete typeName=\"AX_Namensnummer\"><ogc:Filter><ogc:FeatureId "
        "fid=\"DEMU00000000002N20240101T000000Z\" /></ogc:Filter></wfs:Delete>\n"
        "<wfs:Insert><AX_Gebaeude gml:id=\"DEMU0000000009ZZ\"><gebaeude";
    test::DateiSchreiben(inst.ordner / "nba.xml", nba);
    SkriptOberfläche ui;
    NasProtokoll protokoll(ui, {});
    EXPECT_THROW(NbaAnwenden(inst.ordner / "nba.xml", inst.ordner / "bestand.sqlite",
                             inst.ordner / "inst" / "config", protokoll, ui),
                 Fehler);
    EXPECT_EQ(Zeilen(inst.ordner / "bestand.sqlite", "AX_Namensnummer"), vorher);
    // An update of another data set (GDAL's sample of North Rhine-Westphalia): none of its objects
    // is here, so it is refused as a whole.
    const fs::path fremd = test::GemeinsameTestdaten() / "gdal-autotest-nas" / "delete_nas.xml";
    if (fs::exists(fremd)) {
        try {
            NbaAnwenden(fremd, inst.ordner / "bestand.sqlite", inst.ordner / "inst" / "config",
                        protokoll, ui);
            ADD_FAILURE() << "an update of another data set was applied";
        } catch (const Fehler& e) {
            EXPECT_NE(std::string(e.what()).find("passt nicht zu dieser Datenbank"),
                      std::string::npos)
                << e.what();
        }
        EXPECT_EQ(Zeilen(inst.ordner / "bestand.sqlite", "AX_Namensnummer"), vorher);
    }
    // Not an update at all: refused before the database is touched.
    EXPECT_THROW(NbaAnwenden(inst.ordner / "muster.xml", inst.ordner / "bestand.sqlite",
                             inst.ordner / "inst" / "config", protokoll, ui),
                 Fehler);
}

} // namespace
} // namespace flurix::nas
