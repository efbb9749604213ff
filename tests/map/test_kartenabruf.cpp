// A map run against a real WMS (MapServer on loopback) and the loopback stub: requests, the
// cache, the services' failures, logins, and the command line "flurix karte".
#include "map/dienstkatalog.hpp"
#include "map/kartenabruf.hpp"
#include "map/lokale_dienste.hpp"
#include "map/zugang.hpp"

#include "cli/cli.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <QImage>

#include <sstream>

namespace flurix::karte {
namespace {

namespace fs = std::filesystem;

// A catalogue of the test server (both layers), the stub's picture and its login.
Dienstkatalog TestKatalog(const std::string& wms, const std::string& stub) {
    Dienstkatalog katalog;
    const auto zeile = [&](const char* name, const std::string& url, const char* layer, const char* auswahl) {
        const auto z = katalog.NeuerDienst(name);
        katalog.ZelleSetzen(z, "URL", url);
        katalog.ZelleSetzen(z, "Layer", layer);
        katalog.ZelleSetzen(z, "LayerAuswahl", auswahl);
        return z;
    };
    zeile("Test-WMS", wms, "nutzung~Nutzung}{flurstuecke~Flurstücke", "true,true");
    zeile("Nur Flurstücke", wms, "nutzung~Nutzung}{flurstuecke~Flurstücke", "false,true");
    zeile("Stub-Bild", stub + "/bild/wms", "a~A", "true");
    const auto login = zeile("Stub-Login", stub + "/login/wms", "a~A", "true");
    katalog.PrüfzelleSetzen(login, "Zugang", true);
    katalog.ZelleSetzen(login, "ZugangKey", ZugangDateiname("Stub-Login"));
    return katalog;
}

class Kartenabruf : public ::testing::Test {
protected:
    void SetUp() override {
        if (wms.Url().empty())
            GTEST_SKIP() << wms.Fehlt();
        katalog = TestKatalog(wms.Url(), stub.Basis());
        umgebung.tempOrdner = ordner / "temp";
        umgebung.konfig = ordner / "config";
        umgebung.besitzer = Besitzer();
        umgebung.protokoll = true;
        fs::create_directories(umgebung.tempOrdner);
        ref.EPSG = "25833";
        ASSERT_TRUE(NeueReferenz(ref, "391000;5819000", ui));
        ref.MaßstabEingeben(5000);
    }

    Kartenbild Laden(std::array<std::string, 3> dienste, double breite = 400, double höhe = 300) {
        ui.Neu();
        Kartenwahl wahl;
        wahl.dienste = std::move(dienste);
        return MapLoad(ref, katalog, wahl, breite, höhe, umgebung, ui);
    }

    std::vector<std::string> Meldungen() const {
        std::vector<std::string> texte;
        for (const auto& e : ui.Ereignisse())
            if (e.art == Ereignis::Art::Meldung)
                texte.push_back(e.titel + ": " + e.text);
        return texte;
    }

