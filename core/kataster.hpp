#pragma once
// The cadastre table Kataster: one row per parcel, or per parcel and owner. Every reader appends to
// it; search, marks, exports, reports and the map read it. All cells are strings, addressed by
// column key. The table is kept column by column, each column a pool of its distinct texts and one
// 32-bit number per cell, so that half a million rows of seventy columns stay well under a gigabyte
// and sorting compares numbers, not texts.

#include "core/textpool.hpp"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace flurix {

/// One column: key (what the code uses), header (what the user sees), width in twips, visibility,
/// and how it is shown.
struct KatasterSpalte {
    KatasterSpalte() = default;
    KatasterSpalte(std::string schlüssel_, std::string überschrift_, int breite_ = 1000)
        : schlüssel(std::move(schlüssel_)), überschrift(std::move(überschrift_)), breite(breite_) {}

    std::string schlüssel;
    std::string überschrift;
    int breite = 1000;
    bool sichtbar = true;
    bool zentriert = false;
    bool kontrollkästchen = false; ///< a check box column (checkdruck)
    bool schattiert = false;       ///< shaded (the column Flurstück)
    std::string format;            ///< display format: "" as it stands, "0" a plain number
};

class Kataster {
public:
    Kataster() = default;
    Kataster(const Kataster&) = delete;
    Kataster& operator=(const Kataster&) = delete;
    Kataster(Kataster&&) = default;
    Kataster& operator=(Kataster&&) = default;
    ~Kataster() = default;

    // --- columns -------------------------------------------------------------------------------

    std::size_t Spaltenzahl() const { return m_spalten.size(); }
    const KatasterSpalte& Spalte(std::size_t spalte) const { return m_spalten[spalte].kopf; }
    KatasterSpalte& Spalte(std::size_t spalte) { return m_spalten[spalte].kopf; }
    /// Index of the column with this key; nothing when the table has none.
    std::optional<std::size_t> SpaltenIndex(std::string_view schlüssel) const;
    /// Adds a column at the end (existing rows get empty cells) and returns its index. A key the
    /// table has already is not added twice: its index is returned and its header is left alone.
    std::size_t SpalteHinzufügen(KatasterSpalte spalte);

    /// Columns in the order they are shown: indices, first shown first.
    const std::vector<std::size_t>& Anzeigereihenfolge() const { return m_anzeige; }
    /// Moves a column to a place of the shown order (0 first); the others close up behind it.
    void SpalteVerschieben(std::size_t spalte, std::size_t platz);
    /// The shown order back to the order of the columns, every column visible.
    void AlleSpaltenZeigen();

    // --- rows and cells ------------------------------------------------------------------------

    std::size_t Zeilenzahl() const { return m_zeilen; }
    bool Leer() const { return m_zeilen == 0; }
    /// Adds a row from its cells in column order, joined by tabs. Missing cells stay empty,
    /// surplus cells are dropped.
    void ZeileHinzufügen(std::string_view tabGetrennt);
    /// Adds a row from its cells in column order.
    void ZeileHinzufügen(std::span<const std::string_view> zellen);
    std::string_view Zelle(std::size_t zeile, std::size_t spalte) const {
        const Spaltendaten& s = m_spalten[spalte];
        return s.pool.Text(s.zellen[zeile]);
    }
    /// The cell of the column with this key; "" when there is no such column.
    std::string_view Zelle(std::size_t zeile, std::string_view schlüssel) const;
    void ZelleSetzen(std::size_t zeile, std::size_t spalte, std::string_view text);
    /// Sets the cell of the column with this key; false when there is no such column.
    bool ZelleSetzen(std::size_t zeile, std::string_view schlüssel, std::string_view text);
    /// The row's cells in column order, joined by tabs.
    std::string ZeileAlsText(std::size_t zeile) const;

    /// Removes all rows and keeps the columns.
    void ZeilenLeeren();
    /// Removes rows and columns.
    void Leeren();
    /// Removes the rows whose indices are given (any order, doubles allowed).
    void ZeilenLöschen(std::span<const std::size_t> zeilen);

    // --- sort and find -------------------------------------------------------------------------

    /// Sorts the rows by a comma-separated list of column keys, the first deciding first. Keys the
    /// table has no column for are passed over. Text order is that of the German alphabet without
    /// regard to case (umlauts beside their vowels); the sort is stable. Selection moves with
    /// the rows.
    void Sortieren(std::string_view schlüsselliste, bool absteigend = false);

    /// The first row from `abZeile` on whose cell in `spalte` equals `begriff`, or begins with it
    /// when `begriff` ends with "*". Without regard to case. Nothing when no row is left.
    std::optional<std::size_t> Suchen(std::size_t spalte, std::string_view begriff,
                                      std::size_t abZeile = 0) const;
    /// All rows whose cell in `spalte` is exactly `text` (byte for byte), as an index that answers
    /// each question without a scan: build it once for many look-ups.
    class Index;
    Index IndexBauen(std::size_t spalte) const;

    // --- selection -----------------------------------------------------------------------------

    bool Ausgewählt(std::size_t zeile) const { return m_auswahl[zeile] != 0; }
    void Auswählen(std::size_t zeile, bool an = true) { m_auswahl[zeile] = an ? 1 : 0; }
    void AuswahlLeeren();
    std::size_t AnzahlAusgewählt() const;
    std::vector<std::size_t> AusgewählteZeilen() const;

    /// Bytes the table holds, for the benchmark's memory figure.
    std::size_t Speicher() const;

private:
    struct Spaltendaten {
        KatasterSpalte kopf;
        detail::Textpool pool;
        std::vector<std::uint32_t> zellen;
    };
    std::vector<std::uint32_t> Ränge(std::size_t spalte) const;

    std::vector<Spaltendaten> m_spalten;
    std::vector<std::size_t> m_anzeige;
    std::vector<std::uint8_t> m_auswahl;
    std::size_t m_zeilen = 0;
};

/// Rows by exact cell text of one column; made by Kataster::IndexBauen, valid until the table
/// changes.
class Kataster::Index {
public:
    /// The rows, in table order, whose cell is `text`; empty when none.
    std::span<const std::size_t> Zeilen(std::string_view text) const;

private:
    friend class Kataster;
    const detail::Textpool* m_pool = nullptr;
    std::vector<std::size_t> m_anfang; // per pool number: start in m_zeilen; one more at the end
    std::vector<std::size_t> m_zeilen;
};

/// Text folded for comparing without regard to case: lower case, umlauts as their vowels, ß as ss.
std::string Vergleichsform(std::string_view text);

} // namespace flurix
