#pragma once
// The SQL dialect of the Jet engine, in which the statements of the staging database, the NAS
// database and ALKIS_Zuordnung.dat are written, carried over to SQLite: the translation of a
// statement, the folding of names the way Jet compares them, and the text functions MID, Instr
// and Trim with Basic's rules. Datenbank (datenbank.hpp) runs every statement through here.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace flurix {

/// The form in which Jet compares two names: letters in lower case (ASCII and the Latin-1
/// capitals, Ä Ö Ü among them) and "ß" written as "ss". "Strassenschlüssel" and
/// "STRASSENSCHLÜSSEL" fold to the same text as "Straßenschlüssel". Never fails; bytes that are
/// not UTF-8 stay as they are.
std::string NameFalten(std::string_view name);

/// The table and column names of one database, for the translation: a name in a statement that
/// is spelled differently from the real one but folds to it is replaced by the real spelling.
class Namensverzeichnis {
public:
    /// Adds a real name (a table or a column). Adding it again changes nothing.
    void Hinzufügen(std::string_view name);

    /// Forgets all names.
    void Leeren();

    /// The real spelling of a name as a statement writes it: the name itself when SQLite finds
    /// it as written (same letters, ASCII case aside), else the one real name it folds to
    /// (NameFalten). std::nullopt when no name folds like it, or when two different names do.
    std::optional<std::string> Auflösen(std::string_view wort) const;

private:
    // Folded form -> the real spellings that fold to it (one per SQLite name).
    std::unordered_map<std::string, std::vector<std::string>> m_gefaltet;
    // A real name with its ASCII letters in lower case -> the real name: what SQLite matches
    // itself.
    std::unordered_map<std::string, std::string> m_sqliteForm;
};

/// Translates one statement from the Jet dialect to SQLite, outside string literals and comments:
/// - `a & b` joins as text the way Jet does: a NULL side counts as "", a number is written as
///   Basic writes it ("5", not "5.0"), only NULL & NULL stays NULL. The result is SQLite's `||`
///   over the function JETTEXT, which every Datenbank registers. Jet's order of operators holds:
///   `2 + 3 & "x"` gives "5x".
/// - `"abc"` is a string in Jet and becomes `'abc'`; `[name]` becomes `"name"` (`]]` inside the
///   brackets stands for one `]`).
/// - a string literal right after LIKE is a Jet pattern: `*` becomes `%`, `?` becomes `_`,
///   `[x]` is the character x, and a literal `%`, `_` or `\` is escaped (with ESCAPE '\').
/// - with `namen` given, a name that is not a keyword, not a function and not spelled like a
///   real name but folds to one (NameFalten) becomes that name, quoted. The names of the whole
///   database count, not those of the tables the statement names. Names inside
///   CREATE TABLE and ALTER TABLE are left as written, so that new columns keep their spelling.
/// Throws Fehler when an operand of `&` can't be made out, or for a LIKE pattern with Jet's
/// digit wildcard `#` or a character list such as `[a-z]`, which SQLite's LIKE can't express.
std::string JetNachSqlite(std::string_view anweisung, const Namensverzeichnis* namen = nullptr);

/// A name quoted for a Jet statement: `[name]`, a `]` in it doubled. The translation makes it
/// an SQLite identifier again, whatever the name holds.
std::string JetBezeichner(std::string_view name);

/// Basic's Mid on UTF-8 text, by characters: from the 1-based `start`, `länge` characters or,
/// without a length, the rest. A start past the end gives "". Throws Fehler for a start below 1
/// or a negative length, as Basic refuses them.
std::string JetMid(std::string_view text, std::int64_t start, std::optional<std::int64_t> länge);

/// Basic's Instr on UTF-8 text, by characters: the 1-based position of `suche` in `text` from
/// `start` on, 0 when it isn't there or when `text` is empty; an empty `suche` gives `start`
/// (0 once start lies beyond the end plus one). With `textvergleich` (Jet's way in SQL) letters
/// compare without regard to case, umlauts included. Throws Fehler for a start below 1.
std::int64_t JetInstr(std::int64_t start, std::string_view text, std::string_view suche,
                      bool textvergleich);

/// Basic's Trim: blanks (only " ") removed at both ends. Never fails.
std::string_view JetTrim(std::string_view text);

/// A number as Basic's CStr writes it, the way `&` joins numbers: at most 15 significant digits,
/// no trailing zeros, "." as decimal point, exponent as "1E+20". Never fails.
std::string JetZahlText(double zahl);

} // namespace flurix
