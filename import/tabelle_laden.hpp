#pragma once
// Loading a saved table (".fil", also the machine form ".tsv") into the main table: the file is
// read, the search bar's Gemarkung and Flur box is filled, the check column, widths, sort and view
// are made as after any import.

#include "core/fehler.hpp"

#include <filesystem>
#include <string>
#include <vector>

namespace flurix {
class Kataster;
class Oberfläche;
} // namespace flurix

namespace flurix::import {

/// What the table shows after the load.
struct TabellenLadeumgebung {
    std::filesystem::path ansichtsdatei; ///< ALB_DatenbankSpalten.dat
    std::string ansicht = "alles";       ///< the view chosen in the view box
    /// The option "Suchbegriff Gemarkung" (chkFlurixSuchbegriffGemarkung): the box is then filled
    /// from the parcel keys (BoxGemFlurNASFüllen) whatever the row count.
    bool suchbegriffGemarkung = false;
};

/// Below this many rows the box is filled from the columns Gemarkung and Flur; above, a table of a
/// whole district would keep the user waiting for a list nobody scrolls.
inline constexpr std::size_t GemFlurBoxGrenze = 5000;

/// Loads the table file `datei` in these steps:
/// 1. Progress starts (0 of 1); the file is read into a new table (KatasterLaden). When that fails:
///    "Während des Lesens der Daten aus der Datei " + path + " ist ein Fehler aufgetreten!", title
///    "Flurix", and `kataster` is left as it was.
/// 2. With a column `Gemarkung`: with the option on BoxGemFlurNASFüllen, else below 5000 rows
///    BoxGemFlurFüllen; the entries go to `boxEinträge` (emptied first, when given).
/// 3. `checkdruck` is a check box column again (added when the file has none).
/// 4. Status panel 1: rows + " Zeilen eingelesen  ".
/// 5. ALBDatenColFormatierung, sort by "Gemarkung,Flur,Flurstück,Eigentümerposition", the view.
/// Then the new table replaces `kataster`. Returns Ok, or Fehler with the message shown. Never
/// throws.
Ergebnis GespeicherteTabelleLaden(const std::filesystem::path& datei,
                                  const TabellenLadeumgebung& umgebung, Kataster& kataster,
                                  Oberfläche& ui, std::vector<std::string>* boxEinträge = nullptr);

} // namespace flurix::import
