#pragma once
// The quick WLDGE reader ("WLDGE-Daten teilweise einlesen"): the main data of a file of format
// "32" or "35", read in memory without a database. The reader holds all lines of the file and makes
// several passes over them: counting, loading, the key texts of blocks 7 and 8, the parcels, the
// Bestände (format "32") or the owner lines of the parcels (format "35"), and the rows.
//
// Status panels: 1 the progress ("57%/40% eingelesen  ") and the row count at the end, 2 the file's
// name, 3 the parcels in a land-ordering procedure, 4 the summary.

#include "core/fehler.hpp"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {
class Kataster;
class Oberfläche;
} // namespace flurix

namespace flurix::import {

struct ImportOptionen;

/// The owner table holds the owners of one Bestand; a Bestand with more ends the load.
inline constexpr std::size_t HöchstzahlEigentümer = 5000;

/// The reader's messages, word for word.
inline constexpr std::string_view MeldungKeineFlurstücke =
    "In der ALB-Datei wurden keine Flurstücke vorgefunden!   ";
inline constexpr std::string_view MeldungKeineDaten =
    "In der ALB-Datei wurden keine Daten vorgefunden!   ";

/// What the reader tells besides the table.
struct WldgeSchnellBericht {
    std::string format;               ///< "32" or "35"
    long long zeilen = 0;             ///< lines of the file
    long long flurstücke = 0;         ///< parcels (format "35": parcel and owner entries)
    long long ohneEigentümer = 0;     ///< entries without owner
    long long bov = 0;                ///< parcels in a land-ordering procedure
    std::vector<std::string> gemarkungFlur; ///< entries of the Gemarkung/Flur box, when asked for
};

/// Reads a WLDGE file of format "32" or "35" (converted to CR LF already) into `kataster`, which it
/// replaces with the catalogue's columns, rows in the catalogue's order, the fixed view of a quick
/// import and the default sort. Every status text and message goes through `ui`.
/// Returns Fehlschlag, leaving `kataster` as it was, when the file has no parcels, holds no data
/// this reader understands, or a Bestand has more than HöchstzahlEigentümer owners (each with its
/// message). Parcels without owner are reported and still give a row. Throws nothing: a file that
/// can't be read gives Fehlschlag with its message.
Ergebnis WldgeSchnellLesen(const std::filesystem::path& datei, const ImportOptionen& optionen,
                           Kataster& kataster, Oberfläche& ui,
                           WldgeSchnellBericht* bericht = nullptr);

} // namespace flurix::import
