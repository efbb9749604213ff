#pragma once
// Marks of the cadastre table: the check box column `checkdruck`, whose marked rows exports, reports
// and the map take; the stamp numbers of `ID_GG` for the GEOgraf site plan; the toolbar group
// btnMarkierung; and the parcel lists (".lst") that set marks or keep them.
//
// A mark and the selection are two things: the selection is what the grid highlights, a mark is a
// cell of the table that is saved with it.

#include "core/fehler.hpp"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {

class Kataster;
class Oberfläche;

/// Key of the check box column.
inline constexpr std::string_view SpalteMarkierung = "checkdruck";
/// Key of the stamp number column.
inline constexpr std::string_view SpalteStempel = "ID_GG";
/// Cell of a set mark. A cleared mark is the empty cell, as every reader leaves the column.
inline constexpr std::string_view MarkeGesetzt = "1";

/// True when a `checkdruck` cell holds a mark: any text but "", "0", "false" and "falsch" (in any
/// case), so that tables saved by other programs with "True" or "-1" keep their marks.
bool IstMarke(std::string_view zelle);
/// True when the row has a mark; false when the table has no `checkdruck` column.
bool Markiert(const Kataster& kataster, std::size_t zeile);

/// The marked rows become the selection (rows without a mark are deselected), as they do before the
/// GEOgraf export; returns how many rows are selected now.
std::size_t MarkierteAuswählen(Kataster& kataster);

/// The index of `checkdruck`; a table without it (a saved table of an older kind) gets it at the
/// end: empty caption, width 600, centred, a check box column.
std::size_t MarkierungsspalteSicherstellen(Kataster& kataster);
/// The index of `ID_GG`, added at the end (caption "ID_GG", width 600) when missing.
std::size_t StempelspalteSicherstellen(Kataster& kataster);

/// Sets or clears the mark of a row and nothing else (no number is given): marks set by a list, a
/// toolbar key or a program. Adds `checkdruck` when missing.
void MarkeSetzen(Kataster& kataster, std::size_t zeile, bool an);

/// The numbering of the site plan: `StempelNr` is the last stamp number given. The caller owns
/// one per main window; it starts at 0.
class Stempelnummerierung {
public:
    std::int32_t StempelNr() const { return m_stempelNr; }
    /// Back to 0: the next number given is 1.
    void Zurücksetzen() { m_stempelNr = 0; }
    /// Adds 1 and returns the new number. At the largest 32-bit number it stays there rather than
    /// wrap to a negative stamp.
    std::int32_t Weiterzählen();

private:
    std::int32_t m_stempelNr = 0;
};

/// A click on a row's check box, as the grid reports it: the mark is set or cleared, and
/// - set: when the row's `ID_GG` is empty, `StempelNr` grows by 1 and is written there (a row
///   numbered before keeps its number, and no number is used up);
/// - cleared: `ID_GG` is cleared.
/// So the numbers follow the order of the clicks, the order the site plan shows them in.
/// `checkdruck` and `ID_GG` are added when missing.
void MarkierungGeklickt(Kataster& kataster, std::size_t zeile, bool an,
                        Stempelnummerierung& nummerierung);

// --- the toolbar group btnMarkierung -------------------------------------------------------------
// Each function is the action of the key of the same name with "btn" before it. Status texts go to
// panel 1.

/// Numbering view on: `StempelNr` back to 0, and the column view "AL-amtl.Lageplan" of the views
/// file is applied (ComboColVis). Returns false, with the table's view unchanged, when the views
/// file has no such view; the numbering is reset all the same.
bool DbEigentümerGGStempel(Kataster& kataster, Stempelnummerierung& nummerierung,
                           const std::filesystem::path& ansichtsdatei);

/// Marks every selected row; status "alle Markierungen erzeugt  ".
void DbMarkierungErzeugen(Kataster& kataster, Oberfläche& ui);

/// The same for the map's markers: the map draws a marker on each marked row, so the selected rows
/// are marked as above; status "alle Marker erzeugt  ".
void DbMarkerErzeugen(Kataster& kataster, Oberfläche& ui);

/// Asks "Es werden alle Markierungen und Marker gelöscht! Weiter?   " (title "Flurix", Yes and
/// No; an unattended run goes on). Yes clears `checkdruck` and `ID_GG` of all rows and shows
/// "alle Markierungen gelöscht  "; `StempelNr` is left as it is. Returns false for No, with
/// nothing changed.
bool DbMarkierungLöschen(Kataster& kataster, Oberfläche& ui);

/// Marks all rows; status "alle Zeilen markiert  ".
void DbMarkierungAlle(Kataster& kataster, Oberfläche& ui);

/// Selects and marks all owner rows of each selected parcel. A parcel is told by its cells of
/// `Flurstückskennzeichen`, `Gemarkungsschlüssel`, `Flur` and `Flurstück` together (a quick WLDGE
/// import leaves the first empty, the others tell its parcels apart), so its rows are found
/// wherever the sort has put them. On the way, panel 1 shows the percent of the table's rows walked
/// + "% selektiert  " each time it grows; at the end panel 1 shows the count + " Zeile(n)
/// selektiert  " and panel 2 the count + " Markierungen erzeugt  ". Returns the rows selected.
std::size_t DbFlurstückMarkieren(Kataster& kataster, Oberfläche& ui);

/// Writes the `Flurstückskennzeichen` of each marked row, in table order, one a line, to `name` +
/// ".lst" (a name that ends in ".lst" already gets no second one): Windows-1252, CR LF after each
/// line. A key equal to the one before it is written once; an empty key is left out, as it could
/// not be read back. Then the message "Markierte Daten wurden unter: " + name + ".lst
/// abgespeichert!   " (title "Flurix"). When the file can't be written, the error is shown and
/// returned; an old file of that name may then be lost.
Ergebnis DbMarkierungSpeichern(const Kataster& kataster, const std::filesystem::path& name,
                               Oberfläche& ui);

