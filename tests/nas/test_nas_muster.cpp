// The invented NAS sample samples/musterstadt_nas.xml and its generator
// samples/nas_muster_erzeugen.py: our scanner finds every feature and every reference the
// generator's design puts in, GDAL's NAS driver counts the same features per class, the shipped
// file is exactly what the generator writes, and a larger district reads as well.
//
// The generator repeats one period of 24 parcels (its tables PERIODE and BLAETTER); the sample is
// that period once, so all numbers below follow from it:
//   - two Gemarkungen of 12 parcels, each in two rows of six; every row lies on a street of its
//     own, each Gemarkung has a cross street: 6 catalogue streets;
//   - locations with house number: positions 0 and 16 on two streets (2 each), 2, 8 and 18 two
//     numbers of one street (2 each), 1, 3, 6, 7, 10, 11, 15, 17, 19 and 23 one: 20, on 15
//     parcels; of those, 0, 2, 8, 16 and 18 (5 parcels) have two;
//   - locations without house number: the keyed street of the rows holding positions 4, 9 and
//     20/22 (3), one field name per row, used by 5, 10, 12-14 and 21 (4): 7, on 10 parcels
//     (4, 5, 9, 10, 12, 13, 14, 20, 21, 22);
//   - a label (AP_PTO) for each parcel but position 13: 23;
//   - bookings: each parcel but position 22 (23), and three shares attached ("an"): one to the
//     booking of position 7, two to that of position 19: 26;
//   - folios: 14 with plots, 2 fictitious ones for positions 7 and 19, 3 for the shares: 19;
//   - owners (Namensnummer, each naming a person of its own): 21 on the plot folios (couple 2,
//     heirs 3, two pairs of 2, three with 1/2, 1/4, 1/4, and nine single owners), 4 on the share
//     folios (1, 1 and a pair), none on fictitious folios: 25 persons;
//   - addresses: the couple shares one, one person has none: 24 persons with, 23 addresses;
//   - land use, each row in two pieces of three parcels: 3 residential, 3 farmland, 2 forest;
//   - parcels with a denominator: positions 2, 3, 8, 9, 12, 13, 17, 21 (8); with an arc in the
//     ring: 3 and 17; with a hole: 14.

#include "nas/nas_einlesen.hpp"

