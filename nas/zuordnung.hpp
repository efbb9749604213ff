#pragma once
// The column mapping of the compilation: the script ALKIS_Zuordnung.dat, run line by line against
// the table Alkis of the NAS object database. It turns the joined NAS attributes into the columns
// of the cadastre table. A line is
//   SQL <statement>            one statement (Jet's SQL, through the database wrapper)
//   ADD <column> dbText|dbMemo the column added to Alkis when missing
//   CHG <old> <new>            the column renamed when the old one exists and the new one doesn't
//   DEL <column>               the column dropped when it exists
// Tabs are removed, lines beginning with "*" are comments; any other line is passed over. The
// command is the first three characters (in any case) followed by a blank; the words of ADD, CHG
// and DEL are separated by one blank each, so a column name never holds one.
//
// Speed. Alkis can hold 150,000 wide rows. ADD and CHG only change the table's definition. SQLite's
// DROP COLUMN rewrites the whole table, so a run of consecutive DEL lines is done as ONE new build
// of the table (the remaining columns in their order with their definitions, the rows with their
// rowids, the indexes on remaining columns); each UPDATE of the script rewrites every row, so the
// shipped script computes its columns in one statement.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {
class Datenbank;
class Oberfläche;
}

namespace flurix::nas {

class NasProtokoll;

/// The lines of the script text worth running: tabs removed, blanks trimmed at both ends, blank
/// lines and lines beginning with "*" left out, in file order. CR LF and LF both end a line.
std::vector<std::string> ZuordnungLesen(std::string_view text);

struct Zuordnungsbericht {
    std::int64_t ausgeführt = 0;     ///< command lines that ran without failure (an ADD with
                                     ///< another type word, a CHG or DEL with nothing to do too)
    std::int64_t fehlgeschlagen = 0; ///< command lines that failed (logged, the script went on)
};

/// Runs the lines against `db` (registers PUNKTLISTE first). Every command line goes to the
/// protocol's list with ", Zeile Zuordnung: " + the line before it runs; a failing line is
/// logged with ", Fehler Zeile Zuordnung: " + the line + ", " + the reason (SQLite's for an SQL
/// line) and counted, and the next line runs. Every 10 lines the window gets the status
/// "Zusammenstellung, Zeile Zuordnung: <n> von <all>". A run of DEL lines that can't be done as
/// one new build (a table constraint) drops its columns one by one, with a hint in the protocol.
/// Throws Fehler only when the database itself breaks (it can't be read after a failing line, or
/// Alkis can't be put back after a failed new build).
Zuordnungsbericht ZuordnungAusführen(Datenbank& db, const std::vector<std::string>& zeilen,
                                     NasProtokoll& protokoll, Oberfläche& ui);

/// The point list form of the text of gml:exterior or gml:interior, as the script's function
/// PUNKTLISTE(text) gives it: each ring "x y;x y;..." without a point twice in a row, rings joined
/// with "|". A text without points gives "".
std::string Punktliste(std::string_view ringText);

/// Registers PUNKTLISTE on the connection (the script's statements call it).
void ZuordnungsfunktionenRegistrieren(Datenbank& db);

} // namespace flurix::nas
