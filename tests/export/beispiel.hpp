#pragma once
// What the export tests share: the table every one of them writes, and a table as text.

#include "core/kataster.hpp"

#include <string>

namespace flurix::test {

/// Columns Gemarkung, Flur, Flurstück, Name (caption "Eigentümer", shown first), Geheim (hidden),
/// checkdruck (a check box with a blank caption); three rows with "&", "<", quotes, TAB, "$", CR LF,
/// "€" and characters outside Windows-1252.
inline Kataster Beispieltabelle() {
    Kataster k;
    for (const auto& [schlüssel, überschrift, breite] : {std::tuple{"Gemarkung", "Gemarkung", 1200},
             {"Flur", "Flur", 600}, {"Flurstück", "Flurstück", 1000}, {"Name", "Eigentümer", 2400},
             {"Geheim", "Geheim", 800}, {"checkdruck", " ", 600}})
        k.SpalteHinzufügen({schlüssel, überschrift, breite});
    k.Spalte(5).kontrollkästchen = true;
    k.Spalte(4).sichtbar = false;
    k.SpalteVerschieben(3, 0);
    k.ZeileHinzufügen("Musterhausen\t007\t00231/0001\tMeier & <Söhne> \"Erben\"\tx\t1");
    k.ZeileHinzufügen(std::vector<std::string_view>{"Süd", "001", "00012/0000", "Tab\there$dollar", "y", ""});
    k.ZeileHinzufügen("Łódź €\t010\t00001/0000\tZeile1\r\nZeile2\tz\t1");
    return k;
}

/// All a table holds that a save and a load could change, as text: columns, order and cells.
inline std::string Abbild(const Kataster& k) {
    std::string text;
    for (std::size_t s = 0; s < k.Spaltenzahl(); ++s)
        text += k.Spalte(s).schlüssel + "|" + k.Spalte(s).überschrift + "|" + std::to_string(k.Spalte(s).breite) +
                "|" + (k.Spalte(s).sichtbar ? "1" : "0") + "\n";
    for (const std::size_t s : k.Anzeigereihenfolge())
        text += std::to_string(s) + ",";
    for (std::size_t z = 0; z < k.Zeilenzahl(); ++z)
        text += "\n" + k.ZeileAlsText(z);
    return text;
}

} // namespace flurix::test
