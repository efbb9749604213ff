// The NAS import measured against a reader we did not write: GDAL's NAS driver (ogrinfo) reads the
// real test district, and our object database of the same file must hold as many features per
// class, the same parcel keys and the same parcel attributes as GDAL finds.
//
// The district is licensed for tests only (see gdal_testbezirk.hpp); the tests are skipped with a
// message when the archive, xz or ogrinfo is missing.

#include "nas/nas_einlesen.hpp"

#include "core/datenbank.hpp"
#include "core/oberflaeche_batch.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/gdal_testbezirk.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace flurix::nas {
namespace {

using test::TempOrdner;
using test::TestBezirk;

const std::filesystem::path Konfig = std::filesystem::path(FLURIX_QUELLEN) / "config";

std::string Klein(std::string_view text) {
    std::string aus(text);
    std::transform(aus.begin(), aus.end(), aus.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return aus;
}

using test::Ausführen;
using test::ImSuchpfad;
using test::Wort;
using Lauf = test::Programmlauf;

// One parcel: its identifier and its attributes by name (GDAL's field names, or ours mapped to
// them).
struct Flurstück {
    std::string id;
    std::map<std::string, std::string> felder;
};

// The classes ogrinfo lists and their number of features, by lower-case class name.
struct GdalKlassen {
    std::map<std::string, long long> anzahl;
    std::string fehler;
};

// The parcels as ogrinfo prints them, in the order of the file.
struct GdalFlurstücke {
    std::vector<Flurstück> flurstücke;
    std::string fehler;
};

// ogrinfo on the district, in a scratch folder for the .gfs file it leaves there.
Lauf Ogrinfo(const std::string& optionen, const std::string& ebene = {}) {
    TempOrdner ordner;
    return test::GdalAufBezirk(ordner.pfad(), "ogrinfo -ro " + optionen, ebene);
}

// "  name (Type) = value" → name and value.
bool FeldZeile(std::string_view zeile, std::string& name, std::string& wert) {
    if (!zeile.starts_with("  ") || zeile.starts_with("   "))
        return false;
    const auto klammer = zeile.find(" (");
    const auto gleich = zeile.find(") = ", klammer);
    if (klammer == std::string_view::npos || gleich == std::string_view::npos)
        return false;
    name = zeile.substr(2, klammer - 2);
    wert = zeile.substr(gleich + 4);
    return true;
}

// Each test process asks GDAL only what its test compares: every ogrinfo run reads the whole file.
const GdalKlassen& KlassenNachGdal() {
    static const GdalKlassen klassen = [] {
        GdalKlassen k;
        const auto lauf = Ogrinfo("-so -al");
        if (lauf.status != 0) {
            k.fehler = lauf.ausgabe;
            return k;
        }
        std::istringstream zeilen(lauf.ausgabe);
        std::string zeile, klasse;
        while (std::getline(zeilen, zeile)) {
            if (zeile.starts_with("Layer name: "))
                klasse = Klein(zeile.substr(12));
            else if (zeile.starts_with("Feature Count: ") && !klasse.empty())
                k.anzahl[klasse] = std::stoll(zeile.substr(15));
        }
        return k;
    }();
    return klassen;
}

const GdalFlurstücke& FlurstückeNachGdal() {
    static const GdalFlurstücke flurstücke = [] {
        GdalFlurstücke g;
        const auto lauf = Ogrinfo("-q -geom=NO", "AX_Flurstueck");
        if (lauf.status != 0) {
            g.fehler = lauf.ausgabe;
            return g;
        }
        std::istringstream zeilen(lauf.ausgabe);
        std::string zeile, name, wert;
        while (std::getline(zeilen, zeile)) {
            if (zeile.starts_with("OGRFeature("))
                g.flurstücke.emplace_back();
            else if (!g.flurstücke.empty() && FeldZeile(zeile, name, wert))
                g.flurstücke.back().felder[name] = wert;
        }
        for (auto& f : g.flurstücke)
            f.id = f.felder["gml_id"];
        return g;
    }();
    return flurstücke;
}

// Our import of the district: rows per table, and the parcels with the attributes GDAL names.
struct UnserBefund {
    Ergebnis ergebnis;
    std::string meldungen;
    std::vector<std::pair<std::string, std::int64_t>> tabellen;
    std::map<std::string, Flurstück> flurstücke; // by identifier as the file writes it
};

UnserBefund Einlesen() {
    UnserBefund befund;
    TempOrdner ordner;
    std::ostringstream meldungen;
    BatchOberfläche ui(meldungen);
    NasProtokoll protokoll(ui, {});
    NasStand stand;
    const NasAuftrag auftrag{TestBezirk().xml, ordner / "bezirk.sqlite", Konfig};
    befund.ergebnis = DAO_ALKISEinlesen(auftrag, stand, ui, protokoll);
    befund.meldungen = meldungen.str();
    if (!befund.ergebnis)
        return befund;
    const auto db = DAO_DatenbankÖffnen(auftrag.datenbank);
    for (const auto& tabelle : DAO_Tabellen(*db))
        befund.tabellen.emplace_back(tabelle, DAO_Zeilenzahl(*db, tabelle));
    // Our column → GDAL's field of the same element.
    const std::vector<std::pair<std::string, std::string>> spalten = {
        {"flurstueckskennzeichen", "flurstueckskennzeichen"},
        {"amtlicheFlaeche", "amtlicheFlaeche"},
        {"gemarkung/AX_Gemarkung_Schluessel/land", "land"},
        {"gemarkung/AX_Gemarkung_Schluessel/gemarkungsnummer", "gemarkungsnummer"},
        {"flurnummer", "flurnummer"},
        {"flurstuecksnummer/AX_Flurstuecksnummer/zaehler", "zaehler"},
        {"flurstuecksnummer/AX_Flurstuecksnummer/nenner", "nenner"},
    };
    std::string sql = "SELECT id";
    for (const auto& [spalte, feld] : spalten)
        sql += ", \"" + spalte + "\"";
    auto abfrage = db->VorbereitenNativ(sql + " FROM AX_Flurstueck");
    while (abfrage.Schritt()) {
        Flurstück f;
        // The database keys carry an apostrophe behind each lower-case letter.
        for (const char c : abfrage.Text(0))
            if (c != '\'')
                f.id += c;
        for (std::size_t i = 0; i < spalten.size(); ++i)
            f.felder[spalten[i].second] = abfrage.Text(static_cast<int>(i + 1));
        befund.flurstücke[f.id] = std::move(f);
    }
    return befund;
}

const UnserBefund& Unser() {
    static const UnserBefund befund = Einlesen();
    return befund;
}

// The classes of the node file, as its "<Klasse" lines name them.
std::vector<std::string> KlassenDerKnotendatei() {
    std::vector<std::string> klassen;
    std::ifstream datei(Konfig / "ALKIS_Knoten.dat", std::ios::binary);
    std::string zeile;
    while (std::getline(datei, zeile)) {
        while (!zeile.empty() && std::isspace(static_cast<unsigned char>(zeile.back())))
            zeile.pop_back();
        if (zeile.starts_with("<"))
            klassen.push_back(zeile.substr(1));
    }
    return klassen;
}

bool IstObjektklasse(std::string_view tabelle) {
    return tabelle.find('#') == std::string_view::npos && tabelle != "Antragsbeschreibung";
}

std::optional<double> Zahl(std::string_view text) {
    double wert = 0;
    const auto [ende, fehler] = std::from_chars(text.data(), text.data() + text.size(), wert);
    if (fehler != std::errc() || ende != text.data() + text.size())
        return std::nullopt;
    return wert;
}

class NasGegenGdal : public ::testing::Test {
protected:
    void SetUp() override {
        if (!TestBezirk().fehlt.empty())
            GTEST_SKIP() << TestBezirk().fehlt;
        ASSERT_EQ(TestBezirk().fehler, "");
        ASSERT_TRUE(Unser().ergebnis) << Unser().ergebnis.Meldung() << "\n" << Unser().meldungen;
    }
};

TEST_F(NasGegenGdal, ObjekteJeKlasseWieGdalSieZählt) {
    ASSERT_EQ(KlassenNachGdal().fehler, "");
    const auto& gdal = KlassenNachGdal().anzahl;
    ASSERT_TRUE(gdal.contains("ax_flurstueck")) << "GDAL hat die Datei nicht als NAS gelesen";
    std::map<std::string, std::int64_t> unsere;
    for (const auto& [tabelle, zeilen] : Unser().tabellen)
        if (IstObjektklasse(tabelle))
            unsere[Klein(tabelle)] = zeilen;
    // Every table of ours against GDAL: a class GDAL does not list must have stayed empty.
    int verglichen = 0;
    for (const auto& [tabelle, zeilen] : unsere) {
        const auto treffer = gdal.find(tabelle);
        if (treffer == gdal.end()) {
            EXPECT_EQ(zeilen, 0) << tabelle << ": Zeilen, wo GDAL keine Objekte findet";
        } else {
            EXPECT_EQ(zeilen, treffer->second) << tabelle;
            ++verglichen;
        }
    }
    // Every class of the node file that GDAL finds features of has its table, with all of them.
    for (const auto& klasse : KlassenDerKnotendatei()) {
        const auto treffer = gdal.find(Klein(klasse));
        if (treffer != gdal.end() && treffer->second > 0) {
            EXPECT_TRUE(unsere.contains(Klein(klasse)))
                << klasse << ": keine Tabelle, GDAL findet " << treffer->second << " Objekte";
        }
    }
    EXPECT_GT(verglichen, 10);
}

TEST_F(NasGegenGdal, FlurstückskennzeichenUndMerkmaleWieGdalSieLiest) {
    ASSERT_EQ(FlurstückeNachGdal().fehler, "");
    const auto& gdal = FlurstückeNachGdal().flurstücke;
    const auto& unsere = Unser().flurstücke;
    ASSERT_FALSE(gdal.empty());
    // The keys: ours store "0" where the file writes "_".
    std::vector<std::string> erwartet, gelesen;
    for (const auto& f : gdal) {
        auto kennzeichen = f.felder.at("flurstueckskennzeichen");
        std::replace(kennzeichen.begin(), kennzeichen.end(), '_', '0');
        erwartet.push_back(kennzeichen);
    }
    for (const auto& [id, f] : unsere)
        gelesen.push_back(f.felder.at("flurstueckskennzeichen"));
    std::sort(erwartet.begin(), erwartet.end());
    std::sort(gelesen.begin(), gelesen.end());
    EXPECT_EQ(gelesen, erwartet);

    // Every parcel: land, district, area and parcel number as GDAL reads them (numbers, since
    // GDAL prints "7" where the file writes "07"); an attribute GDAL does not print for a parcel
    // is empty in ours. The first differences are shown, the rest counted.
    std::vector<std::string> abweichungen;
    for (const auto& soll : gdal) {
        const auto treffer = unsere.find(soll.id);
        if (treffer == unsere.end()) {
            abweichungen.push_back(soll.id + ": fehlt in der Datenbank");
            continue;
        }
        for (const std::string feld :
             {"land", "gemarkungsnummer", "amtlicheFlaeche", "flurnummer", "zaehler", "nenner"}) {
            const auto& ist = treffer->second.felder.at(feld);
            const auto wert = soll.felder.find(feld);
            const bool gleich = wert == soll.felder.end()
                                    ? ist.empty()
                                    : Zahl(ist) && Zahl(ist) == Zahl(wert->second);
            if (!gleich)
                abweichungen.push_back(soll.id + " " + feld + ": " + ist + " statt " +
                                       (wert == soll.felder.end() ? "(leer)" : wert->second));
        }
    }
    std::string erste;
    for (std::size_t i = 0; i < std::min<std::size_t>(abweichungen.size(), 10); ++i)
        erste += "\n" + abweichungen[i];
    EXPECT_EQ(abweichungen.size(), 0u) << "die ersten Abweichungen:" << erste;
}

} // namespace
} // namespace flurix::nas
