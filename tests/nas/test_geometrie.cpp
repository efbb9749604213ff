// Arcs to chords against their circle, rings with arcs, the point list and box of rings. The
// plain text forms of the geometry module are in test_umformungen.cpp.

#include "nas/geometrie.hpp"

#include "core/oberflaeche_skript.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <numbers>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace flurix::nas {
namespace {

constexpr double pi = std::numbers::pi;

// ---- helpers of the tests: their own reading and writing of numbers ----

std::string Text(double wert, int stellen) {
    std::array<char, 64> puffer{};
    return std::string(puffer.data(), std::to_chars(puffer.data(), puffer.data() + puffer.size(), wert,
                                                    std::chars_format::fixed, stellen).ptr);
}

/// The points of a point list "x y;x y"; every point must be two numbers.
std::vector<Punkt> Punkte(std::string liste) {
    std::vector<Punkt> punkte;
    const auto paare = std::count(liste.begin(), liste.end(), ';') + 1;
    std::replace(liste.begin(), liste.end(), ';', ' ');
    std::istringstream zahlen(liste);
    for (Punkt p; zahlen >> p.x >> p.y;)
        punkte.push_back(p);
    EXPECT_TRUE(zahlen.eof() && std::ssize(punkte) == paare) << liste;
    return punkte;
}

double Abstand(const Punkt& a, const Punkt& b) { return std::hypot(a.x - b.x, a.y - b.y); }

// ---- arcs to chords ----

/// An arc made from its circle: start angle, angle swept (negative: clockwise), and where on the
/// arc the middle point lies (as a share of the sweep).
struct Bogen {
    const char* name;
    Punkt mitte;
    double radius;
    double startGrad;
    double bogenGrad;
    double anteilB;
    double pfeilhöhe;

