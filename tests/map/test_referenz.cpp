// The map's reference state: scale, frame and box test, reference text, strip change, start from
// the settings, the strip test of dropped files; with them the scale bar and the EPSG list.
// Expected boxes are worked out by hand: a pixel is 2.54 / 7200 m of paper, times N on the ground.

#include "map/epsg_liste.hpp"
#include "map/geodaesie.hpp"
#include "map/massstabsleiste.hpp"
#include "map/referenz.hpp"

#include "core/einstellungen.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <QImage>

#include <gtest/gtest.h>

#include <cmath>

namespace flurix::karte {
namespace {

const std::string MeldungZoom = "Zoom-Fenster zu klein! Bitte Bereich neu auswählen!";
const std::string MeldungGroß =
    "Der Maßstab ist sehr groß! Die Anfrage kann eventuell nicht bearbeitet werden!";

TEST(MapReferenz, MassstabRechnenUndEingeben) {
    struct Fall {
        std::string start, dpi;
        double eingabe;
        double korrektur; // expected KorrMaßstab
        bool angenommen;  // MaßstabRechnen's answer
        double n;
        std::string anzeige, manu;
    };
    const Fall fälle[] = {
        {"750", "96", 1000, 0, true, 750, "1:1000", "1000"}, // 750 at 96 dpi is 1:1000
        {"750", "96", 2500, 1125, true, 1875, "1:2500", "2500"},
        {"500", "72", 1000, 500, true, 1000, "1:1000", "1000"},
        {"750", "96", 100, -675, true, 75, "1:100", "100"}, // the floor itself is allowed
        {"750", "96", 50, 0, false, 750, "1:500", "1000"},  // below 1:100: all stays
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.start + " " + f.dpi + " " + std::to_string(f.eingabe));
        MapReferenz ref;
        ref.MapStartMaßstab = f.start;
        ref.MapScreenDpi = f.dpi;
        ref.MaßstabEingeben(f.eingabe);
        EXPECT_EQ(ref.MaßstabRechnen(), f.angenommen);
        EXPECT_EQ(ref.KorrMaßstab, f.korrektur);
        EXPECT_EQ(ref.MaßstabZahl(), f.n);
        EXPECT_EQ(ref.AnzMaßstab, f.anzeige);
        EXPECT_EQ(ref.MaßstabManu, f.manu);
    }
}

TEST(MapReferenz, AbgelehnterSchrittWirdZurueckgenommen) {
    MapReferenz ref;
    ref.MaßstabSchritt(250); // 1:1333
    ASSERT_TRUE(ref.MaßstabRechnen());
    EXPECT_EQ(ref.AnzMaßstab, "1:1333");
    ref.MaßstabSchritt(-950); // N 50, S 67: refused
    EXPECT_FALSE(ref.MaßstabRechnen());
    EXPECT_EQ(ref.KorrMaßstab, 250);
    EXPECT_EQ(ref.MaßstabZahl(), 1000);
    EXPECT_EQ(ref.AnzMaßstab, "1:1333");
}

TEST(MapReferenz, Rahmen) {
    struct Fall {
        std::string name;
        double y, x, breite, höhe;
        std::string faktor = "1.0";
        std::string zoom = "";
        double druckBreite = 0, druckHöhe = 0;
        std::string bbox, bildBreite, bildHöhe, referenz;
        bool weiter = true;
        std::string meldung = "";
    };
    const Fall fälle[] = {
        {"800 x 600 um die Mitte", 457000, 5754000, 800, 600, "1.0", "", 0, 0,
         "456894.167,5753920.625,457105.833,5754079.375", "800", "600", "457000;5754000"},
        {"der Faktor ändert nur die Pixel", 457000, 5754000, 800, 600, "1.5", "", 0, 0,
         "456894.167,5753920.625,457105.833,5754079.375", "1200", "900", "457000;5754000"},
        {"Mitte auf drei Stellen gerundet", 457000.12345, 5754000, 800, 600, "1.0", "", 0, 0,
         "456894.29,5753920.625,457105.957,5754079.375", "800", "600", "457000.123;5754000"},
        {"über 4000 Pixel: Warnung, die Anfrage geht weiter", 457000, 5754000, 3000, 2000, "1.5",
         "", 0, 0, "456603.125,5753735.417,457396.875,5754264.583", "4500", "3000",
         "457000;5754000", true, MeldungGroß},
        {"Zoom-Fenster mit gleichen Ecken", 457000, 5754000, 800, 600, "1.0",
         "457000;5754000;457000;5754000", 0, 0, "457000,5754000,457000,5754000", "800", "600",
         "457105.833;5754079.375", false, MeldungZoom},
        {"Zoom-Fenster: die Mitte folgt den Ecken", 0, 0, 800, 600, "1.0",
         "456000;5753000;456500;5753400", 0, 0, "456000,5753000,456500,5753400", "800", "600",
         "456105.833;5753079.375"},
        {"Druckvorbereitung: Größe aus dem Druckbild", 457000, 5754000, 800, 600, "1.0", "", 500,
         400, "456933.854,5753947.083,457066.146,5754052.917", "667", "533", "457000;5754000"},
        // A valid box whose texts do not sort: 99894.167 sorts after 100105.833, 999920.625
        // after 1000079.375. The box test compares texts, so this box is refused.
        {"Textvergleich lehnt eine gültige Box ab", 100000, 1000000, 800, 600, "1.0", "", 0, 0,
         "99894.167,999920.625,100105.833,1000079.375", "800", "600", "100000;1000000", false,
         MeldungZoom},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        MapReferenz ref;
        ref.ZentrumY = f.y;
        ref.ZentrumX = f.x;
        ref.MapBitmapFaktor = f.faktor;
        ref.ZoomFenster = f.zoom;
        ref.Druckvorbereitung = f.druckBreite > 0;
        ref.DruckBreite = f.druckBreite;
        ref.DruckHöhe = f.druckHöhe;
        SkriptOberfläche ui;
        const Rahmen rahmen = RahmenBerechnen(ref, f.breite, f.höhe, ui);
        EXPECT_EQ(rahmen.BBox, f.bbox);
        EXPECT_EQ(ref.BBox, f.bbox);
        EXPECT_EQ(rahmen.BildBreiteText, f.bildBreite);
        EXPECT_EQ(rahmen.BildHöheText, f.bildHöhe);
        EXPECT_EQ(ref.Referenzkoordinaten, f.referenz);
        EXPECT_EQ(rahmen.weiter, f.weiter);
        EXPECT_EQ(ui.Meldungen(),
                  f.meldung.empty() ? std::vector<std::string>{} : std::vector{f.meldung});
        for (const auto& e : ui.Ereignisse())
            EXPECT_EQ(e.titel, "Flurix");
    }
}

TEST(MapReferenz, BoxtestVergleichtTexte) {
    struct Fall {
        std::string_view yMin, xMin, yMax, xMax;
        bool text, zahl; // what the texts decide, and what numbers would
    };
    const Fall fälle[] = {
        {"456894.167", "5753920.625", "457105.833", "5754079.375", true, true},
        {"457000", "5754000", "457000", "5754000", false, false},
        {"457000", "5754000", "457000", "5754100", true, true}, // one axis is enough
        {"99894.167", "999920.625", "100105.833", "1000079.375", false, true},
        {"1000", "5000", "500", "4000", true, false}, // corners the wrong way round
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(std::string(f.yMin) + " " + std::string(f.yMax));
        EXPECT_EQ(BoxTextGültig(f.yMin, f.xMin, f.yMax, f.xMax), f.text);
        const bool zahl = std::stod(std::string(f.yMin)) < std::stod(std::string(f.yMax)) ||
                          std::stod(std::string(f.xMin)) < std::stod(std::string(f.xMax));
        EXPECT_EQ(zahl, f.zahl);
    }
}

TEST(MapReferenz, ReferenztextLesen) {
    struct Fall {
        std::string_view ein;
        ReferenzArt art;
        std::string_view text;
    };
    const Fall fälle[] = {
        {"  457000 5754000 ", ReferenzArt::Paar, "457000;5754000"},
        {"457000    5754000   12", ReferenzArt::Paar, "457000;5754000"},
        {"457000,5 ; 5754000,25", ReferenzArt::Paar, "457000.5;5754000.25"},
        {"457000;5754000", ReferenzArt::Paar, "457000;5754000"},
        {"  121955007002310001 ", ReferenzArt::Flurstückskennzeichen, "121955007002310001"},
        {"   ", ReferenzArt::Leer, ""},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(std::string(f.ein));
        const Referenzeingabe e = ReferenztextLesen(f.ein);
        EXPECT_EQ(e.art, f.art);
        EXPECT_EQ(e.text, f.text);
    }
}

TEST(MapReferenz, NeueReferenzPrueft) {
    const std::string nichtImStreifen =
        "Die Referenzkoordinaten befinden sich nicht im EPSG:32583 2-3";
    const std::string falsch = "Die Referenzkoordinaten sind falsch vorgegebenen!\n"
                               "Bsp.: EPSG=25833 Y=457000 X=5754000";
    struct Fall {
        std::string_view text;
        bool ok;
        std::string meldung;
        double y, x;
    };
    const Fall fälle[] = {
        {"457000 5754000", true, "", 457000, 5754000},
        {"0;900000.5", true, "", 0, 900000.5},
        {"-1;5754000", false, nichtImStreifen, 0, 0},
        {"457000;900000", false, nichtImStreifen, 0, 0},
        {"457000", false, falsch, 0, 0},
        {"", false, falsch, 0, 0},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(std::string(f.text));
        MapReferenz ref;
        SkriptOberfläche ui;
        EXPECT_EQ(NeueReferenz(ref, f.text, ui), f.ok);
        EXPECT_EQ(ref.ZentrumY, f.y);
        EXPECT_EQ(ref.ZentrumX, f.x);
        if (f.ok) {
            EXPECT_TRUE(ui.Ereignisse().empty());
        } else {
            ASSERT_EQ(ui.Ereignisse().size(), 1u);
            EXPECT_EQ(ui.Ereignisse()[0].text, f.meldung);
            EXPECT_EQ(ui.Ereignisse()[0].titel, "Flurix");
        }
    }
}

TEST(MapReferenz, StreifenwechselBehaeltDenBoden) {
    struct Fall {
        std::string vorher, nachher, referenz;
        int L0vorher, L0nachher;
    };
    const Fall fälle[] = {
        {"25833", "25832", "457000;5754000", 15, 9},
        {"25832", "25833", "691000.5;5336000", 9, 15},
        {"", "25832", "400000;5900000", 15, 9}, // no code yet counts as 25833
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.vorher + " -> " + f.nachher);
        MapReferenz ref;
        ref.EPSG = f.vorher;
        ref.Referenzkoordinaten = f.referenz;
        ASSERT_TRUE(StreifenWechseln(ref, f.nachher));
        EXPECT_EQ(ref.EPSG, f.nachher);
        // The text says the new centre, to the millimetre.
        const std::string& text = ref.Referenzkoordinaten;
        EXPECT_EQ(std::stod(text), ref.ZentrumY);
        EXPECT_EQ(std::stod(text.substr(text.find(';') + 1)), ref.ZentrumX);
        EXPECT_EQ(ref.ZentrumY, std::round(ref.ZentrumY * 1000) / 1000);

        KoordinatenSatz alt;
        alt.Wert1 = std::stod(f.referenz);
        alt.Wert2 = std::stod(f.referenz.substr(f.referenz.find(';') + 1));
        KoordinatenSatz neu;
        neu.Wert1 = ref.ZentrumY;
        neu.Wert2 = ref.ZentrumX;
        // Some hundred kilometres east or west, and the same point on the ground.
        EXPECT_GT(std::fabs(neu.Wert1 - alt.Wert1), 100000);
        const KoordinatenSatz geoAlt = ETRSNachGeographisch(alt, f.L0vorher);
        const KoordinatenSatz geoNeu = ETRSNachGeographisch(neu, f.L0nachher);
        EXPECT_NEAR(geoNeu.Wert1, geoAlt.Wert1, 1e-8);
        EXPECT_NEAR(geoNeu.Wert2, geoAlt.Wert2, 1e-8);
    }
    MapReferenz gleich;
    gleich.Referenzkoordinaten = "457000;5754000";
    EXPECT_FALSE(StreifenWechseln(gleich, "25833"));
    EXPECT_EQ(gleich.Referenzkoordinaten, "457000;5754000");
}

