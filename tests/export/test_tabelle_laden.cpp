// Loading a saved table: the steps after the file is read, and a bad file leaving the open table
// as it was.

#include "import/tabelle_laden.hpp"

#include "beispiel.hpp"
#include "core/kataster_datei.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

namespace flurix::import {
namespace {

namespace fs = std::filesystem;
using test::DateiLesen;
using test::DateiSchreiben;

// All a table holds that a load could change, as text: columns, order and cells.
std::string Abbild(const Kataster& k) {
    std::string text;
    for (std::size_t s = 0; s < k.Spaltenzahl(); ++s)
        text += k.Spalte(s).schlüssel + "|" + k.Spalte(s).überschrift + "|" +
                std::to_string(k.Spalte(s).breite) + "|" + (k.Spalte(s).sichtbar ? "1" : "0") + "\n";
    for (const std::size_t s : k.Anzeigereihenfolge())
        text += std::to_string(s) + ",";
    for (std::size_t z = 0; z < k.Zeilenzahl(); ++z)
        text += "\n" + k.ZeileAlsText(z);
    return text;
}

class TabelleLaden : public ::testing::Test {
protected:
    test::TempOrdner ordner;
    TabellenLadeumgebung umgebung{ordner / "ALB_DatenbankSpalten.dat", "alles", false};
    SkriptOberfläche ui;
};

// A cut file, one of another version and one that is no table at all: the message, and the table
// open before stays exactly as it was.
TEST_F(TabelleLaden, FehlerhafteDateiLässtTabelleUnberührt) {
    const fs::path gut = ordner / "gut.fil";
    KatasterSpeichern(test::Beispieltabelle(), gut);
    const std::string inhalt = DateiLesen(gut);
    std::vector<std::pair<std::string, std::string>> dateien;
    // Every cut inside the file, from nothing to all but the last LF.
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
    const std::string vorher = Abbild(offen);
    for (const auto& [name, bytes] : dateien) {
        SCOPED_TRACE(name);
        const fs::path datei = ordner / (name + ".fil");
        DateiSchreiben(datei, bytes);
        SkriptOberfläche skript;
        std::vector<std::string> box{"bleibt"};
        const Ergebnis e = GespeicherteTabelleLaden(datei, umgebung, offen, skript, &box);
        EXPECT_FALSE(e);
        EXPECT_EQ(skript.Meldungen(),
                  std::vector<std::string>{"Während des Lesens der Daten aus der Datei " +
                                           datei.string() + " ist ein Fehler aufgetreten!"});
        EXPECT_EQ(skript.Ereignisse().back().titel, "Flurix");
        EXPECT_EQ(Abbild(offen), vorher);
        EXPECT_TRUE(offen.Ausgewählt(0));
        EXPECT_EQ(box, std::vector<std::string>{"bleibt"});
    }
    // A file that is not there at all.
    EXPECT_FALSE(GespeicherteTabelleLaden(ordner / "fehlt.fil", umgebung, offen, ui));
    EXPECT_EQ(Abbild(offen), vorher);

    // The whole file loads.
    EXPECT_TRUE(GespeicherteTabelleLaden(gut, umgebung, offen, ui));
    EXPECT_EQ(offen.Zeilenzahl(), 3u);
}

// The steps after reading: box entries, check column, status, sort, view "alles".
TEST_F(TabelleLaden, SchritteNachDemLesen) {
    Kataster t = test::Beispieltabelle();
    t.Spalte(5).kontrollkästchen = false;
    const fs::path datei = ordner / "t.fil";
    KatasterSpeichern(t, datei);

    Kataster ziel;
    std::vector<std::string> box;
    ASSERT_TRUE(GespeicherteTabelleLaden(datei, umgebung, ziel, ui, &box));
    // The box sorts by "Gemarkungsschlüssel,Flur"; this table has no key column, so by Flur.
    EXPECT_EQ(box, (std::vector<std::string>{"Süd, 001", "Musterhausen, 007", "Łódź €, 010"}));
    const auto markierung = ziel.SpaltenIndex("checkdruck");
    ASSERT_TRUE(markierung);
    EXPECT_TRUE(ziel.Spalte(*markierung).kontrollkästchen);
    EXPECT_EQ(ui.LetzterStatus(1), "3 Zeilen eingelesen  ");
    // Sorted by Gemarkung first ("Ł" has no place in the German order: only the two German
    // names are compared).
    std::vector<std::string> gemarkungen;
    for (std::size_t z = 0; z < ziel.Zeilenzahl(); ++z)
        gemarkungen.emplace_back(ziel.Zelle(z, "Gemarkung"));
    EXPECT_LT(std::find(gemarkungen.begin(), gemarkungen.end(), "Musterhausen"),
              std::find(gemarkungen.begin(), gemarkungen.end(), "Süd"));
    // The view "alles": every column visible, in column order.
    for (std::size_t s = 0; s < ziel.Spaltenzahl(); ++s) {
        EXPECT_TRUE(ziel.Spalte(s).sichtbar) << s;
        EXPECT_EQ(ziel.Anzeigereihenfolge()[s], s);
    }
    // The cells came in whole.
    EXPECT_EQ(ziel.Zelle(*ziel.Suchen(*ziel.SpaltenIndex("Flur"), "010"), "Name"),
              "Zeile1\r\nZeile2");
}

// The box is filled below 5000 rows only, unless the option takes the parcel keys.
TEST_F(TabelleLaden, GemarkungFlurBoxNachZeilenzahl) {
    struct Fall {
        std::size_t zeilen;
        bool option;
        std::size_t einträge;
    };
    const Fall fälle[] = {{4999, false, 2}, {5000, false, 0}, {5000, true, 2}, {1, true, 1}};
    for (const auto& f : fälle) {
        SCOPED_TRACE(std::to_string(f.zeilen) + (f.option ? " mit Option" : ""));
        Kataster t;
        t.SpalteHinzufügen({"Gemarkung", "Gemarkung"});
        t.SpalteHinzufügen({"Flur", "Flur"});
        t.SpalteHinzufügen({"Flurstückskennzeichen", "Flurstückskennzeichen"});
        for (std::size_t z = 0; z < f.zeilen; ++z)
            t.ZeileHinzufügen(z % 2 == 0 ? "Nord\t001\t12195500100001000000"
                                         : "Süd\t002\t12195600200001000000");
        const fs::path datei = ordner / "viele.fil";
        KatasterSpeichern(t, datei);
        umgebung.suchbegriffGemarkung = f.option;
        Kataster ziel;
        std::vector<std::string> box{"alt"};
        SkriptOberfläche skript;
        ASSERT_TRUE(GespeicherteTabelleLaden(datei, umgebung, ziel, skript, &box));
        EXPECT_EQ(box.size(), f.einträge);
        if (f.option && !box.empty()) {
            EXPECT_EQ(box.front(), "121955, 001");
        }
        EXPECT_EQ(ziel.Zeilenzahl(), f.zeilen);
    }
}

} // namespace
} // namespace flurix::import
