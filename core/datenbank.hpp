#pragma once
// SQLite behind two RAII types: Datenbank, one connection to one database file, and Anweisung,
// one prepared statement. The staging database of the WLDGE import, the NAS object database and
// the other temporary stores of the program use them.
//
// Dialect. Statements are written the way the program has always written them, in Jet's SQL
// (MID, Instr, Trim, `&`, LIKE '*x*', "text", [name], "Strassenschlüssel" for the field
// "Straßenschlüssel"). Ausführen and Vorbereiten translate them (jet_sql.hpp); AusführenNativ and
// VorbereitenNativ take SQLite's own SQL as it stands. MID, Instr, Trim and JETTEXT (the helper of
// `&`) are registered on every connection.
//
// One statement at a time. Every text is prepared as exactly one statement: anything but blanks,
// comments and ";" behind it makes the call throw before anything runs. A value from a file that
// breaks out of its quotes can make a statement fail, never run a second one.
//
// Comparing text. Jet compares text without regard to case in "=", LIKE, DISTINCT, GROUP BY and
// its indexes, and the statements of the readers rely on it. So the text fields that
// TabelleAnlegen makes carry COLLATE NOCASE: the readers need not know. NOCASE is SQLite's own
// collation (other programs can still read a database we hand out) and folds only ASCII letters:
// "Ä" and "ä" stay different there, as in LIKE. Tables made by a CREATE TABLE statement of
// their own get what that statement says.

#include "core/jet_sql.hpp"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace flurix {

/// A prepared statement. Made by Datenbank::Vorbereiten; movable, not copyable; the destructor
/// finalizes it. Reuse it in a loop with Zurücksetzen and new bindings: preparing is the costly
/// part. An Anweisung must not be used after its Datenbank is gone; one that was moved from throws
/// Fehler when used. Every failure throws Fehler with a German message that names the database
/// file, SQLite's error text and the statement.
class Anweisung {
public:
    Anweisung(const Anweisung&) = delete;
    Anweisung& operator=(const Anweisung&) = delete;
    Anweisung(Anweisung&& andere) noexcept;
    Anweisung& operator=(Anweisung&& andere) noexcept;
    ~Anweisung();

    /// Binds text (UTF-8; SQLite keeps its own copy) to the next parameter, starting with the
    /// first; "" is text, not NULL. Throws Fehler when the statement has no further parameter.
    Anweisung& Binde(std::string_view text);
    /// Binds a whole number to the next parameter (a value above the int64 range wraps around).
    template <std::integral T>
    requires(!std::same_as<T, bool>) Anweisung& Binde(T zahl) {
        return BindeGanzzahl(static_cast<std::int64_t>(zahl));
    }
    /// Binds a floating-point number to the next parameter.
    Anweisung& Binde(double zahl);
    /// Binds NULL to the next parameter.
    Anweisung& Binde(std::nullptr_t);

    /// Runs the statement to its next row: true while there is a row to read, false when it is
    /// done. Throws Fehler when SQLite reports an error (a constraint, a failing function, ...).
    bool Schritt();

    /// Makes the statement ready to run again: bindings cleared, the next Binde binds the first
    /// parameter. Never fails (an error of the last run was already thrown by Schritt).
    void Zurücksetzen();

    /// Number of columns of the result (0 for a statement without result).
    int Spaltenanzahl() const;
    /// The name of a result column as SQLite gives it; with "SELECT *" over two tables a name
    /// that both have comes twice. Throws Fehler for a column number out of range.
    std::string_view Spaltenname(int spalte) const;
    /// The table a result column comes from, "" for a computed column. Throws like Spaltenname.
    std::string_view Spaltentabelle(int spalte) const;
    /// The number (from 0) of the first result column of that name; the name is compared as Jet
    /// compares names (NameFalten). Throws Fehler when there is none.
    int Spaltenindex(std::string_view name) const;

    /// The cell of the current row as text; "" for NULL, numbers as SQLite writes them. The view
    /// is valid until the next Schritt, Zurücksetzen or the end of the Anweisung.
    std::string_view Text(int spalte) const;
    /// The cell as a whole number (text is read as SQLite reads it; NULL gives 0).
    std::int64_t Ganzzahl(int spalte) const;
    /// The cell as a floating-point number (NULL gives 0).
    double Zahl(int spalte) const;
    /// True when the cell is NULL.
    bool IstNull(int spalte) const;

    /// The SQL text as SQLite prepared it (after the translation).
    std::string_view Sql() const;

private:
    friend class Datenbank;
    explicit Anweisung(sqlite3_stmt* anweisung) : m_anweisung(anweisung) {}

    sqlite3_stmt* Roh() const; // throws when moved from
    Anweisung& BindeGanzzahl(std::int64_t zahl);
    void BindeErgebnisPrüfen(int ergebnis);
    void SpaltePrüfen(int spalte) const;
    [[noreturn]] void Melden(std::string_view fehlertext) const;

    sqlite3_stmt* m_anweisung = nullptr;
    int m_nächsterParameter = 1;
};

/// The kind of a field that TabelleAnlegen makes.
enum class Feldtyp {
    Text,     ///< TEXT COLLATE NOCASE: Jet's text and memo fields
    Zahl,     ///< REAL: Jet's double
    Ganzzahl, ///< INTEGER
};

/// One field of a new table.
struct Feld {
    std::string name;
    Feldtyp typ = Feldtyp::Text;
};

