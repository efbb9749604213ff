#pragma once
// Column views and layouts of the cadastre table: the view "alles", the named views of
// ALB_DatenbankSpalten.dat, the fitted widths, the plain-number format of btnStempelPlus, and the
// deletion of rows with its questions.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {

class Kataster;
class Oberfläche;
struct KatasterSpalte;

/// The view built in: every column, in the order of the columns.
inline constexpr std::string_view AnsichtAlles = "alles";
/// The view of the site plan with its numbering.
inline constexpr std::string_view AnsichtLageplan = "AL-amtl.Lageplan";

/// The names of the views in the views file, "alles" first. A missing file gives "alles" alone.
std::vector<std::string> AnsichtenNamen(const std::filesystem::path& ansichtsdatei);

/// The key list of a named view ("key;key;..."), "" when the file has no such view.
std::string AnsichtSpalten(const std::filesystem::path& ansichtsdatei, std::string_view name);

/// Shows exactly the columns of a ";"-separated key list, each at the place of its key in the list;
/// all others are hidden. A key the table has no column for is passed over; a key named twice
/// leaves its column at its last place.
void SpaltenlisteAnwenden(Kataster& kataster, std::string_view schlüsselliste);

/// Applies the view chosen in the view box: "alles" shows every column in the order of the columns
/// (so that the order of an earlier view doesn't stick); any other name shows the columns its line
/// names. Then the column `Dienststelle` is fitted, the rows are sorted by the default order, and
/// for the site plan view with rows the column `ID_GG` is made ready for the numbering.
/// Returns false, leaving the table as it was, for a name the views file doesn't hold.
bool ComboColVis(Kataster& kataster, std::string_view ansicht,
                 const std::filesystem::path& ansichtsdatei);

/// Width in twips that a text needs in the table (an estimate from its characters; the window
/// may measure better).
int TextbreiteTwips(std::string_view text);

/// Fits every column's width to its header and longest cell, shades `Flurstück`, gives `Fläche`
/// the width 1200 and caps the long list columns at 2000.
void ALBDatenColFormatierung(Kataster& kataster);

/// The text a cell shows under its column's display format: with "0" a number without leading
/// zeros; with a pattern of zeros ("0000", "000000000.00") the number with that many places before
/// the point (zeros in front) and after it (rounded). An empty cell stays empty, a text that is no
/// number stays as it is.
std::string Anzeigeform(const KatasterSpalte& spalte, std::string_view text);

/// btnStempelPlus: after the question, `Flur`, `Fläche`, `Grundbuchblatt` and `BVNR` show plain
/// numbers and every `Flurstück` becomes "Zähler/Nenner" without zeros ("00231/001" → "231/1",
/// "00231/000" → "231"). Returns false when the user says No. Can't be undone in the table.
bool FlurstückZahlenformat(Kataster& kataster, Oberfläche& ui);

/// Deletes rows after the question ("Datensatz löschen?   " for one row, the warning with the count
/// for several), title "Löschen", with the percent in the status bar. Returns the rows deleted
/// (0 when the user says No).
std::size_t ZeilenLöschenMitFrage(Kataster& kataster, std::vector<std::size_t> zeilen,
                                  Oberfläche& ui);

} // namespace flurix
