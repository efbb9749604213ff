#pragma once
// Table files: the saved table ".fil" and the machine form ".tsv". This is the one place that reads
// and writes them; the table Kataster, the CLI, the import of saved tables and wfs.key all come
// here.
//
// The saved table ".fil", version 1
// ---------------------------------
// UTF-8 text. Every line ends in LF (one byte 0x0A, no CR); the fields of a line are separated by
// one TAB. The file is, line by line:
//
//   FLURIX-TABELLE<TAB>1                        identification and format version
//   spalten<TAB><n>                             number of columns, decimal
//   <key><TAB><caption><TAB><width><TAB><visible><TAB><position>
//                                               n lines, one per column, in table order
//   zeilen<TAB><m>                              number of rows, 20 digits with leading zeros
//   <cell 1><TAB><cell 2><TAB>...<TAB><cell n>  m lines, one per row, exactly n cells each
//
// - width and position are decimal integers ("-" for a negative one), visible is "1" or "0".
// - key, caption and every cell are escaped as told below, so no field ever holds a raw TAB or LF.
// - The row count has a fixed width because the writer streams: it writes the rows as they come and
//   fills the count in when it is done.
// - The file ends right after the LF of row m. A missing line, a missing last LF or anything after
//   row m is an error: this is how a cut file is told from a whole one.
// - With no columns (n = 0) every row line is empty.
// - A reader refuses a version it does not know. A change that a reader of version 1 could not read
//   correctly gets a new version number.
//
// Example, two columns and one row whose second cell holds a line break ("→" stands for TAB):
//
//   FLURIX-TABELLE→1
//   spalten→2
//   Gemarkung→Gemarkung→1200→1→0
//   Name→Eigentümer→2400→0→1
//   zeilen→00000000000000000001
//   Musterhausen→Meier\nSchulze
//
// Escaping in cells, keys and captions (the same in ".fil" and ".tsv")
// ----------------------------------------------------------------------
//   \\  backslash          \t  TAB          \n  LF          \r  CR          \0  NUL
//   \xHH  one byte, HH two hex digits: written for each byte that is not part of a valid UTF-8
//         sequence, so that any bytes (scrambled logins too) survive and the file stays UTF-8 text.
// Every other byte stands as it is. A backslash followed by anything else is an error. Writers emit
// upper-case hex; readers take either case.
//
// The machine form ".tsv"
// -----------------------
// UTF-8 text, TAB-separated, for scripts and other programs: a header line of the column keys, all
// columns in table order, then one line per row, cells escaped as above. Captions, widths and
// visibility are not kept (a column read from it has caption = key). Lines are written with LF; a
// reader also takes a CR before the LF and a last line without LF, as other programs write them. An
// empty header line means no columns.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace flurix {

/// One column of a table file.
struct TabellenSpalte {
    std::string schlüssel;   ///< key, what code and sort lists name the column by
    std::string überschrift; ///< caption shown in the header
    int breite = 0; ///< width as the table keeps it; 0 from a ".tsv" (the table takes its default)
    bool sichtbar = true;
    int position = 0; ///< place in the view; from a ".tsv" the column's index

    bool operator==(const TabellenSpalte&) const = default;
};

/// The two kinds of table file.
enum class Tabellenformat {
    Fil, ///< the saved table, "Flurix (*.fil)"
    Tsv, ///< the machine form
};

/// The format belonging to a file name's extension: ".fil" or ".tsv", in any case (files come from
/// Windows too). Throws Fehler naming the file for any other extension.
Tabellenformat TabellenformatAusEndung(const std::filesystem::path& datei);

namespace detail {
struct DateiSchließer {
    void operator()(std::FILE* datei) const noexcept { std::fclose(datei); }
};
using DateiZeiger = std::unique_ptr<std::FILE, DateiSchließer>;
} // namespace detail

/// Writes a table file row by row; memory stays small whatever the row count.
/// The rows go to a temporary file beside the target, which Abschließen() renames to the target, so
/// a failure or a write that is never finished leaves an old file of that name as it was.
class TabellendateiSchreiber {
public:
    /// Format by the extension of `datei`. Throws Fehler for an unknown extension or when the
    /// temporary file can't be created.
    TabellendateiSchreiber(std::filesystem::path datei, std::span<const TabellenSpalte> spalten);
    /// Format given (wfs.key is a ".fil" without that extension). Throws Fehler when the temporary
    /// file can't be created, or for ".tsv" when the columns can't be told by the header line.
    TabellendateiSchreiber(std::filesystem::path datei, std::span<const TabellenSpalte> spalten,
                           Tabellenformat format);
    TabellendateiSchreiber(const TabellendateiSchreiber&) = delete;
    TabellendateiSchreiber& operator=(const TabellendateiSchreiber&) = delete;
    TabellendateiSchreiber(TabellendateiSchreiber&&) = delete;
    TabellendateiSchreiber& operator=(TabellendateiSchreiber&&) = delete;
    /// Without Abschließen() the temporary file is deleted and the target stays untouched: a writer
    /// destroyed by an exception must not leave a table that looks whole but lacks rows. Never
    /// throws.
    ~TabellendateiSchreiber();