#include "core/datenbank.hpp"
#include "core/oberflaeche_batch.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace flurix::nas {
namespace {

using test::TempOrdner;

const std::filesystem::path Quellen = FLURIX_QUELLEN;
const std::filesystem::path Muster = Quellen / "samples" / "musterstadt_nas.xml";
const std::filesystem::path Erzeuger = Quellen / "samples" / "nas_muster_erzeugen.py";
const std::filesystem::path Konfig = Quellen / "config";

struct Soll {
    std::string_view tabelle;
    std::int64_t zeilen;
};

// The feature classes of the sample, by the design above.
constexpr std::array MusterKlassen = {
    Soll{"AX_Bundesland", 1},
    Soll{"AX_KreisRegion", 1},
    Soll{"AX_Gemeinde", 1},
    Soll{"AX_Gemarkung", 2},
    Soll{"AX_Dienststelle", 2}, // the cadastral office and the local court
    Soll{"AX_Buchungsblattbezirk", 2},
    Soll{"AX_LagebezeichnungKatalogeintrag", 6},
    Soll{"AX_LagebezeichnungMitHausnummer", 20},
    Soll{"AX_LagebezeichnungOhneHausnummer", 7},
    Soll{"AX_Flurstueck", 24},
    Soll{"AP_PTO", 23},
    Soll{"AX_Buchungsstelle", 26},
    Soll{"AX_Buchungsblatt", 19},
    Soll{"AX_Namensnummer", 25},
    Soll{"AX_Person", 25},
    Soll{"AX_Anschrift", 23},
    Soll{"AX_Wohnbauflaeche", 3},
    Soll{"AX_Landwirtschaft", 3},
    Soll{"AX_Wald", 2},
};

// The relation tables: one row per reference, except weistAuf, zeigtAuf and an, which hold all
// references of a feature in one row.
constexpr std::array MusterBeziehungen = {
    Soll{"AX_Flurstueck_istGebucht#AX_Buchungsstelle", 23},
    Soll{"AX_Flurstueck_weistAuf#ori_LagebezeichnungMitHausnummer", 15},
    Soll{"AX_Flurstueck_zeigtAuf#ori_LagebezeichnungOhneHausnummer", 10},
    Soll{"AX_Buchungsstelle_an#ori_Buchungsstelle", 3},
    Soll{"AX_Buchungsstelle_istBestandteilVon#AX_Buchungsblatt", 26},
    Soll{"AX_Namensnummer_istBestandteilVon#AX_Buchungsblatt", 25},
    Soll{"AX_Namensnummer_benennt#AX_Person", 25},
    Soll{"AX_Person_hat#AX_Anschrift", 24},
    Soll{"AP_PTO_dientZurDarstellungVon#AX_Flurstueck", 23},
    Soll{"AX_Gemarkung_id#istAmtsbezirkVon", 2},
};

// GDAL lists every reference as a row of its layer ALKIS_beziehungen: istGebucht 23, zeigtAuf 10,
// weistAuf 20, dientZurDarstellungVon 23, istBestandteilVon of bookings 26, an 3,
// istBestandteilVon of owners 25, benennt 25, hat 24.
constexpr long long MusterVerweise = 23 + 10 + 20 + 23 + 26 + 3 + 25 + 25 + 24;

using test::Ausführen;
using test::ImSuchpfad;
using test::Wort;
using Lauf = test::Programmlauf;

// "a; b" → {"a", "b"}.
std::vector<std::string> Verweisliste(std::string_view text) {
    std::vector<std::string> teile;
    while (!text.empty()) {
        const auto ende = text.find("; ");
        teile.emplace_back(text.substr(0, ende));
        text = ende == std::string_view::npos ? std::string_view{} : text.substr(ende + 2);
    }
    return teile;
}

// One file read by our scanner into a database of its own; no protocol file is written, so the
// sample's folder stays as it is.
class Einlesung {
public:
    explicit Einlesung(const std::filesystem::path& xml) {
        std::ostringstream ausgabe;
        BatchOberfläche ui(ausgabe);
        NasProtokoll protokoll(ui, {});
        NasStand stand;
        const NasAuftrag auftrag{xml, ordner / "muster.sqlite", Konfig};
        ergebnis = DAO_ALKISEinlesen(auftrag, stand, ui, protokoll);
        meldungen = ausgabe.str();
        if (!ergebnis)
            return;
        db = DAO_DatenbankÖffnen(auftrag.datenbank);
        for (const auto& tabelle : DAO_Tabellen(*db))
            zeilen[tabelle] = DAO_Zeilenzahl(*db, tabelle);
    }

    std::vector<std::string> Spalte(std::string_view sql) const {
        std::vector<std::string> werte;
        auto abfrage = db->VorbereitenNativ(sql);
        while (abfrage.Schritt())
            werte.emplace_back(abfrage.Text(0));
        return werte;
    }
    std::string Wert(std::string_view sql) const {
        const auto werte = Spalte(sql);
        return werte.empty() ? "<keine Zeile>" : werte.front();
    }
    std::int64_t Zeilen(const std::string& tabelle) const {
        const auto treffer = zeilen.find(tabelle);
        return treffer == zeilen.end() ? -1 : treffer->second;
    }

    TempOrdner ordner; // first made, last removed: it holds the database
    Ergebnis ergebnis;
    std::string meldungen;
    std::map<std::string, std::int64_t> zeilen;
    std::unique_ptr<Datenbank> db;
};

const Einlesung& MusterGelesen() {
    static const Einlesung einlesung(Muster);
    return einlesung;
}

bool IstObjektklasse(std::string_view tabelle) {
    return tabelle.find('#') == std::string_view::npos && tabelle != "Antragsbeschreibung";
}

class NasMuster : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(std::filesystem::exists(Muster)) << Muster;
        ASSERT_TRUE(MusterGelesen().ergebnis)
            << MusterGelesen().ergebnis.Meldung() << "\n" << MusterGelesen().meldungen;
    }
};

