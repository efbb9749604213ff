// The quick WLDGE reader: the files of tests/daten/import/wldge_schnell_faelle.txt (formats 32, 34
// and 35; parcel records of every kind, owner texts, parcels on two sheets or without owner, files
// without data) with their rows, messages and status against a golden transcript; the owner table's
// limit, the progress, the fixed view, and cut or foreign lines.

#include "import/wldge_schnell.hpp"

#include "core/katalog.hpp"
#include "core/text.hpp"
#include "gemeinsam/lesefixture.hpp"
#include "leseprotokoll.hpp"

namespace flurix::import {
namespace {

using test::Datei;
using test::Satz;

class WldgeSchnellTest : public test::Lesefixture {
protected:
    // The case of the case file with this name.
    const test::Lesefall& Fall(std::string_view name) {
        for (const auto& f : fälle)
            if (f.name == name)
                return f;
        throw std::runtime_error("kein Fall " + std::string(name));
    }
    Ergebnis Lesen(const std::string& text) {
        return WldgeSchnellLesen(Schreiben("kreis.wldge", text), optionen, kataster, ui);
    }

    const std::vector<test::Lesefall> fälle = test::Lesefälle("wldge_schnell_faelle.txt");
};

TEST_F(WldgeSchnellTest, DateienWieImProtokoll) {
    ASSERT_GT(fälle.size(), 20u);
    std::string protokoll;
    for (const auto& f : fälle) {
        Kataster tabelle;
        SkriptOberfläche skript;
        WldgeSchnellBericht b;
        optionen.alleEigentümerInEinerZeile = f.optionen.find('E') != std::string::npos;
        optionen.nameUmdrehen = f.optionen.find('U') != std::string::npos;
        const auto datei = Schreiben("kreis.wldge", Datei(f.zeilen));
        const bool ok = static_cast<bool>(WldgeSchnellLesen(datei, optionen, tabelle, skript, &b));
        protokoll += "%% " + f.name + (ok ? "" : " (Fehlschlag)") + "\nBericht: Format " + b.format + ", " +
                     std::to_string(b.zeilen) + " Zeilen, " + std::to_string(b.flurstücke) + " Flurstücke, " +
                     std::to_string(b.ohneEigentümer) + " ohne Eigentümer, " + std::to_string(b.bov) + " im BOV\n" +
                     test::Leseprotokoll(skript, tabelle);
    }
    EXPECT_EQ(test::GoldenVergleich(protokoll, test::Testdaten() / "import" / "wldge_schnell.txt"), "");
}

TEST_F(WldgeSchnellTest, EigentümertabelleHatFünftausendPlätze) {
    for (const std::size_t anzahl : {HöchstzahlEigentümer, HöchstzahlEigentümer + 1}) {
        SCOPED_TRACE(anzahl);
        std::vector<std::string> zeilen{test::Kopf("32")};
        for (std::size_t e = 0; e < anzahl; ++e) {
            const auto zeile = Satz('2', "051234-000123", '1').Setze(28, "0001.00.00000.00");
            zeilen.push_back(Satz(zeile).Setze(48, "0").Text());
            zeilen.push_back(Satz(zeile).Setze(48, "1").Setze(49, "E" + std::to_string(e)).Text());
        }
        zeilen.push_back( // the booking of parcel 42 and the parcel
            Satz('2', "051234-000123", '0').Setze(16, "0001").Setze(26, "1").Setze(31, "051234-001-00042/000.00").Text());
        zeilen.push_back(Satz('3', "051234-001-00042/000", 'B').Setze(22, ".00").Setze(25, "A").Setze(84, "000000512")
                             .Setze(95, "07").Text());
        const std::size_t vorher = kataster.Zeilenzahl();
        const bool ok = static_cast<bool>(Lesen(Datei(zeilen)));
        EXPECT_EQ(ok, anzahl == HöchstzahlEigentümer);
        EXPECT_EQ(kataster.Zeilenzahl(), ok ? HöchstzahlEigentümer : vorher); // the table stays as it was
        EXPECT_EQ(ui.Meldungen(), ok ? std::vector<std::string>{} : std::vector<std::string>{
            "Der Bestand 051234-000123 hat mehr als 5000 Eigentümer (Zeile 10002)! Das schnelle "
            "Einlesen wird abgebrochen. Bitte wählen Sie [WLDGE-Daten komplett einlesen]!   "});
    }
}

TEST_F(WldgeSchnellTest, FortschrittUndFesteAnsicht) {
    optionen.alleEigentümerInEinerZeile = true;
    ASSERT_TRUE(Lesen(Datei(Fall("BOV").zeilen)));
    std::vector<std::string> stufen;
    for (const auto& s : ui.Texte(Ereignis::Art::Status))
        if (s.find(" eingelesen  ") != std::string::npos &&
            (stufen.empty() || stufen.back().substr(0, 3) != s.substr(0, 3)))
            stufen.push_back(s);
    // Stages with a percent show it at every 20th item: no parcel line is one here.
    EXPECT_EQ(stufen, (std::vector<std::string>{"14% eingelesen  ", "28%/0% eingelesen  ", "43% eingelesen  ",
                                                "85%/0% eingelesen  ", "95%/0% eingelesen  ",
                                                "100% eingelesen  ", "1 Zeilen eingelesen  "}));
    // the fixed view: its keys in its order, but for the key the table has no column for
    std::vector<std::string> gezeigt, ansicht;
    for (std::size_t s : kataster.Anzeigereihenfolge())
        if (kataster.Spalte(s).sichtbar)
            gezeigt.push_back(kataster.Spalte(s).schlüssel);
    for (auto teil : Teilen(SchnellimportAnsicht, ';'))
        if (teil != "Straßenschlüsselname")
            ansicht.emplace_back(teil);
    EXPECT_EQ(gezeigt, ansicht);
}

TEST_F(WldgeSchnellTest, AbgeschnitteneUndFremdeZeilenStürzenNichtAb) {
    for (const char* name : {"Kleinfläche", "gleiche Straße"}) {
        const std::vector<std::string>& ganz = Fall(name).zeilen;
        optionen.alleEigentümerInEinerZeile = false;
        ASSERT_TRUE(Lesen(Datei(ganz)));
        const std::size_t höchstens = kataster.Zeilenzahl();
        optionen.alleEigentümerInEinerZeile = true;
        // Every line cut at every third length, one at a time: never more rows than owners.
        for (std::size_t z = 1; z < ganz.size(); ++z)
            for (std::size_t länge = 0; länge < ganz[z].size(); länge += 3) {
                auto zeilen = ganz;
                zeilen[z].resize(länge);
                kataster.Leeren();
                Lesen(Datei(zeilen));
                EXPECT_LE(kataster.Zeilenzahl(), höchstens) << name;
            }
        // Bytes of another code page and control bytes.
        std::string fremd = Datei(ganz);
        for (std::size_t i = 40; i < fremd.size(); i += 37)
            fremd[i] = static_cast<char>(0x80 + i % 128);
        EXPECT_NO_THROW(Lesen(fremd));
    }
    EXPECT_NO_THROW(Lesen(std::string("1\x00\xff\r\n3\x1a", 7)));
}

} // namespace
} // namespace flurix::import
