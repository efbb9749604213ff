#include "map/geodaesie.hpp"

#include "core/text.hpp"
#include "core/text.hpp"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace flurix::karte {
namespace {

// Degrees and radians are turned with the multiplication first and the division last, so that a
// whole degree that goes to radians and back comes out exactly as it went in (the central
// meridian gives exactly L0).
double NachBogen(double grad) { return grad * Pi / 180.0; }
double NachGrad(double bogen) { return bogen * 180.0 / Pi; }

double Potenz2(double x) { return x * x; }

// The coefficients of the one ellipsoid in use, computed once.
const std::array<double, 6>& GrsKoeffizienten() {
    static const std::array<double, 6> c = MeridianKoeffizienten(Grs1980().a, Grs1980().e);
    return c;
}

// The digits of a number's shortest text: what the conversions read a zone from.
struct Zahltext {
    char zeichen[32];
    std::size_t länge = 0;
    std::string_view text() const { return {zeichen, länge}; }
};
Zahltext AlsText(double wert) {
    Zahltext t;
    const auto [ende, fehler] = std::to_chars(t.zeichen, t.zeichen + sizeof t.zeichen, wert);
    t.länge = fehler == std::errc() ? static_cast<std::size_t>(ende - t.zeichen) : 0;
    return t;
}

} // namespace

const Ellipsoid& Grs1980() {
    static const Ellipsoid grs = [] {
        Ellipsoid e;
        e.a = GrsHalbachse;
        e.f = 1.0 / GrsInverseAbplattung;
        e.b = e.a * (1.0 - e.f);
        e.e = std::sqrt((e.a * e.a - e.b * e.b) / (e.a * e.a));
        return e;
    }();
    return grs;
}

double PunkteNachMeter(double p) { return p * 2.54 / 7200.0; }

double MeterNachPunkte(double m) { return std::round(m / 2.54 * 7200.0); }

double GradTextNachBogen(std::string_view text) {
    // Fields are cut at blanks, "°" (UTF-8 or the single Windows-1252 byte), "'" and '"'; the
    // second mark ends the seconds and stands for nothing, so it only separates.
    const auto trenner = [text](std::size_t i) -> std::size_t {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c == ' ' || c == '\'' || c == '"' || c == 0xB0)
            return 1;
        return c == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) == 0xB0
                   ? 2
                   : 0;
    };
    double felder[3] = {0, 0, 0};
    int feld = 0;
    std::size_t i = 0;
    while (i < text.size() && feld < 3) {
        if (const std::size_t länge = trenner(i); länge > 0) {
            i += länge;
            continue;
        }
        std::size_t ende = i + 1;
        while (ende < text.size() && trenner(ende) == 0)
            ++ende;
        felder[feld++] = ZahlLesen(text.substr(i, ende - i));
        i = ende;
    }
    return NachBogen(felder[0] + felder[1] / 60.0 + felder[2] / 3600.0);
}

std::string BogenNachGradText(double bogen) {
    const double grad = NachGrad(bogen);
    const double betrag = std::fabs(grad);
    long long ganz = static_cast<long long>(betrag);
    const double minutenRest = (betrag - static_cast<double>(ganz)) * 60.0;
    long long minuten = static_cast<long long>(minutenRest);
    // Seconds in hundred-thousandths, so that a carry is seen before the text is written.
    long long sekunden = std::llround((minutenRest - static_cast<double>(minuten)) * 60.0 * 1e5);
    if (sekunden >= 6'000'000) {
        sekunden -= 6'000'000;
        ++minuten;
    }
    if (minuten >= 60) {
        minuten -= 60;
        ++ganz;
    }
    char puffer[64];
    const int länge =
        std::snprintf(puffer, sizeof puffer, "%s%lld\xC2\xB0%02lld'%02lld.%05lld\"",
                      grad < 0 ? "-" : "", ganz, minuten, sekunden / 100000, sekunden % 100000);
    return std::string(puffer, static_cast<std::size_t>(länge));
}

