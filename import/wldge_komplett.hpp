#pragma once
// The complete WLDGE reader: a file of format "32" is read record by record into the staging
// database, and the parcel entries and owners are joined into rows of the cadastre table.

#include "core/fehler.hpp"

#include <filesystem>
#include <string>
#include <vector>

namespace flurix {
class Kataster;
class Oberfläche;
} // namespace flurix

namespace flurix::import {

struct ImportOptionen;

/// Where the reader works and what the table shows afterwards.
struct WldgeKomplettUmgebung {
    std::filesystem::path arbeitsverzeichnis; ///< the staging database lies here
    std::filesystem::path ansichtsdatei;      ///< ALB_DatenbankSpalten.dat
    std::string ansicht = "alles";            ///< the view chosen in the view box
};

/// What the reader tells besides the table.
struct WldgeKomplettBericht {
    long long zeilen = 0;     ///< lines of the file
    std::string flurstücke;   ///< the parcel count of the trailer ("0" without trailer)
    std::string bestände;     ///< the count of Bestände of the trailer
    std::vector<std::string> gemarkungFlur; ///< "Gemarkung, Flur: 001" entries for the search box
};

/// Reads the file (already checked for its header and converted to CR LF) into `kataster`, which
/// it replaces. Every message and status text goes through `ui`. Returns Fehler when the staging
/// database can't be made (a program opened twice) or the header names another format; a bad
/// record is reported and passed over, a failing statement is passed over.
Ergebnis WldgeKomplettLesen(const std::filesystem::path& datei, const ImportOptionen& optionen,
                            const WldgeKomplettUmgebung& umgebung, Kataster& kataster,
                            Oberfläche& ui, WldgeKomplettBericht* bericht = nullptr);

} // namespace flurix::import
