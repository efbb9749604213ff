#include "core/cp1252.hpp"

#include "core/datei.hpp"

#include <array>
#include <cstdint>

namespace flurix {
namespace {

// Code points of the bytes 0x80..0x9F; the rest of 1252 is Latin-1.
constexpr std::array<char32_t, 32> Bereich80bis9F = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// Decodes one UTF-8 sequence at text[i]; returns its length, 0 when it is invalid.
std::size_t Dekodieren(std::string_view text, std::size_t i, char32_t& c) {
    const auto b0 = static_cast<unsigned char>(text[i]);
    std::size_t länge;
    char32_t min;
    if (b0 < 0x80) {
        c = b0;
        return 1;
    } else if ((b0 & 0xE0) == 0xC0) {
        länge = 2, c = b0 & 0x1F, min = 0x80;
    } else if ((b0 & 0xF0) == 0xE0) {
        länge = 3, c = b0 & 0x0F, min = 0x800;
    } else if ((b0 & 0xF8) == 0xF0) {
        länge = 4, c = b0 & 0x07, min = 0x10000;
    } else {
        return 0;
    }
    if (i + länge > text.size())
        return 0;
    for (std::size_t k = 1; k < länge; ++k) {
        const auto b = static_cast<unsigned char>(text[i + k]);
        if ((b & 0xC0) != 0x80)
            return 0;
        c = (c << 6) | (b & 0x3F);
    }
    if (c < min || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF))
        return 0;
    return länge;
}

char NachCp1252(char32_t c) {
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF))
        return static_cast<char>(c);
    for (std::size_t i = 0; i < Bereich80bis9F.size(); ++i)
        if (Bereich80bis9F[i] == c)
            return static_cast<char>(0x80 + i);
    return '?';
}

} // namespace

void Utf8Anhängen(std::string& ziel, char32_t c) {
    if (c < 0x80) {
        ziel += static_cast<char>(c);
    } else if (c < 0x800) {
        ziel += static_cast<char>(0xC0 | (c >> 6));
        ziel += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        ziel += static_cast<char>(0xE0 | (c >> 12));
        ziel += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        ziel += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        ziel += static_cast<char>(0xF0 | (c >> 18));
        ziel += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        ziel += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        ziel += static_cast<char>(0x80 | (c & 0x3F));
    }
}


std::string Cp1252NachUtf8(std::string_view text) {
    // Most lines of most files are ASCII: an OR over the bytes (vectorised) tells, and such a
    // line is copied whole.
    unsigned char oder = 0;
    for (char ch : text)
        oder |= static_cast<unsigned char>(ch);
    if (oder < 0x80)
        return std::string(text);
    std::string ergebnis;
    ergebnis.reserve(text.size() + text.size() / 8);
    for (char ch : text) {
        const auto b = static_cast<unsigned char>(ch);
        if (b < 0x80)
            ergebnis += ch;
        else if (b < 0xA0)
            Utf8Anhängen(ergebnis, Bereich80bis9F[b - 0x80]);
        else
            Utf8Anhängen(ergebnis, b);
    }
    return ergebnis;
}

std::string Utf8NachCp1252(std::string_view text) {
    std::string ergebnis;
    ergebnis.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        if (static_cast<unsigned char>(text[i]) < 0x80) {
            ergebnis += text[i++];
            continue;
        }
        char32_t c = 0;
        const std::size_t länge = Dekodieren(text, i, c);
        if (länge == 0) {
            ergebnis += '?';
            ++i;
        } else {
            ergebnis += NachCp1252(c);
            i += länge;
        }
    }
    return ergebnis;
}

bool IstGültigesUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        char32_t c = 0;
        const std::size_t länge = Dekodieren(text, i, c);
        if (länge == 0)
            return false;
        i += länge;
    }
    return true;
}

std::string DateitextNachUtf8(std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    if (IstGültigesUtf8(text))
        return std::string(text);
    return Cp1252NachUtf8(text);
}

std::string KonfigText(const std::filesystem::path& datei) {
    return DateiVorhanden(datei) ? DateitextNachUtf8(DateiKomplettLesen(datei)) : std::string();
}

} // namespace flurix
