// The capabilities reader: documents of several shapes, the one repair of a broken line, the
// states a row takes, and a real MapServer on loopback.

#include "core/datei.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "map/capabilities.hpp"
#include "map/dienstkatalog.hpp"
#include "map/layerauswahl.hpp"
#include "map/zugang.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace flurix::karte {
namespace {

namespace fs = std::filesystem;

std::string Fixture(std::string_view name) {
    return test::DateiLesen(test::Testdaten() / "map" / std::string(name));
}

TEST(Capabilities, DokumenteWerdenZuLayerLegendeUndMaßstab) {
    const struct {
        const char* datei;
        bool gelesen;
        bool repariert;
        const char* layer;
        std::size_t anzahl;
        const char* legende;
        const char* maßstab;
    } fälle[] = {
        {"capabilities_gruppe_legende.xml", true, false,
         "flurstuecke~Flurstücke}{gebaeude~Gebäude}{nutzung~Tatsächliche Nutzung", 3,
         "http://karte.example/wms?REQUEST=GetLegendGraphic&LAYER=flurstuecke&FORMAT=image/png",
         "ScaleHint: min=\"0.5\" max=\"2.5\""},
        {"capabilities_massstabszahlen.xml", true, false, "dtk25~DTK 25", 1, "", "5000-50000"},
        {"capabilities_zeile_kaputt.xml", true, true, "nutzung~Nutzung}{flurstuecke~Flurstücke", 2,
         "", "frei"},
        {"antwort_dienstfehler.xml", true, false, "", 0, "", "frei"},
        {"antwort_html_404.html", false, false, "", 0, "", ""},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.datei);
        SkriptOberfläche ui;
        const CapabilitiesInhalt inhalt = WebServiceAnfrage(Fixture(f.datei), "http://x", ui);
        EXPECT_EQ(inhalt.gelesen, f.gelesen);
        EXPECT_EQ(inhalt.repariert, f.repariert);
        EXPECT_EQ(inhalt.layer, f.layer);
        EXPECT_EQ(inhalt.layerAnzahl, f.anzahl);
        EXPECT_EQ(inhalt.legende, f.legende);
        EXPECT_EQ(inhalt.maßstab, f.maßstab);
        // An HTML page and a repaired document are no reason for a message.
        EXPECT_TRUE(ui.Ereignisse().empty());
    }
}

TEST(Capabilities, UnlesbaresDokumentZeigtDenFehlerMitZeile) {
    SkriptOberfläche ui;
    const auto inhalt =
        WebServiceAnfrage(Fixture("antwort_abgeschnitten.xml"), "http://dienst/wms", ui);
    EXPECT_FALSE(inhalt.gelesen);
    ASSERT_EQ(ui.Ereignisse().size(), 1u);
    EXPECT_EQ(ui.Ereignisse()[0].titel, "Error Web-Service");
    const std::string& text = ui.Ereignisse()[0].text;
    for (const char* teil :
         {"Dienst nicht erreichbar oder ungültig!\ndue to the following error.\n",
          "\nError #: ", "\nLine #: 7\n", "\nLine Position: ", "\nPosition In File: ",
          "\nSource Text: <Title>Nut\n", "\nDocument URL: http://dienst/wms\n!"})
        EXPECT_NE(text.find(teil), std::string::npos) << teil << "\n" << text;

    ui.Neu();
    EXPECT_FALSE(WebServiceAnfrage(OhneErgebnis, "http://dienst/wms", ui).gelesen);
    EXPECT_TRUE(ui.Ereignisse().empty());
}

TEST(Capabilities, FehlerantwortMitMeldungWirdGezeigt) {
    SkriptOberfläche ui;
    WebServiceAnfrage("<ItemSearchResponse><OperationRequest><Errors><Error><Code>AWS.X</Code>"
                      "<Message>Zugriff verweigert</Message></Error></Errors></OperationRequest>"
                      "</ItemSearchResponse>",
                      "http://x", ui);
    ASSERT_EQ(ui.Ereignisse().size(), 1u);
    EXPECT_EQ(ui.Ereignisse()[0].text, "Zugriff verweigert");
    EXPECT_EQ(ui.Ereignisse()[0].titel, "Web-Service");
}

