#pragma once
// The line builder of the WLDGE benchmarks' generators: fields placed at their 1-based columns.

#include <algorithm>
#include <initializer_list>
#include <string>
#include <utility>

namespace flurix::bench {

/// One WLDGE line of 100 columns or more: block digit, key from column 2, kind in column 27, then
/// the fields at their columns.
inline std::string Satz(char block, const std::string& schlüssel, char art,
                        std::initializer_list<std::pair<std::size_t, std::string>> felder) {
    std::string z(100, ' ');
    z[0] = block;
    z.replace(1, schlüssel.size(), schlüssel);
    z[26] = art;
    for (const auto& [spalte, text] : felder) {
        if (z.size() < spalte - 1 + text.size())
            z.resize(spalte - 1 + text.size(), ' ');
        z.replace(spalte - 1, text.size(), text);
    }
    return z;
}

/// A number with leading zeros to `breite` digits.
inline std::string Ziffern(long long wert, int breite) {
    std::string s = std::to_string(wert);
    return std::string(static_cast<std::size_t>(std::max<int>(0, breite - static_cast<int>(s.size()))), '0') + s;
}

} // namespace flurix::bench
