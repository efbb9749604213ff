#include "core/programm.hpp"

#include "core/benutzereinstellungen.hpp"
#include "core/oberflaeche_skript.hpp"
#include "core/tabellendatei.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <functional>

namespace flurix {
namespace {

using test::DateiSchreiben;

class FesterPunkt final : public Zahlenformat {
public:
    std::string EinsKommaEins() const override { return "1.1"; }
    bool SeparatorenSetzen(char, char) override { return true; }
};

// An installation in a scratch folder: config/Flurix.dat names a working directory beside it.
class ProgrammTest : public ::testing::Test {
protected:
    ProgrammTest() {
        arbeit = ordner / "arbeit";
        Einstellungen("tempArbeitsverzeichnis =" + arbeit.string() + "/\r\n");
        DateiSchreiben(ordner / "config" / "WebService.fil", "");
    }
    void Einstellungen(const std::string& text) {
        DateiSchreiben(ordner / "config" / "Flurix.dat", text);
    }
    Ergebnis Starten(std::string_view zeile) {
        return Programmstart(zustand, zeile, format, ui);
    }

    test::TempOrdner ordner;
    std::filesystem::path arbeit;
    Programmzustand zustand{Installation{ordner.pfad()}};
    FesterPunkt format;
    SkriptOberfläche ui;
};

TEST_F(ProgrammTest, StartOhneAuftragRäumtAufUndLiestAnsichten) {
    for (const char* rest : {"tmp_dao_Gaz.xml", "tmp_dao_Gaz.mdb", "tmp_dao_GGVis.mdb",
                             "tmp_dao_GGVis.out", "tmp_dao_GGVis.out.prn", "_tmpDAOdbFile1.mdb",
                             "_tmpDAOdbFile.x"})
        DateiSchreiben(arbeit / rest, "alt");
    DateiSchreiben(arbeit / "tmp_flurix", "bleibt");
    DateiSchreiben(arbeit / "_tmpDAOdbFile", "bleibt: kein Punkt");
    DateiSchreiben(ordner / "config" / "ALB_DatenbankSpalten.dat",
                   "Kataster ALKIS=Gemarkung;Flur\r\n\r\nAL-amtl.Lageplan =Flur\r\nEigent\xFCmer=Name\r\n");

    ASSERT_TRUE(Starten(""));
    EXPECT_EQ(zustand.auftrag.art, Startart::Interaktiv);
    EXPECT_EQ(zustand.arbeitsverzeichnis, arbeit / "");
    EXPECT_EQ(zustand.dialogStartordner, (arbeit / "").string());
    std::vector<std::string> übrig;
    for (const auto& e : std::filesystem::directory_iterator(arbeit))
        übrig.push_back(e.path().filename().string());
    std::sort(übrig.begin(), übrig.end());
    EXPECT_EQ(übrig, (std::vector<std::string>{"_tmpDAOdbFile", "tmp_flurix"}));
    EXPECT_EQ(zustand.spaltenansichten,
              (std::vector<std::string>{"Kataster ALKIS", "AL-amtl.Lageplan", "Eigentümer"}));
    EXPECT_EQ(zustand.gewünschteAnsicht, "Kataster ALKIS");
    EXPECT_FALSE(zustand.protokollMapAnfrage);
    EXPECT_TRUE(ui.Meldungen().empty());
}

TEST_F(ProgrammTest, EinstellungenDerAnsichtUndDesProtokolls) {
    Einstellungen("tempArbeitsverzeichnis =" + arbeit.string() +
                  "\r\nFlurixSpaltenanzeige =Eigentümer\r\nProtokollMapAnfrage =ja\r\n");
    ASSERT_TRUE(Starten(""));
    EXPECT_EQ(zustand.gewünschteAnsicht, "Eigentümer");
    EXPECT_TRUE(zustand.protokollMapAnfrage);
    EXPECT_EQ(zustand.arbeitsverzeichnis, arbeit / ""); // a missing last "/" is added
}

TEST_F(ProgrammTest, OhneEinstellungsdateiGeltenDieVorgaben) {
    std::filesystem::remove(ordner / "config" / "Flurix.dat");
    ASSERT_TRUE(Starten(""));
    EXPECT_EQ(zustand.arbeitsverzeichnis, StandardArbeitsverzeichnis());
    EXPECT_EQ(zustand.gewünschteAnsicht, "Kataster ALKIS");
    EXPECT_TRUE(ui.Meldungen().empty());
}

// Each of these ends the program before it opens a window, with its message and title.
TEST_F(ProgrammTest, StartfehlerBeenden) {
    DateiSchreiben(ordner / "datei", "ich bin eine Datei");
    const auto unmöglich = ordner / "datei" / "arbeit";
    struct Fall {
        std::function<void()> vorher;
        std::string zeile, meldung, titel;
    };
    const Fall fälle[] = {
        {[&] { Einstellungen("tempArbeitsverzeichnis =" + unmöglich.string() + "/\r\n"); }, "",
         "Das Arbeitsverzeichnis: \"" + unmöglich.string() + "/\" konnte nicht erstellt werden.\nBitte prüfen "
         "Sie Ihre Lese- und Schreibrechte,\noder informieren Ihren System-Administrator!\nAbbruch!   ", "Flurix"},
        {[&] { Einstellungen("tempArbeitsverzeichnis =" + arbeit.string() + "/\r\n");
                std::filesystem::remove(ordner / "config" / "WebService.fil"); }, "",
         "Flurix nicht korrekt installiert! Abbruch!   ", "MAP-Viewer"},
        {[&] { DateiSchreiben(ordner / "config" / "WebService.fil", ""); }, "kreis.wldge",
         "Fehlerhafte Auftragspfadbeschreibung! Abbruch!   ", "Flurix"},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.meldung);
        f.vorher();
        SkriptOberfläche frisch;
        EXPECT_EQ(Programmstart(zustand, f.zeile, format, frisch).status(), Ergebnis::Status::Beenden);
        EXPECT_EQ(frisch.Meldungen(), std::vector<std::string>{f.meldung});
        EXPECT_EQ(frisch.Ereignisse().back().titel, f.titel);
    }
}

TEST_F(ProgrammTest, AuftragspfadWirdStartordnerDerDialoge) {
    ASSERT_TRUE(Starten("/daten/kreis/auszug.wldge"));
    EXPECT_EQ(zustand.auftrag.art, Startart::DateiLaden);
    EXPECT_EQ(zustand.dialogStartordner, "/daten/kreis/");
}

TEST_F(ProgrammTest, WebSchlüsselWirdGelesenUndFehlerGemeldet) {
    WfsSchlüsselSchreiben(ordner / "config" / "wfs.key", " nutzer ", "geheim=1");
    ASSERT_TRUE(Starten(""));
    EXPECT_EQ(zustand.webBenutzer, "nutzer");
    EXPECT_EQ(zustand.webPasswort, "geheim=1");

    DateiSchreiben(ordner / "config" / "wfs.key", "kaputt");
    ASSERT_TRUE(Starten(""));
    EXPECT_EQ(zustand.webBenutzer, "");
    EXPECT_EQ(ui.Meldungen(), std::vector<std::string>{"Fehler beim Einlesen der Key-Datei " +
                                                       (ordner / "config" / "wfs.key").string() +
                                                       "!   "});
}

TEST_F(ProgrammTest, BeendenFragtRäumtAufUndSpeichertBreiten) {
    ASSERT_TRUE(Starten(""));
    DateiSchreiben(arbeit / "tmp_dao_GGVis.out", "x");
    DateiSchreiben(arbeit / "_tmp_DAODB_QGIS_1.mdb", "x");
    DateiSchreiben(arbeit / "nas.sqlite", "x");
    zustand.arbeitsdatenbanken.push_back(arbeit / "nas.sqlite");
    bool karteZu = false;
    const Beendenumgebung umgebung{[&] { karteZu = true; }, "1200,3000", ordner / "benutzer"};

    ui.Antworten({Antwort::Nein});
    EXPECT_EQ(Beenden(zustand, format, ui, umgebung).status(), Ergebnis::Status::Abgebrochen);
    EXPECT_FALSE(karteZu);
    EXPECT_TRUE(std::filesystem::exists(arbeit / "tmp_dao_GGVis.out"));

    ui.Antworten({Antwort::Ja});
    EXPECT_TRUE(Beenden(zustand, format, ui, umgebung));
    EXPECT_TRUE(karteZu);
    EXPECT_EQ(ui.Fragen(),
              std::vector<std::string>(2, "Wollen Sie den Flurix jetzt wirklich beenden?   "));
    for (const char* weg : {"tmp_dao_GGVis.out", "_tmp_DAODB_QGIS_1.mdb", "nas.sqlite"})
        EXPECT_FALSE(std::filesystem::exists(arbeit / weg)) << weg;
    EXPECT_EQ(Benutzereinstellungen(ordner / "benutzer").Lesen("MyApplication", "GridFlurix",
                                                               "ColWidths"),
              "1200,3000");
}

TEST_F(ProgrammTest, UnbeaufsichtigtWirdNichtGefragt) {
    ASSERT_TRUE(Starten("/daten/auftrag.xml /ggout /still"));
    EXPECT_TRUE(zustand.auftrag.StillModus);
    ui.Antworten({Antwort::Nein});
    EXPECT_TRUE(Beenden(zustand, format, ui, {}));
    EXPECT_TRUE(ui.Fragen().empty());
}

TEST_F(ProgrammTest, StarteinstellungSchreibtDieVierSchlüssel) {
    const auto datei = ordner / "config" / "Flurix.dat";
    DateiSchreiben(datei, "StartMapWebService =\r\n\r\nStartMapWebServiceKoo =\r\n"
                          "StartMapWebServiceEPSG =\r\nStartMapWebServiceMa\xDF" "stab =0\r\n");
    const Kartenstart werte{"TopPlusOpen", "350000;5600000", "25832", "2500"};
    ASSERT_TRUE(StarteinstellungÜbernehmen(zustand.einstellungen, werte, ui));
    EXPECT_EQ(test::DateiLesen(datei),
              "StartMapWebService =TopPlusOpen\r\nStartMapWebServiceKoo =350000;5600000\r\n"
              "StartMapWebServiceEPSG =25832\r\nStartMapWebServiceMa\xDF" "stab =2500\r\n");
    EXPECT_EQ(ui.Meldungen(), std::vector<std::string>{"Systemdatei Flurix.dat erfolgreich geändert!   "});
    int kopien = 0;
    for (const auto& e : std::filesystem::directory_iterator(ordner / "config"))
        kopien += e.path().filename().string().starts_with("Flurix.dat_") ? 1 : 0;
    EXPECT_EQ(kopien, 1);
}

} // namespace
} // namespace flurix
