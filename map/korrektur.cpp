#include "map/korrektur.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

namespace flurix::karte {

namespace {

using Tabelle = std::array<std::uint8_t, 256>;

Tabelle Kurve(int kontrast, int helligkeit) {
    Tabelle kurve{};
    const double mitte = 127.5;
    for (int x = 0; x < 256; ++x) {
        const double y = x + (x - mitte) * kontrast / 100.0 + mitte * helligkeit / 100.0;
        kurve[static_cast<std::size_t>(x)] =
            static_cast<std::uint8_t>(std::clamp(std::lround(y), 0L, 255L));
    }
    return kurve;
}

} // namespace

int KorrekturWert(int wert) {
    if (wert < -90)
        return -90;
    if (wert > 100)
        return 0;
    return wert;
}

QImage Korrektur(QImage bild, int kontrast, int helligkeit, bool grau) {
    if (bild.isNull())
        return {};
    QImage ergebnis = std::move(bild).convertToFormat(QImage::Format_RGB32);
    const int c = KorrekturWert(kontrast);
    const int h = KorrekturWert(helligkeit);
    if (c == 0 && h == 0 && !grau)
        return ergebnis;

    const Tabelle kurve = Kurve(c, h);
    // Luminance weights in 1/256; 77 + 150 + 29 = 256, so a grey pixel keeps its value exactly.
    std::array<std::uint32_t, 256> anteilRot{}, anteilGrün{}, anteilBlau{};
    for (std::uint32_t v = 0; v < 256; ++v) {
        anteilRot[v] = 77 * v;
        anteilGrün[v] = 150 * v;
        anteilBlau[v] = 29 * v + 128;
    }

    // The non-const scanLine detaches a picture still shared with the caller.
    const int breite = ergebnis.width();
    for (int y = 0; y < ergebnis.height(); ++y) {
        auto* zeile = reinterpret_cast<QRgb*>(ergebnis.scanLine(y));
        if (grau) {
            for (int x = 0; x < breite; ++x) {
                const QRgb p = zeile[x];
                const std::uint32_t lum = (anteilRot[(p >> 16) & 0xff] +
                                           anteilGrün[(p >> 8) & 0xff] + anteilBlau[p & 0xff]) >>
                                          8;
                const QRgb g = kurve[lum];
                zeile[x] = 0xff000000u | (g << 16) | (g << 8) | g;
            }
        } else {
            for (int x = 0; x < breite; ++x) {
                const QRgb p = zeile[x];
                zeile[x] = 0xff000000u | (static_cast<QRgb>(kurve[(p >> 16) & 0xff]) << 16) |
                           (static_cast<QRgb>(kurve[(p >> 8) & 0xff]) << 8) | kurve[p & 0xff];
            }
        }
    }
    return ergebnis;
}

} // namespace flurix::karte
