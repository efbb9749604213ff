#pragma once
// A cadastre table of made-up but realistic rows for the tests and screenshots of the main window:
// parcels of eight Gemarkungen with one to three owners each, names and places with umlauts,
// parcel numbers and keys in the padded form of the register.

#include <cstddef>
#include <cstdint>

namespace flurix {
class Kataster;
}

namespace flurix::test {

/// Replaces the table by the catalogue's columns and `zeilen` rows, always the same ones for the
/// same `startwert`, sorted by the default order. Parcels follow one another per Gemarkung and
/// Flur; each parcel's owner rows carry Eigentümerposition "0001", "0002", ...
void TesttabelleErzeugen(Kataster& kataster, std::size_t zeilen, std::uint32_t startwert = 1);

} // namespace flurix::test