TEST_F(NasMuster, JedeKlasseInDerZahlDesEntwurfs) {
    const auto& m = MusterGelesen();
    std::set<std::string> genannt;
    for (const auto& soll : MusterKlassen) {
        EXPECT_EQ(m.Zeilen(std::string(soll.tabelle)), soll.zeilen) << soll.tabelle;
        genannt.emplace(soll.tabelle);
    }
    // Nothing else: every other class table of the node file stays empty.
    for (const auto& [tabelle, zeilen] : m.zeilen) {
        if (IstObjektklasse(tabelle) && !genannt.contains(tabelle)) {
            EXPECT_EQ(zeilen, 0) << tabelle;
        }
    }
}

TEST_F(NasMuster, BeziehungstabellenInDerZahlDesEntwurfs) {
    const auto& m = MusterGelesen();
    for (const auto& soll : MusterBeziehungen)
        EXPECT_EQ(m.Zeilen(std::string(soll.tabelle)), soll.zeilen) << soll.tabelle;
}

TEST_F(NasMuster, JederVerweisTrifftSeinZiel) {
    const auto& m = MusterGelesen();
    struct Beziehung {
        std::string tabelle, quelle, zielspalte, ziel;
    };
    const std::vector<Beziehung> beziehungen = {
        {"AX_Flurstueck_istGebucht#AX_Buchungsstelle", "AX_Flurstueck", "AX_Buchungsstelle",
         "AX_Buchungsstelle"},
        {"AX_Flurstueck_weistAuf#ori_LagebezeichnungMitHausnummer", "AX_Flurstueck",
         "ori_LagebezeichnungMitHausnummer", "AX_LagebezeichnungMitHausnummer"},
        {"AX_Flurstueck_zeigtAuf#ori_LagebezeichnungOhneHausnummer", "AX_Flurstueck",
         "ori_LagebezeichnungOhneHausnummer", "AX_LagebezeichnungOhneHausnummer"},
        {"AX_Buchungsstelle_an#ori_Buchungsstelle", "AX_Buchungsstelle", "ori_Buchungsstelle",
         "AX_Buchungsstelle"},
        {"AX_Buchungsstelle_istBestandteilVon#AX_Buchungsblatt", "AX_Buchungsstelle",
         "AX_Buchungsblatt", "AX_Buchungsblatt"},
        {"AX_Namensnummer_istBestandteilVon#AX_Buchungsblatt", "AX_Namensnummer", "AX_Buchungsblatt",
         "AX_Buchungsblatt"},
        {"AX_Namensnummer_benennt#AX_Person", "AX_Namensnummer", "AX_Person", "AX_Person"},
        {"AX_Person_hat#AX_Anschrift", "AX_Person", "AX_Anschrift", "AX_Anschrift"},
        {"AP_PTO_dientZurDarstellungVon#AX_Flurstueck", "AP_PTO", "AX_Flurstueck", "AX_Flurstueck"},
    };
    for (const auto& b : beziehungen) {
        SCOPED_TRACE(b.tabelle);
        const auto quellen = m.Spalte("SELECT id FROM \"" + b.quelle + "\"");
        const auto ziele = m.Spalte("SELECT id FROM \"" + b.ziel + "\"");
        const std::set<std::string> quelle(quellen.begin(), quellen.end());
        const std::set<std::string> ziel(ziele.begin(), ziele.end());
        int verweise = 0;
        for (const auto& id : m.Spalte("SELECT id FROM \"" + b.tabelle + "\""))
            EXPECT_TRUE(quelle.contains(id)) << id;
        for (const auto& liste : m.Spalte("SELECT \"" + b.zielspalte + "\" FROM \"" + b.tabelle + "\"")) {
            for (const auto& id : Verweisliste(liste)) {
                EXPECT_TRUE(ziel.contains(id)) << id;
                ++verweise;
            }
        }
        EXPECT_GT(verweise, 0);
    }
}

