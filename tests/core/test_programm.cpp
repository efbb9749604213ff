#include "core/programm.hpp"

#include "core/benutzereinstellungen.hpp"
#include "core/einstellungen.hpp"
#include "core/nummernformat.hpp"
#include "core/tabellendatei.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "kernhilfen.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>

namespace flurix {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using test::DateiSchreiben;
using Texte = std::vector<std::string>;

// A system whose separator the test chooses; it counts how often the program sets it.
class SpielZahlenformat final : public Zahlenformat {
public:
    explicit SpielZahlenformat(char dezimal) : m_dezimal(dezimal) {}
    std::string EinsKommaEins() const override { return std::string("1") + m_dezimal + "1"; }
    bool SeparatorenSetzen(char dezimal, char) override {
        m_dezimal = dezimal;
        ++gesetzt;
        return true;
    }
    char m_dezimal;
    int gesetzt = 0;
};

Texte Dateien(const fs::path& ordner) {
    Texte namen;
    for (const auto& e : fs::directory_iterator(ordner))
        namen.push_back(e.path().filename().string());
    std::sort(namen.begin(), namen.end());
    return namen;
}

// An installation in a scratch folder: config/Flurix.dat names a working directory beside it.
class ProgrammTest : public ::testing::Test {
protected:
    ProgrammTest() {
        DateiSchreiben(konfig / "Flurix.dat", "tempArbeitsverzeichnis =" + arbeit.string() + "/\r\n");
        DateiSchreiben(konfig / "WebService.fil", "");
    }
    Ergebnis Starten(std::string_view zeile) { return Programmstart(zustand, zeile, format, ui); }