// --- parcel lists --------------------------------------------------------------------------------

/// Filter of the dialog that chooses a parcel list.
inline constexpr std::string_view FlurstückslisteFilter =
    "FKZ (*.lst)|*.lst|Flurstücksformat (*.prn)|*.prn|alle Daten (*.*)|*.*|";
/// What the dialog tells the user about a list, line by line.
inline constexpr std::string_view FlurstückslisteHinweis[] = {
    "Die Daten für die in der Datenbank zu suchenden Flurstücke müssen nachfolgendes Format haben.   ",
    "Die einzelnen Datenblöcke sind durch beliebige Leerzeichen getrennt.",
    "Flurstückskennzeichen oder <Gemarkungsnummer> <Flur> <Flurstücksnummer>",
    "z.B.: \"12195500700231000100\", \"121955 007 00231/0001\", \"12-1955-007-00231/0001\" oder "
    "\"121955 7 231/1\"",
};

/// The form of a line of a parcel list, tested in this order.
enum class Listenform {
    Kennzeichen, ///< 20 characters, no blank, no "/", no "-": the parcel key itself
    Leerzeichen, ///< holds "/" and " ": Gemarkung, Flur, Flurstück between blanks
    Bindestrich, ///< holds "/" and "-": Land-Gemarkung-Flur-Flurstück
    Formatfehler ///< anything else, a blank or dash form with too few pieces included
};

/// One line of a parcel list, read.
struct Listenzeile {
    Listenform form = Listenform::Formatfehler;
    std::string gemarkung;   ///< Land and Gemarkung, 6 characters as given
    std::string flur;        ///< as given
    std::string flurstück;   ///< as given: "231/1", "00231/0001" or "231"
    std::string kennzeichen; ///< the 20-character key to look for; "" for a format error
};

/// Reads one line (after TextSäubern). Pieces beyond those the form needs are ignored. The key is
/// FlurstückskennzeichenBilden of the pieces; for the plain key it is the line itself. Never fails:
/// a line of no form is Listenform::Formatfehler.
Listenzeile ListenzeileLesen(std::string_view zeile);

/// The parcel key of Gemarkung, Flur and Flurstück: Gemarkung as it stands, Flur of 3 digits, then
/// a Flurstück without "/" as Zähler of 5 digits and "0000"; with "/" the Zähler of 5 digits and
/// the Nenner of 4; and "00" at the end: "121955", "7", "231/1" → "12195500700231000100".
std::string FlurstückskennzeichenBilden(std::string_view gemarkung, std::string_view flur,
                                        std::string_view flurstück);

/// The lines of a parcel list's text: CR LF, LF and a lone CR each end a line. A last piece that
/// is blank (blanks, tabs, line ends, byte 26) is no line, so a list counts as many lines as
/// ZeilenZählen counts for a file with CR line ends, and a list written on Linux reads the same.
std::vector<std::string_view> ListenZeilen(std::string_view text);

/// What DbMarkierungLaden did.
struct Listenergebnis {
    Ergebnis ergebnis;              ///< Ok; or failed with the message shown
    std::size_t listenzeilen = 0;   ///< lines of the list
    std::size_t flurstücke = 0;     ///< lines whose key was found (a parcel of three owners is one)
    std::size_t nichtGefunden = 0;  ///< lines whose key was not found
    std::size_t selektiert = 0;     ///< rows selected and marked by the list
};

/// Loads a parcel list and marks what it finds (btnDbMarkierungLaden, after its dialog):
/// 1. The lines are read (ListenZeilen), each through TextSäubern; the text is taken as UTF-8 when
///    it is that, else as Windows-1252.
/// 2. The rows selected so far are marked, so that no earlier choice is lost, and the selection is
///    cleared. `checkdruck` is added when missing.
/// 3. For each line its key is built (ListenzeileLesen); panel 1 shows the line number + " von " +
///    the number of lines + " Flurstück(e) gesucht  ". Every row whose `Flurstückskennzeichen` is
///    the key (the whole cell, byte for byte) is selected and marked: a parcel with several owners
///    has several rows. The rows are looked up through one index of the column, never a scan per
///    key, with the same rows as a search from each last hit on would find.
/// 4. A key without a row goes to the error file beside the list, named the list's path + ".err":
///    each line the line number, ", FKZ: ", the key, " in \"", the list's path, "\" nicht
///    gefunden", in Windows-1252 with CR LF. The file is always written, empty when every key was
///    found, so that an old one never stays behind.
/// 5. The rows are sorted: marked rows first, then by "Gemarkungsschlüssel,Flur,Grundbuchblatt,
///    Flurstück,Eigentümerposition", so that what the list found stands at the top.
/// 6. Panel 1 shows the rows selected + " Zeilen selektiert   "; when keys were missing, panel 2
///    their count + " Flurstücken nicht gefunden " and panel 3 "Fehler siehe in " + the list's path
///    + ".err   ". When no row was found (an empty list included): the message "Es wurden keine
///    identischen Flurstücke in der Datenbank gefunden und selektiert!", title "Flurix".
/// A line of no form stops the load at once with the message "Bitte überprüfen Sie die
/// Eingabedatei " + path + "! Formatfehler?!   ", title "Flurix": the marks set so far stay, the
/// error file holds the keys missed so far, no sort is made, and the result is failed. A list that
/// can't be read, or an error file that can't be written, is shown and returned as failed.
Listenergebnis DbMarkierungLaden(Kataster& kataster, const std::filesystem::path& liste,
                                 Oberfläche& ui);

} // namespace flurix
