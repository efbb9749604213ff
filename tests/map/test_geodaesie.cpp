// The map's geodesy against PROJ (cs2cs) on a grid across Germany, its round trips, and the
// cases of the angle texts, the zones and the paper arithmetic that have broken conversions.

#include "map/geodaesie.hpp"

#include "gemeinsam/testumgebung.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>
#include <vector>

namespace flurix::karte {
namespace {

constexpr double Millimeter = 0.001;

// A point of the grid in the strip of central meridian L0.
struct Gitterpunkt {
    double breite, länge; // degrees
    int L0;
    bool imStreifen() const { return std::fabs(länge - L0) <= 3.0; }
};

// 47° to 55.5° N and 5° to 15.5° E in steps of half a degree, each point in strip 32 and in strip
// 33 as long as it lies at most 3° outside that strip.
std::vector<Gitterpunkt> Gitter() {
    std::vector<Gitterpunkt> gitter;
    for (double breite = 47.0; breite <= 55.5; breite += 0.5)
        for (double länge = 5.0; länge <= 15.5; länge += 0.5)
            for (int L0 : {9, 15})
                if (std::fabs(länge - L0) <= 6.0)
                    gitter.push_back({breite, länge, L0});
    return gitter;
}

double Bogen(double grad) { return grad * Pi / 180.0; }

// The largest difference of the points inside and outside their strips.
struct Abweichung {
    double innen = 0, außen = 0;
    void Nehmen(const Gitterpunkt& p, double d) {
        double& größte = p.imStreifen() ? innen : außen;
        größte = std::max(größte, d);
    }
};

// PROJ as the judge. The transverse Mercator of a strip depends on the longitude only through its
// distance from the central meridian, so every point goes to PROJ as a strip-32 point shifted by
// L0 − 9: one run of cs2cs converts the whole grid. Our inverse is judged on PROJ's forward
// result: it must lead back to the grid point.
TEST(Geodaesie, StimmtMitProjUeberein) {
    if (!test::ImSuchpfad("cs2cs"))
        GTEST_SKIP() << "cs2cs (PROJ) ist nicht installiert: Vergleich übersprungen";
    const std::vector<Gitterpunkt> gitter = Gitter();
    test::TempOrdner ordner;
    std::string eingabe;
    char zeile[64];
    for (const auto& p : gitter) {
        std::snprintf(zeile, sizeof zeile, "%.1f %.1f\n", p.breite, p.länge - (p.L0 - 9));
        eingabe += zeile;
    }
    test::DateiSchreiben(ordner / "gitter.txt", eingabe);
    const auto lauf = test::Ausführen("cs2cs -f %.6f EPSG:4258 EPSG:25832 < " +
                                      test::Wort(ordner / "gitter.txt"));
    ASSERT_EQ(lauf.status, 0);

    std::istringstream proj(lauf.ausgabe);
    const Ellipsoid& grs = Grs1980();
    const auto C = MeridianKoeffizienten(grs.a, grs.e);
    Abweichung reihe, vorwärts, rückwärts;
    for (const auto& p : gitter) {
        SCOPED_TRACE(std::to_string(p.breite) + " " + std::to_string(p.länge) + " L0 " +
                     std::to_string(p.L0));
        double ost = 0, nord = 0, höhe = 0;
        ASSERT_TRUE(proj >> ost >> nord >> höhe);
        const auto [y, x] = GeographischBogenNachETRS(Bogen(p.breite), Bogen(p.länge), p.L0);
        vorwärts.Nehmen(p, std::hypot(y - ost, x - nord));
        // The series alone, before the rounding to millimetres.
        const auto [n, o] =
            TransverseMercatorVorwärts(Bogen(p.breite), Bogen(p.länge), grs.a, grs.e, C, UtmMaßstab,
                                       UtmRechtswertOffset, p.L0);
        reihe.Nehmen(p, std::hypot(o - ost, n - nord));

        KoordinatenSatz satz;
        satz.Wert1 = ost;
        satz.Wert2 = nord;
        const KoordinatenSatz geo = ETRSNachGeographisch(satz, p.L0);
        const double dPhi = Bogen(geo.Wert1 - p.breite);
        const double dLambda = Bogen(geo.Wert2 - p.länge) * std::cos(Bogen(p.breite));
        rückwärts.Nehmen(p, GrsHalbachse * std::hypot(dPhi, dLambda));
    }
    std::printf(
        "Abweichung von PROJ, %zu Punkte: Reihe innen %.6f m, außen %.6f m; vorwärts "
        "(auf mm gerundet) innen %.6f m, außen %.6f m; rückwärts innen %.6f m, außen %.6f m\n",
        gitter.size(), reihe.innen, reihe.außen, vorwärts.innen, vorwärts.außen, rückwärts.innen,
        rückwärts.außen);
    // Inside the strips the series agree with PROJ to the millimetre (the forward result itself
    // is rounded to it); outside they are only reported.
    EXPECT_LT(reihe.innen, Millimeter);
    EXPECT_LT(vorwärts.innen, Millimeter);
    EXPECT_LT(rückwärts.innen, Millimeter);
}

TEST(Geodaesie, HinUndZurueckImStreifenAufDenMillimeter) {
    for (const auto& p : Gitter()) {
        if (!p.imStreifen())
            continue;
        SCOPED_TRACE(std::to_string(p.breite) + " " + std::to_string(p.länge) + " L0 " +
                     std::to_string(p.L0));
        KoordinatenSatz metrisch;
        const auto [y, x] = GeographischBogenNachETRS(Bogen(p.breite), Bogen(p.länge), p.L0);
        metrisch.Wert1 = y + 0.1234; // off the millimetre grid, so that the rounding is tried
        metrisch.Wert2 = x - 0.4321;
        const KoordinatenSatz zurück =
            GeographischNachETRS(ETRSNachGeographisch(metrisch, p.L0), p.L0);
        EXPECT_LT(std::hypot(zurück.Wert1 - metrisch.Wert1, zurück.Wert2 - metrisch.Wert2),
                  Millimeter);
    }
}

TEST(Geodaesie, MittelmeridianGibtGenauL0) {
    for (int L0 : {3, 9, 15, 21})
        for (double nord : {5200000.0, 5816652.006, 6100000.0}) {
            SCOPED_TRACE(std::to_string(L0) + " " + std::to_string(nord));
            KoordinatenSatz satz;
            satz.Wert1 = 500000;
            satz.Wert2 = nord;
            EXPECT_EQ(ETRSNachGeographisch(satz, L0).Wert2, static_cast<double>(L0));
        }
}

TEST(Geodaesie, L0NullNimmtDenStreifenDesEpsgCodes) {
    struct Fall {
        std::string_view epsg;
        double länge;
    };
    const Fall fälle[] = {{"25832", 9}, {"25833", 15}, {"31467", 0}, {"", 0}};
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.epsg);
        KoordinatenSatz satz{"P1", "C7", 500000, 5800000, 0};
        const KoordinatenSatz geo = ETRSNachGeographisch(satz, 0, f.epsg);
        EXPECT_EQ(geo.Wert2, f.länge);
        EXPECT_EQ(geo.Punkt, "P1");
        EXPECT_EQ(geo.Code, "C7");
        EXPECT_EQ(geo.Höhe, 75.0); // 0 counts as no height
    }
}

