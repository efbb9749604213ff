#include "gui/spaltenbreiten.hpp"

#include "core/kataster.hpp"
#include "core/text.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace flurix::gui {
namespace {

/// The resolution a screen that tells none is taken to have.
constexpr int StandardDpi = 96;
/// Twips of one character in the table's fitted widths.
constexpr double TwipsJeZeichen = 100.0;

} // namespace

double PixelJeTwip(int dpi, double ziffernbreite) {
    const double maß = static_cast<double>(dpi > 0 ? dpi : StandardDpi) / TwipsJeZoll;
    return std::max(maß, ziffernbreite / TwipsJeZeichen);
}

int TwipsZuPixel(int twips, double pixelJeTwip) {
    if (twips <= 0)
        return 0;
    return std::max(1, static_cast<int>(std::lround(twips * pixelJeTwip)));
}

int PixelZuTwips(int pixel, double pixelJeTwip) {
    if (pixel <= 0 || pixelJeTwip <= 0)
        return 0;
    return static_cast<int>(std::lround(pixel / pixelJeTwip));
}

std::string SpaltenbreitenText(const Kataster& kataster) {
    std::string text;
    for (std::size_t s = 0; s < kataster.Spaltenzahl(); ++s) {
        const auto& spalte = kataster.Spalte(s);
        if (!text.empty())
            text += ';';
        text += spalte.schlüssel;
        text += ':';
        text += std::to_string(spalte.breite);
    }
    return text;
}

int SpaltenbreitenAnwenden(Kataster& kataster, std::string_view text) {
    int gesetzt = 0;
    for (std::string_view teil : Teilen(text, ';')) {
        // A key may hold ":" in theory; the width is what follows the last one.
        const auto doppelpunkt = teil.rfind(':');
        if (doppelpunkt == std::string_view::npos)
            continue;
        const std::string_view zahl = teil.substr(doppelpunkt + 1);
        int breite = 0;
        const auto [ende, fehler] = std::from_chars(zahl.data(), zahl.data() + zahl.size(), breite);
        if (fehler != std::errc() || ende != zahl.data() + zahl.size() || breite <= 0)
            continue;
        if (const auto spalte = kataster.SpaltenIndex(teil.substr(0, doppelpunkt))) {
            kataster.Spalte(*spalte).breite = breite;
            ++gesetzt;
        }
    }
    return gesetzt;
}

} // namespace flurix::gui
