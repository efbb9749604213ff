// The invented NAS sample samples/musterstadt_nas.xml and its generator
// samples/nas_muster_erzeugen.py: GDAL's NAS driver finds the features and references our scanner
// finds, every reference meets its target, the cases the generator builds in are there, the
// shipped file is exactly what the generator writes, and a larger district reads as well.
//
// The generator repeats one period of 24 parcels; the sample is that period once. Of its cases:
// position 22 has no booking, position 13 no label; one person has no address and a couple shares
// one; three shares are attached ("an"), one to the booking of position 7, two to that of 19;
// five parcels have two locations with house numbers; eight have a denominator, two an arc in the
// ring, one a hole.

#include "nas/nas_einlesen.hpp"

#include "core/datenbank.hpp"
#include "core/oberflaeche_batch.hpp"
#include "core/text.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/gdal_testbezirk.hpp"
#include "nas/knoten.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"
#include "nas/tabellentext.hpp"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace flurix::nas {
namespace {

using test::Ausführen;
using test::ImSuchpfad;
using test::Wort;

const std::filesystem::path Quellen = FLURIX_QUELLEN;
const std::filesystem::path Muster = Quellen / "samples" / "musterstadt_nas.xml";
const std::filesystem::path Erzeuger = Quellen / "samples" / "nas_muster_erzeugen.py";
const std::filesystem::path Konfig = Quellen / "config";

// One file read by our scanner into a database of its own; no protocol file is written, so the
// sample's folder stays as it is.
struct Einlesung {
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
        klassen = test::KlassenDerDatenbank(*db);
    }
    std::vector<std::string> Spalte(const std::string& sql) const { return test::Abfragezeilen(*db, sql); }

    test::TempOrdner ordner; // first made, last removed: it holds the database
    Ergebnis ergebnis;
    std::string meldungen;
    std::map<std::string, std::int64_t> klassen;
    std::unique_ptr<Datenbank> db;
};

const Einlesung& MusterGelesen() {
    static const Einlesung einlesung(Muster);
    return einlesung;
}

// The references of the sample: each relation table of the node file that has rows, by the
// references it holds ("a; b" in one cell counts two); every one must meet a row of its target.
std::int64_t VerweiseGeprüft(const Einlesung& m) {
    std::int64_t alle = 0;
    for (const auto& klasse : KnotenLesen(Konfig / "ALKIS_Knoten.dat").klassen)
        for (const auto& feld : klasse.felder) {
            const std::string tabelle = feld.RelationsTabelle(klasse.tabelle);
            if (feld.art != Feldart::Relation || !DAO_TabelleVorhanden(*m.db, tabelle) ||
                DAO_Zeilenzahl(*m.db, tabelle) == 0)
                continue;
            SCOPED_TRACE(tabelle);
            std::string ziel = feld.ziel;
            if (ziel.starts_with("ori_"))
                ziel.replace(0, 4, "AX_");
            const auto quellen = m.Spalte("SELECT id FROM \"" + klasse.tabelle + "\"");
            const auto ziele = m.Spalte("SELECT id FROM \"" + ziel + "\"");
            const std::set<std::string> quelle(quellen.begin(), quellen.end()), zielIds(ziele.begin(), ziele.end());
            for (const auto& id : m.Spalte("SELECT id FROM \"" + tabelle + "\""))
                EXPECT_TRUE(quelle.contains(id)) << id;
            for (const auto& liste : m.Spalte("SELECT \"" + feld.ziel + "\" FROM \"" + tabelle + "\""))
                for (const auto verweis : Teilen(liste, ';')) {
                    EXPECT_TRUE(zielIds.contains(std::string(TrimmeLeerzeichen(verweis)))) << verweis;
                    ++alle;
                }
        }
    return alle;
}

class NasMuster : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(std::filesystem::exists(Muster)) << Muster;
        const auto& m = MusterGelesen();
        ASSERT_TRUE(m.ergebnis) << m.ergebnis.Meldung() << "\n" << m.meldungen;
    }
};

TEST_F(NasMuster, GdalFindetDieObjekteUndVerweiseUnseresScanners) {
    if (!ImSuchpfad("ogrinfo"))
        GTEST_SKIP() << "ogrinfo (gdal-bin) fehlt: kein Vergleich mit GDAL.";
    if (Ausführen("ogrinfo --formats 2>/dev/null").ausgabe.find("NAS -vector-") == std::string::npos)
        GTEST_SKIP() << "GDAL ohne NAS-Treiber: kein Vergleich mit GDAL.";
    auto gdal = test::KlassenNachGdal(Muster);
    ASSERT_EQ(gdal.fehler, "");
    ASSERT_TRUE(gdal.nas) << "GDAL hat die Datei nicht als NAS gelesen";
    // GDAL lists every reference as a row of its layer ALKIS_beziehungen.
    EXPECT_EQ(gdal.anzahl["alkis_beziehungen"], VerweiseGeprüft(MusterGelesen()));
    gdal.anzahl.erase("alkis_beziehungen");
    std::map<std::string, std::int64_t> unsere;
    for (const auto& [klasse, anzahl] : MusterGelesen().klassen)
        if (anzahl > 0)
            unsere[klasse] = anzahl;
    EXPECT_EQ(unsere, gdal.anzahl);
    EXPECT_EQ(unsere.size(), 19u);
}