TEST(Capabilities, KnotenEntfernenNimmtDasElementDerFehlerzeile) {
    const struct {
        const char* fall;
        const char* text;
        std::size_t position;
        std::optional<std::string> erwartet;
    } fälle[] = {
        {"Element über zwei Zeilen", "<a>\n<b x='1'>eins\nzwei</b><c/>\n</a>", 6,
         "<a>\n<c/>\n</a>"},
        {"ohne schließendes Tag bis zum Zeilenende", "<a>\n<b>x</B>\n</a>", 5, "<a>\n\n</a>"},
        {"leeres Element", "<a>\n<b/> &\n</a>", 5, "<a>\n &\n</a>"},
        {"nur schließende Tags: die Zeile", "<a>\n</b></c>\n</a>", 5, "<a>\n</a>"},
        {"Fehler hinter dem Ende: letzte Zeile", "<a>\n<b>x", 99, "<a>\n"},
        {"leerer Text", "", 0, std::nullopt},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.fall);
        EXPECT_EQ(KnotenEntfernen(f.text, f.position), f.erwartet);
    }
}

TEST(Capabilities, UmlauteReparieren) {
    const struct {
        std::string text;
        std::string erwartet;
    } fälle[] = {
        {"Stra{e", "Straäe"},
        {"Gr|~e }ber", "Größe über"},
        {"\xC5\xBD"
         "chte \xC5\xA1"
         "ber",
         "Ächte Über"}, // Ž, š
        {"\xE2\x84\xA2"
         "l \xE2\x80\x9E"
         "rger",
         "Öl ärger"}, // ™, „
        {"M\xC2\x81"
         "hle R\xE2\x80\x9D"
         "hre Fu\xC3\xA1",
         "Mühle Röhre Fuß"}, // U+0081, ”, á
        {std::string("B\x81ro \x8E") + "rger Stra\xE1"
                                       "e",
         "Büro Ärger Straße"}, // lone bytes
        {"Flurstücke", "Flurstücke"},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.erwartet);
        EXPECT_EQ(UmlauteReparieren(f.text), f.erwartet);
    }
}

TEST(Capabilities, AdresseNachVersionsUndMapRegel) {
    const struct {
        const char* url;
        const char* anfrage;
        const char* adresse;
        const char* zelleDanach;
    } fälle[] = {
        {"http://a/wms", "?REQUEST=GetCapabilities&SERVICE=WMS&version=1.1.1",
         "http://a/wms?REQUEST=GetCapabilities&SERVICE=WMS&version=1.1.1",
         "?REQUEST=GetCapabilities&SERVICE=WMS&version=1.1.1"},
        {"http://a/wms", "?REQUEST=GetCapabilities&SERVICE=WMS&VERSION=1.3.0",
         "http://a/wms?REQUEST=GetCapabilities&SERVICE=WMS&VERSION=1.3.0",
         "?REQUEST=GetCapabilities&SERVICE=WMS&VERSION=1.3.0"},
        {"http://a/wms", "?REQUEST=GetCapabilities&SERVICE=WMS",
         "http://a/wms?REQUEST=GetCapabilities&SERVICE=WMS&version=1.1.1",
         "?REQUEST=GetCapabilities&SERVICE=WMS&version=1.1.1"},
        {"http://a/wms", "", "http://a/wms?REQUEST=GetCapabilities&VERSION=1.1.1&SERVICE=WMS", ""},
        {"http://a/cgi-bin/mapserv?map=/srv/karte.map", "?REQUEST=GetCapabilities&version=1.1.1",
         "http://a/cgi-bin/mapserv?map=/srv/karte.map&REQUEST=GetCapabilities&version=1.1.1",
         "?REQUEST=GetCapabilities&version=1.1.1"},
        {"http://a/cgi-bin/mapserv?map=/srv/karte.map&", "?REQUEST=GetCapabilities&version=1.1.1",
         "http://a/cgi-bin/mapserv?map=/srv/karte.map&REQUEST=GetCapabilities&version=1.1.1",
         "?REQUEST=GetCapabilities&version=1.1.1"},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(std::string(f.url) + f.anfrage);
        Dienstkatalog katalog;
        const auto z = katalog.NeuerDienst("D");
        katalog.ZelleSetzen(z, "URL", f.url);
        katalog.ZelleSetzen(z, "GetCapabilities", f.anfrage);
        EXPECT_EQ(CapabilitiesAdresse(katalog, z), f.adresse);
        EXPECT_EQ(katalog.Zelle(z, "GetCapabilities"), f.zelleDanach);
    }
}

/// A download that gives a fixed answer and counts the requests.
struct Abrufzähler {
    explicit Abrufzähler(std::string text, bool angekommen = true)
        : antwort(std::move(text)), ok(angekommen) {}

    std::string antwort;
    bool ok = true;
    int anfragen = 0;
    std::string letzteAdresse;
    HttpOptionen letzteOptionen;

    TextAbruf Abruf() {
        return [this](const std::string& url, std::string& text, const HttpOptionen& optionen) {
            ++anfragen;
            letzteAdresse = url;
            letzteOptionen = optionen;
            HttpErgebnis ergebnis;
            ergebnis.ok = ok;
            if (ok)
                text = antwort;
            return ergebnis;
        };
    }
};

