#include "core/text.hpp"

#include <cmath>

#include <charconv>

namespace flurix {

std::string_view TrimmeLeerzeichen(std::string_view text) {
    const auto anfang = text.find_first_not_of(' ');
    if (anfang == std::string_view::npos)
        return {};
    const auto ende = text.find_last_not_of(' ');
    return text.substr(anfang, ende - anfang + 1);
}

std::string Kleinbuchstaben(std::string_view text) {
    std::string ergebnis(text);
    for (std::size_t i = 0; i < ergebnis.size(); ++i) {
        char& c = ergebnis[i];
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        } else if (c == '\xC3' && i + 1 < ergebnis.size()) {
            char& folge = ergebnis[i + 1];
            // Ä Ö Ü are C3 84, C3 96, C3 9C; their small letters are 0x20 further.
            if (folge == '\x84' || folge == '\x96' || folge == '\x9C')
                folge = static_cast<char>(folge + 0x20);
            ++i;
        }
    }
    return ergebnis;
}

std::vector<std::string_view> Teilen(std::string_view text, char trenner) {
    std::vector<std::string_view> stücke;
    std::size_t anfang = 0;
    for (;;) {
        const auto pos = text.find(trenner, anfang);
        stücke.push_back(text.substr(anfang, pos - anfang));
        if (pos == std::string_view::npos)
            return stücke;
        anfang = pos + 1;
    }
}

double ZahlLesen(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    if (text.starts_with('+'))
        text.remove_prefix(1);
    double wert = 0;
    const auto [ende, fehler] = std::from_chars(text.data(), text.data() + text.size(), wert);
    (void)ende;
    return fehler == std::errc() ? wert : 0.0;
}

std::string Einzeilig(std::string_view text) {
    std::string zeile(text);
    for (char& c : zeile)
        if (c == '\r' || c == '\n' || c == '\t')
            c = ' ';
    return zeile;
}

std::string TextSäubern(std::string_view text) {
    std::string sauber;
    sauber.reserve(text.size());
    for (char c : text)
        if (c != ' ' || (!sauber.empty() && sauber.back() != ' '))
            sauber += c;
    if (!sauber.empty() && sauber.back() == ' ')
        sauber.pop_back();
    return sauber;
}

std::string Ersetzen(std::string_view text, std::string_view alt, std::string_view neu) {
    if (alt.empty())
        return std::string(text);
    std::string ergebnis;
    ergebnis.reserve(text.size());
    std::size_t anfang = 0;
    for (auto pos = text.find(alt); pos != std::string_view::npos; pos = text.find(alt, anfang)) {
        ergebnis.append(text.substr(anfang, pos - anfang)).append(neu);
        anfang = pos + alt.size();
    }
    ergebnis.append(text.substr(anfang));
    return ergebnis;
}

std::string_view Utf8Anfang(std::string_view text, std::size_t zeichen) {
    std::size_t gezählt = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80 && gezählt++ == zeichen)
            return text.substr(0, i);
    return text;
}

double Gerundet(double wert, int stellen) {
    const double skala = std::pow(10.0, stellen);
    return std::round(wert * skala) / skala;
}

std::string ZahlGerundet(double wert, int stellen) {
    double gerundet = Gerundet(wert, stellen);
    if (gerundet == 0)
        gerundet = 0; // no "-0"
    char puffer[64];
    const auto [ende, fehler] = std::to_chars(puffer, puffer + sizeof puffer, gerundet, std::chars_format::fixed);
    return fehler == std::errc() ? std::string(puffer, ende) : "0";
}

std::string Zahlmuster(double wert, std::string_view muster) {
    const auto punkt = muster.find('.');
    const std::size_t ganz = std::min(punkt, muster.size());
    const int nachkomma = punkt == std::string_view::npos ? 0 : static_cast<int>(muster.size() - punkt - 1);
    const double skala = std::pow(10.0, nachkomma);
    const long long gerundet = std::llround(std::fabs(wert) * skala); // half away from zero
    std::string ziffern = std::to_string(gerundet);
    if (ziffern.size() <= static_cast<std::size_t>(nachkomma))
        ziffern.insert(0, static_cast<std::size_t>(nachkomma) + 1 - ziffern.size(), '0');
    std::string zahl = ziffern.substr(0, ziffern.size() - static_cast<std::size_t>(nachkomma));
    if (zahl.size() < ganz)
        zahl.insert(0, ganz - zahl.size(), '0');
    if (nachkomma > 0)
        zahl += "." + ziffern.substr(ziffern.size() - static_cast<std::size_t>(nachkomma));
    if (wert < 0 && gerundet != 0)
        zahl.insert(0, 1, '-');
    return zahl;
}

std::string_view TrimmeLeerraum(std::string_view text) {
    const auto anfang = text.find_first_not_of(" \t\r\n");
    if (anfang == std::string_view::npos)
        return {};
    return text.substr(anfang, text.find_last_not_of(" \t\r\n") - anfang + 1);
}

} // namespace flurix
