#pragma once
// The GEOgraf batch export (WriteGeografOut): the rows of the table as a GRAFBAT file ".out" for
// the surveying system GEOgraf, either as free text blocks at each parcel's coordinates or as a
// stamp, a table of one line per parcel and land-register sheet at a fixed place of a drawing
// sheet. The options and the column lists the export dialog offers are library data here, so
// that the dialog and `flurix export --format geograf` share them.
//
// What becomes of awkward characters in a text line "  TX<n>: <text>": the text runs to the end
// of the line, so a quote or a comma in it is written as it stands (GEOgraf takes the rest of the
// line as the text; the reader of export/grafbat_leser.hpp does the same). A CR, LF or TAB inside
// a cell would cut the record in two: each becomes one blank. A character that Windows-1252 has
// not becomes "?". The same holds for the lines of ".out.err".

#include "core/fehler.hpp"
#include "core/oberflaeche.hpp"

#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {
class Kataster;
}

namespace flurix::ausgabe {

/// The output forms, numbered as the dialog's option array numbers them. The dialog shows
/// "ohne", "nur plausible Beschriftung", "alle  ", stamp A, stamp B: the index decides, not the
/// order on screen.
enum class GeografForm {
    Ohne = 0,      ///< "ohne": text block, the values only
    Alle = 1,      ///< "alle  ": text block, every value with its column name
    Plausibel = 2, ///< "nur plausible Beschriftung": only some columns labelled
    StempelA = 3,  ///< "für Geograf Stempel-A "
    StempelB = 4,  ///< "für Geograf Stempel-B"
};

/// The thirty columns the dialog offers, in its order.
inline constexpr std::array<std::string_view, 30> GeografAngeboteneSpalten = {
    "Landkreis",
    "Dienststelle",
    "Gemeinde",
    "Gemeindeschlüssel",
    "Gemarkung",
    "Gemarkungsschlüssel",
    "Flur",
    "Amtsgericht",
    "Amtsgerichtsschlüssel",
    "Grundbuchbezirk",
    "Grundbuchblatt",
    "BVNR",
    "Buchungsart",
    "Anteil_Grundstück",
    "Flurstück",
    "Nutzungsart",
    "Fläche",
    "Prüfzeichen",
    "Aktualitätsnummer",
    "Eigentümerposition",
    "Name",
    "Namenszusatz",
    "Geburtsdatum",
    "Straße",
    "Ort",
    "sonstigesBOV",
    "Lagebezeichnung",
    "Straßenschlüssel",
    "Rechtswert",
    "Hochwert"};
/// The button "AL" (cmdAL): owner and area.
inline constexpr std::array<std::string_view, 2> GeografSpaltenAL = {"Name", "Fläche"};
/// What choosing stamp A or B puts into the output list.
inline constexpr std::array<std::string_view, 7> GeografStempelSpalten = {
    "Flurstück", "Fläche", "Grundbuchblatt", "BVNR", "Anteil_Grundstück", "Name", "Namenszusatz"};
/// The Art proposed when the column Flurstück is chosen.
inline constexpr int GeografArtFürFlurstück = 233;

/// The settings of the export dialog (FormExportGG).
struct GeografOptionen {
    int art = 0;                     ///< txtGGArt: GEOgraf Art of the texts
    int ebene = 0;                   ///< txtGGEbene: GEOgraf Ebene (layer)
    std::string mkz = "3";           ///< txtGGMKZ: meridian code put before each easting
    bool ohneFührendeNullen = false; ///< "ohne führende Nullen"
    bool eineZeile = false;          ///< "eine Zeile pro Flst/Gbb": folds selected rows in stamps
    GeografForm form = GeografForm::Ohne;
    std::vector<std::string> spalten; ///< the output columns (column keys), in order
    /// Date and time of header line 5 ("24.11.2026", "22:05:00"); when empty, the clock's local
    /// date and time. Tests and reproducible runs fix them.
    std::string datum;
    std::string uhrzeit;
};

/// Writes the GEOgraf batch file `ziel` (Windows-1252, CR LF) from the selected rows of the table,
/// all rows when none is selected. The file is written under a temporary name beside `ziel` and
/// renamed when whole; a failure leaves an earlier `ziel` as it was. In the text block forms a
/// row without coordinates (Rechtswert or Hochwert not above 0) gets a line appended to
/// `ziel` + ".err" (an earlier file is extended), its record number is passed over, and a warning
/// counts them at the end. In stamp A the tenth stamp line brings the hint to use stamp B once.
/// Panel 2 shows the percent every 20 rows, then "Datei <stem>.out erzeugt   ".
/// Never throws: a failure is shown as "GeografAusgabe ErrNr: <n> ..." (title "Flurix") and
/// returned.
Ergebnis WriteGeografOut(const Kataster& kataster, const GeografOptionen& optionen,
                         const std::filesystem::path& ziel, Oberfläche& ui);

/// The form named on the command line: ohne, alle, plausibel, stempel-a, stempel-b; false for any
/// other name.
bool GeografFormAusName(std::string_view name, GeografForm& form);

} // namespace flurix::ausgabe