/// One connection to an SQLite database. Not copyable and not movable (hold it in a
/// std::unique_ptr to pass it on); used by one thread at a time. Every failure throws Fehler
/// with a German message that names the database file, SQLite's error text and, where there is
/// one, the statement.
class Datenbank {
public:
    /// Opens the database file, or creates it when it does not exist; ":memory:" opens a new
    /// database in memory. Registers MID, Instr, Trim and JETTEXT. Throws Fehler when the file
    /// can't be opened or created (missing folder, no right to write, not a database).
    explicit Datenbank(const std::filesystem::path& datei);
    Datenbank(const Datenbank&) = delete;
    Datenbank& operator=(const Datenbank&) = delete;
    Datenbank(Datenbank&&) = delete;
    Datenbank& operator=(Datenbank&&) = delete;
    /// Closes the connection; never throws. Statements still alive keep SQLite's part of it open
    /// until they are finalized.
    ~Datenbank();

    /// Translates one Jet statement and runs it to its end (rows of a SELECT are passed over).
    /// Throws Fehler when it can't be translated or prepared, when the text holds more than one
    /// statement (then nothing runs), or when it fails while running.
    void Ausführen(std::string_view anweisung);
    /// As Ausführen, for a statement in SQLite's own SQL: no translation.
    void AusführenNativ(std::string_view anweisung);

    /// Translates and prepares one Jet statement, to bind and step through. Throws Fehler as
    /// Ausführen does, for all but running it.
    Anweisung Vorbereiten(std::string_view anweisung);
    /// As Vorbereiten, for a statement in SQLite's own SQL.
    Anweisung VorbereitenNativ(std::string_view anweisung);

    /// The SQLite text Ausführen would run for a Jet statement; names are resolved against the
    /// tables as they are now. Throws Fehler where the translation does.
    std::string Übersetzen(std::string_view anweisung);

    /// The rowid of the last row inserted through this connection (0 before any).
    std::int64_t LetzteZeilenId() const;
    /// The number of rows the last INSERT, UPDATE or DELETE changed.
    std::int64_t Änderungen() const;
    /// True between BEGIN and COMMIT or ROLLBACK.
    bool TransaktionOffen() const;

    /// True when a table or view of that name exists; the name is compared as Jet compares names
    /// ("tblFlurstueck" is not "tblFlurstück", "TBLFLURSTÜCK" is).
    bool TabelleVorhanden(std::string_view name);
    /// The field names of a table in their order, spelled as the table has them. Throws Fehler
    /// when there is no such table.
    std::vector<std::string> Spaltennamen(std::string_view tabelle);

    /// Creates a table with these fields, every name quoted (names may hold "-", "/", ":", "#",
    /// blanks and umlauts); text fields compare without regard to case (see the top of this
    /// file). Throws Fehler when the table exists or there are no fields.
    void TabelleAnlegen(std::string_view tabelle, std::span<const Feld> felder);
    /// Creates an index over the fields. Jet names an index within its table, SQLite within the
    /// database: the index is stored as "<tabelle>_<index>", so that tables may use the same
    /// index names. Throws Fehler when it can't be made (for a unique index: when rows clash).
    void IndexAnlegen(std::string_view index, std::string_view tabelle,
                      std::span<const std::string> felder, bool eindeutig = false);

    /// A function of one text argument, for SQL: NULL gives NULL, anything else is read as text.
    using TextFunktion = std::string (*)(std::string_view);
    /// Registers `funktion` under `name` for the statements of this connection (a module's own
    /// text forms, such as the point lists of the NAS geometry). An exception it throws becomes
    /// the statement's error. Throws Fehler when SQLite refuses the name.
    void TextFunktionRegistrieren(const char* name, TextFunktion funktion);

    /// The database file as given when opening, for messages.
    const std::string& Name() const { return m_name; }

private:
    Anweisung Vorbereitet(std::string_view sql);
    void NamenAktualisieren();

    sqlite3* m_db = nullptr;
    std::string m_name;
    Namensverzeichnis m_namen;       // tables and fields, for the translation
    Namensverzeichnis m_tabellen;    // tables only
    std::int64_t m_schemaStand = -1; // SQLite's schema version the names were read at
};

/// A transaction over one Datenbank: BEGIN when made, COMMIT with Bestätigen, ROLLBACK in the
/// destructor when it was not confirmed (an exception on the way out undoes the work). One made
/// while another is open is a savepoint inside it: its confirmation keeps its work for the outer
/// one to commit or undo, its rollback undoes only its own work.
class Transaktion {
public:
    /// Begins the transaction (or the savepoint). Throws Fehler when SQLite refuses.
    explicit Transaktion(Datenbank& db);
    Transaktion(const Transaktion&) = delete;
    Transaktion& operator=(const Transaktion&) = delete;
    Transaktion(Transaktion&&) = delete;
    Transaktion& operator=(Transaktion&&) = delete;
    /// Rolls back what was not confirmed; never throws.
    ~Transaktion();

    /// Commits. Throws Fehler when the commit fails; the work is then rolled back by the
    /// destructor.
    void Bestätigen();

private:
    Datenbank& m_db;
    bool m_innen = false; ///< a savepoint in an open transaction
    bool m_bestätigt = false;
};

/// A value as an SQL string literal: in single quotes, each ' doubled. "Auf'm Berg" gives
/// 'Auf''m Berg'. Never fails.
std::string SqlText(std::string_view wert);

/// A name as an SQL identifier for SQLite's own SQL (the *Nativ calls, composed DDL): in double
/// quotes, each " doubled. Always quotes, so names with "-", "/", ":", "#", blanks or umlauts
/// are safe. In a Jet statement write JetBezeichner instead: there "..." is a string.
std::string Bezeichner(std::string_view name);

} // namespace flurix
