#include "report/pdf_format.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace flurix::report {

namespace {

// Appends the decimal digits of a non-negative number.
void ZiffernAnhängen(std::string& ziel, std::uint64_t zahl) {
    std::array<char, 24> puffer{};
    const auto [ende, fehler] = std::to_chars(puffer.data(), puffer.data() + puffer.size(), zahl);
    static_cast<void>(fehler); // 24 places hold any 64-bit number
    ziel.append(puffer.data(), ende);
}

std::string Allgemein(double v, int stellen) {
    std::array<char, 64> puffer{};
    const auto ergebnis =
        stellen > 0 ? std::to_chars(puffer.data(), puffer.data() + puffer.size(), v,
                                    std::chars_format::general, stellen)
                    : std::to_chars(puffer.data(), puffer.data() + puffer.size(), v);
    return {puffer.data(), ergebnis.ptr};
}

} // namespace

std::string FormatNumber(double v) {
    const double tausendstel = std::floor(v * 1000.0 + 0.5);
    // Beyond 9e15 thousandths the rounding no longer means anything in a double; such numbers
    // never stand on a page, but they must not overflow the integer below.
    if (!std::isfinite(tausendstel) || std::fabs(tausendstel) > 9e15)
        return Allgemein(v, 0);
    const auto ganz = static_cast<std::int64_t>(tausendstel);
    // The value is an integer count of thousandths, so the shortest text is its digits with the
    // point put in and trailing zeros dropped: exact, fast and free of the locale.
    std::string text;
    std::uint64_t betrag = ganz < 0 ? static_cast<std::uint64_t>(-ganz) : static_cast<std::uint64_t>(ganz);
    if (ganz < 0)
        text.push_back('-');
    ZiffernAnhängen(text, betrag / 1000);
    auto rest = static_cast<unsigned>(betrag % 1000);
    if (rest != 0) {
        text.push_back('.');
        unsigned teiler = 100;
        while (rest != 0) {
            text.push_back(static_cast<char>('0' + rest / teiler));
            rest %= teiler;
            teiler /= 10;
        }
    }
    return text;
}

std::string EinfacheZahl(float v) {
    // Seven significant digits, as the conversion of a single-precision value always wrote them.
    return Allgemein(static_cast<double>(v), 7);
}

std::string FormatColor(std::int32_t farbe) {
    const auto bits = static_cast<std::uint32_t>(farbe);
    const unsigned rot = bits & 0xFFu;
    const unsigned grün = (bits >> 8) & 0xFFu;
    const unsigned blau = (bits >> 16) & 0xFFu;
    const auto teil = [](unsigned wert) { return FormatNumber(static_cast<double>(wert) / 255.0); };
    if (rot == grün && grün == blau)
        return teil(rot) + " gFC";
    return teil(rot) + " " + teil(grün) + " " + teil(blau) + " RG";
}

std::string EscapeText(std::string_view text) {
    std::string ergebnis;
    ergebnis.reserve(text.size() + 8);
    // One pass gives the same as the three replacements in their order, since only the backslash
    // pass could see the output of another, and it runs first.
    for (const char c : text) {
        if (c == '\\' || c == '(' || c == ')')
            ergebnis.push_back('\\');
        ergebnis.push_back(c);
    }
    return ergebnis;
}

std::string Zeitstempel(const std::tm& zeit) {
    std::array<char, 64> puffer{};
    const int n = std::snprintf(puffer.data(), puffer.size(), "%04d%02d%02d%02d%02d%02d",
                                zeit.tm_year + 1900, zeit.tm_mon + 1, zeit.tm_mday, zeit.tm_hour,
                                zeit.tm_min, zeit.tm_sec);
    return {puffer.data(), static_cast<std::size_t>(n > 0 ? n : 0)};
}

std::tm LokaleZeit() {
    std::tm zeit{};
    const std::time_t jetzt = std::time(nullptr);
    if (jetzt == static_cast<std::time_t>(-1) || localtime_r(&jetzt, &zeit) == nullptr)
        return std::tm{};
    return zeit;
}

} // namespace flurix::report