    /// Appends one row; it must have one cell per column. Throws Fehler on a wrong cell count,
    /// after Abschließen(), or when writing fails.
    void Zeile(std::span<const std::string_view> zellen);
    void Zeile(std::span<const std::string> zellen);

    /// Writes what is buffered, completes the file and puts it in place of the target. Throws
    /// Fehler naming the file when that fails; the target is then unchanged.
    void Abschließen();

    /// Rows written so far.
    std::uint64_t Zeilen() const { return m_zeilen; }

private:
    template <class Zelle> void ZeileSchreiben(std::span<const Zelle> zellen);
    void PufferSchreiben();
    [[noreturn]] void SchreibFehler() const;

    std::filesystem::path m_ziel;
    std::filesystem::path m_temp;
    Tabellenformat m_format;
    std::size_t m_spaltenzahl;
    detail::DateiZeiger m_datei;
    std::string m_puffer;
    std::uint64_t m_zeilen = 0;
    long m_zählerStelle = -1; ///< file offset of the row count (".fil")
    bool m_abgeschlossen = false;
};

/// Reads a table file: the columns at once, the rows one by one through NächsteZeile(). Memory
/// follows the longest line, never the file; counts in the file are never trusted for allocation.
class TabellendateiLeser {
public:
    /// Opens the file, format by its extension, and reads the column part. Throws Fehler naming the
    /// file (and the line, where one is at fault) when it can't be opened or read, the extension is
    /// unknown, or the column part is not valid.
    explicit TabellendateiLeser(const std::filesystem::path& datei);
    /// The same with the format given.
    TabellendateiLeser(const std::filesystem::path& datei, Tabellenformat format);
    TabellendateiLeser(const TabellendateiLeser&) = delete;
    TabellendateiLeser& operator=(const TabellendateiLeser&) = delete;
    TabellendateiLeser(TabellendateiLeser&&) = default;
    TabellendateiLeser& operator=(TabellendateiLeser&&) = default;
    ~TabellendateiLeser() = default;

    /// The columns in table order.
    const std::vector<TabellenSpalte>& Spalten() const { return m_spalten; }
    Tabellenformat Format() const { return m_format; }
    /// The row count the ".fil" announces (for a progress bar; checked only as the rows are read);
    /// std::nullopt for ".tsv".
    std::optional<std::uint64_t> AngekündigteZeilen() const { return m_angekündigt; }

    /// The cells of the next row, one per column, unescaped; std::nullopt after the last row. The
    /// cells belong to the reader and stay valid until the next call. Throws Fehler naming the file
    /// and line for a wrong cell count, a bad escape, a cut file or data after the last row.
    std::optional<std::span<const std::string>> NächsteZeile();

    /// Lines read so far (for messages of callers).
    std::uint64_t Zeilennummer() const { return m_zeilenNr; }

private:
    void FilKopfLesen();
    void TsvKopfLesen();
    bool ZeileHolen(std::string_view& zeile, bool& mitZeilenende);
    std::string_view PflichtZeile();
    std::string_view ErsteZeile(std::string_view wennLeer, bool& mitZeilenende);
    std::uint64_t Zählerzeile(std::string_view wort);
    void ZellenTeilen(std::string_view zeile);
    void FeldDemaskieren(std::string_view roh, std::string& ziel) const;
    [[noreturn]] void Fehlerhaft(std::string_view was) const;

    std::filesystem::path m_pfad;
    Tabellenformat m_format;
    detail::DateiZeiger m_datei;
    std::vector<TabellenSpalte> m_spalten;
    std::vector<std::string> m_zellen;
    std::vector<char> m_puffer;
    std::size_t m_anfang = 0;  ///< first unread byte in m_puffer
    std::size_t m_füllung = 0; ///< bytes held in m_puffer
    bool m_dateiende = false;
    std::uint64_t m_zeilenNr = 0;
    std::optional<std::uint64_t> m_angekündigt;
    std::uint64_t m_gelesen = 0;
    bool m_fertig = false;
};

/// User name and password of the web key file wfs.key: a ".fil" table with the columns "user" and
/// "pw" and one row, both cells scrambled with Verschleiern and WfsSchlüssel. Returns both
/// unscrambled with blanks trimmed. Throws Fehler when the file can't be read, lacks a column or
/// has no row; the caller shows "Fehler beim Einlesen der Key-Datei " + path + "!   ".
std::pair<std::string, std::string> WfsSchlüsselLesen(const std::filesystem::path& datei);

/// Writes wfs.key for `benutzer` and `passwort` (scrambled), replacing the file. Throws Fehler
/// naming the file when that fails.
void WfsSchlüsselSchreiben(const std::filesystem::path& datei, std::string_view benutzer,
                           std::string_view passwort);

} // namespace flurix