std::array<double, 6> MeridianKoeffizienten(double a, double e) {
    const double e2 = Potenz2(a * e / std::sqrt((1.0 - e * e) * a * a)); // e'²
    const double e4 = e2 * e2, e6 = e4 * e2, e8 = e6 * e2, e10 = e8 * e2;
    const double c = a / std::sqrt(1.0 - e * e);
    return {
        c * (1.0 - 3.0 / 4.0 * e2 + 45.0 / 64.0 * e4 - 175.0 / 256.0 * e6 + 11025.0 / 16384.0 * e8 -
             43659.0 / 65536.0 * e10),
        c * 0.5 *
            (3.0 / 4.0 * e2 - 15.0 / 16.0 * e4 + 525.0 / 512.0 * e6 - 2205.0 / 2048.0 * e8 +
             72765.0 / 65536.0 * e10),
        c * 0.25 *
            (15.0 / 64.0 * e4 - 105.0 / 256.0 * e6 + 2205.0 / 4096.0 * e8 -
             10395.0 / 16384.0 * e10),
        c / 6.0 * (35.0 / 512.0 * e6 - 315.0 / 2048.0 * e8 + 31185.0 / 131072.0 * e10),
        c / 8.0 * (315.0 / 16384.0 * e8 - 3465.0 / 65536.0 * e10),
        c / 10.0 * (693.0 / 131072.0 * e10),
    };
}

std::array<double, 2> TransverseMercatorVorwärts(double phi, double lambda, double a, double e,
                                                 const std::array<double, 6>& C, double k0,
                                                 double falscherOstwert, int L0) {
    if (k0 == 0)
        k0 = 1;
    const double sinPhi = std::sin(phi);
    const double cosPhi = std::cos(phi);
    const double N = a / std::sqrt(1.0 - e * e * sinPhi * sinPhi);
    const double t = std::tan(phi);
    const double eta = std::sqrt(e * e / (1.0 - e * e)) * cosPhi;
    const double t2 = t * t, t4 = t2 * t2, t6 = t4 * t2;
    const double eta2 = eta * eta, eta4 = eta2 * eta2;
    const double cos2 = cosPhi * cosPhi, cos3 = cos2 * cosPhi, cos5 = cos3 * cos2,
                 cos7 = cos5 * cos2;

    const double G = C[0] * phi - C[1] * std::sin(2 * phi) + C[2] * std::sin(4 * phi) -
                     C[3] * std::sin(6 * phi) + C[4] * std::sin(8 * phi) -
                     C[5] * std::sin(10 * phi);
    const double a1 = N * cosPhi;
    const double a2 = 0.5 * t * N * cos2;
    const double a3 = 1.0 / 6.0 * N * cos3 * (1.0 - t2 + eta2);
    const double a4 = 1.0 / 24.0 * N * sinPhi * cos3 * (5.0 - t2 + 9.0 * eta2 + 4.0 * eta4);
    const double a5 =
        1.0 / 120.0 * N * cos5 *
        (5.0 - 18.0 * t2 + t4 + 14.0 * eta2 - 58.0 * t2 * eta2 + 13.0 * eta4 - 64.0 * t2 * eta4);
    const double a6 = 1.0 / 720.0 * N * sinPhi * cos5 *
                      (61.0 - 58.0 * t2 + t4 + 270.0 * eta2 - 330.0 * t2 * eta2);
    const double a7 = 1.0 / 5040.0 * N * cos7 * (61.0 - 479.0 * t2 + 179.0 * t4 - t6);
    const double a8 = 1.0 / 40320.0 * N * sinPhi * cos7 * (1385.0 - 3111.0 * t2 + 543.0 * t4 - t6);

    // The longitude difference goes through degrees, where L0 is subtracted.
    const double l = NachBogen(NachGrad(lambda) - L0);
    const double l2 = l * l, l3 = l2 * l, l4 = l2 * l2, l5 = l4 * l, l6 = l4 * l2, l7 = l6 * l,
                 l8 = l4 * l4;
    const double nord = (G + a2 * l2 + a4 * l4 + a6 * l6 + a8 * l8) * k0;
    const double ost = (a1 * l + a3 * l3 + a5 * l5 + a7 * l7) * k0 + falscherOstwert;
    return {nord, ost};
}