TEST_F(NasMuster, JederVerweisTrifftSeinZielUndDieEinzelfälleDesEntwurfs) {
    const auto& m = MusterGelesen();
    EXPECT_GT(VerweiseGeprüft(m), 150);
    // tests/daten/nas/muster_einzelfaelle.txt: a query on the database and its answer a line.
    std::istringstream fälle(test::DateiLesen(test::Testdaten() / "nas" / "muster_einzelfaelle.txt"));
    int anzahl = 0;
    for (std::string zeile; std::getline(fälle, zeile);) {
        if (zeile.empty() || zeile.starts_with('#'))
            continue;
        const auto pfeil = zeile.rfind(" => ");
        ASSERT_NE(pfeil, std::string::npos) << zeile;
        EXPECT_EQ(m.Spalte(zeile.substr(0, pfeil)), std::vector<std::string>{zeile.substr(pfeil + 4)}) << zeile;
        ++anzahl;
    }
    EXPECT_EQ(anzahl, 13);
}

TEST(NasMusterErzeuger, SchreibtDasAusgelieferteMusterNeu) {
    if (!ImSuchpfad("python3"))
        GTEST_SKIP() << "python3 fehlt: der Erzeuger kann nicht laufen.";
    test::TempOrdner ordner;
    const auto lauf = Ausführen("python3 " + Wort(Erzeuger) + " --out " + Wort(ordner / "muster.xml") + " 2>&1");
    ASSERT_EQ(lauf.status, 0) << lauf.ausgabe;
    // Same arguments, same bytes: the shipped sample is the generator's output as it stands.
    EXPECT_TRUE(test::DateiLesen(ordner / "muster.xml") == test::DateiLesen(Muster))
        << "samples/musterstadt_nas.xml ist nicht mehr die Ausgabe von nas_muster_erzeugen.py";
    // A different seed changes values, not the numbers of features.
    const auto anders =
        Ausführen("python3 " + Wort(Erzeuger) + " --seed 7 --out " + Wort(ordner / "anders.xml") + " 2>&1");
    ASSERT_EQ(anders.status, 0) << anders.ausgabe;
    EXPECT_NE(test::DateiLesen(ordner / "anders.xml"), test::DateiLesen(Muster));
    const Einlesung gelesen(ordner / "anders.xml");
    ASSERT_TRUE(gelesen.ergebnis) << gelesen.ergebnis.Meldung() << "\n" << gelesen.meldungen;
    ASSERT_TRUE(MusterGelesen().ergebnis);
    EXPECT_EQ(gelesen.klassen, MusterGelesen().klassen);
}

TEST(NasMusterErzeuger, ZweihundertFlurstücke) {
    if (!ImSuchpfad("python3"))
        GTEST_SKIP() << "python3 fehlt: der Erzeuger kann nicht laufen.";
    test::TempOrdner ordner;
    const auto lauf =
        Ausführen("python3 " + Wort(Erzeuger) + " --flurstuecke 200 --out " + Wort(ordner / "bezirk.xml") + " 2>&1");
    ASSERT_EQ(lauf.status, 0) << lauf.ausgabe;
    const Einlesung gelesen(ordner / "bezirk.xml");
    ASSERT_TRUE(gelesen.ergebnis) << gelesen.ergebnis.Meldung() << "\n" << gelesen.meldungen;
    EXPECT_EQ(gelesen.Spalte("SELECT COUNT(DISTINCT flurstueckskennzeichen) FROM AX_Flurstueck"),
              std::vector<std::string>{"200"});
    // 200 parcels are eight whole periods and positions 0 to 7 of a ninth: position 22, free of
    // booking, comes eight times, position 13, without label, eight times.
    EXPECT_EQ(gelesen.klassen.at("ax_flurstueck"), 200);
    EXPECT_EQ(gelesen.Spalte("SELECT COUNT(*) FROM \"AX_Flurstueck_istGebucht#AX_Buchungsstelle\""),
              std::vector<std::string>{"192"});
    EXPECT_EQ(gelesen.klassen.at("ap_pto"), 200 - 8);
}

} // namespace
} // namespace flurix::nas
