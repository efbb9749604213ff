#pragma once
// The land-use areas of the parcels: each parcel of AX_Flurstueck is intersected with the
// polygons of the class tables its options name (land use, soil assessment, public-law areas);
// what it takes of each goes into its list columns (AlkisNA, BS_..., INFO_...), which the
// compilation then carries into Alkis. Polygons that parcels have used up are not tested again.
// The walk is the row-by-row walk over parcels, classes and class rows in table order; a grid over
// the class polygons' boxes only spares it the rows that could not meet the parcel.

#include "core/fehler.hpp"
#include "nas/geometrie.hpp"
#include "nas/nas_optionen.hpp"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {
class Datenbank;
class Oberfläche;
} // namespace flurix

namespace flurix::nas {

class NasProtokoll;

/// The class tables of the options, in the order they are walked; empty when no area computation
/// is asked for. A "nur ..." option takes precedence over the full list.
std::vector<std::string_view> Klassenliste(const NasOptionen& optionen);

/// Smallest intersection that counts, in m², when the setting ClipperMinFläche is empty.
inline constexpr double StandardMinFläche = 0.005;

struct Flächenauftrag {
    NasOptionen optionen;
    std::filesystem::path konfigOrdner; ///< ALKIS_Werteart.dat, ALKIS_Nutzungsart.dat
    /// Where the drawings of the intersections go (with the exchange files of each pair); empty,
    /// or the option "drawings delete" on: none are written.
    std::filesystem::path zeichnungsordner;
    double minFläche = StandardMinFläche;
    double pfeilhöhe = StandardPfeilhöhe; ///< sagitta of the chords of arcs
    /// The parcel keys to compute (flurstueckskennzeichen); std::nullopt: all parcels.
    std::optional<std::set<std::string, std::less<>>> auswahl;
};

struct Flächenbericht {
    std::int64_t flurstücke = 0;      ///< parcels computed
    std::int64_t ohneVerschneidung = 0; ///< of them without any hit
    std::int64_t schnitte = 0;        ///< intersections computed
    std::int64_t gleicheUmringe = 0;  ///< pairs equal to the parcel, no intersection needed
    std::int64_t treffer = 0;         ///< entries written to the list columns
    bool abgebrochen = false;         ///< the user stopped it (Escape)
};

/// The question before the compilation: for all parcels, or for `ausgewählt` of them when the
/// main table has a selection. True for Yes.
bool AuswahlNaBerechnung(Oberfläche& ui, std::optional<std::size_t> ausgewählt);

/// Runs the area computation on the object database and, with the option of fitting, the fitting
/// of the areas to the official area. Fehlschlag without parcels ("Keine Flurstücksdaten
/// vorhanden! Abbruch!   ") or when the user ends it at the question on missing owners; Fehler
/// of the database are thrown. A pair that can't be computed is noted in the protocol and the walk
/// goes on.
Ergebnis Flächenverschneidung(Datenbank& db, const Flächenauftrag& auftrag, NasProtokoll& protokoll,
                              Oberfläche& ui, Flächenbericht& bericht);

} // namespace flurix::nas
