#pragma once
// The chosen layers of a service and its scale range: the LAYERS value of a request, the list of
// the layer dialogue and what taking it over writes, the conversion of ScaleHint cells into
// "von 1:a bis 1:b".

#include "core/fehler.hpp"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {
class Oberfläche;
}

namespace flurix::karte {

class Dienstkatalog;

/// The LAYERS value: of each `Layer` entry (split at "}{") whose flag in `LayerAuswahl` (split at
/// ",") is "true", the part ahead of the first "~", joined with ",". An entry without a flag is
/// not chosen.
std::string LayerListe(std::string_view layer, std::string_view layerAuswahl);

/// One line of the layer dialogue.
struct LayerEintrag {
    std::string text; ///< what stands behind the first "~" of the entry (the title)
    bool gewählt = false;

    bool operator==(const LayerEintrag&) const = default;
};

/// The lines of the layer dialogue for `Layer` and `LayerAuswahl`; an empty `Layer` has none.
std::vector<LayerEintrag> LayerEinträge(std::string_view layer, std::string_view layerAuswahl);

/// Taking the dialogue over for row `zeile`: `LayerAuswahl` becomes "true"/"false" per line,
/// joined with ","; with `vStyle` on, `Style` becomes its last blank-separated word once per
/// chosen layer, joined with "," (of a Style already repeated that way its last element, so that
/// taking over twice gives the same); with `vStyle` off `Style` is emptied. Saving the catalogue
/// is the caller's. Throws Fehler for a row out of range.
void LayerAuswahlÜbernehmen(Dienstkatalog& katalog, std::size_t zeile,
                            const std::vector<bool>& gewählt);

/// The scale of a `Maßstab` cell in 1:n at 96 dpi. A cell holding "ScaleHint:" gets its min and
/// max (behind `min="` and `max="`) converted with k = 96000 / (√2 · 25.4):
/// max' = 100 · ⌊max · k / 100⌋ + 100, min' the same when min > 0, else 1; the result is
/// "von 1:" + min' + " bis 1:" + max'. The cell `ScaleHint: min="100.0"` keeps its values as they
/// stand. Any other cell comes back unchanged.
std::string MaßstabUmrechnen(std::string_view zelle);

/// The button for all rows: asks "Sollen alle ScaleHint-Angaben in Maßstab 1:? umgerechnet
/// werden?" (title "Web-Service, 96 dpi") and converts every ScaleHint cell. Ok with the number of
/// rows changed in the message; Abgebrochen on No.
Ergebnis MaßstäbeUmrechnen(Dienstkatalog& katalog, Oberfläche& ui);

} // namespace flurix::karte