TEST_F(NasMuster, DieEinzelfälleDesEntwurfs) {
    const auto& m = MusterGelesen();
    // One parcel free of booking, one without label.
    EXPECT_EQ(m.Wert("SELECT COUNT(*) FROM AX_Flurstueck WHERE id NOT IN "
                     "(SELECT id FROM \"AX_Flurstueck_istGebucht#AX_Buchungsstelle\")"),
              "1");
    EXPECT_EQ(m.Wert("SELECT COUNT(*) FROM AX_Flurstueck WHERE id NOT IN "
                     "(SELECT AX_Flurstueck FROM \"AP_PTO_dientZurDarstellungVon#AX_Flurstueck\")"),
              "1");
    // One person without address; the couple's address is named twice.
    EXPECT_EQ(m.Wert("SELECT COUNT(*) FROM AX_Person WHERE id NOT IN "
                     "(SELECT id FROM \"AX_Person_hat#AX_Anschrift\")"),
              "1");
    EXPECT_EQ(m.Spalte("SELECT COUNT(*) FROM \"AX_Person_hat#AX_Anschrift\" GROUP BY AX_Anschrift "
                       "HAVING COUNT(*) > 1"),
              std::vector<std::string>{"2"});
    // The shares: one booking with exactly one attached, one with two.
    EXPECT_EQ(m.Spalte("SELECT COUNT(*) FROM \"AX_Buchungsstelle_an#ori_Buchungsstelle\" "
                       "GROUP BY ori_Buchungsstelle ORDER BY 1"),
              (std::vector<std::string>{"1", "2"}));
    EXPECT_EQ(m.Wert("SELECT COUNT(*) FROM \"AX_Flurstueck_weistAuf#ori_LagebezeichnungMitHausnummer\" "
                     "WHERE ori_LagebezeichnungMitHausnummer LIKE '%;%'"),
              "5");
    // Keys: 20 characters each, all different; eight parcels with a denominator.
    EXPECT_EQ(m.Wert("SELECT COUNT(DISTINCT flurstueckskennzeichen) FROM AX_Flurstueck "
                     "WHERE length(flurstueckskennzeichen) = 20"),
              "24");
    EXPECT_EQ(m.Wert("SELECT COUNT(*) FROM AX_Flurstueck "
                     "WHERE \"flurstuecksnummer/AX_Flurstuecksnummer/nenner\" <> ''"),
              "8");
    EXPECT_EQ(m.Wert("SELECT COUNT(*) FROM AX_Flurstueck WHERE \"gml:Arc\" <> ''"), "2");
    EXPECT_EQ(m.Wert("SELECT COUNT(*) FROM AX_Flurstueck WHERE \"gml:interior\" <> ''"), "1");
    // The file's standard system is the system of every parcel.
    EXPECT_EQ(m.Spalte("SELECT DISTINCT srsName FROM AX_Flurstueck"),
              std::vector<std::string>{"25832_32"});
    EXPECT_EQ(m.Wert("SELECT EPSG || '|' || MKZ FROM Antragsbeschreibung"), "25832|32");
}

TEST_F(NasMuster, GdalZähltJedeKlasseWieUnserScanner) {
    if (!ImSuchpfad("ogrinfo"))
        GTEST_SKIP() << "ogrinfo (gdal-bin) fehlt: kein Vergleich mit GDAL.";
    if (Ausführen("ogrinfo --formats 2>/dev/null").ausgabe.find("NAS -vector-") == std::string::npos)
        GTEST_SKIP() << "GDAL ohne NAS-Treiber: kein Vergleich mit GDAL.";
    // ogrinfo writes a .gfs file beside its input: it reads a copy in a folder of its own, with
    // the environment's schema templates switched off.
    TempOrdner ordner;
    std::filesystem::copy_file(Muster, ordner / "muster.xml");
    const auto lauf = Ausführen("env -u NAS_GFS_TEMPLATE -u GML_GFS_TEMPLATE ogrinfo -ro -so -al " +
                                Wort(ordner / "muster.xml") + " 2>" + Wort(ordner / "meldungen.txt"));
    ASSERT_EQ(lauf.status, 0) << test::DateiLesen(ordner / "meldungen.txt");
    ASSERT_NE(lauf.ausgabe.find("using driver `NAS' successful"), std::string::npos)
        << "GDAL hat die Datei nicht als NAS gelesen:\n" << lauf.ausgabe.substr(0, 500);
    std::map<std::string, long long> gdal;
    std::istringstream zeilen(lauf.ausgabe);
    std::string zeile, klasse;
    while (std::getline(zeilen, zeile)) {
        if (zeile.starts_with("Layer name: "))
            klasse = zeile.substr(12);
        else if (zeile.starts_with("Feature Count: ") && !klasse.empty())
            gdal[klasse] = std::stoll(zeile.substr(15));
    }
    ASSERT_TRUE(gdal.contains("ALKIS_beziehungen"));
    EXPECT_EQ(gdal["ALKIS_beziehungen"], MusterVerweise);
    gdal.erase("ALKIS_beziehungen");

    std::map<std::string, long long> unsere;
    for (const auto& [tabelle, anzahl] : MusterGelesen().zeilen)
        if (IstObjektklasse(tabelle) && anzahl > 0)
            unsere[tabelle] = anzahl;
    EXPECT_EQ(unsere, gdal);
    EXPECT_EQ(gdal.size(), MusterKlassen.size());
}

