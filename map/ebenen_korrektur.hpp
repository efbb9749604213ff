#pragma once
// One level of the map window: its picture file loaded and corrected by the level's controls,
// ready for the blend.
//
// The steps, in this order:
//
//  1. A transparent service with keep-white: the file is loaded on FarbeHintergrundFrei, taken to
//     24 bits, the service's own white becomes FarbeFastWeiss and the grey background white. So
//     the white the service drew survives the blend's white key, and what it left empty becomes
//     that key.
//  2. Otherwise the file is loaded plainly and taken to 24 bits; with keep-white on an opaque
//     service to 16 bits instead, which reduces its colours.
//  3. Contrast, brightness and grey (Korrektur).
//  4. Black and white: 1 bit.
//  5. Black inverted: 1 bit, then black becomes FarbeFastWeiss: what was dark shows as bright
//     white, the rest is see-through.
//
// Level 3 has none of the checks: it is loaded plainly and gets step 3 only.

#include "map/bild_laden.hpp"

#include <QSize>

#include <filesystem>

namespace flurix::karte {

/// The controls of one level.
struct EbenenEinstellung {
    int ebene = 1;                    ///< 1, 2 or 3; level 3 ignores the checks
    bool transparenterDienst = false; ///< the level's service is transparent (set by each request)
    bool weißErhalten = false;        ///< keep white ("Textdarstellung verbessern")
    int kontrast = 0;                 ///< slider, −100 to 100
    int helligkeit = 0;               ///< slider, −100 to 100
    bool grau = false;
    bool schwarzWeiß = false;
    bool schwarzInvers = false;
};

/// Loads `datei` over a picture of `größe` and corrects it as above. Returns the picture
/// (Format_RGB32, `größe`) or, when the file can't be loaded, BildLaden's error text.
BildErgebnis EbeneLadenUndKorrigieren(const std::filesystem::path& datei, QSize größe,
                                      const EbenenEinstellung& einstellung);

} // namespace flurix::karte