TEST(Capabilities, ZeileBekommtIhrenZustand) {
    const std::string alteLayer = "alt~Alter Layer";
    const struct {
        const char* fall;
        const char* vorherLayer;
        std::string antwort;
        bool angekommen;
        const char* anfrage;
        const char* layer;
        const char* auswahl;
        bool ok;
    } fälle[] = {
        {"Capabilities", "", Fixture("capabilities_massstabszahlen.xml"), true, "erfolgt",
         "dtk25~DTK 25", "true", true},
        {"Capabilities ersetzt alte Layer", "alt~Alter Layer",
         Fixture("capabilities_massstabszahlen.xml"), true, "erfolgt", "dtk25~DTK 25", "true",
         true},
        {"HTML ohne alte Layer", "", Fixture("antwort_html_404.html"), true, "ERROR", "", "",
         false},
        {"HTML mit alten Layern", "alt~Alter Layer", Fixture("antwort_html_404.html"), true,
         "alte Anfrage", "alt~Alter Layer", "true", false},
        {"keine Antwort", "", "", false, "ERROR", "", "", false},
        {"keine Antwort, alte Layer", "alt~Alter Layer", "", false, "alte Anfrage",
         "alt~Alter Layer", "true", false},
        {"Dienstfehler", "", Fixture("antwort_dienstfehler.xml"), true, "ohne", "", "", false},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.fall);
        Dienstkatalog katalog;
        const auto z = katalog.NeuerDienst("D");
        katalog.ZelleSetzen(z, "URL", "http://dienst/wms");
        katalog.ZelleSetzen(z, "Layer", f.vorherLayer);
        katalog.ZelleSetzen(z, "LayerAuswahl", *f.vorherLayer ? "true" : "");
        Abrufzähler abruf(f.antwort, f.angekommen);
        SkriptOberfläche ui;
        const Ergebnis ergebnis =
            DienstAnfragen(katalog, z, {"/nirgends", "ich", abruf.Abruf()}, ui);
        EXPECT_EQ(static_cast<bool>(ergebnis), f.ok);
        EXPECT_EQ(abruf.anfragen, 1);
        EXPECT_EQ(katalog.Zelle(z, "Anfrage"), f.anfrage);
        EXPECT_EQ(katalog.Zelle(z, "Layer"), f.layer);
        EXPECT_EQ(katalog.Zelle(z, "LayerAuswahl"), f.auswahl);
        EXPECT_TRUE(ui.Meldungen().empty());
    }
}

TEST(Capabilities, FremderZugangMachtKeineAnfrage) {
    const test::TempOrdner ordner;
    test::DateiSchreiben(ordner / "D.key", ZugangVerschleiern("meier", "geheim", "anderer"));
    Dienstkatalog katalog;
    const auto z = katalog.NeuerDienst("D");
    katalog.PrüfzelleSetzen(z, "Zugang", true);
    katalog.ZelleSetzen(z, "ZugangKey", "D.key");
    katalog.ZelleSetzen(z, "Anfrage", "ohne");
    Abrufzähler abruf(Fixture("capabilities_massstabszahlen.xml"));
    SkriptOberfläche ui;
    EXPECT_FALSE(DienstAnfragen(katalog, z, {ordner.pfad(), "kataster", abruf.Abruf()}, ui));
    EXPECT_EQ(abruf.anfragen, 0);
    EXPECT_EQ(ui.Meldungen(),
              std::vector<std::string>{
                  "Web-Service Sicherheitsabfrage ohne gültige Anmeldung! Abbruch!"});
    EXPECT_EQ(katalog.Zelle(z, "Anfrage"), "ohne");

    // The owner's own file sends its login.
    test::DateiSchreiben(ordner / "D.key", ZugangVerschleiern("meier", "geheim", "kataster"));
    ui.Neu();
    EXPECT_TRUE(DienstAnfragen(katalog, z, {ordner.pfad(), "kataster", abruf.Abruf()}, ui));
    EXPECT_EQ(abruf.anfragen, 1);
    EXPECT_EQ(abruf.letzteOptionen.benutzer, "meier");
    EXPECT_EQ(abruf.letzteOptionen.passwort, "geheim");
}

