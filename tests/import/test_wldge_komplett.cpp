// The complete WLDGE reader: the files of tests/daten/import/wldge_komplett_faelle.txt with their
// rows, messages and status against a golden transcript. Among them: two commas leave a name as
// it stands and ids grow by two; a parcel on two sheets is copied with the parcel data and the next
// id; a second owner with the same key is lost without a message; a quote makes the statement of
// Sondereigentum fail while a blank remark keeps its place; without the full land use the key
// texts of block 9 are appended in their own order.

#include "import/wldge_komplett.hpp"

#include "gemeinsam/lesefixture.hpp"
#include "leseprotokoll.hpp"

namespace flurix::import {
namespace {

class WldgeKomplettTest : public test::Lesefixture {};

TEST_F(WldgeKomplettTest, DateienWieImProtokoll) {
    const auto fälle = test::Lesefälle("wldge_komplett_faelle.txt");
    ASSERT_GT(fälle.size(), 8u);
    std::string protokoll;
    for (const auto& f : fälle) {
        std::filesystem::remove_all(ordner / "tmp_flurix");
        if (f.optionen.find('B') != std::string::npos)
            test::DateiSchreiben(ordner / "tmp_flurix" / "belegt", "x");
        optionen.nameUmdrehen = f.optionen.find('U') != std::string::npos;
        optionen.nutzungTatsächlich = f.optionen.find('N') == std::string::npos;
        Kataster tabelle;
        SkriptOberfläche skript;
        WldgeKomplettBericht b;
        WldgeKomplettUmgebung umgebung;
        umgebung.arbeitsverzeichnis = ordner.pfad();
        const auto datei = Schreiben("kreis.wldge", test::Datei(f.zeilen));
        const bool ok = static_cast<bool>(WldgeKomplettLesen(datei, optionen, umgebung, tabelle, skript, &b));
        if (ok) { // the staging database is gone
            EXPECT_FALSE(std::filesystem::exists(ordner / "tmp_flurix")) << f.name;
        }
        protokoll += "%% " + f.name + (ok ? "" : " (Fehler)") + "\nBericht: " + std::to_string(b.zeilen) +
                     " Zeilen, Flurstücke " + b.flurstücke + ", Bestände " + b.bestände + "\n" +
                     test::Leseprotokoll(skript, tabelle);
    }
    EXPECT_EQ(test::GoldenVergleich(protokoll, test::Testdaten() / "import" / "wldge_komplett.txt"), "");
}

} // namespace
} // namespace flurix::import
