#pragma once
// The NAS object database: one SQLite file per NAS file, one table per feature class of the node
// file, one small table per relation, and the helpers every later step of the NAS road reads and
// changes it with. None of the helpers throws to its caller: they report by their result, as the
// later steps expect (a missing table is a normal case, an extract without buildings is one).
//
// Keys. NAS identifiers differ in case ("...hHH" and "...HHH" are two features), while the table
// compares text without regard to case, as the compilation's statements rely on. So every key is
// stored in the marked form of IdKennzeichnen ("...h'HH"), in which no two identifiers meet.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {
class Anweisung;
class Datenbank;
class Oberfläche;
}

namespace flurix::nas {

struct KnotenDatei;

/// The numeric field types of the node file as SQLite declarations.
std::string SpaltenDeklaration(int typ);

/// SQLite's page cache of an object database, in MiB: what the scan holds beyond the feature it
/// reads, whatever the size of the file. The key indexes take their inserts all over; at 2.5 GB of
/// NAS 64 MiB keeps the speed of a cache four times as large, 32 MiB loses a fifth of it
/// (bench_nas 2500 --cache 64,32,256).
inline constexpr int NasSeitencacheMiB = 64;

/// Deletes an existing file (and its journal) and creates a new, empty database there, ready for
/// a bulk load (no journal, no sync: the file is rebuilt from the NAS file when anything breaks).
/// Throws Fehler when the file can't be made.
std::unique_ptr<Datenbank> DAO_DatenbankAnlegen(const std::filesystem::path& pfad,
                                                int seitencacheMiB = NasSeitencacheMiB);
/// Opens an existing database with the same settings. Throws Fehler.
std::unique_ptr<Datenbank> DAO_DatenbankÖffnen(const std::filesystem::path& pfad);

bool DAO_TabelleVorhanden(Datenbank& db, std::string_view tabelle);
bool DAO_FeldVorhanden(Datenbank& db, std::string_view tabelle, std::string_view spalte);
/// An index made by DAO_IndexAnlegen (name as given there, or the column's name).
bool DAO_IndexVorhanden(Datenbank& db, std::string_view tabelle, std::string_view index);
/// Creates the table with one column of type 4 (whole number), 8 (date) or 10 (text); nothing
/// when it exists. True when it exists afterwards.
bool DAO_TabelleNeuAnlegen(Datenbank& db, std::string_view tabelle, std::string_view spalte, int typ);
/// Adds a column of a node-file type (size 0 is the default 255). False when it can't be added;
/// an existing column is no error.
bool DAO_FeldAnlegen(Datenbank& db, std::string_view tabelle, std::string_view spalte, int typ);
bool DAO_FeldLöschen(Datenbank& db, std::string_view tabelle, std::string_view spalte);
bool DAO_FeldUmbenennen(Datenbank& db, std::string_view tabelle, std::string_view alt,
                        std::string_view neu);
bool DAO_TabelleLöschen(Datenbank& db, std::string_view tabelle);
/// Creates an index on one column; the index's name is the column's when `name` is empty.
/// `primär` makes it unique as well.
bool DAO_IndexAnlegen(Datenbank& db, std::string_view tabelle, std::string_view spalte, bool primär,
                      bool eindeutig, std::string_view name = {});

/// The tables of the database in the order they were made, without SQLite's own.
std::vector<std::string> DAO_Tabellen(Datenbank& db);
/// The number of rows of a table; -1 when it can't be counted.
std::int64_t DAO_Zeilenzahl(Datenbank& db, std::string_view tabelle);

/// Seeks by index, as the lookups of the NAS road do thousands of times: each lookup is one
/// statement, prepared on first use and kept. One Suchwerte object serves one database.
class Suchwerte {
public:
    explicit Suchwerte(Datenbank& db);
    ~Suchwerte();
    Suchwerte(const Suchwerte&) = delete;
    Suchwerte& operator=(const Suchwerte&) = delete;

    /// The value of `spalte` in the first row of `tabelle` whose `index` column equals the key.
    /// A blank key, no match, a missing table or column: "-1".
    std::string SuchWert(std::string_view schlüssel, std::string_view tabelle,
                         std::string_view index, std::string_view spalte);
    /// The value of `spalte` in the first row of `tabelle` whose `index` column equals the key;
    /// nullopt for a blank key, no match, a missing table or column.
    std::optional<std::string> Wert(std::string_view schlüssel, std::string_view tabelle,
                                    std::string_view index, std::string_view spalte);
    /// All rows of `tabelle` whose `index` column equals the key, in the order of the index, each
    /// with the values of `spalten` (one column or several joined with "#") as they are stored.
    /// A blank key, no match, a missing table or column: no rows.
    std::vector<std::vector<std::string>> Zeilen(std::string_view tabelle, std::string_view index,
                                                 std::string_view schlüssel,
                                                 std::string_view spalten);
    /// The values of the one column `spalte` of those rows.
    std::vector<std::string> Werte(std::string_view tabelle, std::string_view index,
                                   std::string_view schlüssel, std::string_view spalte);

    /// Forgets the prepared statements (after the schema changed).
    void Vergessen();

private:
    Anweisung* Abfrage(std::string_view tabelle, std::string_view index, std::string_view spalten);

    Datenbank& m_db;
    std::map<std::string, std::unique_ptr<Anweisung>, std::less<>> m_abfragen;
};

/// DAO_SuchWert as one call; prefer a Suchwerte object in loops.
std::string DAO_SuchWert(Datenbank& db, std::string_view schlüssel, std::string_view tabelle,
                         std::string_view index, std::string_view spalte);

/// Compacts the open database (SQLite's VACUUM) when it holds free pages; a file without free
/// pages is already as small as it can be, and rewriting it would only cost time. Must run
/// outside a transaction. True on success.
bool DatenbankKomprimieren(Datenbank& db);
/// The same for a closed database file.
bool DAO_DatenbankKomprimieren(const std::filesystem::path& pfad);

/// Creates the database of a NAS import from the node file: one table per class with the key
/// column "id" (unique index "id") and a column per attribute line, one table per relation line
/// ("id" with a plain index, and the target column). Messages go through the protocol `log`
/// (", DAO_CreatedNewTable: <table> Tabelle schon vorhanden..." for a repeated class). Throws
/// Fehler when the database can't be written.
void DAO_DatenbankAnlegenAusKnoten(Datenbank& db, const KnotenDatei& knoten,
                                   const std::function<void(std::string_view)>& log);

} // namespace flurix::nas
