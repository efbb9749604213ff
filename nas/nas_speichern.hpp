#pragma once
// "Speichern unter" of the NAS window: the NAS database as a copy, the grid as ';'-separated text
// or Excel workbook, and the drawing of the data set as GEOgraf or DXF file. The target is written
// under a temporary name and renamed at the end, so that a failure never leaves half a file and an
// existing file stays whole until the new one is complete.

#include "core/fehler.hpp"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {
class Oberfläche;
}

namespace flurix::nas {

class NasArbeitsbereich;

/// The target formats, numbered as the entries of the dialog's filter.
enum class NasZiel { Datenbank = 1, Csv, Excel, Geograf, Dxf, DxfOut };

/// The dialog's filter. The database entry keeps the name users know ("Access (*.mdb)") and
/// writes an SQLite file; the Excel entry writes a workbook (.xlsx).
inline constexpr char NasSpeicherFilter[] =
    "Access (*.mdb)|*.sqlite;*.mdb|Excel (*.csv)|*.csv|Excel (*.xls)|*.xlsx|Geograf (*.out)|*.out|"
    "ACAD (*.dxf)|*.dxf|ACAD-out (*.dxf)|*.dxf|";

/// The format of a file name by its extension: .sqlite/.mdb/.db, .csv, .xlsx/.xls, .out, .dxf.
/// False for any other.
bool NasZielAusEndung(const std::filesystem::path& datei, NasZiel& ziel);

struct NasSpeicherauftrag {
    std::filesystem::path ziel;
    NasZiel format = NasZiel::Datenbank;
    /// For text and Excel: the grid's query in SQLite's SQL (its table, filter and order); empty
    /// takes the table `tabelle` as it is.
    std::string abfrage;
    std::string tabelle;
    /// The visible columns in the order shown; empty: all columns of the query.
    std::vector<std::string> spalten;
    /// The selected rows, 0-based in the order of the query; empty: all rows.
    std::vector<std::int64_t> zeilen;
    bool textSchraffur = false; ///< GEOgraf output with texts and hatching ("/txt-sch")
    /// An unattended run: no question; an existing target is replaced (a batch run again).
    bool still = false;
};

/// ALKISspeichernUnter: with no data "Keine Daten zum Speichern vorhanden! Abbruch!   "; an
/// existing target asks "Datei schon vorhanden!" / `Datei "<name>" ersetzen?   `; the questions
/// and messages of each format. Ok when the file is written, Abgebrochen on a No.
Ergebnis ALKISspeichernUnter(NasArbeitsbereich& bereich, const NasSpeicherauftrag& auftrag, Oberfläche& ui);

} // namespace flurix::nas