TEST(MapReferenz, StartzustandAusDenEinstellungen) {
    test::TempOrdner ordner;
    const auto voll = ordner / "voll.dat";
    test::DateiSchreiben(voll, "StartMapWebService =TopPlusOpen\r\n"
                               "StartMapWebServiceKoo =457000 5754000\r\n"
                               "StartMapWebServiceEPSG =25832\r\n"
                               "StartMapWebServiceMaßstab =2500\r\n"
                               "MapBitmapFaktor_nur_ALKIS =1,5\r\n"
                               "MapBitmapFaktor_allgemein =2.0\r\n");
    const auto leer = ordner / "leer.dat";
    test::DateiSchreiben(leer, "StartMapWebServiceMaßstab =0\r\n");
    struct Fall {
        std::string name;
        std::filesystem::path datei;
        std::optional<Kartenmitte> mitte;
        std::string fensterEpsg;
        std::string dienst, epsg, referenz, manu, nurAlkis, allgemein;
        double korrektur;
    };
    const Fall fälle[] = {
        {"alle Schlüssel", voll, std::nullopt, "", "TopPlusOpen", "25832", "457000;5754000", "2500",
         "1.5", "2.0", 1125},
        {"das Fenster hat schon einen Code", voll, std::nullopt, "25833", "TopPlusOpen", "25833",
         "457000;5754000", "2500", "1.5", "2.0", 1125},
        {"/map vor den Einstellungen", voll, Kartenmitte{400000.5, 5700000}, "", "TopPlusOpen",
         "25833", "400000.5;5700000", "2500", "1.5", "2.0", 1125},
        {"nichts eingestellt", leer, std::nullopt, "", "", "25833", "", "1000", "", "", 0},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.name);
        const Startzustand start =
            StartzustandLesen(Einstellungen(f.datei), f.mitte, f.fensterEpsg);
        EXPECT_EQ(start.dienst, f.dienst);
        EXPECT_EQ(start.referenz.EPSG, f.epsg);
        EXPECT_EQ(start.referenz.Referenzkoordinaten, f.referenz);
        EXPECT_EQ(start.referenz.MaßstabManu, f.manu);
        EXPECT_EQ(start.referenz.AnzMaßstab, "1:500"); // until the first request
        EXPECT_EQ(start.referenz.BitmapFaktorNurAlkis, f.nurAlkis);
        EXPECT_EQ(start.referenz.BitmapFaktorAllgemein, f.allgemein);
        EXPECT_EQ(start.referenz.KorrMaßstab, f.korrektur);

        MapReferenz ref = start.referenz;
        ref.BitmapFaktorWählen(true);
        EXPECT_EQ(ref.MapBitmapFaktor, f.nurAlkis.empty() ? "1.0" : f.nurAlkis);
        ref.BitmapFaktorWählen(false);
        EXPECT_EQ(ref.MapBitmapFaktor, f.allgemein.empty() ? "1.0" : f.allgemein);
    }
}