std::array<double, 2> TransverseMercatorRückwärts(double nord, double ost, double a, double b,
                                                  double k0, double falscherOstwert, int L0) {
    if (k0 == 0)
        k0 = 1;
    const double x = nord / k0;
    const double y = (ost - falscherOstwert) / k0;
    const double es2 = (a * a - b * b) / (b * b); // e'²
    const double n = (a - b) / (a + b);
    const double n2 = n * n, n3 = n2 * n, n4 = n2 * n2, n5 = n4 * n;
    const double alpha = (a + b) / 2.0 * (1.0 + n2 / 4.0 + n4 / 64.0);
    const double yq = x / alpha;
    // Northern hemisphere only: the footpoint latitude is taken as its absolute value.
    const double phiF =
        std::fabs(yq + (3.0 / 2.0 * n - 27.0 / 32.0 * n3 + 269.0 / 512.0 * n5) * std::sin(2 * yq) +
                  (21.0 / 16.0 * n2 - 55.0 / 32.0 * n4) * std::sin(4 * yq) +
                  (151.0 / 96.0 * n3 - 417.0 / 128.0 * n5) * std::sin(6 * yq) +
                  (1097.0 / 512.0 * n4) * std::sin(8 * yq));
    const double cosF = std::cos(phiF);
    const double eta2 = cosF * cosF * es2; // η² = (sqrt(cos²φf · e'²))²
    const double eta4 = eta2 * eta2;
    const double Nf = a * a / (b * std::sqrt(1.0 + eta2));
    const double t = std::tan(phiF);
    const double t2 = t * t, t4 = t2 * t2, t6 = t4 * t2;
    const double Nf2 = Nf * Nf, Nf3 = Nf2 * Nf, Nf4 = Nf2 * Nf2, Nf5 = Nf4 * Nf, Nf6 = Nf4 * Nf2,
                 Nf7 = Nf6 * Nf, Nf8 = Nf4 * Nf4;
    const double y2 = y * y, y3 = y2 * y, y4 = y2 * y2, y5 = y4 * y, y6 = y4 * y2, y7 = y6 * y,
                 y8 = y4 * y4;

    const double phiGrad = NachGrad(
        phiF + t / (2.0 * Nf2) * (-1.0 - eta2) * y2 +
        t / (24.0 * Nf4) *
            (5.0 + 3.0 * t2 + 6.0 * eta2 - 6.0 * t2 * eta2 - 3.0 * eta4 - 9.0 * t2 * eta4) * y4 +
        t / (720.0 * Nf6) *
            (-61.0 - 90.0 * t2 - 45.0 * t4 - 107.0 * eta2 + 162.0 * t2 * eta2 + 45.0 * t4 * eta2) *
            y6 +
        t / (40320.0 * Nf8) * (1385.0 + 3633.0 * t2 + 4095.0 * t4 + 1575.0 * t6) * y8);
    const double lambdaGrad =
        L0 + NachGrad(y / (Nf * cosF) + (-1.0 - 2.0 * t2 - eta2) / (6.0 * Nf3 * cosF) * y3 +
                      (5.0 + 28.0 * t2 + 24.0 * t4 + 6.0 * eta2 + 8.0 * t2 * eta2) /
                          (120.0 * Nf5 * cosF) * y5 +
                      (-61.0 - 662.0 * t2 - 1320.0 * t4 - 720.0 * t6) / (5040.0 * Nf7 * cosF) * y7);
    return {NachBogen(phiGrad), NachBogen(lambdaGrad)};
}

std::array<double, 3> GeographischNachKartesisch(double phi, double lambda, double h, double a,
                                                 double e) {
    const double sinPhi = std::sin(phi);
    const double N = a / std::sqrt(1.0 - e * e * sinPhi * sinPhi);
    const double cosPhi = std::cos(phi);
    return {(N + h) * cosPhi * std::cos(lambda), (N + h) * cosPhi * std::sin(lambda),
            ((1.0 - e * e) * N + h) * sinPhi};
}

