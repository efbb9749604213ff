// The GetMap request, its cache file, the HTTP client and the test of the answers.
#include "map/antwort.hpp"
#include "map/kartenabruf.hpp"
#include "map/getmap.hpp"
#include "map/http.hpp"
#include "map/lokale_dienste.hpp"

#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <QImage>

#include <fstream>
#include <map>

namespace flurix::karte {
namespace {

using namespace std::chrono_literals;

const Anfragerahmen Rahmen{"25833", "456868.2,5753901.6,457131.8,5754098.4", "1000", "750", "1.0"};

TEST(GetMap, DieAnfrageStehtByteFürByte) {
    struct Fall {
        const char* name;
        int ebene;
        Dienstwerte werte;
        bool druck;
        const char* erwartet;
    };
    const Fall fälle[] = {
        {"Beispiel", 1, {"https://wms.example/dienst", "", "a,b", "png", "", true}, false,
         "https://wms.example/dienst?VERSION=1.1.1&REQUEST=GetMap&SRS=EPSG:25833&BBOX=456868.2,5753901.6,"
         "457131.8,5754098.4&WIDTH=1000&HEIGHT=750&LAYERS=a,b&STYLES=&FORMAT=image/png&BGCOLOR=0xFFFFFF&"
         "TRANSPARENT=TRUE"},
        {"URL mit Abfrage, Format leer, deckend", 2, {"http://h/cgi?map=x", "", "l", "", "s1", false}, false,
         "http://h/cgi?map=x&VERSION=1.1.1&REQUEST=GetMap&SRS=EPSG:25833&BBOX=456868.2,5753901.6,457131.8,"
         "5754098.4&WIDTH=1000&HEIGHT=750&LAYERS=l&STYLES=s1&FORMAT=image/png&BGCOLOR=0xFFFFFF&TRANSPARENT=FALSE"},
        {"Knoten aus der Capabilities-Abfrage, Ebene 3 ohne Stil", 3,
         {"http://h/wms", "?REQUEST=GetCapabilities&NodeId=17&SERVICE=WMS", "l", "jpeg", "s1", true}, false,
         "http://h/wms?nodeid=17&VERSION=1.1.1&REQUEST=GetMap&SRS=EPSG:25833&BBOX=456868.2,5753901.6,457131.8,"
         "5754098.4&WIDTH=1000&HEIGHT=750&LAYERS=l&STYLES=&FORMAT=image/jpeg&BGCOLOR=0xFFFFFF&TRANSPARENT=TRUE"},
        {"Druckfassung", 1, {"http://h/wms", "", "l", "png", "", true}, true,
         "http://h/wms?SERVICE=WMS&VERSION=1.1.1&REQUEST=GetMap&SRS=EPSG:25833&BBOX=456868.2,5753901.6,"
         "457131.8,5754098.4&WIDTH=1000&HEIGHT=750&LAYERS=l&STYLES=&FORMAT=image/png&BGCOLOR=0xFFFFFF&"
         "TRANSPARENT=TRUE"},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        const auto a = AnfrageBilden(f.ebene, "Dienst", f.werte, Rahmen, "/tmp/t", f.druck);
        EXPECT_EQ(a.anfrage, f.erwartet);
        EXPECT_EQ(a.datei.extension(), "." + (f.werte.format.empty() ? std::string("png") : f.werte.format));
    }
    const auto a = AnfrageBilden(1, "D", {"http://h/cgi?map=x", "", "l", "png", "", true}, Rahmen, "/tmp/t");
    EXPECT_EQ(CapabilitiesAnfrage(a), "http://h/cgi?map=x&REQUEST=GetCapabilities&VERSION=1.1.1&SERVICE=WMS");
    for (const char* url : {"http://h/cgi?map=x&", "http://h/wms?"})
        EXPECT_EQ(AnfrageBilden(1, "D", {url, "", "l", "png", "", true}, Rahmen, "/tmp/t").anfrage.substr(0, 40),
                  (std::string(url) + "VERSION=1.1.1&REQUEST=GetMap").substr(0, 40));
}

TEST(GetMap, DerCachenameHältJedenParameter) {
    const Dienstwerte werte{"https://www.wms.nrw.de/geobasis/wms_nw_adv_alkis", "", "adv_alkis_flurstuecke", "png", "", true};
    const auto a = AnfrageBilden(2, "ALKIS", werte, Rahmen, "/tmp/t");
    EXPECT_EQ(a.datei.string(),
              "/tmp/t/#tmp_wms2_httpswwwwmsnrwdegeobasiswms_nw__25833_456868257539016457131857540984_1000_750_"
              "_flurstuecke__10.png");

    // Another frame, another file; a long request is cut to 250 characters ahead of the ending.
    Anfragerahmen anders = Rahmen;
    anders.breite = "1001";
    EXPECT_NE(AnfrageBilden(2, "ALKIS", werte, anders, "/tmp/t").datei, a.datei);
    Dienstwerte lang = werte;
    lang.url = "http://h/wms";
    lang.layers = std::string(400, 'x');
    EXPECT_EQ(AnfrageBilden(1, "D", lang, Rahmen, "/tmp/t").datei.string().size(), 250u + 4u);
}

struct Antwortfall {
    const char* name;
    bool geladen;
    const char* fehlerText;
    const char* inhalt; ///< nullptr: no file
    const char* titel;  ///< nullptr: no message
    const char* text;
};

TEST(Antwort, DieTestsInIhrerReihenfolge) {
    const Antwortfall fälle[] = {
        {"Bild", true, "", "\x89PNG....", nullptr, nullptr},
        {"Host unbekannt", false, "WSAHOST_NOT_FOUND: CURLE 6 Could not resolve host", nullptr,
         "Fehler HTTP: WSAHOST_NOT_FOUND",
         "HOST nicht gefunden!\nBitte prüfen Sie Ihre INTERNET-Verbindung und wiederholen Ihre Anfrage!"},
        {"Schreibfehler", false, "WindowsErrorCode: 0x5 (Schreibfehler)", nullptr,
         "Fehler Chilkat: Schreibfehler", "Bitte wiederholen Sie Ihre Anfrage!"},
        {"ungültiger Ausschnitt vor Dienstmeldung", true, "",
         "<ServiceException code=\"x\">invalid bbox</ServiceException>", "Ebene: 2, Err: \"invalid bbox\"",
         "Der Kartendienst Topo ist für diesen Koordinatenausschnitt nicht definiert!\n"
         "Ändern Sie den Kartenausschnitt oder den Meriodianstreifen (EPSG)!"},
        {"Query error", true, "", "Query error", "Ebene: 2, Err: \"Query error\"",
         "Der Kartendienst Topo ist nicht erreichbar!"},
        {"HTML", true, "", "<html><head></head></html>", "Ebene: 2, Err: \"XML-Rückantwort\"",
         "Der Kartendienst Topo ist nicht erreichbar!"},
        {"Dienstmeldung", true, "",
         "<?xml version='1.0'?><ServiceExceptionReport><ServiceException code=\"InvalidSRS\">\n"
         "  Invalid SRS &amp; more\n</ServiceException></ServiceExceptionReport>",
         "Ebene: 2, Err: \"XML-Rückantwort\"", "Meldung Dienst: Invalid SRS & more"},
        {"Dienstmeldung ohne Attribut", true, "",
         "<ServiceExceptionReport><ServiceException>Invalid values for BBOX.</ServiceException>"
         "</ServiceExceptionReport>",
         "Ebene: 2, Err: \"XML-Rückantwort\"", "Meldung Dienst: Invalid values for BBOX."},
        {"Zeitüberschreitung: keine Datei", false, "WSAETIMEDOUT: CURLE 28", nullptr, "Ebene: 2, Fehler beim Download",
         "Download Kartendienst 2.Ebene Topo fehlgeschlagen!\nBitte prüfen Sie Ihre WMS-Anfrage!"},
    };
    test::TempOrdner ordner;
    const Zeitangabe jetzt{"25.11.2026", "10:11:12"};
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        EbenenAnfrage a;
        a.ebene = 2;
        a.dienst = "Topo";
        a.anfrage = "http://h/wms?x";
        a.datei = ordner / "antwort.png";
        a.geladen = f.geladen;
        a.fehlerText = f.fehlerText;
        std::filesystem::remove(a.datei);
        if (f.inhalt)
            test::DateiSchreiben(a.datei, f.inhalt);
        const auto befund = AntwortPrüfen(a, jetzt);
        ASSERT_EQ(befund.meldung.has_value(), f.titel != nullptr);
        EXPECT_EQ(befund.abbruch, f.titel != nullptr);
        EXPECT_EQ(a.abbruch, befund.abbruch);
        if (f.titel) {
            EXPECT_EQ(*befund.meldung, (Kartenmeldung{f.titel, f.text}));
        }
        const std::string kopf = "----------\r\n25.11.2026 10:11:12----------\r\nhttp://h/wms?x\r\n" +
                                 a.datei.string() + "\r\n";
        EXPECT_EQ(befund.fehlerblock, f.geladen ? kopf : kopf + f.fehlerText + "\r\n");
    }
}

TEST(Antwort, DasProtokollBekommtZweiZeilenJeEbene) {
    test::TempOrdner ordner;
    EbenenAnfrage a;
    a.ebene = 1;
    a.anfrage = "http://h/wms?x";
    a.datei = "/tmp/t/#tmp_wms1.png";
    AnfrageProtokollieren(ordner.pfad(), a, {"25.11.2026", "10:11:12"});
    AnfrageProtokollieren(ordner.pfad(), a, {"25.11.2026", "10:11:13"});
    EXPECT_EQ(test::DateiLesen(ordner / "_MAP-Anfrage.prn"),
              "10:11:12 25.11.2026, 1.Ebene: URL: http://h/wms?x\r\n"
              "10:11:12 25.11.2026, 1.Ebene: Name: /tmp/t/#tmp_wms1.png\r\n"
              "10:11:13 25.11.2026, 1.Ebene: URL: http://h/wms?x\r\n"
              "10:11:13 25.11.2026, 1.Ebene: Name: /tmp/t/#tmp_wms1.png\r\n");
}

TEST(Kartenstart, EinVollerTempOrdnerWirdAufWunschGeleert) {
    test::TempOrdner ordner;
    SkriptOberfläche ui({Antwort::Nein, Antwort::Ja});
    EXPECT_EQ(TempOrdnerAufräumen(ordner.pfad(), ui), 0); // empty: no question
    for (int i = 0; i <= 10000; ++i)
        std::ofstream(ordner / ("#tmp_wms1_" + std::to_string(i) + ".png"));
    EXPECT_EQ(TempOrdnerAufräumen(ordner.pfad(), ui), 0);
    EXPECT_EQ(TempOrdnerAufräumen(ordner.pfad(), ui), 10001);
    EXPECT_EQ(ui.Fragen(), std::vector<std::string>(2, "Im temporären Verzeichnis wurden über 10001 Dateien "
                                                       "vorgefunden!\nAlle Dateien löschen?"));
    EXPECT_TRUE(std::filesystem::is_empty(ordner.pfad()));
}

// The client against the stub: what services and networks do to a request.
TEST(Http, FehlerDesNetzesUndDerDienste) {
    test::HttpStub stub;
    test::TempOrdner ordner;
    const Zeitangabe jetzt{"25.11.2026", "10:11:12"};
    HttpOptionen kurz;
    kurz.zeitlimit = 1500ms;
    struct Fall {
        const char* name;
        std::string url;
        HttpOptionen optionen;
        bool geladen;
        const char* titel; ///< of the answer test; nullptr: a picture
    };
    HttpOptionen login = kurz;
    login.benutzer = "flurix";
    login.passwort = "geheim";
    const Fall fälle[] = {
        {"Bild", stub.Basis() + "/bild/a", kurz, true, nullptr},
        {"HTML-Seite", stub.Basis() + "/html/a", kurz, true, "Ebene: 1, Err: \"XML-Rückantwort\""},
        {"keine Antwort", stub.Basis() + "/still/a", kurz, false, "Ebene: 1, Fehler beim Download"},
        {"Host unbekannt", "http://flurix-test.invalid/wms", kurz, false, "Fehler HTTP: WSAHOST_NOT_FOUND"},
        {"mit Anmeldung", stub.Basis() + "/login/a", login, true, nullptr},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        EbenenAnfrage a;
        a.dienst = "Stub";
        a.anfrage = f.url;
        a.datei = ordner / (std::string(f.name) + ".png");
        const auto start = std::chrono::steady_clock::now();
        const auto ergebnis = HttpDateiLaden(a.anfrage, a.datei, f.optionen);
        EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
        a.geladen = ergebnis.ok;
        a.fehlerText = ergebnis.fehlerText;
        EXPECT_EQ(ergebnis.ok, f.geladen) << ergebnis.fehlerText;
        const auto befund = AntwortPrüfen(a, jetzt);
        EXPECT_EQ(befund.meldung ? befund.meldung->titel : "", f.titel ? f.titel : "");
        if (!f.titel) {
            EXPECT_EQ(QImage(QString::fromStdString(a.datei.string())).size(), QSize(2, 2));
        }
        // A failed download leaves no file, not even a temporary one.
        EXPECT_EQ(std::filesystem::exists(a.datei), f.geladen);
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(ordner.pfad()), {}), 3);

