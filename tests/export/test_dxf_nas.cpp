// The DXF export of a NAS drawing: a hand-written GEOgraf file with every record kind drawn byte for
// byte, read by ezdxf (strict, dxfcheck.py) and GDAL; the entities per layer with each option; the
// protocol; the empty and the missing input; arcs, POS rings, hatch lines and layers one by one.

#include "export/dxf_nas.hpp"

#include "core/cp1252.hpp"
#include "core/oberflaeche_skript.hpp"
#include "export/dxf_schreiber.hpp"
#include "export/grafbat_leser.hpp"
#include "gemeinsam/dxf_pruefung.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>


namespace flurix::ausgabe {
namespace {

namespace fs = std::filesystem;
using Zahlen = std::map<std::string, int>;

fs::path Daten(std::string_view name) { return test::Testdaten() / "export" / "dxf_nas" / name; }

// One entity of the ENTITIES sections as the file has it (VERTEX and SEQEND belong to their
// POLYLINE and are not listed).
struct Objekt {
    std::string art, layer, block, stil;
};

std::vector<Objekt> Objekte(const std::string& bytes) {
    std::vector<std::string> z;
    for (std::size_t a = 0; a < bytes.size();) {
        const auto e = bytes.find("\r\n", a);
        z.push_back(bytes.substr(a, e - a));
        a = e == std::string::npos ? bytes.size() : e + 2;
    }
    std::vector<Objekt> objekte;
    bool inEntities = false;
    for (std::size_t i = 0; i + 1 < z.size(); i += 2) {
        const std::string& code = z[i];
        const std::string& wert = z[i + 1];
        if (code == "  2" && wert == "ENTITIES")
            inEntities = true;
        else if (code == "  0" && wert == "ENDSEC")
            inEntities = false;
        else if (inEntities && code == "  0" && wert != "VERTEX" && wert != "SEQEND")
            objekte.push_back({wert, "", "", ""});
        else if (inEntities && !objekte.empty() && code == "  8" && objekte.back().layer.empty())
            objekte.back().layer = wert;
        else if (inEntities && !objekte.empty() && code == "  2")
            objekte.back().block = wert;
        else if (inEntities && !objekte.empty() && code == "  7")
            objekte.back().stil = wert;
    }
    return objekte;
}

Zahlen JeLayer(const std::vector<Objekt>& objekte) {
    Zahlen zahlen;
    for (const auto& o : objekte)
        ++zahlen[o.layer];
    return zahlen;
}

// The entities per layer as ezdxf counts them in the model space.
Zahlen EzdxfJeLayer(const fs::path& datei) {
    const auto lauf = test::Ausführen(
        "/usr/bin/python3 -c 'import sys, ezdxf, collections; "
        "c = collections.Counter(e.dxf.layer for e in ezdxf.readfile(sys.argv[1]).modelspace()); "
        "[print(k, v) for k, v in sorted(c.items())]' " +
        test::Wort(datei) + " 2>&1");
    EXPECT_EQ(lauf.status, 0) << lauf.ausgabe;
    Zahlen zahlen;
    std::istringstream ein(lauf.ausgabe);
    std::string layer;
    int n = 0;
    while (ein >> layer >> n)
        zahlen[layer] = n;
    return zahlen;
}

// What the hand-written file gives with every option on.
const Zahlen AlleOptionen = {
    {"FLURSTUECKE", 2},       {"FLURGRENZE", 1},           {"BOV-GRENZEN", 1},
    {"AMTL_GEBAEUDE", 1},     {"AMTLTXT_FLURSTUECK", 3},   {"TATS_NUTZUNG_ALB", 2},
    {"NICHTAMTL_GEBAEUDE", 1}, {"AMTLPKT_GRENZP", 4},      {"AMTLPKT_AUFNP", 1},
    {"AMTLPKT_GEBAEUDE", 1},  {"AMTLTXT_GRENZP", 4},       {"AMTLTXT_AUFNP", 1},
    {"AMTLTXT_GEBAEUDE", 1},  {"SACHDATEN_PKT", 2},        {"FLURSTUECKE_POLYLINE", 1},
    {"GEBAEUDE_POLYLINE", 3}, {"GEBAEUDE_SCHRAFFUR", 10},
};

struct Lauf {
    Ergebnis ergebnis;
    DxfNasZählung zählung;
    SkriptOberfläche ui;
};

void Exportieren(Lauf& lauf, const fs::path& out, const fs::path& ziel, const DxfNasOptionen& optionen) {
    lauf.ergebnis = DXFExport(out, ziel, optionen, lauf.ui, &lauf.zählung);
}

DxfNasOptionen Alle(const fs::path& arbeit) {
    return {.schraffur = true, .punktnummern = true, .sachdaten = true, .calibri = false,
            .arbeitsverzeichnis = arbeit,
            .protokoll = {}};
}

TEST(DxfNasExport, AlleSatzartenGoldenUndGelesen) {
    test::TempOrdner ordner;
    fs::create_directory(ordner / "arbeit");
    const fs::path ziel = ordner / "karte.dxf";
    Lauf lauf;
    Exportieren(lauf, Daten("alle_satzarten_dxf.out"), ziel, Alle(ordner / "arbeit"));
    ASSERT_TRUE(lauf.ergebnis) << lauf.ergebnis.Meldung();
    const std::string bytes = test::DateiLesen(ziel);
    EXPECT_EQ(test::GoldenVergleich(bytes, Daten("alle_satzarten.dxf")), "");

    const auto objekte = Objekte(bytes);
    EXPECT_EQ(JeLayer(objekte), AlleOptionen);
    // The boundary points by their mark: 1100, 9500, none given, no DA line; then the control point.
    std::vector<std::string> blöcke;
    for (const auto& o : objekte)
        if (o.art == "INSERT")
            blöcke.push_back(o.block);
    EXPECT_EQ(blöcke, (std::vector<std::string>{"S3125", "S3005", "S3073", "S3073", "S4"}));

    EXPECT_EQ(lauf.zählung.punkte, 7u);
    EXPECT_EQ(lauf.zählung.linien, 5u);
    EXPECT_EQ(lauf.zählung.texte, 3u);
    EXPECT_EQ(lauf.zählung.polylinien, 4u);
    EXPECT_EQ(lauf.zählung.schraffuren, 1u);
    EXPECT_EQ(lauf.zählung.übergangen, 5u);
    const std::vector<std::string> protokoll = {
        "Zeile 16: PK8 ohne lesbare Koordinaten, übergangen",
        "Zeile 23: kein Satz (erwartet zwei Großbuchstaben, Nummer, \": \")",
        "TX-Fehler: Kein Text zu TE vorhanden!",
        "SCH-Fehler: Keine POS zu SCH vorhanden!",
        "LI-Fehler: Punkt 99 zu LI6 nicht vorhanden!",
        "DXF-Export: 7 Punkte, 5 Linien, 3 Texte, 4 Polylines, 1 Schraffuren exportiert...",
        ", DXF-Export nach \"" + ziel.string() + "\" komplett...",
    };
    EXPECT_EQ(lauf.ui.Texte(Ereignis::Art::Protokoll), protokoll);
    EXPECT_EQ(lauf.ui.LetzterStatus(2), "DXF exportiert nach \"" + ziel.string() + "\"...");
    EXPECT_TRUE(lauf.ui.Meldungen().empty());
    EXPECT_EQ(lauf.ui.LetzterFortschritt(), 37);
    // The work database is gone.
    EXPECT_TRUE(fs::is_empty(ordner / "arbeit"));

    if (test::EzdxfDa()) {
        const fs::path kopie = test::StrikteKopie(ziel);
        const auto prüfung = test::Ausführen("/usr/bin/python3 " FLURIX_GEMEINSAM "/tools/dxfcheck.py " +
                                             test::Wort(kopie) + " 2>&1");
        EXPECT_EQ(prüfung.status, 0) << prüfung.ausgabe;
        EXPECT_NE(prüfung.ausgabe.find("TEXT 'Grünland'"), std::string::npos) << prüfung.ausgabe;
        EXPECT_EQ(EzdxfJeLayer(kopie), AlleOptionen);
    }
    if (test::ImSuchpfad("ogrinfo")) {
        // GDAL reads the first ENTITIES section only: the five lines and arcs.
        const auto gdal = test::Ausführen("ogrinfo -ro -al -so " + test::Wort(ziel) + " 2>&1");
        std::smatch treffer;
        ASSERT_TRUE(std::regex_search(gdal.ausgabe, treffer, std::regex("Feature Count: (\\d+)"))) << gdal.ausgabe;
        EXPECT_EQ(treffer[1], "5");
    } else {
        std::printf("ogrinfo fehlt: Prüfung mit GDAL übersprungen\n");
    }
}

// Each option adds its own layers, and nothing else changes.
TEST(DxfNasExport, OptionenFügenIhreLayerHinzu) {
    struct Fall {
        const char* name;
        bool schraffur, punktnummern, sachdaten, calibri;
        std::vector<std::string> ohne; ///< layers of AlleOptionen that are missing
        std::size_t schraffuren;
        const char* stil;
    };
    const Fall fälle[] = {
        {"keine", false, false, false, false,
         {"AMTLTXT_GRENZP", "AMTLTXT_AUFNP", "AMTLTXT_GEBAEUDE", "SACHDATEN_PKT", "GEBAEUDE_SCHRAFFUR"}, 0, "ISO8"},
        {"schraffur", true, false, false, false,
         {"AMTLTXT_GRENZP", "AMTLTXT_AUFNP", "AMTLTXT_GEBAEUDE", "SACHDATEN_PKT"}, 1, "ISO8"},
        {"punktnummern", false, true, false, false, {"SACHDATEN_PKT", "GEBAEUDE_SCHRAFFUR"}, 0, "ISO8"},
        {"sachdaten", false, false, true, false,
         {"AMTLTXT_GRENZP", "AMTLTXT_AUFNP", "AMTLTXT_GEBAEUDE", "GEBAEUDE_SCHRAFFUR"}, 0, "ISO8"},
        {"calibri", true, true, true, true, {}, 1, "Calibri"},
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(f.name);
        test::TempOrdner ordner;
        const DxfNasOptionen optionen{.schraffur = f.schraffur, .punktnummern = f.punktnummern,
                                      .sachdaten = f.sachdaten, .calibri = f.calibri,
                                      .arbeitsverzeichnis = ordner.pfad(),
                                      .protokoll = {}};
        Lauf lauf;
        Exportieren(lauf, Daten("alle_satzarten_dxf.out"), ordner / "k.dxf", optionen);
        ASSERT_TRUE(lauf.ergebnis) << lauf.ergebnis.Meldung();
        Zahlen erwartet = AlleOptionen;
        for (const auto& layer : f.ohne)
            erwartet.erase(layer);
        const auto objekte = Objekte(test::DateiLesen(ordner / "k.dxf"));
        EXPECT_EQ(JeLayer(objekte), erwartet);
        for (const auto& o : objekte) {
            if (o.art == "TEXT") {
                EXPECT_EQ(o.stil, f.stil) << o.layer;
            }
        }
        EXPECT_EQ(lauf.zählung.schraffuren, f.schraffuren);
        EXPECT_EQ(lauf.zählung.punkte, 7u);
        EXPECT_EQ(lauf.zählung.polylinien, 4u);
    }
}

// A file of comments alone is the writer's skeleton with its four empty ENTITIES sections.
TEST(DxfNasExport, NurKommentareGibtLeeresGerüst) {
    test::TempOrdner ordner;
    Lauf lauf;
    Exportieren(lauf, Daten("nur_kommentare_dxf.out"), ordner / "leer.dxf", {.arbeitsverzeichnis = ordner.pfad(), .protokoll = {}});
    ASSERT_TRUE(lauf.ergebnis) << lauf.ergebnis.Meldung();
    {
        DxfSchreiber gerüst(ordner / "gerüst.dxf");
        gerüst.Anfang(0, 0, 0, 0);
        for (int i = 0; i < 3; ++i)
            gerüst.AbschnittWechseln();
        gerüst.Abschließen();
    }
    const std::string bytes = test::DateiLesen(ordner / "leer.dxf");
    EXPECT_EQ(bytes, test::DateiLesen(ordner / "gerüst.dxf"));
    EXPECT_TRUE(Objekte(bytes).empty());
    EXPECT_EQ(lauf.ui.Texte(Ereignis::Art::Protokoll).front(),
              "DXF-Export: 0 Punkte, 0 Linien, 0 Texte, 0 Polylines, 0 Schraffuren exportiert...");
}

// A missing file: the message shown and returned, the older drawing left as it was, no work
// database left behind.
TEST(DxfNasExport, FehlendeDateiGibtFehlerUndKeinZiel) {
    test::TempOrdner ordner;
    fs::create_directory(ordner / "arbeit");
    test::DateiSchreiben(ordner / "alt.dxf", "alt");
    const fs::path fehlt = ordner / "fehlt_dxf.out";
    for (const char* ziel : {"neu.dxf", "alt.dxf"}) {
        SCOPED_TRACE(ziel);
        Lauf lauf;
        Exportieren(lauf, fehlt, ordner / ziel, {.arbeitsverzeichnis = ordner / "arbeit", .protokoll = {}});
        EXPECT_EQ(lauf.ergebnis.status(), Ergebnis::Status::Fehler);
        const std::string meldung =
            "Error DXF-Export: Die GEOgraf-Datei " + fehlt.string() + " kann nicht geöffnet werden!";
        EXPECT_EQ(lauf.ergebnis.Meldung(), meldung);
        EXPECT_EQ(lauf.ui.Meldungen(), std::vector<std::string>{meldung});
        ASSERT_EQ(lauf.ui.Ereignisse().size(), 1u);
        EXPECT_EQ(lauf.ui.Ereignisse()[0].titel, "Flurix");
        EXPECT_EQ(lauf.ui.Stile(), std::vector<Stil>{Stil::Fehler});
        EXPECT_TRUE(fs::is_empty(ordner / "arbeit"));
    }
    EXPECT_FALSE(fs::exists(ordner / "neu.dxf"));
    EXPECT_EQ(test::DateiLesen(ordner / "alt.dxf"), "alt");
}

// Quarter and half circles both ways, near the origin and at Gauss-Krüger coordinates.
TEST(DxfNasBogen, MittelpunktUndWinkelAusEndpunkten) {
    struct Fall {
        detail::DxfPunkt a, b;
        double radius;
        int richtung;
        double x, y, start, ende;
    };
    const Fall fälle[] = {
        {{1, 0}, {0, 1}, 1, 1, 0, 0, 0, 90},
        {{1, 0}, {0, 1}, 1, -1, 1, 1, 180, 270},
        {{0, 1}, {1, 0}, 1, -1, 0, 0, 0, 90},
        {{350010, 5600000}, {350000, 5600010}, 10, 1, 350000, 5600000, 0, 90},
        {{350000, 5600010}, {350010, 5600000}, 10, 1, 350010, 5600010, 180, 270},
        {{-1, 0}, {1, 0}, 1, 1, 0, 0, 180, 0},
        {{7, 5}, {5, 7}, 2, 1, 5, 5, 0, 90},
        {{5, 7}, {7, 5}, 2, -1, 5, 5, 0, 90},
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(::testing::Message() << f.a.x << "," << f.a.y << " → " << f.b.x << "," << f.b.y << " " << f.richtung);
        const auto b = detail::BogenAusEndpunkten(f.a, f.b, f.radius, f.richtung);
        EXPECT_NEAR(b.x, f.x, 1e-6);
        EXPECT_NEAR(b.y, f.y, 1e-6);
        EXPECT_EQ(b.radius, f.radius);
        EXPECT_NEAR(b.start, f.start, 1e-6);
        EXPECT_NEAR(b.ende, f.ende, 1e-6);
        // Both end points lie on the circle.
        EXPECT_NEAR(std::hypot(f.a.x - b.x, f.a.y - b.y), f.radius, 1e-6);
        EXPECT_NEAR(std::hypot(f.b.x - b.x, f.b.y - b.y), f.radius, 1e-6);
    }
}

TEST(DxfNasPos, RingeAusDemText) {
    struct Fall {
        const char* pos;
        std::vector<std::size_t> punkte; ///< points per ring
    };
    const Fall fälle[] = {
        {"1 2 3 4 5 6", {3}},
        {"1 2 3 4 5 6 1 2;7 8  9 10 11 12", {4, 3}},
        {"1 2 3 4", {}},                  // two points are no ring
        {"1 2 3 4 5 6 7", {3}},           // the odd last number goes
        {"1 2 x 4 5 6 7 8", {3}},         // "x" is passed over: 1 2, 4 5, 6 7
        {"", {}},
        {";;1 2 3 4 5 6;", {3}},
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(f.pos);
        std::vector<std::size_t> punkte;
        for (const auto& ring : detail::PosRinge(f.pos))
            punkte.push_back(ring.size());
        EXPECT_EQ(punkte, f.punkte);
    }
    const auto ringe = detail::PosRinge("350004.5 5600004.25 350012.5 5600004.5 350012.5 5600012.5");
    ASSERT_EQ(ringe.size(), 1u);
    EXPECT_EQ(ringe[0][0].x, 350004.5);
    EXPECT_EQ(ringe[0][0].y, 5600004.25);
}

// A square of 8 m with a hole of 2 m, hatched 1 m apart: 8 lines of 8 m, two of them broken by
// the hole; the lines run in the direction of the angle and lie on whole metres.
TEST(DxfNasSchraffur, LinienImUmrissOhneLoch) {
    const std::vector<detail::DxfRing> quadrat = {
        {{350004.5, 5600004.5}, {350012.5, 5600004.5}, {350012.5, 5600012.5}, {350004.5, 5600012.5}},
        {{350007.5, 5600007.5}, {350007.5, 5600009.5}, {350009.5, 5600009.5}, {350009.5, 5600007.5}},
    };
    struct Fall {
        double abstand, winkel;
        std::size_t strecken;
        double länge;
    };
    const Fall fälle[] = {
        {1, 0, 10, 60},   {1, 100, 10, 60}, {1, 200, 10, 60}, {2, 0, 5, 30},
        {0, 0, 0, 0},     {-1, 0, 0, 0},    {0.0001, 0, 0, 0},   // more lines than allowed
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(::testing::Message() << f.abstand << " m, " << f.winkel << " gon");
        const auto strecken = detail::Schraffurlinien(quadrat, f.abstand, f.winkel);
        EXPECT_EQ(strecken.size(), f.strecken);
        double länge = 0;
        const bool waagerecht = std::fmod(f.winkel, 200.0) == 0;
        for (const auto& s : strecken) {
            länge += std::hypot(s.b.x - s.a.x, s.b.y - s.a.y);
            // The direction, and the line's place on a multiple of the Abstand.
            const double quer = waagerecht ? s.a.y : s.a.x;
            EXPECT_NEAR(waagerecht ? s.b.y : s.b.x, quer, 0.0015);
            EXPECT_NEAR(std::fmod(quer, f.abstand), 0.0, 0.0015);
        }
        EXPECT_NEAR(länge, f.länge, 0.01);
    }
}

TEST(NasDxfLayer, ArtUndEbeneVerfeinern) {
    struct Fall {
        const char* kennung;
        const char* ebeneArt;
        const char* layer;
    };
    const Fall fälle[] = {
        {"LI", "1.1", "FLURSTUECKE"},      {"LI", "1.3", "FLURGRENZE"},
        {"LI", "1.4", "GEMARKUNGSGRENZE"}, {"LI", "1.5", "GEMEINDEGRENZE"},
        {"LI", "1.6", "KREISGRENZE"},      {"LI", "1.7", "SONST_BESONDERE_FLSTGRENZE"},
        {"LI", "1.9", "FLURSTUECKE"},      {"LI", "2.1", "BOV-GRENZEN"},
        {"SCH", "1.1", "FLURSTUECKE"},     {"TE", "1.1", "AMTLTXT_FLURSTUECK"},
        {"TE", "2.233", "AMTLTXT_FLURSTUECK"}, {"PK", "11.2", "AMTLPKT_GEBAEUDE"},
        {"LI", "11.1", "AMTL_GEBAEUDE"},   {"PK", "52.1", "AMTLPKT_GRENZP"},
        {"PK", "51.3", "AMTLPKT_AUFNP"},   {"TE", "81.1401", "BODENSCHAETZUNG"},
        {"LI", "81.251", "TOPOGRAFIE_GELAENDE"}, {"TE", "84.1", "NICHTAMTL_GEBAEUDE"},
        {"LI", "12.1", "0"},               {"PK", "", "0"},
        {"LI", "x.1", "0"},
    };
    for (const Fall& f : fälle) {
        SCOPED_TRACE(std::string(f.kennung) + " " + f.ebeneArt);
        EXPECT_EQ(NasDxfLayer(f.kennung, f.ebeneArt), f.layer);
    }
    EXPECT_EQ(NasDxfLinientyp("GEMARKUNGSGRENZE"), "GEMARKUNGGRENZE");
    EXPECT_EQ(NasDxfLinientyp("BOV-GRENZEN"), "BOVGRENZE");
    EXPECT_EQ(NasDxfLinientyp("AMTLTXT_FLURSTUECK"), "CONTINUOUS");
}

// Kinds of three letters are records like those of two: the areas of the drawing and their outlines.
TEST(GrafbatLeser, DreiBuchstabenSindSätze) {
    std::string problem;
    const auto sch = GrafbatZeileLesen("SCH12: ,11.1,1,0.5,50", 3, &problem);
    ASSERT_TRUE(sch.has_value()) << problem;
    EXPECT_EQ(sch->kennung, "SCH");
    EXPECT_EQ(sch->nummer, 12);
    EXPECT_EQ(sch->felder, (std::vector<std::string>{"", "11.1", "1", "0.5", "50"}));
    const auto pos = GrafbatZeileLesen("  POS12: 1 2 3 4;5 6", 4, &problem);
    ASSERT_TRUE(pos.has_value()) << problem;
    EXPECT_TRUE(pos->unterSatz);
    EXPECT_EQ(pos->kennung, "POS");
    EXPECT_EQ(pos->text, "1 2 3 4;5 6");
    for (const char* schlecht : {"SCHX1: x", "SCH: x", "ABCD1: x", "Sch1: x"}) {
        SCOPED_TRACE(schlecht);
        problem.clear();
        EXPECT_FALSE(GrafbatZeileLesen(schlecht, 7, &problem).has_value());
        EXPECT_EQ(problem, "Zeile 7: kein Satz (erwartet zwei Großbuchstaben, Nummer, \": \")");
    }
}

} // namespace
} // namespace flurix::ausgabe
