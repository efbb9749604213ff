#include "import/datenladen.hpp"

#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

namespace flurix::import {
namespace {

using test::DateiLesen;
using test::DateiSchreiben;

// A WLDGE header line: "1" in column 1, " E   01 " in columns 26 to 33, the format behind it.
std::string Kopfzeile(std::string_view format) {
    std::string zeile = "105";
    zeile.resize(25, ' ');
    return zeile + " E   01 " + std::string(format) + " Auszug";
}

std::string Wldge(std::string_view format, std::string_view zeilenende = "\r\n") {
    std::string text = Kopfzeile(format);
    text += zeilenende;
    text += "2051234-000123            A0001 Mustermann, Erika";
    text += zeilenende;
    return text;
}

// Records what the dispatch hands over, and answers as the test says.
struct Aufzeichnung {
    std::vector<std::string> aufrufe;
    ImportOptionen optionen;
    std::size_t zeilen = 0;
    bool dialogOk = true;
    std::vector<std::string> dialogFormate;

    Ladeumgebung Umgebung(bool alleLeser = true) {
        Ladeumgebung u;
        auto merken = [this](std::string name) {
            return [this, name](const std::filesystem::path& p, const ImportOptionen& o) {
                aufrufe.push_back(name + ":" + p.filename().string());
                optionen = o;
                return Ergebnis::Ok();
            };
        };
        if (alleLeser) {
            u.leser.wldgeKomplett = merken("komplett");
            u.leser.wldgeSchnell = merken("schnell");
            u.leser.webXml = [this](const std::vector<std::filesystem::path>& d,
                                    const ImportOptionen& o) {
                aufrufe.push_back("webxml:" + std::to_string(d.size()));
                optionen = o;
                return Ergebnis::Ok();
            };
            u.leser.tabelle = [this](const std::filesystem::path& p) {
                aufrufe.push_back("tabelle:" + p.filename().string());
                return Ergebnis::Ok();
            };
            u.leser.nasFenster = [this](const std::filesystem::path& p) {
                aufrufe.push_back("nas:" + p.filename().string());
                return Ergebnis::Ok();
            };
        }
        u.optionenDialog = [this](ImportOptionen& o) {
            dialogFormate.push_back(o.importFormat);
            return dialogOk;
        };
        u.tabellenZeilen = [this] { return zeilen; };
        u.tabelleLeeren = [this] { aufrufe.push_back("leeren"); };
        return u;
    }
};

class DatenLadenTest : public ::testing::Test {
protected:
    Ergebnis Laden(std::vector<std::filesystem::path> dateien, Eingabeart art,
                   bool vonKommandozeile = false) {
        Ladeumgebung u = aufzeichnung.Umgebung(alleLeser);
        u.optionen = optionen;
        return ALBDatenLaden({std::move(dateien), art, vonKommandozeile}, u, ui);
    }