    // Without the login the service says 401 and a text, which is no picture.
    std::string text;
    const auto ohne = HttpAnfrageAlsText(stub.Basis() + "/login/b", text, kurz);
    EXPECT_TRUE(ohne.ok);
    EXPECT_EQ(ohne.status, 401);
    EXPECT_EQ(text, "Anmeldung erforderlich");
}

TEST(Http, MehrereZugleichUndAbbrechen) {
    test::HttpStub stub;
    test::TempOrdner ordner;
    HttpMehrfach mehrfach;
    HttpOptionen optionen;
    optionen.zeitlimit = 20s;
    const int still = mehrfach.Hinzufügen(stub.Basis() + "/still/x", ordner / "still.png", optionen);
    const int b1 = mehrfach.Hinzufügen(stub.Basis() + "/bild/1", ordner / "1.png", optionen);
    const int b2 = mehrfach.Hinzufügen(stub.Basis() + "/bild/2", ordner / "2.png", optionen);
    std::map<int, HttpErgebnis> fertig;
    const auto start = std::chrono::steady_clock::now();
    while (fertig.size() < 2 && std::chrono::steady_clock::now() - start < 10s)
        for (auto& [nummer, ergebnis] : mehrfach.Weiter(100ms))
            fertig[nummer] = ergebnis;
    ASSERT_EQ(fertig.size(), 2u);
    EXPECT_TRUE(fertig[b1].ok && fertig[b2].ok);
    EXPECT_EQ(mehrfach.Offen(), 1);

    // The one that never answers is cancelled: reported as such, no file left.
    mehrfach.Abbrechen(still);
    const auto rest = mehrfach.Weiter(0ms);
    ASSERT_EQ(rest.size(), 1u);
    EXPECT_EQ(rest[0].first, still);
    EXPECT_EQ(rest[0].second.fehlerText, "abgebrochen");
    EXPECT_EQ(mehrfach.Offen(), 0);
    EXPECT_FALSE(std::filesystem::exists(ordner / "still.png"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(ordner.pfad()), {}), 2);
}

} // namespace
} // namespace flurix::karte