    test::WmsTestserver wms;
    test::HttpStub stub;
    test::TempOrdner ordner;
    Dienstkatalog katalog;
    Kartenumgebung umgebung;
    MapReferenz ref;
    SkriptOberfläche ui;
};

int FarbigePixel(const QImage& bild) {
    int anzahl = 0;
    for (int y = 0; y < bild.height(); ++y)
        for (int x = 0; x < bild.width(); ++x)
            anzahl += (bild.pixel(x, y) & 0xffffffu) != 0xffffffu;
    return anzahl;
}

TEST_F(Kartenabruf, EinBildEinDownloadDannDerCache) {
    const auto erstes = Laden({"Test-WMS", "ohne", "ohne"});
    ASSERT_TRUE(erstes.ok) << ::testing::PrintToString(Meldungen());
    EXPECT_EQ(erstes.bild.size(), QSize(400, 300));
    EXPECT_GT(FarbigePixel(erstes.bild), 1000);
    EXPECT_EQ(erstes.downloads, 1);
    EXPECT_EQ(wms.KartenAnfragen(), 1);
    EXPECT_TRUE(Meldungen().empty());
    const std::string anfang = wms.Url() + "VERSION=1.1.1&REQUEST=GetMap&SRS=EPSG:25833&BBOX=";
    EXPECT_EQ(erstes.ebenen[0].anfrage.substr(0, anfang.size()), anfang);
    EXPECT_FALSE(erstes.ebenen[1].Aktiv());
    EXPECT_EQ(erstes.status, "    Maßstab: 1:5000    Plotbox: ");

    // The same frame again: from the cache, the same picture.
    const auto zweites = Laden({"Test-WMS", "ohne", "ohne"});
    EXPECT_EQ(zweites.downloads, 0);
    EXPECT_EQ(wms.KartenAnfragen(), 1);
    EXPECT_EQ(zweites.bild, erstes.bild);

    // "Hardzoom" asks again; another selection of layers is another request.
    umgebung.neuLaden = true;
    EXPECT_EQ(Laden({"Test-WMS", "ohne", "ohne"}).downloads, 1);
    umgebung.neuLaden = false;
    const auto flurstücke = Laden({"Nur Flurstücke", "ohne", "ohne"});
    EXPECT_EQ(flurstücke.downloads, 1);
    EXPECT_LT(FarbigePixel(flurstücke.bild), FarbigePixel(erstes.bild));
    EXPECT_EQ(wms.KartenAnfragen(), 3);

    // Two levels: the picture of the stub (one colour) lies behind the map of the server.
    const auto zwei = Laden({"Nur Flurstücke", "Stub-Bild", "ohne"});
    EXPECT_EQ(zwei.downloads, 1);
    EXPECT_EQ(FarbigePixel(zwei.bild), 400 * 300);

    // Every request in the log: two lines per level and run.
    const auto log = test::DateiLesen(umgebung.tempOrdner / "_MAP-Anfrage.prn");
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 2 * 6);
}

TEST_F(Kartenabruf, FehlerDerDiensteWerdenGemeldet) {
    struct Fall {
        const char* name;
        std::string epsg;
        std::string zoomFenster;
        const char* meldung;
    };
    const Fall fälle[] = {
        {"unbekanntes System", "4647", "",
         "Ebene: 1, Err: \"XML-Rückantwort\": Meldung Dienst: msWMSLoadGetMapParams(): WMS server error. "
         "Invalid SRS given : SRS must be valid for all requested layers."},
        // The corners the wrong way round in east pass the box test (north is in order).
        {"verdrehter Ausschnitt", "25833", "392000;5818000;390000;5820000",
         "Ebene: 1, Err: \"XML-Rückantwort\": Meldung Dienst: msWMSLoadGetMapParams(): WMS server error. "
         "Invalid values for BBOX."},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        ref.EPSG = f.epsg;
        ref.ZoomFenster = f.zoomFenster;
        const auto bild = Laden({"Test-WMS", "ohne", "ohne"});
        EXPECT_FALSE(bild.ok);
        EXPECT_TRUE(bild.ebenen[0].abbruch);
        EXPECT_EQ(Meldungen(), std::vector<std::string>{f.meldung});
        EXPECT_NE(bild.fehlertext.find(bild.ebenen[0].anfrage), std::string::npos);
    }
}

TEST_F(Kartenabruf, AnmeldungNurMitDemEigenenSchlüssel) {
    // Without a login file: the message, and nothing is asked.
    const int vorher = stub.Anfragen();
    EXPECT_FALSE(Laden({"Stub-Login", "ohne", "ohne"}).ok);
    EXPECT_EQ(Meldungen(), std::vector<std::string>{
                               "WMS-Service: Prüfen Sie bitte Ihre Zugangsdaten für WMS-Service: Stub-Login"});
    // A file of another account is refused the same way.
    test::DateiSchreiben(umgebung.konfig / ZugangDateiname("Stub-Login"),
                         ZugangVerschleiern("flurix", "geheim", umgebung.besitzer + "-anders"));
    EXPECT_FALSE(Laden({"Stub-Login", "ohne", "ohne"}).ok);
    EXPECT_EQ(Meldungen(), std::vector<std::string>{
                               "WMS-Service: Web-Service Sicherheitsabfrage ohne gültige Anmeldung! Abbruch!"});
    EXPECT_EQ(stub.Anfragen(), vorher);

    // The own file: the service lets the map in.
    test::DateiSchreiben(umgebung.konfig / ZugangDateiname("Stub-Login"),
                         ZugangVerschleiern("flurix", "geheim", umgebung.besitzer));
    const auto bild = Laden({"Stub-Login", "ohne", "ohne"});
    EXPECT_TRUE(bild.ok) << ::testing::PrintToString(Meldungen());
    EXPECT_EQ(FarbigePixel(bild.bild), 400 * 300);
}

TEST_F(Kartenabruf, DieKommandozeileSchreibtDasBild) {
    const fs::path inst = ordner / "inst";
    test::DateiSchreiben(inst / "config" / "Flurix.dat",
                         "tempArbeitsverzeichnis =" + (ordner / "arbeit").string() + "/\r\n");
    KatalogSpeichern(katalog, inst / "config" / "WebService.fil");
    cli::Umgebung cliUmgebung;
    cliUmgebung.installation = inst;
    const std::vector<std::string> aufruf = {"karte", "--zentrum", "391000;5819000", "--massstab", "5000",
                                             "--dienst", "Test-WMS", "--groesse", "300x200", "--faktor", "2,0",
                                             "--out", (ordner / "karte.jpg").string()};
    for (const char* downloads : {"1 Download", "0 Downloads"}) {
        std::ostringstream aus, fehler;
        EXPECT_EQ(cli::Ausführen(aufruf, aus, fehler, cliUmgebung), 0) << fehler.str();
        EXPECT_EQ(aus.str(), (ordner / "karte.jpg").string() + "\t600x400\t1:5000\t" + downloads + "\n");
    }
    const QImage bild(QString::fromStdString((ordner / "karte.jpg").string()));
    EXPECT_EQ(bild.size(), QSize(600, 400));

    // A service the catalogue doesn't know: the download fails, nothing is written, exit code 1.
    std::ostringstream aus, fehler;
    auto unbekannt = aufruf;
    unbekannt[6] = "Gibt es nicht";
    unbekannt.back() = (ordner / "nichts.png").string();
    EXPECT_EQ(cli::Ausführen(unbekannt, aus, fehler, cliUmgebung), 1);
    EXPECT_NE(fehler.str().find("Download Kartendienst 1.Ebene Gibt es nicht fehlgeschlagen!"), std::string::npos)
        << fehler.str();
    EXPECT_FALSE(fs::exists(ordner / "nichts.png"));
}

} // namespace
} // namespace flurix::karte
