#pragma once
// "Speichern unter" of the main window (ALBDatenSpeichernUnter): the table leaves the program as
// delimited text, Excel workbook, XML, saved table, Access form or GEOgraf batch, after the
// questions the user has always been asked. Also the Access export on its own (ExportGridToAccess)
// and the HTML report of the table (CreateGridReport). The GUI shows the dialog and passes the
// chosen filter and path; the command line passes them from its arguments.

#include "core/fehler.hpp"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace flurix {
class Kataster;
class Oberfläche;
} // namespace flurix

namespace flurix::ausgabe {

struct GeografOptionen;

/// The filter entries of the save dialog, numbered as the dialog numbers them (from 1).
enum class Speicherformat {
    Geograf = 1,    ///< "Geograf (*.out)": the GEOgraf batch file
    TextTab = 2,    ///< "Excel-TAB (*.txt)"
    TextDollar = 3, ///< "Excel-$ (*.txt)"
    Excel = 4,      ///< "Excel (*.xls)": written as a workbook ".xlsx"
    Xml = 5,        ///< "XML (*.xml)"
    Flurix = 6,     ///< "Flurix (*.fil)": the saved table
    Access = 7,     ///< "Access (*.mdb)": an SQLite database with the table ACCESS
};

/// The filter string of the save dialog.
inline constexpr std::string_view SpeicherFilter =
    "Geograf (*.out)|*.out|Excel-TAB (*.txt)|*.txt|Excel-$ (*.txt)|*.txt|Excel (*.xls)|*.xls|"
    "XML (*.xml)|*.xml|Flurix (*.fil)|*.fil|Access (*.mdb)|*.mdb|";
/// The filter the dialog starts with: XML.
inline constexpr Speicherformat SpeicherFilterVorgabe = Speicherformat::Xml;

/// The extension a format's file gets: ".out", ".txt", ".txt", ".xlsx", ".xml", ".fil", ".mdb".
/// The Excel entry is still called "(*.xls)" as users know it, but the file is a real workbook of
/// today's form, and Excel refuses such a file under ".xls" with a warning: so ".xlsx".
std::string_view Endung(Speicherformat format);

/// How the file written is named from the path chosen.
enum class Zielname {
    /// The save stem + the format's extension (see Speicherstamm).
    Stamm,
    /// The path exactly as given (the command line: a script must know what it gets).
    WieAngegeben,
};

/// The save stem: `pfad` up to, not including, the last "." of its file name; a dot in a folder
/// name and the leading dot of a name (".liste") are kept ("/a.b/daten.txt" gives "/a.b/daten");
/// the whole path when the name has no other dot.
std::string Speicherstamm(std::string_view pfad);

/// What a save needs from its surroundings.
struct Speicherumgebung {
    /// Where the Access export builds its database and libxlsxwriter its scratch files.
    std::filesystem::path arbeitsverzeichnis;
    Zielname zielname = Zielname::Stamm;
    /// The GEOgraf batch export, handed the table and the chosen path. Empty: this version has
    /// none, and the user is told so.
    std::function<Ergebnis(const Kataster&, const std::filesystem::path&)> geograf;
};

/// Saves the table under `gewählt` in `format` (after the dialog of the main window):
/// 1. An empty table: the warning "In der ALB-Datei wurden keine Flurstücke vorgefunden!   ",
///    title "Flurix"; nothing is written.
/// 2. When the chosen file exists: "Datei " + path + " ersetzen?   ", title "Datei schon
///    vorhanden!", Yes and No. No ends the save; Yes deletes the file, and when that fails: the
///    warning "Eingabedatei " + path + " hat den Zugriff verweigert oder ist in Bearbeitung!?   ",
///    title "Datei in Bearbeitung!?", and the save ends.
/// 3. The target is named (Zielname); when its folder is missing or can't be written to, the error
///    "Die Datei " + target + " kann nicht erzeugt werden: Der Ordner " + folder + " ist nicht
///    vorhanden oder nicht beschreibbar!   " (title "Flurix") ends the save.
/// 4. Text, Excel, XML and Access ask "Es werden alle sichtbaren Datenspalten exportiert!
///    Weiter?   " (title "Export-Spaltentrenner: TAB", "Export-Spaltentrenner: $" or "Flurix"),
///    and, when rows are selected, "Es werden alle (" + n + ") selektierten Datenzeilen
///    ausgegeben! Weiter?   " (title "Flurix"); they write the visible columns in the order shown
///    and the selected rows, or all rows when none is selected. The saved table asks only "Es
///    werden alle Daten exportiert! Weiter?   " (title "Flurix") and writes all rows and columns.
///    A No ends the save with nothing written. While the rows are written, status panel 2 shows
///    the percent of them + "% ausgelesen  " (the Access export: "% exportiert  ").
/// 5. Status panel 2: "Datei " + target + " erzeugt   ".
/// A failure while writing is shown (title "Flurix", error style) and returned; no part of a file is
/// left behind. An unattended UI answers every question Yes. Never throws. Returns Ok, Abgebrochen
/// for a No, or Fehler with the message shown.
Ergebnis ALBDatenSpeichernUnter(const Kataster& kataster, Speicherformat format,
                                const std::filesystem::path& gewählt,
                                const Speicherumgebung& umgebung, Oberfläche& ui);

/// The GEOgraf branch after its dialog: asks "Es werden alle (" + n + ") selektierten
/// Datenzeilen ausgegeben! Weiter?   " when rows are selected, else "Es werden alle (" + n + ")
/// Datenzeilen ausgegeben! Weiter?   " with n the row count (title "Flurix", Yes and No), and on
/// Yes writes `ziel` (WriteGeografOut). Returns Abgebrochen for a No.
Ergebnis GeografSpeichern(const Kataster& kataster, const GeografOptionen& optionen,
                          const std::filesystem::path& ziel, Oberfläche& ui);

/// The Access export: the visible columns and the selected rows (all when none is selected) into a
/// new database file at `ziel` (replaced when it exists) with the table "ACCESS" (AccessSchreiber).
/// The database is built as "tmp_DAODB_GridFlurixToAccess_<n>.mdb" in `arbeitsverzeichnis` and
/// copied onto `ziel` at the end, so that a target on a network share is touched once; the scratch
/// file is deleted whatever happens. Panel 2 shows the percent of rows + "% exportiert  ". Throws
/// Fehler naming the file when it fails; `ziel` is then unchanged.
void ExportGridToAccess(const Kataster& kataster, const std::filesystem::path& ziel,
                        const std::filesystem::path& arbeitsverzeichnis, Oberfläche& ui);

/// Where the report is written: "report/report.htm" under the user's data folder
/// ($XDG_DATA_HOME/flurix, else $HOME/.local/share/flurix). The installation's folder is not
/// writable for users on Linux, and the working directory is cleared at exit; the data folder
/// keeps the last report, as the program's folder did.
std::filesystem::path BerichtsdateiStandard();

/// The HTML report of the table (HtmlSchreiber): all rows, the visible columns in the order shown,
/// written to `datei`, whose folder is made when missing. Returns Ok; when it can't be written, the
/// error is shown (title "Flurix") and returned. Status panel 2 shows the percent of rows written
/// + "% ausgelesen  ". The GUI opens the file in the browser afterwards.
/// Never throws.
Ergebnis CreateGridReport(const Kataster& kataster, const std::filesystem::path& datei,
                          Oberfläche& ui);

} // namespace flurix::ausgabe
