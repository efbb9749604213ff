#pragma once
// The grid of the NAS work window without the window: a table or a query of the NAS database read
// page by page as the grid scrolls, its filter row, the columns it hides, the SQL query box and the
// warning before a large table is shown.
//
// Paging. A NAS table may hold millions of rows; the grid asks only for the rows it shows. A page
// of SeitenGröße rows is read by one statement that is reset at once, so no statement stays open
// between two scrolls and the compilation may write to the same file in between. A table is paged
// by its rowid, never by OFFSET: OFFSET walks every row before the page, so the last page of a
// million rows would cost a walk of the whole table at each scroll (bench/bench_nas_abfrage.cpp).
// - unsorted and unfiltered: when the rowids run without gaps (a table the scan filled), page p
//   starts at the smallest rowid + p * SeitenGröße; otherwise one walk over the rowids notes where
//   each page starts.
// - sorted or filtered: one statement gives the rowids of every row in their order, and a page
//   looks its rows up by rowid.
// A query of the SQL box has no rowid: it is paged by LIMIT and OFFSET over the query.

#include "core/oberflaeche.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {
class Datenbank;
}

namespace flurix::nas {

/// Rows read at once.
inline constexpr std::int64_t SeitenGröße = 256;
/// Pages kept in memory; the one used longest ago goes first.
inline constexpr std::size_t BehalteneSeiten = 16;

/// One column of a grid query.
struct Abfragespalte {
    std::string name;
    std::string typ;   ///< declared type, "" when the column has none (a computed one)
    bool zahl = false; ///< numeric by its declared type: the filter compares with >=
};

/// True when SQLite gives a column of this declared type a numeric affinity (INT, REAL, FLOA,
/// DOUB, NUMERIC, DECIMAL, ...); false for text, blob and no type.
bool IstZahlentyp(std::string_view typ);

/// The rows of one table or query of a NAS database, read page by page. Made by ÜberTabelle or
/// ÜberAbfrage; the Datenbank must outlive it. Every failure of the database throws Fehler with
/// its German message. Not copyable, movable.
class Seitenabfrage {
public:
    /// All rows of a table (or view) in the order they were stored. Throws Fehler when there is no
    /// such table.
    static Seitenabfrage ÜberTabelle(Datenbank& db, std::string_view tabelle);
    /// The rows of one SELECT in SQLite's SQL (the translated text of SqlAbfrageAusführen). Throws
    /// Fehler when it can't be prepared.
    static Seitenabfrage ÜberAbfrage(Datenbank& db, std::string_view select);

    Seitenabfrage(Seitenabfrage&&) noexcept = default;
    Seitenabfrage& operator=(Seitenabfrage&&) noexcept = default;
    Seitenabfrage(const Seitenabfrage&) = delete;
    Seitenabfrage& operator=(const Seitenabfrage&) = delete;
    ~Seitenabfrage() = default;

    /// The table's name, "" over a query.
    const std::string& Tabelle() const { return m_tabelle; }
    const std::vector<Abfragespalte>& Spalten() const { return m_spalten; }

    /// The number of rows with the filter; counted at the first call after a change.
    std::int64_t Zeilenzahl();
    /// The cells of row `zeile` (0-based, in the order of the sort) as text, "" for NULL. Valid
    /// until the next call of a non-const member. A row that is gone since it was counted (the
    /// table changed) gives empty cells; so does a row outside 0..Zeilenzahl()-1.
    std::span<const std::string> Zeile(std::int64_t zeile);

    /// Sorts by column `spalte` (of Spalten()), descending when asked; -1 takes back the order
    /// the rows were stored in. Rows of equal value keep that order.
    void Sortieren(int spalte, bool absteigend = false);
    int Sortierspalte() const { return m_sortierung; }
    bool Absteigend() const { return m_absteigend; }

    /// Shows only the rows for which the condition holds, in the program's Jet SQL (see
    /// Filterbedingung); "" shows all. The condition is translated and tried at once: one that
    /// doesn't translate or prepare throws Fehler, and the rows stay as they were.
    void Filtern(std::string_view jetBedingung);
    /// The condition as translated to SQLite, "" for none.
    const std::string& Filter() const { return m_filter; }

    /// Forgets the count and the pages read: after the data were changed under the grid.
    void Verwerfen();

    /// The SELECT of the rows as the grid shows them (filter, sort) in SQLite's SQL: for "Speichern
    /// unter". Its row n is Zeile(n) while nothing changes.
    std::string Sql() const;

private:
    struct Seite {
        std::int64_t nummer = 0;
        std::uint64_t benutzt = 0;
        std::vector<std::string> zellen; ///< rows × columns
    };