double RechtswertOffset(int L0, std::string_view ellipsoid) {
    if (ellipsoid == "GRS1980" || ellipsoid == "WGS1984")
        return UtmRechtswertOffset;
    if (ellipsoid == "Krassowski" || ellipsoid == "Bessel") {
        // Gauss-Krüger: the strip number L0 / 3 stands before the 500 km.
        if (L0 >= 3 && L0 <= 21 && L0 % 3 == 0)
            return (L0 / 3) * 1000000.0 + 500000.0;
    }
    return 0;
}

Zone ZoneAusRechtswert(std::string_view y, std::string_view ellipsoid) {
    y = TrimmeLeerzeichen(y);
    const char ziffer = y.empty() ? '\0' : y.front();
    if (ellipsoid == "GRS1980" || ellipsoid == "WGS1984") {
        switch (ziffer) {
        case '1':
            return {3, {}};
        case '2':
            return {9, {}};
        case '3':
            return {15, {}};
        case '4':
            return {21, {}};
        default:
            break;
        }
    } else if (ellipsoid == "Krassowski" || ellipsoid == "Bessel") {
        if (ziffer >= '1' && ziffer <= '7')
            return {3 * (ziffer - '0'), {}};
    }
    return {0, MeldungZoneUngültig};
}

int MittelmeridianAusEpsg(std::string_view epsg) {
    if (epsg == "25832")
        return 9;
    if (epsg == "25833")
        return 15;
    return 0;
}

KoordinatenSatz ETRSNachGeographisch(KoordinatenSatz satz, int L0, std::string_view epsg) {
    const Ellipsoid& grs = Grs1980();
    if (satz.Höhe == 0)
        satz.Höhe = 75.0;
    if (L0 == 0)
        L0 = MittelmeridianAusEpsg(epsg);
    // The degree text and the geocentric triple that a full conversion can show are not part of
    // the result; who needs them calls BogenNachGradText and GeographischNachKartesisch.
    const auto [phi, lambda] = TransverseMercatorRückwärts(
        satz.Wert2, satz.Wert1, grs.a, grs.b, UtmMaßstab, RechtswertOffset(L0, GrsName), L0);
    satz.Wert1 = NachGrad(phi);
    satz.Wert2 = NachGrad(lambda);
    return satz;
}

ZonenUmrechnung ETRSNachGeographischAuto(KoordinatenSatz satz) {
    const Zahltext text = AlsText(satz.Wert1);
    const std::string_view ganz = text.text().substr(0, text.text().find('.'));
    int L0 = 0;
    std::size_t abschneiden = 0;
    std::string_view meldung;
    if (ganz.size() == 6) {
        L0 = 15;
    } else if (ganz.size() == 7 || ganz.size() == 8) {
        abschneiden = ganz.size() - 6;
        const Zone zone = ZoneAusRechtswert(ganz.substr(abschneiden - 1, 1));
        L0 = zone.L0;
        meldung = zone.meldung;
    }
    if (abschneiden > 0) {
        // The zone digits are cut from the text; the rest is read back as the easting.
        const std::string_view rest = text.text().substr(abschneiden);
        std::from_chars(rest.data(), rest.data() + rest.size(), satz.Wert1);
    }
    return {ETRSNachGeographisch(std::move(satz), L0), meldung};
}

std::array<double, 2> GeographischBogenNachETRS(double phi, double lambda, int L0) {
    const Ellipsoid& grs = Grs1980();
    const auto [nord, ost] =
        TransverseMercatorVorwärts(phi, lambda, grs.a, grs.e, GrsKoeffizienten(), UtmMaßstab,
                                   RechtswertOffset(L0, GrsName), L0);
    // Millimetres: the values the map has always written and compared.
    return {Gerundet(ost, 3), Gerundet(nord, 3)};
}

KoordinatenSatz GeographischNachETRS(KoordinatenSatz satz, int L0) {
    if (satz.Höhe == 0)
        satz.Höhe = 75.0;
    // A decimal degree passes GradTextNachBogen unchanged, so the number is turned directly.
    const auto [ost, nord] =
        GeographischBogenNachETRS(NachBogen(satz.Wert1), NachBogen(satz.Wert2), L0);
    satz.Wert1 = ost;
    satz.Wert2 = nord;
    return satz;
}

} // namespace flurix::karte
