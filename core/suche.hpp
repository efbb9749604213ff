#pragma once
// The search bar of the main window: a term typed by a person is padded to the zero-filled text the
// register keeps in that column, searched for in one column of the cadastre table, optionally within
// one Gemarkung and Flur, and the hits are selected. Also the lists of Gemarkung and Flur pairs
// that the search bar offers.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {

class Kataster;
class Oberfläche;
class Stempelnummerierung;

/// A whole number given as digits, written with at least `stellen` digits, zeros in front: "231"
/// with 5 gives "00231", "0007" with 3 gives "007", "123456" with 5 stays "123456". Blanks around
/// it are dropped. Anything that is not digits alone ("", "12a", "-3", "1.5") comes back as it
/// was, the way a number format leaves a text that is no number. Never fails.
std::string NullenAuffüllen(std::string_view zahl, std::size_t stellen);

/// The term as it must be searched for in the column `spalte`, tested in this order:
/// `Fläche` 9 digits, `Grundbuchblatt` 7, `Flur` 4; `Flurstück` with "_": Zähler 5 digits, "_",
/// Nenner 4 ("12_3" → "00012_0003"); `Flurstück` without "/": 5 digits and "/0000"
/// ("231" → "00231/0000"); `Flurstück` with "/": Zähler 5, "/", Nenner 4; any other column: the
/// term as typed. The widths are those of NAS data (Flur and Nenner of four digits): after a WLDGE
/// import, whose cells have three, a padded term in these columns finds nothing, as it always has.
/// A blank term stays "": see CmdFlurixSuchbegriff for what it finds. Never fails.
std::string SuchbegriffAuffüllen(std::string_view spalte, std::string_view begriff);

/// One entry of the Gemarkung and Flur box.
struct GemarkungFlur {
    std::string gemarkung; ///< the Gemarkung's name; with `ausKennzeichen` its 6-digit key
    std::string flur;      ///< the Flur number as the table shows it ("007")
    /// The pair comes from BoxGemFlurNASFüllen: a row's Gemarkung and Flur are then characters
    /// 1 to 6 and 7 to 9 of its `Flurstückskennzeichen`, not the columns `Gemarkung` and `Flur`.
    bool ausKennzeichen = false;

    bool operator==(const GemarkungFlur&) const = default;
};

/// The text of a box entry: Gemarkung, ", ", Flur.
std::string BoxEintrag(const GemarkungFlur& paar);

/// The pair of a box entry, split at its last ", " (a Gemarkung name may hold a comma, a Flur
/// number never does). Nothing for a text without ", ".
std::optional<GemarkungFlur> GemarkungFlurAusEintrag(std::string_view eintrag,
                                                     bool ausKennzeichen = false);

/// True when the row lies in the Gemarkung and Flur of `paar`. The Gemarkung must match exactly;
/// Flur numbers match as numbers when both are digits ("7" and "007"), else exactly.
bool ZeileInGemarkungFlur(const Kataster& kataster, std::size_t zeile, const GemarkungFlur& paar);

/// The search of the search bar. The term is padded for the column (SuchbegriffAuffüllen); with
/// `alleEigentümerInEinerZeile` a "*" is put behind it, so that it matches the start of a cell
/// that holds a list of owners. The column is searched from its first row, each next search from
/// the row after the last hit, until no row is left; the comparison is that of Kataster::Suchen
/// (whole cell, or its start for a term ending in "*", without regard to case). With `paar`, rows
/// outside that Gemarkung and Flur don't count.
///
/// The padded form is that of NAS data ("00012/0003"); WLDGE cells ("00012/003") and Web-XML
/// cells ("12/3") never match it. So when the padded form finds nothing and the term as typed
/// (trimmed, with the same "*") differs from it, the term as typed is searched as well. When that
/// finds rows, status panel 2 shows WieEingegebenHinweis, and `hinweis`, when given, gets the same
/// text (the command line writes it to stderr); otherwise both are emptied.
///
/// A blank term matches every row: with a chosen pair it finds all rows of the pair, without one
/// it selects the whole table.
///
/// The selection is cleared first and then holds exactly the hits; status panel 1 shows the count
/// + " Zeile(n) selektiert  ". With `lageplan` (the view "AL-amtl.Lageplan" is shown) each hit is
/// also marked and numbered as a click on its mark would (MarkierungGeklickt). Then the rows are
/// sorted by "Gemarkungsschlüssel,Grunbuchblatt,Eigentümerposition": the middle key is spelled so
/// and no column has it, so the sort passes over it. Without a hit the message "Der Suchbegriff <"
/// + term + "> wurde nicht gefunden!   " appears (with a pair: "Der Suchbegriff <" + term + ">
/// Gemarkung: " + name + ", Flur: " + number + " wurde nicht gefunden!   "), title "Flurix", where
/// term is the text searched for, padded and with its "*". A column key the table hasn't finds
/// nothing. Returns the number of hits.
std::size_t CmdFlurixSuchbegriff(Kataster& kataster, std::string_view spalte,
                                 std::string_view begriff, const std::optional<GemarkungFlur>& paar,
                                 bool alleEigentümerInEinerZeile, Stempelnummerierung* lageplan,
                                 Oberfläche& ui, std::string* hinweis = nullptr);

/// The note of a search that found its rows only by the term as typed:
/// "Kein Treffer für „" + padded + "“, gesucht wie eingegeben: " + typed.
std::string WieEingegebenHinweis(std::string_view aufgefüllt, std::string_view eingegeben);

/// The entries of the Gemarkung and Flur box: the table is sorted by "Gemarkungsschlüssel,Flur",
/// and each new pair of `Gemarkung` and `Flur` on the way down gives one entry "Gemarkung, Flur".
/// Status panel 1 shows the percent of rows walked + "% Gemarkungschlüssel zuordnen  " each time
/// it grows, at the end "100% Gemarkungschlüssel zuordnen  ". An empty table gives no entry.
std::vector<std::string> BoxGemFlurFüllen(Kataster& kataster, Oberfläche& ui);

/// The same for NAS tables, where the Gemarkung is part of the parcel key: the table is sorted by
/// `Flurstückskennzeichen`, and an entry is characters 1 to 6 of the key (Land and Gemarkung, the
/// Gemarkung number a parcel list names) + ", " + characters 7 to 9 (the Flur). Rows whose key is
/// shorter than 9 characters give no entry. Status texts as BoxGemFlurFüllen.
std::vector<std::string> BoxGemFlurNASFüllen(Kataster& kataster, Oberfläche& ui);

namespace detail {

/// The percent of long work in a status panel: whole percent, rounded down, + a text, shown only
/// when it changed since the last time, so that half a million rows give a hundred status texts.
class Prozentanzeige {
public:
    Prozentanzeige(Oberfläche& ui, int panel, std::string_view text)
        : m_ui(ui), m_panel(panel), m_text(text) {}
    /// `erledigt` of `gesamt` done.
    void Zeigen(std::size_t erledigt, std::size_t gesamt);

private:
    Oberfläche& m_ui;
    int m_panel;
    std::string_view m_text; ///< a literal: lives as long as the program
    std::size_t m_zuletzt = static_cast<std::size_t>(-1);
};

} // namespace detail

} // namespace flurix