TEST(MapReferenz, MeldungenZuStreifenUndEpsg) {
    struct Fall {
        std::string wert;
        bool ok;
    };
    const Fall fälle[] = {{"32456789.12", true}, {" 356000", true}, {"2456000", true},
                          {"5456000", false},    {"", false},       {"4456000.5", false}};
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.wert);
        SkriptOberfläche ui;
        EXPECT_EQ(MeridianstreifenPrüfen(f.wert, ui), f.ok);
        if (f.ok) {
            EXPECT_TRUE(ui.Ereignisse().empty());
            continue;
        }
        ASSERT_EQ(ui.Ereignisse().size(), 1u);
        EXPECT_EQ(ui.Ereignisse()[0].titel, "unzulässiger Meridianstreifen");
        EXPECT_EQ(ui.Ereignisse()[0].text,
                  "Im Map-Viewer können nur ETRS89-Koordinaten im 32. und 33. Meridianstreifen "
                  "visualisiert werden!\nFalsches Koordinatensystem? Bitte prüfen Sie Ihre Daten!"
                  "\n\nY-Koordinate: " +
                      f.wert);
    }

    for (const std::string epsg : {"25832", "abc", ""}) {
        SCOPED_TRACE(epsg);
        MapReferenz ref;
        ref.EPSG = epsg;
        SkriptOberfläche ui;
        const bool ok = epsg == "25832";
        EXPECT_EQ(EpsgPrüfen(ref, ui), ok);
        if (!ok) {
            ASSERT_EQ(ui.Ereignisse().size(), 1u);
            EXPECT_EQ(ui.Ereignisse()[0].text,
                      "EPSG-Code: " + epsg + " ist falsch! Bitte wiederholen Sie Ihre Aktion!");
            EXPECT_EQ(ui.Ereignisse()[0].titel, "Map-Viewer");
        }
    }
}

