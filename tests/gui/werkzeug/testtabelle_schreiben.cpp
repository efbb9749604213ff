// flurix_testtabelle <datei.fil|datei.tsv> [zeilen] [startwert]: writes the made-up cadastre table
// of the GUI tests, for looking at the main window with a few thousand rows or for measuring it
// with half a million.

#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
#include "testtabelle.hpp"

#include <charconv>
#include <cstdint>
#include <exception>
#include <iostream>
#include <string_view>

namespace {

bool ZahlLesen(std::string_view text, std::uint64_t& wert) {
    const auto [ende, fehler] = std::from_chars(text.data(), text.data() + text.size(), wert);
    return fehler == std::errc() && ende == text.data() + text.size();
}

} // namespace

int main(int argc, char** argv) {
    std::uint64_t zeilen = 3000;
    std::uint64_t startwert = 1;
    if (argc < 2 || argc > 4 || (argc > 2 && !ZahlLesen(argv[2], zeilen)) ||
        (argc > 3 && !ZahlLesen(argv[3], startwert))) {
        std::cerr << "Aufruf: flurix_testtabelle <datei.fil|datei.tsv> [zeilen] [startwert]\n";
        return 2;
    }
    try {
        flurix::Kataster kataster;
        flurix::test::TesttabelleErzeugen(kataster, zeilen, static_cast<std::uint32_t>(startwert));
        flurix::KatasterSpeichern(kataster, argv[1]);
    } catch (const std::exception& fehler) {
        std::cerr << fehler.what() << '\n';
        return 1;
    }
    return 0;
}