    test::TempOrdner ordner;
    Aufzeichnung aufzeichnung;
    SkriptOberfläche ui;
    ImportOptionen optionen;
    bool alleLeser = true;
};

std::string NichtUnterstützt(std::string_view wert, const std::filesystem::path& datei) {
    return "Das WLDGE-Abgabeformat Kennung \"" + std::string(wert) + "\" der Datei " +
           datei.string() +
           " wird nicht unterstützt!\nDie Datei kann nicht eingelesen werden! Bitte stellen Sie "
           "die Daten im WLDGE-Abgabeformat \"32\" oder \"35\" bereit!\nAbbruch!   ";
}

TEST_F(DatenLadenTest, WldgeFormatWähltDenLeser) {
    struct Fall {
        std::string format;
        bool komplett;
        std::string aufruf;
        bool alleInEinerZeile;
    };
    const Fall fälle[] = {
        {"32", true, "komplett:k.wldge", false},
        {"32", false, "schnell:k.wldge", false},
        {"35", false, "schnell:k.wldge", true},
        {"35", true, "schnell:k.wldge", true}, // format 35 can't be read completely
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.format + (f.komplett ? " komplett" : " schnell"));
        aufzeichnung = {};
        DateiSchreiben(ordner / "k.wldge", Wldge(f.format));
        optionen.albKomplett = f.komplett;
        EXPECT_TRUE(Laden({ordner / "k.wldge"}, Eingabeart::Wldge));
        EXPECT_EQ(aufzeichnung.aufrufe, std::vector<std::string>{f.aufruf});
        EXPECT_EQ(aufzeichnung.dialogFormate, std::vector<std::string>{f.format});
        EXPECT_EQ(aufzeichnung.optionen.alleEigentümerInEinerZeile, f.alleInEinerZeile);
        EXPECT_TRUE(ui.Meldungen().empty());
    }
}

TEST_F(DatenLadenTest, NichtUnterstützteWldgeDateien) {
    std::string elfteZeile;
    for (int i = 0; i < 10; ++i)
        elfteZeile += "3051234-001-00042/000     B\r\n";
    elfteZeile += Kopfzeile("32") + "\r\n";
    struct Fall {
        std::string name, inhalt, wert;
    };
    const Fall fälle[] = {
        {"format33.wldge", Wldge("33"), "33"},
        {"kopf_in_zeile_11.wldge", elfteZeile, ""},
        {"leer.wldge", "", ""},
        {"nul.wldge", std::string("\0\0\0\r\n", 5), ""},
        {"binaer.wldge", std::string("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16), ""},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        const auto datei = ordner / f.name;
        DateiSchreiben(datei, f.inhalt);
        const auto vorher = ui.Meldungen().size();
        EXPECT_FALSE(Laden({datei}, Eingabeart::Wldge));
        ASSERT_EQ(ui.Meldungen().size(), vorher + 1);
        EXPECT_EQ(ui.Meldungen().back(), NichtUnterstützt(f.wert, datei));
        EXPECT_EQ(ui.Ereignisse().back().titel, "Flurix");
        EXPECT_TRUE(aufzeichnung.aufrufe.empty());
    }
}

TEST_F(DatenLadenTest, UnixWldgeWirdVorDemLesenUmgewandelt) {
    const auto datei = ordner / "unix.wldge";
    DateiSchreiben(datei, Wldge("32", "\n"));
    EXPECT_TRUE(Laden({datei}, Eingabeart::Wldge));
    EXPECT_EQ(DateiLesen(datei), Wldge("32", "\r\n"));
}

TEST_F(DatenLadenTest, DialogAbbruchLiestNichts) {
    DateiSchreiben(ordner / "k.wldge", Wldge("32"));
    aufzeichnung.dialogOk = false;
    const Ergebnis e = Laden({ordner / "k.wldge"}, Eingabeart::Wldge);
    EXPECT_EQ(e.status(), Ergebnis::Status::Abgebrochen);
    EXPECT_TRUE(aufzeichnung.aufrufe.empty());
}

TEST_F(DatenLadenTest, AuftragAusDerKommandozeileWirdErstGefragt) {
    DateiSchreiben(ordner / "Kreis.wldge", Wldge("32"));
    ui.Antworten({Antwort::Nein});
    EXPECT_EQ(Laden({ordner / "Kreis.wldge"}, Eingabeart::Wldge, true).status(),
              Ergebnis::Status::Abgebrochen);
    EXPECT_EQ(ui.Fragen(),
              std::vector<std::string>{"Soll die Eingabedatei \"Kreis.wldge\" eingelesen werden?   "});
    EXPECT_TRUE(aufzeichnung.aufrufe.empty());
    ui.Antworten({Antwort::Ja});
    EXPECT_TRUE(Laden({ordner / "Kreis.wldge"}, Eingabeart::Wldge, true));
    EXPECT_EQ(aufzeichnung.aufrufe, std::vector<std::string>{"schnell:Kreis.wldge"});
}

TEST_F(DatenLadenTest, MehrfachauswahlNurFürWebXml) {
    DateiSchreiben(ordner / "a.wldge", Wldge("32"));
    DateiSchreiben(ordner / "b.wldge", Wldge("32"));
    EXPECT_FALSE(Laden({ordner / "a.wldge", ordner / "b.wldge"}, Eingabeart::Wldge));
    EXPECT_EQ(ui.Meldungen(),
              std::vector<std::string>{"Die Datei-Mehrfachauswahl ist nur für Web-XML-Dateien "
                                       "zulässig! Bitte wählen Sie erneut aus!   "});
    DateiSchreiben(ordner / "a.xml", "<Auszug>\n<Flurstueck/>\n</Auszug>\n");
    DateiSchreiben(ordner / "b.xml", "<Auszug>\r\n</Auszug>\r\n");
    EXPECT_TRUE(Laden({ordner / "a.xml", ordner / "b.xml"}, Eingabeart::WebXml));
    EXPECT_EQ(aufzeichnung.aufrufe, std::vector<std::string>{"webxml:2"});
    EXPECT_EQ(aufzeichnung.optionen.importFormat, "XML");
    EXPECT_EQ(DateiLesen(ordner / "a.xml"), "<Auszug>\r\n<Flurstueck/>\r\n</Auszug>\r\n");
}

TEST_F(DatenLadenTest, NasDateiImWebXmlFilterWirdAbgelehnt) {
    DateiSchreiben(ordner / "nas.xml", "<?xml version=\"1.0\"?>\r\n<AX_Bestandsdatenauszug>\r\n");
    EXPECT_FALSE(Laden({ordner / "nas.xml"}, Eingabeart::WebXml));
    EXPECT_EQ(ui.Meldungen(), std::vector<std::string>{
                                  "Keine ALB-WFS Datei!\nALKIS-Formatierungen vorgefunden! Bitte "
                                  "wählen Sie die Datei neu aus!   "});
    EXPECT_EQ(ui.Ereignisse().back().titel, "Format Fehler");
    EXPECT_TRUE(aufzeichnung.aufrufe.empty());
}

TEST_F(DatenLadenTest, XmlNachTypGehtNachInhaltWeiter) {
    DateiSchreiben(ordner / "nas.xml", "<x>\r\n  <AX_Person gml:id=\"1\">\r\n");
    EXPECT_TRUE(Laden({ordner / "nas.xml"}, Eingabeart::Xml));
    EXPECT_EQ(aufzeichnung.aufrufe, std::vector<std::string>{"nas:nas.xml"});
    EXPECT_TRUE(ui.Meldungen().empty()); // silently to the NAS work window

    aufzeichnung.aufrufe.clear();
    DateiSchreiben(ordner / "auszug.xml", "<Auszug>\r\n</Auszug>\r\n");
    EXPECT_TRUE(Laden({ordner / "auszug.xml"}, Eingabeart::Xml));
    EXPECT_EQ(aufzeichnung.aufrufe, std::vector<std::string>{"webxml:1"});
}

TEST_F(DatenLadenTest, VorhandeneTabelleWirdNurNachJaErsetzt) {
    DateiSchreiben(ordner / "t.fil", "x");
    aufzeichnung.zeilen = 3;
    ui.Antworten({Antwort::Nein, Antwort::Ja});
    EXPECT_EQ(Laden({ordner / "t.fil"}, Eingabeart::Tabelle).status(),
              Ergebnis::Status::Abgebrochen);
    EXPECT_TRUE(aufzeichnung.aufrufe.empty());
    EXPECT_TRUE(Laden({ordner / "t.fil"}, Eingabeart::Tabelle));
    // The saved table replaces the grid only when it was read whole: nothing is emptied before.
    EXPECT_EQ(aufzeichnung.aufrufe, (std::vector<std::string>{"tabelle:t.fil"}));
    EXPECT_EQ(ui.Fragen(),
              std::vector<std::string>(2, "Soll die vorhandene Datenbank überschrieben werden?   "));
    EXPECT_EQ(ui.LetzterStatus(1), "t.fil");
}

TEST_F(DatenLadenTest, FehlenderLeserMeldetSichKlar) {
    alleLeser = false;
    DateiSchreiben(ordner / "k.wldge", Wldge("32"));
    EXPECT_FALSE(Laden({ordner / "k.wldge"}, Eingabeart::Wldge));
    ASSERT_EQ(ui.Meldungen().size(), 1u);
    EXPECT_EQ(ui.Meldungen()[0],
              "Der WLDGE-Leser (teilweise) ist in dieser Version von Flurix noch nicht verfügbar!   ");
}

TEST_F(DatenLadenTest, LaufzeitfehlerEndenImFehlerausgang) {
    const auto datei = ordner / "fehlt.wldge";
    EXPECT_FALSE(Laden({datei}, Eingabeart::Wldge));
    ASSERT_EQ(ui.Meldungen().size(), 1u);
    EXPECT_EQ(ui.Meldungen()[0], "Die Datei \"" + datei.string() +
                                     "\" kann nicht gelesen werden!, Bitte überprüfen Sie Ihre "
                                     "Eingaben!\nEventuelle Vorgaben wurden nicht eingehalten!   ");
    EXPECT_EQ(ui.Ereignisse().back().titel, "Flurix/ALB-Daten laden");
}

TEST(WldgeFormatLesen, KopfInDenErstenZehnZeilen) {
    EXPECT_EQ(WldgeFormatLesen(Kopfzeile("32") + "\r\n"), "32");
    EXPECT_EQ(WldgeFormatLesen("x\r\n" + Kopfzeile("35")), "35");
    std::string ohneLeerzeichen = Kopfzeile("32");
    ohneLeerzeichen[32] = 'X'; // column 33 must be a blank
    EXPECT_EQ(WldgeFormatLesen(ohneLeerzeichen), "");
    std::string ohneEins = Kopfzeile("32");
    ohneEins[0] = '2';
    EXPECT_EQ(WldgeFormatLesen(ohneEins), "");
    EXPECT_EQ(WldgeFormatLesen(Kopfzeile("")), " A"); // columns 34 and 35, whatever they hold
}

TEST(DateiErkennen, ArtUndLeser) {
    test::TempOrdner ordner;
    DateiSchreiben(ordner / "a.wldge", Wldge("32"));
    DateiSchreiben(ordner / "b.WLDGE", Wldge("35"));
    DateiSchreiben(ordner / "c.wldge", Wldge("31"));
    DateiSchreiben(ordner / "n.xml", "<AX_Bestandsdatenauszug>\n");
    DateiSchreiben(ordner / "w.xml", "<Auszug/>\n");
    DateiSchreiben(ordner / "x.txt", "");
    struct Fall {
        std::string name;
        Eingabeart art;
        std::string format;
        bool unterstützt;
    };
    const Fall fälle[] = {
        {"a.wldge", Eingabeart::Wldge, "32", true},  {"b.WLDGE", Eingabeart::Wldge, "35", true},
        {"c.wldge", Eingabeart::Wldge, "31", false}, {"n.xml", Eingabeart::NasXml, "", true},
        {"w.xml", Eingabeart::WebXml, "", true},     {"x.txt", Eingabeart::Wldge, "", false},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        const auto vorher = DateiLesen(ordner / f.name);
        const Erkennung e = DateiErkennen(ordner / f.name);
        EXPECT_EQ(e.art, f.art);
        EXPECT_EQ(e.format, f.format);
        EXPECT_EQ(e.unterstützt, f.unterstützt);
        EXPECT_EQ(DateiLesen(ordner / f.name), vorher); // looking changes nothing
    }
    EXPECT_THROW(DateiErkennen(ordner / "fehlt.wldge"), Fehler);
}

} // namespace
} // namespace flurix::import