TEST(MapReferenz, BitmapFaktor) {
    struct Fall {
        std::string eingabe, gesetzt;
        double zahl;
        std::string anzeige;
    };
    const Fall fälle[] = {
        {"1,5", "1.5", 1.5, "1.5"}, {"2", "2", 2, "2.0"}, {"1.25", "1.25", 1.25, "1.3"}};
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.eingabe);
        MapReferenz ref;
        ref.BitmapFaktorSetzen(f.eingabe);
        EXPECT_EQ(ref.MapBitmapFaktor, f.gesetzt);
        EXPECT_EQ(BitmapFaktorText(f.zahl), f.anzeige);
    }
}

// The scale bar: length and segments by the leading digit of 0.1 · n, drawn alternating red and
// white from 10 pixels off the lower left corner.
TEST(Massstabsleiste, LaengeSegmenteUndZeichnung) {
    struct Fall {
        long n;
        double länge;
        int segmente;
        std::string beschriftung;
    };
    const Fall fälle[] = {
        {7500, 1000, 4, "1 km"},  {3500, 500, 5, "500 m"}, {750, 100, 4, "100 m"},
        {25000, 2000, 4, "2 km"}, {1500, 100, 4, "100 m"}, {45000, 5000, 5, "5 km"},
        {10, 1, 4, "1 m"},        {9, 0, 0, ""},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.n);
        QImage bild(600, 200, QImage::Format_ARGB32);
        bild.fill(Qt::gray);
        const Maßstabsleiste leiste = LinieMaßstab(bild, f.n, QColor(0, 0, 255));
        EXPECT_EQ(leiste.länge, f.länge);
        EXPECT_EQ(leiste.segmente, f.segmente);
        EXPECT_EQ(leiste.beschriftung, f.beschriftung);
        if (f.segmente == 0) {
            EXPECT_EQ(bild.pixelColor(12, 196), QColor(Qt::gray));
            continue;
        }
        // A segment covers the ground length / segments at 1:n: 2.54 cm of paper are 72 pixels.
        // (MeterNachPunkte rounds to whole pixels before the division by n.)
        EXPECT_NEAR(leiste.segmentPixel, f.länge / f.segmente / f.n / 0.0254 * 72,
                    0.5 / f.n + 1e-9);
        const int mitteY = 200 - 10 - 3;
        for (int i = 0; i < f.segmente; ++i) {
            const int x = 10 + static_cast<int>((i + 0.5) * leiste.segmentPixel);
            EXPECT_EQ(bild.pixelColor(x, mitteY),
                      i % 2 == 0 ? QColor(255, 0, 0) : QColor(Qt::white))
                << "Segment " << i;
        }
        bool textfarbe = false;
        for (int y = 0; y < 200 - 16 && !textfarbe; ++y)
            for (int x = 0; x < 120 && !textfarbe; ++x)
                textfarbe = bild.pixelColor(x, y).blue() > 200 && bild.pixelColor(x, y).red() < 60;
        EXPECT_TRUE(textfarbe) << "keine Beschriftung in der Textfarbe";
    }
    // The colour values keep red in the low byte: 255 is red, the label's 0xff0000 blue.
    EXPECT_EQ(FarbeAusWert(255), QColor(255, 0, 0));
    EXPECT_EQ(MaßstabsleisteTextfarbe, QColor(0, 0, 255));
}