TEST(Geodaesie, GradTextWieDezimalgrad) {
    struct Fall {
        std::string_view text;
        double grad;
    };
    const Fall fälle[] = {
        {"52.5", 52.5},
        {"52°30'0\"", 52.5},
        {"52°30'", 52.5},
        {"52 30", 52.5},
        {"52°  30'  0\"", 52.5},
        {"52\xB0"
         "30'0\"",
         52.5}, // the degree sign as one Windows-1252 byte
        {"13°24'36\"", 13.41},
        {"0°0'36\"", 0.01},
        {"52\xC2"
         " 30",
         52.5}, // a stray lead byte stays in its field and costs no other
        {"", 0},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(std::string(f.text));
        EXPECT_DOUBLE_EQ(GradTextNachBogen(f.text), f.grad * Pi / 180.0);
    }
    // The plain decimal and its degree-minute-second text give the very same radians.
    EXPECT_EQ(GradTextNachBogen("52.5"), GradTextNachBogen("52°30'0\""));
}

TEST(Geodaesie, BogenAlsGradText) {
    struct Fall {
        std::string_view ein;
        std::string_view aus;
    };
    const Fall fälle[] = {
        {"52°30'15.5\"", "52°30'15.50000\""},
        {"9", "9°00'00.00000\""},
        {"7°5'3.25\"", "7°05'03.25000\""},
        {"52°30'59.999999\"", "52°31'00.00000\""}, // rounded seconds carry into the minutes
        {"52°59'59.999999\"", "53°00'00.00000\""},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(std::string(f.ein));
        EXPECT_EQ(BogenNachGradText(GradTextNachBogen(f.ein)), f.aus);
    }
}

