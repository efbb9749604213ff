#pragma once
// The reader of GEOgraf batch files (GRAFBAT, ".out"): the one place that takes their lines
// apart, for the tests of the batch export, the NAS drawing export and the map overlays.
//
// A file is Windows-1252 text with CR LF (LF alone is taken too). A line is
//   * a comment: it begins with "*"; "* erstellt mit ..." names the program that wrote the file;
//   * a header line "Typ: ..." or "PAR: ...";
//   * a record: a kind of two or three capital letters, its number, ": " and the fields
//     separated by commas outside double quotes ("TE12: ,0.233, 3456789.12, ...", "SCH4: ,11.1,1");
//     a sub-record begins with two blanks ("  TX12: text", "  OR3: TE=7,1", "  POS4: 1 2 3 4")
//     and belongs to the record before it;
//   * empty.
// The reader pulls one line at a time and keeps no more than that line: memory follows the
// longest line, never the file, and a line longer than GrafbatZeileMax is reported and passed
// over. A line that is none of these is reported to the caller's list and passed over; the
// reader never throws on the contents of a file.

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace flurix::ausgabe {

/// Longer lines are reported and passed over (a stamp line of long owner names stays far below).
inline constexpr std::size_t GrafbatZeileMax = 64 * 1024;

enum class GrafbatArt {
    Kommentar, ///< "*" and what follows
    Kopf,      ///< "Typ: GRAFBAT V4", "PAR: ..."
    Satz,      ///< a record or sub-record
};

/// One line of the file, text as UTF-8.
struct GrafbatSatz {
    GrafbatArt art = GrafbatArt::Satz;
    std::size_t zeile = 0;  ///< line number in the file, from 1
    std::string kennung;    ///< "TE", "TX", "PK", "SCH", "POS", ...; "Typ" or "PAR" for Kopf
    long long nummer = 0;   ///< the record's number
    bool unterSatz = false; ///< began with two blanks
    /// Everything behind ": " (behind "*" for a comment), as it stands: the text of a TX line.
    std::string text;
    /// `text` split at commas outside double quotes; quotes stay in the field, an unclosed quote
    /// runs to the end of the line.
    std::vector<std::string> felder;
    /// For the comment "* erstellt mit <programm>": the program named; else empty.
    std::string erstelltMit;
};

/// A line that could not be read.
struct GrafbatProblem {
    std::size_t zeile = 0;
    std::string meldung; ///< German, e.g. "Zeile 12: kein Satz (erwartet Kennung, Nummer, \": \")"
};

/// `text` split at commas outside double quotes.
std::vector<std::string> GrafbatFelder(std::string_view text);

/// Takes one line apart (without its line end, already UTF-8); nothing and a message in
/// `problem` when it is none of the forms above. Empty lines give nothing and no message.
std::optional<GrafbatSatz> GrafbatZeileLesen(std::string_view zeile, std::size_t nummer,
                                             std::string* problem = nullptr);

class GrafbatLeser {
public:
    /// Opens the file; throws Fehler ("Die GEOgraf-Datei ... kann nicht geöffnet werden") when
    /// it can't be read.
    explicit GrafbatLeser(const std::filesystem::path& datei);
    GrafbatLeser(const GrafbatLeser&) = delete;
    GrafbatLeser& operator=(const GrafbatLeser&) = delete;
    GrafbatLeser(GrafbatLeser&&) = default;
    GrafbatLeser& operator=(GrafbatLeser&&) = default;
    ~GrafbatLeser() = default;

    /// The next line that is a comment, header or record; nothing at the end of the file. Bad
    /// lines on the way are added to Probleme() and passed over.
    std::optional<GrafbatSatz> NächsterSatz();
    const std::vector<GrafbatProblem>& Probleme() const { return m_probleme; }

private:
    // The next line without its LF into `zeile`; false at the end of the file.
    bool ZeileHolen(std::string& zeile, bool& zuLang);

    std::ifstream m_datei;
    std::string m_puffer; // 64 KiB read ahead
    std::size_t m_pos = 0;
    std::size_t m_zeile = 0;
    std::vector<GrafbatProblem> m_probleme;
};

} // namespace flurix::ausgabe