    Punkt Auf(double grad) const {
        const double w = grad * pi / 180;
        return {mitte.x + radius * std::cos(w), mitte.y + radius * std::sin(w)};
    }
    Punkt A() const { return Auf(startGrad); }
    Punkt B() const { return Auf(startGrad + anteilB * bogenGrad); }
    Punkt C() const { return Auf(startGrad + bogenGrad); }
    std::string CText() const { return Text(C().x, 7) + " " + Text(C().y, 7); }
    std::string Text6() const {
        return Text(A().x, 7) + " " + Text(A().y, 7) + " " + Text(B().x, 7) + " " + Text(B().y, 7) +
               " " + CText();
    }
};

const Bogen bögen[] = {
    {"Viertel links herum", {389000, 5819000}, 25, 10, 90, 0.5, 0.01},
    {"Viertel rechts herum", {389000, 5819000}, 25, 100, -90, 0.3, 0.01},
    {"Dreiviertel", {0, 0}, 3, -45, 270, 0.6, 0.01},
    {"200 Grad rechts herum, feine Sehnen", {412345.678, 5712345.678}, 100, 170, -200, 0.5, 0.0001},
    {"flacher Bogen großer Radius", {389000, 5819000}, 1000, 80, 5, 0.5, 0.01},
    {"Halbkreis grobe Sehnen", {10, 20}, 0.5, 0, 180, 0.5, 0.2},
    {"rechts herum über die Richtung 180 Grad", {-50, 70}, 7, -170, -40, 0.5, 0.01},
};

TEST(BogenZuSehnen, PunkteAufDemKreisPfeilhöheEingehaltenEndeIstC) {
    for (const Bogen& b : bögen) {
        SCOPED_TRACE(b.name);
        const std::string liste = BogenZuSehnen(b.Text6(), b.pfeilhöhe);
        ASSERT_FALSE(liste.empty());
        const std::vector<Punkt> punkte = Punkte(liste);
        ASSERT_GE(punkte.size(), 2U);

        // Starts at A, ends with C exactly as written in the arc.
        EXPECT_LT(Abstand(punkte.front(), b.A()), 1e-4);
        EXPECT_TRUE(liste.ends_with(";" + b.CText())) << liste.substr(liste.rfind(';'));

        double gedreht = 0;
        for (std::size_t i = 0; i < punkte.size(); ++i) {
            EXPECT_NEAR(Abstand(punkte[i], b.mitte), b.radius, 1e-3) << "Punkt " << i;
            if (i == 0)
                continue;
            // Sagitta of the chord: radius minus the distance of its middle from the centre
            // (the points are written to 4 places, hence the small allowance).
            const Punkt halb{(punkte[i - 1].x + punkte[i].x) / 2,
                             (punkte[i - 1].y + punkte[i].y) / 2};
            EXPECT_LE(b.radius - Abstand(halb, b.mitte), b.pfeilhöhe + 1e-4) << "Sehne " << i;
            double w = std::atan2(punkte[i].y - b.mitte.y, punkte[i].x - b.mitte.x) -
                       std::atan2(punkte[i - 1].y - b.mitte.y, punkte[i - 1].x - b.mitte.x);
            if (w > pi)
                w -= 2 * pi;
            if (w < -pi)
                w += 2 * pi;
            EXPECT_TRUE(b.bogenGrad > 0 ? w > 0 : w < 0) << "Sehne " << i << " läuft zurück";
            gedreht += w;
        }
        // The chords go the way of B, from A to C, and nowhere else: the turned angle as an arc
        // length (A is written to 4 places).
        EXPECT_NEAR(gedreht * b.radius, b.bogenGrad * pi / 180 * b.radius, 1e-4);

        // Not more chords than the sagitta needs, plus one.
        const double größterWinkel = 2 * std::acos(1 - b.pfeilhöhe / b.radius);
        const double nötig = std::ceil(std::abs(b.bogenGrad) * pi / 180 / größterWinkel);
        const double sehnen = static_cast<double>(punkte.size() - 1);
        EXPECT_GE(sehnen, nötig);
        EXPECT_LE(sehnen, nötig + 1);
    }
}

TEST(BogenZuSehnen, PfeilhöheNullOderNegativWirktWie001) {
    const std::string bogen = bögen[2].Text6();
    const std::string standard = BogenZuSehnen(bogen, 0.01);
    EXPECT_EQ(BogenZuSehnen(bogen, 0), standard);
    EXPECT_EQ(BogenZuSehnen(bogen, -0.5), standard);
    EXPECT_EQ(BogenZuSehnen(bogen, std::nan("")), standard);
    EXPECT_EQ(BogenZuSehnen(bogen, StandardPfeilhöhe), standard);
    EXPECT_NE(BogenZuSehnen(bogen, 0.001), standard);
}

TEST(BogenZuSehnen, WinzigePfeilhöheIstBegrenzt) {
    const Bogen& b = bögen[0];
    const std::string liste = BogenZuSehnen(b.Text6(), 1e-300);
    EXPECT_EQ(std::count(liste.begin(), liste.end(), ';'), MaxSehnenJeBogen);
    EXPECT_EQ(liste.find("nan"), std::string::npos);
    EXPECT_EQ(liste.find("inf"), std::string::npos);
    const std::vector<Punkt> punkte = Punkte(liste);
    ASSERT_EQ(punkte.size(), static_cast<std::size_t>(MaxSehnenJeBogen) + 1);
    for (std::size_t i = 0; i < punkte.size(); i += 997)
        EXPECT_NEAR(Abstand(punkte[i], b.mitte), b.radius, 1e-3) << "Punkt " << i;
}

TEST(RingeAusText, BögenWerdenDurchSehnenErsetzt) {
    // A quarter circle around the origin from (10 0) to (0 10) inside a closed ring.
    const std::string bogen = "10 0 7.0710678 7.0710678 0 10";
    const std::string text = "0 0 10 0 7.0710678 7.0710678 0 10 0 0";
    const auto ohne = RingeAusText(text, "", 0.01, nullptr);
    ASSERT_EQ(ohne.size(), 1U);
    ASSERT_EQ(ohne[0].punkte.size(), 5U);

    std::size_t grob = 0;
    for (double pfeilhöhe : {0.01, 0.0001}) {
        SCOPED_TRACE(pfeilhöhe);
        const auto ringe = RingeAusText(text, "x y z; " + bogen + " ;", pfeilhöhe, nullptr);
        ASSERT_EQ(ringe.size(), 1U);
        const auto& p = ringe[0].punkte;
        ASSERT_GT(p.size(), ohne[0].punkte.size());
        EXPECT_EQ(p.front(), (Punkt{0, 0}));
        EXPECT_EQ(p.back(), (Punkt{0, 0}));
        EXPECT_EQ(p[1], (Punkt{10, 0}));
        EXPECT_EQ(p[p.size() - 2], (Punkt{0, 10}));
        for (std::size_t i = 1; i + 1 < p.size(); ++i)
            EXPECT_NEAR(std::hypot(p[i].x, p[i].y), 10, 1e-3) << "Punkt " << i;
        for (std::size_t i = 1; i < p.size(); ++i)
            EXPECT_FALSE(p[i] == p[i - 1]) << "Punkt " << i << " doppelt";
        if (grob == 0)
            grob = p.size();
        else
            EXPECT_GT(p.size(), 5 * grob);
    }
}

TEST(RingeAusText, BogenNurAlsGanzeZahlenErsetzt) {
    // "10 0 ..." stands inside "110 0 ...", but not as whole numbers.
    const auto ringe = RingeAusText("0 0 110 0 7.0710678 7.0710678 0 10",
                                    "10 0 7.0710678 7.0710678 0 10", 0.01, nullptr);
    ASSERT_EQ(ringe.size(), 1U);
    EXPECT_EQ(ringe[0].punkte.size(), 4U);
}

TEST(PunktlisteText, KürzesteFormOhneExponent) {
    const Ring ring{{{389000.5, 5819000.25}, {5800000, 0.0001}, {-0.0, 2}, {-12.75, 1e-7}}};
    EXPECT_EQ(PunktlisteText(ring), "389000.5 5819000.25;5800000 0.0001;0 2;-12.75 0.0000001");
    EXPECT_EQ(PunktlisteText(Ring{}), "");
    // Read back, every number is the same double again.
    const Ring krumm{{{0.1 + 0.2, 1.0 / 3}, {389000.1 * 3, -2.0 / 7}}};
    EXPECT_EQ(Punkte(PunktlisteText(krumm)), krumm.punkte);
}

TEST(RingeAusText, OhneDatenEineWarnungDesProgramms) {
    SkriptOberfläche ui;
    EXPECT_TRUE(RingeAusText(" ; ;", "", 0.01, &ui).empty());
    ASSERT_EQ(ui.Meldungen(), std::vector<std::string>{"Koordinaten-Trenner ohne Daten!"});
    EXPECT_EQ(ui.Ereignisse().front().titel, "Flurix");
    EXPECT_EQ(ui.Stile(), std::vector<Stil>{Stil::Warnung});
    EXPECT_TRUE(RingeAusText("", "", 0.01, nullptr).empty());
}

TEST(BoxMitte, MitteDerBoxAllerRinge) {
    EXPECT_FALSE(BoxMitte(std::vector<Ring>{}).has_value());
    const auto mitte = BoxMitte(RingeAusText("0 0 10 0 10 5 0 5;2 1 3 1 3 2", "", 0.01, nullptr));
    ASSERT_TRUE(mitte.has_value());
    EXPECT_EQ(*mitte, (Punkt{5, 2.5}));
}

} // namespace
} // namespace flurix::nas