TEST(Geodaesie, ZoneAusRechtswert) {
    struct Fall {
        std::string_view y;
        std::string_view ellipsoid;
        int L0;
        bool gültig;
    };
    const Fall fälle[] = {
        {"1500000", "GRS1980", 3, true},     {"2456789", "GRS1980", 9, true},
        {" 3456789.5", "GRS1980", 15, true}, {"4100000", "WGS1984", 21, true},
        {"5123456", "GRS1980", 0, false},    {"0123456", "GRS1980", 0, false},
        {"", "GRS1980", 0, false},           {"3456789", "Bessel", 9, true},
        {"5456789", "Krassowski", 15, true}, {"3456789", "Hayford", 0, false},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(std::string(f.y) + " " + std::string(f.ellipsoid));
        const Zone zone = ZoneAusRechtswert(f.y, f.ellipsoid);
        EXPECT_EQ(static_cast<bool>(zone), f.gültig);
        EXPECT_EQ(zone.L0, f.L0);
        EXPECT_EQ(zone.meldung, f.gültig ? "" : "Zone ungültig! ");
    }
}

TEST(Geodaesie, StreifenAusDerStellenzahl) {
    auto geo = [](double y, int L0) {
        KoordinatenSatz s;
        s.Wert1 = y;
        s.Wert2 = 5800000.25;
        return ETRSNachGeographisch(s, L0);
    };
    struct Fall {
        double y;
        KoordinatenSatz erwartet;
        std::string_view meldung;
    };
    const Fall fälle[] = {
        {456789.5, geo(456789.5, 15), ""},  // 6 digits: strip 33 as it stands
        {3456789.5, geo(456789.5, 15), ""}, // zone digit 3 before the easting
        {2456789.5, geo(456789.5, 9), ""},
        {32456789.5, geo(456789.5, 9), ""}, // "3" and the zone digit 2
        {33456789.5, geo(456789.5, 15), ""},
        {5456789.5, geo(456789.5, 0), "Zone ungültig! "},
    };
    for (const auto& f : fälle) {
        SCOPED_TRACE(std::to_string(f.y));
        KoordinatenSatz satz;
        satz.Wert1 = f.y;
        satz.Wert2 = 5800000.25;
        const ZonenUmrechnung u = ETRSNachGeographischAuto(satz);
        EXPECT_EQ(u.meldung, f.meldung);
        EXPECT_EQ(u.satz.Wert1, f.erwartet.Wert1);
        EXPECT_EQ(u.satz.Wert2, f.erwartet.Wert2);
    }
}

TEST(Geodaesie, PapierUndPunkte) {
    struct Fall {
        double punkte, meter;
    };
    const Fall fälle[] = {{72, 0.0254}, {7200, 2.54}, {0, 0}, {283, 0.0998361111111111}};
    for (const auto& f : fälle) {
        SCOPED_TRACE(f.punkte);
        EXPECT_DOUBLE_EQ(PunkteNachMeter(f.punkte), f.meter);
        EXPECT_EQ(MeterNachPunkte(f.meter), f.punkte);
    }
    EXPECT_EQ(MeterNachPunkte(0.1), 283); // 10 cm of paper: 283.46 pixels, rounded
}

} // namespace
} // namespace flurix::karte