TEST(Capabilities, FragenVorDemEinlesen) {
    Dienstkatalog katalog;
    katalog.NeuerDienst("A");
    katalog.NeuerDienst("B");
    Abrufzähler abruf(Fixture("capabilities_massstabszahlen.xml"));
    const Einleseumgebung umgebung{"/nirgends", "ich", abruf.Abruf()};

    SkriptOberfläche ui;
    EXPECT_FALSE(DienstNeuEinlesen(katalog, std::nullopt, umgebung, ui));
    EXPECT_EQ(ui.Meldungen(), std::vector<std::string>{
                                  "Wählen Sie bitte zuerst den zu ändernden Web-Service aus!"});

    ui.Neu({Antwort::Nein});
    EXPECT_FALSE(DienstNeuEinlesen(katalog, 1, umgebung, ui));
    EXPECT_EQ(ui.Fragen(), std::vector<std::string>{"Möchten Sie \"B\" neu einlesen?"});
    EXPECT_EQ(abruf.anfragen, 0);

    ui.Neu({Antwort::Ja, Antwort::Nein});
    EXPECT_EQ(AlleDiensteNeuEinlesen(katalog, umgebung, ui).status(),
              Ergebnis::Status::Abgebrochen);
    EXPECT_EQ(ui.Fragen(), (std::vector<std::string>{
                               "Möchten Sie alle Dienste neu anfragen?",
                               "Achtung: Alle Voreinstellungen werden dann überschrieben!"}));
    EXPECT_EQ(abruf.anfragen, 0);

    ui.Neu({Antwort::Ja, Antwort::Ja});
    EXPECT_TRUE(AlleDiensteNeuEinlesen(katalog, umgebung, ui));
    EXPECT_EQ(abruf.anfragen, 2);
    EXPECT_EQ(katalog.Zelle(1, "Anfrage"), "erfolgt");
}

/// MapServer of ../shared/tools/wms-testserver on a port of this process.
class EchterDienst : public testing::Test {
protected:
    void SetUp() override {
        if (!test::ImSuchpfad("mapserv"))
            GTEST_SKIP() << "mapserv fehlt (Pakete mapserver-bin, cgi-mapserver): kein Test-WMS";
        const fs::path start =
            test::GemeinsameTestdaten().parent_path() / "tools" / "wms-testserver" / "start.sh";
        if (!fs::exists(start))
            GTEST_SKIP() << start << " fehlt";
        fs::permissions(m_ordner.pfad(), fs::perms::all); // the CGI may run as nobody
        const auto port = std::to_string(18000 + ::getpid() % 1000);
        const auto lauf = test::Ausführen("PORT=" + port + " " + test::Wort(start) + " " +
                                          test::Wort(m_ordner / "wms"));
        ASSERT_EQ(lauf.status, 0) << lauf.ausgabe;
        m_url = "http://127.0.0.1:" + port +
                "/cgi-bin/mapserv?map=" + (m_ordner / "wms" / "test.map").string();
    }
    void TearDown() override {
        const std::string pid = DateiKomplettLesen(m_ordner / "wms" / "pid");
        if (!pid.empty())
            ::kill(std::stoi(pid), SIGTERM);
    }

    test::TempOrdner m_ordner;
    std::string m_url;
};

TEST_F(EchterDienst, CapabilitiesFüllenDieZeile) {
    Dienstkatalog katalog;
    const auto z = katalog.NeuerDienst("Test-WMS");
    katalog.ZelleSetzen(z, "URL", m_url);
    katalog.ZelleSetzen(z, "GetCapabilities", "?REQUEST=GetCapabilities&SERVICE=WMS");
    SkriptOberfläche ui;
    ASSERT_TRUE(DienstAnfragen(katalog, z, {m_ordner.pfad(), Besitzer(), {}}, ui));
    EXPECT_EQ(katalog.Zelle(z, "Anfrage"), "erfolgt");
    EXPECT_EQ(katalog.Zelle(z, "Layer"), "nutzung~Nutzung}{flurstuecke~Flurstücke");
    EXPECT_EQ(katalog.Zelle(z, "LayerAuswahl"), "true,true");
    EXPECT_EQ(katalog.Zelle(z, "Maßstab"), "frei");
    EXPECT_EQ(katalog.Zelle(z, "GetCapabilities"),
              "?REQUEST=GetCapabilities&SERVICE=WMS&version=1.1.1");
    EXPECT_EQ(LayerListe(katalog.Zelle(z, "Layer"), katalog.Zelle(z, "LayerAuswahl")),
              "nutzung,flurstuecke");
    EXPECT_TRUE(ui.Meldungen().empty());

    // An address the server does not know gets its HTML error page: not XML, no message.
    katalog.ZelleSetzen(z, "URL", m_url.substr(0, m_url.find("/cgi-bin")) + "/gibtsnicht");
    katalog.ZelleSetzen(z, "Layer", "");
    EXPECT_FALSE(DienstAnfragen(katalog, z, {m_ordner.pfad(), Besitzer(), {}}, ui));
    EXPECT_EQ(katalog.Zelle(z, "Anfrage"), "ERROR");
    EXPECT_TRUE(ui.Meldungen().empty());
    EXPECT_EQ(katalog.Zelle(z, "Layer"), "");
}

} // namespace
} // namespace flurix::karte