    test::TempOrdner ordner;
    fs::path arbeit = ordner / "arbeit";
    fs::path konfig = ordner / "config";
    Programmzustand zustand{Installation{ordner.pfad()}};
    SpielZahlenformat format{'.'};
    SkriptOberfläche ui;
};

// Start-ups in the installation one after another, and the decimal separator check at the start,
// at a later use and at the end, as tests/daten/core/programm.txt.
TEST_F(ProgrammTest, Wertetabelle) {
    DateiSchreiben(konfig / "ALB_DatenbankSpalten.dat",
                   "Kataster ALKIS=Gemarkung;Flur\r\n\r\nAL-amtl.Lageplan =Flur\r\nEigent\xFCmer=Name\r\n");
    const char* status[] = {"Ok", "Fehler", "Abgebrochen", "Beenden"};
    const char* arten[] = {"Interaktiv", "DateiLaden", "NasStapel", "Karte", "Beenden"};
    EXPECT_EQ(test::Wertetabelle("programm.txt", {
        {"Datei", [&](const test::Argumente& a) {
             return a[1] == "-" ? (fs::remove(a[0]), "gelöscht") : (DateiSchreiben(a[0], a[1]), "geschrieben");
         }},
        {"Schlüssel", [&](const test::Argumente& a) {
             return WfsSchlüsselSchreiben(konfig / "wfs.key", a[0], a[1]), std::string("geschrieben");
         }},
        {"Start", [&](const test::Argumente& a) {
             Programmzustand z{Installation{ordner.pfad()}};
             SkriptOberfläche start;
             const auto e = Programmstart(z, a[0], format, start).status();
             std::string text = status[static_cast<int>(e)] + (" "s + arten[static_cast<int>(z.auftrag.art)]);
             if (e != Ergebnis::Status::Beenden)
                 text += " arbeit " + test::Zitat(z.arbeitsverzeichnis.string()) + " dialog " +
                         test::Zitat(z.dialogStartordner) + " ansichten " + test::Liste(z.spaltenansichten) + " " +
                         test::Zitat(z.gewünschteAnsicht) + (z.protokollMapAnfrage ? " Protokoll" : "") +
                         (z.webBenutzer.empty() ? "" : " web " + test::Liste({z.webBenutzer, z.webPasswort})) +
                         " übrig " + test::Liste(Dateien(arbeit));
             text = test::Ersetzt(text, StandardArbeitsverzeichnis().string(), "<Standard>/");
             return text + test::Verlauf(start, true);
         }},
        {"PrüfeNummerFormat", [&](const test::Argumente& a) {
             DateiSchreiben(ordner / "nummern" / "Flurix.dat", a[0]);
             const Einstellungen einstellungen(ordner / "nummern" / "Flurix.dat");
             SpielZahlenformat system(a[1][0]);
             NummernformatZustand nummern;
             SkriptOberfläche meldungen;
             PrüfeNummerFormatAufruf(einstellungen, system, nummern, meldungen);
             std::string text = nummern.FormatGeprüft ? "geprüft" : "nicht geprüft";
             if (a[2] == "wieder")
                 system.m_dezimal = ',';
             PrüfeNummerFormatAufruf(einstellungen, system, nummern, meldungen);
             text += (nummern.KommaGeändert ? ", Komma geändert" : "") + (", gesetzt " + std::to_string(system.gesetzt));
             NummerFormatZurücksetzen(einstellungen, system, nummern, meldungen);
             return text + ", am Ende " + std::to_string(system.gesetzt) + " " + test::Zitat(system.EinsKommaEins()) +
                    test::Verlauf(meldungen, true);
         }},
    }, ordner.pfad()), "");
}

TEST_F(ProgrammTest, BeendenFragtRäumtAufUndSpeichertBreiten) {
    ASSERT_TRUE(Starten(""));
    for (const char* rest : {"tmp_dao_GGVis.out", "_tmp_DAODB_QGIS_1.mdb", "nas.sqlite"})
        DateiSchreiben(arbeit / rest, "x");
    zustand.arbeitsdatenbanken.push_back(arbeit / "nas.sqlite");
    bool karteZu = false;
    const Beendenumgebung umgebung{[&] { karteZu = true; }, "1200,3000", ordner / "benutzer"};
    ui.Antworten({Antwort::Nein});
    EXPECT_EQ(Beenden(zustand, format, ui, umgebung).status(), Ergebnis::Status::Abgebrochen);
    EXPECT_FALSE(karteZu);
    EXPECT_EQ(Dateien(arbeit).size(), 3u);
    ui.Antworten({Antwort::Ja});
    EXPECT_TRUE(Beenden(zustand, format, ui, umgebung));
    EXPECT_TRUE(karteZu);
    EXPECT_EQ(ui.Fragen(), Texte(2, "Wollen Sie den Flurix jetzt wirklich beenden?   "));
    EXPECT_TRUE(Dateien(arbeit).empty());
    EXPECT_EQ(Benutzereinstellungen(ordner / "benutzer").Lesen("MyApplication", "GridFlurix", "ColWidths"),
              "1200,3000");

    // Unattended, it does not ask.
    ASSERT_TRUE(Starten("/daten/auftrag.xml /ggout /still"));
    EXPECT_TRUE(zustand.auftrag.StillModus);
    ui.Antworten({Antwort::Nein});
    EXPECT_TRUE(Beenden(zustand, format, ui, {}));
    EXPECT_EQ(ui.Fragen().size(), 2u);
}

TEST_F(ProgrammTest, StarteinstellungSchreibtDieVierSchlüssel) {
    DateiSchreiben(konfig / "Flurix.dat", "StartMapWebService =\r\n\r\nStartMapWebServiceKoo =\r\n"
                                          "StartMapWebServiceEPSG =\r\nStartMapWebServiceMa\xDF" "stab =0\r\n");
    const Kartenstart werte{"TopPlusOpen", "350000;5600000", "25832", "2500"};
    ASSERT_TRUE(StarteinstellungÜbernehmen(zustand.einstellungen, werte, ui));
    EXPECT_EQ(test::DateiLesen(konfig / "Flurix.dat"),
              "StartMapWebService =TopPlusOpen\r\nStartMapWebServiceKoo =350000;5600000\r\n"
              "StartMapWebServiceEPSG =25832\r\nStartMapWebServiceMa\xDF" "stab =2500\r\n");
    EXPECT_EQ(ui.Meldungen(), Texte{"Systemdatei Flurix.dat erfolgreich geändert!   "});
    const Texte dateien = Dateien(konfig);
    EXPECT_EQ(std::count_if(dateien.begin(), dateien.end(), [](const auto& n) { return n.starts_with("Flurix.dat_"); }),
              1);
}

TEST(ProzessZahlenformat, KommaLocaleWirdFürDenProzessAufPunktGestellt) {
    const std::string vorher = std::setlocale(LC_NUMERIC, nullptr);
    if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8"))
        GTEST_SKIP() << "Locale de_DE.UTF-8 ist nicht installiert (./flurix.sh setup erzeugt sie)";
    {
        ProzessZahlenformat format;
        EXPECT_EQ(format.EinsKommaEins(), "1,1");
        EXPECT_TRUE(format.SeparatorenSetzen('.', ' '));
        EXPECT_EQ(format.EinsKommaEins(), "1.1");
        EXPECT_TRUE(format.SeparatorenSetzen(',', '.'));
        EXPECT_EQ(format.EinsKommaEins(), "1,1");
    }
    std::setlocale(LC_NUMERIC, vorher.c_str());
}

} // namespace
} // namespace flurix