TEST(EpsgListe, ZeilenUndCodes) {
    const std::string text = "* Kopf\r\n"
                             "\r\n"
                             "ETRS89_UTM32 = 25832_32\r\n"
                             "   \r\n"
                             "DE_DHDN_3GK3\t=31467_3\r\n"
                             "ohne Code\n"
                             "kommentiert=1 * nicht\n"
                             "ETRS89_UTM33=25833_33";
    const std::vector<EpsgEintrag> liste = EpsgListe(text);
    ASSERT_EQ(liste.size(), 4u);
    const EpsgEintrag erwartet[] = {{"ETRS89_UTM32", "25832_32"},
                                    {"DE_DHDN_3GK3", "31467_3"},
                                    {"ohne Code", ""},
                                    {"ETRS89_UTM33", "25833_33"}};
    for (std::size_t i = 0; i < liste.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(liste[i].text, erwartet[i].text);
        EXPECT_EQ(liste[i].code, erwartet[i].code);
    }
    // The file of the installation: its first entry is the one preselected.
    const auto installiert =
        EpsgListeLesen(std::filesystem::path(FLURIX_QUELLEN) / "config" / "ALKIS_EPSG.dat");
    ASSERT_FALSE(installiert.empty());
    EXPECT_EQ(installiert.front().text, "ETRS89_UTM32");
    EXPECT_EQ(installiert.front().code, "25832_32");
    EXPECT_TRUE(EpsgListeLesen("/gibt/es/nicht.dat").empty());
}

} // namespace
} // namespace flurix::karte
