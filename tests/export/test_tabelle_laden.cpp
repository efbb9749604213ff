// Loading a saved table: the steps after the file is read, and a bad file leaving the open table
// as it was.

#include "import/tabelle_laden.hpp"

#include "beispiel.hpp"
#include "core/kataster_datei.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

namespace flurix::import {
namespace {

namespace fs = std::filesystem;
using Liste = std::vector<std::string>;

class TabelleLaden : public ::testing::Test {
protected:
    test::TempOrdner ordner;
    TabellenLadeumgebung umgebung{ordner / "ALB_DatenbankSpalten.dat", "alles", false};
    SkriptOberfläche ui;
};

// Every cut of a saved file, one of another version, one with more behind it and one that is no
// table at all: the message, and the table open before stays exactly as it was.
TEST_F(TabelleLaden, FehlerhafteDateiLässtTabelleUnberührt) {
    const fs::path gut = ordner / "gut.fil";
    KatasterSpeichern(test::Beispieltabelle(), gut);
    const std::string inhalt = test::DateiLesen(gut);
    std::vector<std::pair<std::string, std::string>> dateien;
    for (std::size_t länge = 0; länge < inhalt.size(); länge += 7)
        dateien.emplace_back("abgeschnitten" + std::to_string(länge), inhalt.substr(0, länge));
    dateien.emplace_back("ohne_letztes_lf", inhalt.substr(0, inhalt.size() - 1));
    std::string version2 = inhalt;
    version2.replace(version2.find("\t1\n"), 3, "\t2\n");
    dateien.emplace_back("version2", version2);
    dateien.emplace_back("fremd", "<?xml version=\"1.0\"?><AX_Bestandsdatenauszug/>\n");
    dateien.emplace_back("angehaengt", inhalt + "mehr\n");

    Kataster offen;
    offen.SpalteHinzufügen({"Gemarkung", "Gemarkung"});
    offen.ZeileHinzufügen("Altstadt");
    offen.Auswählen(0);
    const std::string vorher = test::Abbild(offen);
    for (const auto& [name, bytes] : dateien) {
        SCOPED_TRACE(name);
        const fs::path datei = ordner / (name + ".fil");
        test::DateiSchreiben(datei, bytes);
        SkriptOberfläche skript;
        Liste box{"bleibt"};
        EXPECT_FALSE(GespeicherteTabelleLaden(datei, umgebung, offen, skript, &box));
        EXPECT_EQ(skript.Meldungen(), Liste{"Während des Lesens der Daten aus der Datei " + datei.string() +
                                            " ist ein Fehler aufgetreten!"});
        EXPECT_EQ(skript.Ereignisse().back().titel, "Flurix");
        EXPECT_EQ(test::Abbild(offen), vorher);
        EXPECT_TRUE(offen.Ausgewählt(0));
        EXPECT_EQ(box, Liste{"bleibt"});
    }
    EXPECT_FALSE(GespeicherteTabelleLaden(ordner / "fehlt.fil", umgebung, offen, ui));
    EXPECT_EQ(test::Abbild(offen), vorher);
    EXPECT_TRUE(GespeicherteTabelleLaden(gut, umgebung, offen, ui));
    EXPECT_EQ(offen.Zeilenzahl(), 3u);
}

// The steps after reading: box entries, check column, status, sort, view "alles".
TEST_F(TabelleLaden, SchritteNachDemLesen) {
    Kataster t = test::Beispieltabelle();
    t.Spalte(5).kontrollkästchen = false;
    KatasterSpeichern(t, ordner / "t.fil");
    Kataster ziel;
    Liste box;
    ASSERT_TRUE(GespeicherteTabelleLaden(ordner / "t.fil", umgebung, ziel, ui, &box));
    // The box sorts by "Gemarkungsschlüssel,Flur"; this table has no key column, so by Flur.
    EXPECT_EQ(box, (Liste{"Süd, 001", "Musterhausen, 007", "Łódź €, 010"}));
    EXPECT_TRUE(ziel.Spalte(*ziel.SpaltenIndex("checkdruck")).kontrollkästchen);
    EXPECT_EQ(ui.LetzterStatus(1), "3 Zeilen eingelesen  ");
    // Sorted by Gemarkung first ("Ł" has no place in the German order: only the two German names
    // are compared); every column visible, in column order; the cells came in whole.
    const auto Zeile = [&](std::string_view gemarkung) { return ziel.Suchen(0, gemarkung).value_or(99); };
    EXPECT_LT(Zeile("Musterhausen"), Zeile("Süd"));
    for (std::size_t s = 0; s < ziel.Spaltenzahl(); ++s) {
        EXPECT_TRUE(ziel.Spalte(s).sichtbar) << s;
        EXPECT_EQ(ziel.Anzeigereihenfolge()[s], s);
    }
    EXPECT_EQ(ziel.Zelle(*ziel.Suchen(*ziel.SpaltenIndex("Flur"), "010"), "Name"), "Zeile1\r\nZeile2");
}

// The box is filled below 5000 rows only, unless the option takes the parcel keys.
TEST_F(TabelleLaden, GemarkungFlurBoxNachZeilenzahl) {
    const std::tuple<std::size_t, bool, Liste> fälle[] = {{4999, false, {"Nord, 001", "Süd, 002"}}, {5000, false, {}},
        {5000, true, {"121955, 001", "121956, 002"}}, {1, true, {"121955, 001"}}};
    for (const auto& [zeilen, option, einträge] : fälle) {
        SCOPED_TRACE(std::to_string(zeilen) + (option ? " mit Option" : ""));
        Kataster t;
        for (const char* s : {"Gemarkung", "Flur", "Flurstückskennzeichen"})
            t.SpalteHinzufügen({s, s});
        for (std::size_t z = 0; z < zeilen; ++z)
            t.ZeileHinzufügen(z % 2 == 0 ? "Nord\t001\t12195500100001000000" : "Süd\t002\t12195600200001000000");
        KatasterSpeichern(t, ordner / "viele.fil");
        umgebung.suchbegriffGemarkung = option;
        Kataster ziel;
        Liste box{"alt"};
        SkriptOberfläche skript;
        ASSERT_TRUE(GespeicherteTabelleLaden(ordner / "viele.fil", umgebung, ziel, skript, &box));
        EXPECT_EQ(box, einträge);
        EXPECT_EQ(ziel.Zeilenzahl(), zeilen);
    }
}

} // namespace
} // namespace flurix::import