TEST(NasMusterErzeuger, SchreibtDasAusgelieferteMusterNeu) {
    if (!ImSuchpfad("python3"))
        GTEST_SKIP() << "python3 fehlt: der Erzeuger kann nicht laufen.";
    TempOrdner ordner;
    const auto lauf = Ausführen("python3 " + Wort(Erzeuger) + " --out " + Wort(ordner / "muster.xml") +
                                " 2>&1");
    ASSERT_EQ(lauf.status, 0) << lauf.ausgabe;
    // Same arguments, same bytes: the shipped sample is the generator's output as it stands.
    EXPECT_TRUE(test::DateiLesen(ordner / "muster.xml") == test::DateiLesen(Muster))
        << "samples/musterstadt_nas.xml ist nicht mehr die Ausgabe von nas_muster_erzeugen.py";
    // A different seed changes values, not the numbers of features.
    const auto anders = Ausführen("python3 " + Wort(Erzeuger) + " --seed 7 --out " +
                                  Wort(ordner / "anders.xml") + " 2>&1");
    ASSERT_EQ(anders.status, 0) << anders.ausgabe;
    EXPECT_NE(test::DateiLesen(ordner / "anders.xml"), test::DateiLesen(Muster));
    const Einlesung gelesen(ordner / "anders.xml");
    ASSERT_TRUE(gelesen.ergebnis) << gelesen.ergebnis.Meldung() << "\n" << gelesen.meldungen;
    for (const auto& soll : MusterKlassen)
        EXPECT_EQ(gelesen.Zeilen(std::string(soll.tabelle)), soll.zeilen) << soll.tabelle;
}

TEST(NasMusterErzeuger, ZweihundertFlurstücke) {
    if (!ImSuchpfad("python3"))
        GTEST_SKIP() << "python3 fehlt: der Erzeuger kann nicht laufen.";
    TempOrdner ordner;
    const auto lauf = Ausführen("python3 " + Wort(Erzeuger) + " --flurstuecke 200 --out " +
                                Wort(ordner / "bezirk.xml") + " 2>&1");
    ASSERT_EQ(lauf.status, 0) << lauf.ausgabe;
    const Einlesung gelesen(ordner / "bezirk.xml");
    ASSERT_TRUE(gelesen.ergebnis) << gelesen.ergebnis.Meldung() << "\n" << gelesen.meldungen;
    EXPECT_EQ(gelesen.Zeilen("AX_Flurstueck"), 200);
    EXPECT_EQ(gelesen.Wert("SELECT COUNT(DISTINCT flurstueckskennzeichen) FROM AX_Flurstueck"), "200");
    // 200 parcels are eight whole periods and positions 0 to 7 of a ninth: position 22, free of
    // booking, comes eight times, position 13, without label, eight times.
    EXPECT_EQ(gelesen.Zeilen("AX_Flurstueck_istGebucht#AX_Buchungsstelle"), 200 - 8);
    EXPECT_EQ(gelesen.Zeilen("AP_PTO"), 200 - 8);
}

} // namespace
} // namespace flurix::nas
