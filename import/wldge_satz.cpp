#include "import/wldge_satz.hpp"

#include "core/cp1252.hpp"
#include "core/einstellungen.hpp"

#include "core/text.hpp"

#include <charconv>

namespace flurix::import {

std::string FeldText(std::string_view zeile, std::size_t von, std::size_t bis) {
    if (von < 1 || bis < von || von > zeile.size())
        return {};
    return Cp1252NachUtf8(zeile.substr(von - 1, bis - von + 1));
}

std::string FeldBisEnde(std::string_view zeile, std::size_t von) {
    if (von < 1 || von > zeile.size())
        return {};
    return Cp1252NachUtf8(zeile.substr(von - 1));
}

char Spalte(std::string_view zeile, std::size_t spalte) {
    return spalte >= 1 && spalte <= zeile.size() ? zeile[spalte - 1] : '\0';
}

long long FeldZahl(std::string_view text) {
    // As the register's numbers are read: leading blanks skipped, the digits up to the first
    // other character count ("12a" is 12), no digits give 0.
    text = TrimmeLeerzeichen(text);
    long long wert = 0;
    const auto [ende, fehler] = std::from_chars(text.data(), text.data() + text.size(), wert);
    (void)ende;
    return fehler == std::errc() ? wert : 0;
}

std::string ZahlOhneNullen(std::string_view text) { return std::to_string(FeldZahl(text)); }

std::string_view FeldRoh(std::string_view zeile, std::size_t von, std::size_t bis) {
    if (von < 1 || bis < von || von > zeile.size())
        return {};
    return zeile.substr(von - 1, bis == std::string_view::npos ? bis : bis - von + 1);
}

std::string NameAusStücken(std::string_view text, bool umdrehen) {
    const auto stücke = Teilen(text, ',');
    if (stücke.size() < 4)
        return std::string(TrimmeLeerzeichen(text));
    const auto stück = [&](std::size_t i) { return std::string(TrimmeLeerzeichen(stücke[i])); };
    const std::string name = umdrehen ? stück(3) + " " + stück(1) + " " + stück(0)
                                      : stück(3) + " " + stück(0) + ", " + stück(1);
    // No title leaves no leading blank.
    return std::string(TrimmeLeerzeichen(name));
}

} // namespace flurix::import