    Seitenabfrage(Datenbank& db, std::string tabelle, std::string quelle,
                  std::vector<Abfragespalte> spalten, std::string rowid);
    bool Schlüsselweise() const { return !m_rowid.empty(); }
    /// The columns of a page's SELECT.
    std::string Spaltenliste() const;
    /// FROM ... WHERE ... of the rows (no ORDER BY).
    std::string Auswahlquelle() const;
    std::string Ordnung() const;
    void Zählen();
    const Seite& SeiteHolen(std::int64_t nummer);
    /// Reads page `nummer` into `zellen`.
    void SeiteLesen(std::int64_t nummer, std::vector<std::string>& zellen);

    Datenbank* m_db;
    std::string m_tabelle;
    std::string m_quelle; ///< the FROM part: the quoted table or "(select)"
    std::vector<Abfragespalte> m_spalten;
    std::string m_rowid; ///< a name for the rowid the columns don't hide; "" over a query
    std::string m_filter;
    int m_sortierung = -1;
    bool m_absteigend = false;

    std::optional<std::int64_t> m_zeilen;
    bool m_lückenlos = false; ///< rowids m_ersteRowid .. + m_zeilen - 1, no gaps
    std::int64_t m_ersteRowid = 0;
    std::vector<std::int64_t> m_schlüssel; ///< page starts (unsorted) or every row (sorted)
    std::vector<Seite> m_seiten;
    std::uint64_t m_uhr = 0;
    std::vector<std::string> m_leer;
};

/// The filter row's Jet condition: for each column a text, empty texts left out. A text column
/// gives `[name] LIKE "<text>*"` (a `"` doubled, `#` and `[` made plain characters: `*` and `?`
/// stay the wildcards a user types), a numeric column `[name] >= <number>`; joined with " AND ".
/// "" when every text is empty. Throws Fehler naming the column when a numeric column's text is no
/// number ("," counts as decimal point). So no text of the user ever stands in SQL outside a
/// string.
std::string Filterbedingung(std::span<const Abfragespalte> spalten,
                            std::span<const std::string> texte);

/// The label above the grid after a table is chosen.
inline constexpr char SuchLabel[] = "Suche:";
/// The label while the filter row is edited.
inline constexpr char FiltersucheLabel[] =
    "Filtersuche: Kennzeichnung Kleinbuchstabe immer mit Hochkomma, z.B.: t'";

/// True for the columns the grid hides in AX_Flurstueck: the geometry (UmringFlurstück,
/// InteriorFlurstück, position, gml:LineStringSegment, gml:Arc, gml:exterior, gml:interior) and
/// those beginning with "DAO_". The table name is compared as Jet compares names.
bool SpalteVerborgen(std::string_view tabelle, std::string_view spalte);

/// Rows above which showing a table asks first. The grid opens a table of any size at once (a
/// million rows in 10 to 40 ms, the jump to its last page in 0.1 ms); what still reads the whole
/// table is a click on a column header or a filter on a column without index. A filter costs
/// little (0.2 s at a million rows), a sort most: 0.3 s at 250,000 rows, 0.6 to 0.8 s at 500,000,
/// 1.3 to 1.9 s at a million (bench_nas_abfrage, two runs on a shared two-core machine; rows with
/// a boundary ring of 1.4 KB cost a fifth more). Above 500,000 rows a header click keeps the
/// window still for about a second and more: there the warning starts.
inline constexpr std::int64_t VisualisierungWarnenAb = 500'000;
/// The question before a table of more than VisualisierungWarnenAb rows is shown, caption
/// "Flurix-NAS": Ja cancels showing it.
Fragestellung VisualisierungAbbrechenFrage(std::string_view tabelle);

/// What one statement of the SQL query box did.
struct SqlAbfrageErgebnis {
    enum class Art {
        Auswahl,  ///< a SELECT: `auswahl` holds it translated, for ÜberAbfrage
        Änderung, ///< any other statement ran and was kept; `geändert` rows changed
        Fehler,   ///< nothing ran or all was undone; `meldung` says why
    };
    Art art = Art::Fehler;
    std::string auswahl;
    std::int64_t geändert = 0;
    std::string meldung;
};

/// Runs one statement of the user through the Jet translation (Datenbank::Vorbereiten). Text
/// behind the first statement, a syntax error or a failure while running give Art::Fehler with
/// SQLite's message (or the database's for a second statement), and nothing changes: a statement
/// that changes data runs inside a SAVEPOINT that is rolled back on failure and released on
/// success. A SELECT is only prepared, not run. BEGIN, COMMIT, END, ROLLBACK, SAVEPOINT and
/// RELEASE are refused: they would end the SAVEPOINT. Never throws Fehler.
SqlAbfrageErgebnis SqlAbfrageAusführen(Datenbank& db, std::string_view jetAnweisung);

} // namespace flurix::nas
