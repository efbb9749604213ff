#pragma once
// The list of coordinate systems the map offers to choose from: config/ALKIS_EPSG.dat, the file
// the NAS import reads its systems from, one "<name>=<code>" line each.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace flurix::karte {

/// One entry of the list: the text shown and the code stored when it is taken.
struct EpsgEintrag {
    std::string text; ///< the line's first field (before "="), trimmed
    std::string code; ///< the part behind "=", trimmed: "25832_32"
};

/// The entries of a configuration text in file order. A line that holds "*" anywhere or is empty
/// after trimming is passed over; lines end with CR LF or LF. The first entry is the one the
/// window preselects.
std::vector<EpsgEintrag> EpsgListe(std::string_view konfigText);

/// EpsgListe of the file (Windows-1252 or UTF-8); empty when the file is missing. Throws Fehler
/// when it exists but can't be read.
std::vector<EpsgEintrag> EpsgListeLesen(const std::filesystem::path& datei);

} // namespace flurix::karte
