#pragma once
// Text preparation of the register import: line ends of files that come from UNIX, line counts with
// progress and the German-letter correction of WLDGE lines. Every text input passes here before a
// reader sees it. The head of a file and the 4 GiB limit are in core/dateikopf.hpp.
//
// Files of several gigabytes are streamed: the converters hold one block of 1,000,000 bytes and a
// fixed output buffer, whatever the file's size.

#include "core/dateikopf.hpp"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace flurix {
class Oberfläche;
}

namespace flurix::import {

/// Block size of the line-end converters: the unit of their status texts.
inline constexpr std::size_t UmwandlungsBlock = 1'000'000;
/// Block size of the line count with progress.
inline constexpr std::size_t ZählBlock = 16'384;
/// The longest path (in characters) the line-end check works on; a longer one is left alone.
inline constexpr std::size_t LängsterPfad = 256;

/// The "UNIX-Prüfung": converts a file with UNIX line ends to CR LF through the temporary file
/// "<name>#" beside it (a stale one is deleted first), block by block, showing the megabytes done
/// before each block + " Mbyte UNIX-Prüfung  " in status panel 3.
/// - A path of more than LängsterPfad characters: nothing is done, false.
/// - A CR LF anywhere (also cut by a block boundary) proves a PC file: the work stops at once, the
///   temporary file is deleted, panel 3 shows "UNIX-Prüfung ohne Fehler  ", the file stays untouched
///   and the result is false.
/// - Otherwise each LF becomes CR LF and then each CR CR becomes CR, the same result as these
///   replacements on the whole file; `ersetzen` true puts the result in place of the file (only when
///   it is complete), false deletes it again. The result is true (an empty file included).
/// Unlike the Windows program, the path is not lower-cased: Linux file names are case-sensitive.
/// Throws Fehler naming the file when it can't be read or the temporary file can't be written or
/// put in place; the file is then untouched and no temporary file is left behind.
bool UnixToPcDatei(const std::filesystem::path& pfad, bool ersetzen, Oberfläche& ui);

/// The same for files that may hold mixed line ends (NAS files), without the CR LF stop. The three
/// replacements, in this order, give the same result as on the whole file: LF → CR LF, then
/// LF CR LF → CR LF, then CR CR → CR. (The second also merges an empty LF line into the line end
/// before it.) Panel 3 shows megabytes + " Mbyte, ANSI-Unix nach Ansi-PC..." each time the bytes
/// done are a whole multiple of 10,000,000, from "0 Mbyte, ANSI-Unix nach Ansi-PC..." on.
/// Returns false only for a path longer than LängsterPfad, else true. Throws as UnixToPcDatei.
bool AnsiUnixToAnsiPc(const std::filesystem::path& pfad, bool ersetzen, Oberfläche& ui);

/// Counts the lines of a file as ZeilenZählen does, reading blocks of ZählBlock bytes, and shows the
/// count + " Zeilen vorgeprüft..." in status panel 3 at each 1,000,000th line. Returns the count
/// (the caller needs it for the progress of the next step). Throws Fehler naming the file when it
/// can't be read.
long long AnsiUnixToAnsiPcString(const std::filesystem::path& pfad, Oberfläche& ui);

/// The number of CR bytes of the file, plus one when the piece after the last CR isn't blank.
/// Blank are space, tab, LF, VT, FF and byte 26 (the old end-of-file mark), so that the LF of a
/// final CR LF and a trailing mark count no line. A file without any CR is one line unless blank.
/// Throws Fehler naming the file when it can't be read.
long long ZeilenZählen(const std::filesystem::path& pfad);

/// The character correction of register lines, in place, on Windows-1252 bytes: the code-page
/// 437/850 letters 142 Ä, 154 Ü, 153 Ö, 132 ä, 129 ü, 148 ö, 225 ß and the ISO 646 letters "{" ä,
/// "|" ö, "}" ü, "~" ß become their Windows-1252 bytes (Ä is 0xC4), byte 26 is removed, and "[",
/// "\" and "]" stay. Other bytes are kept. Never fails.
void ZeichenKorrektur(std::string& zeile);

/// True when any comma-separated item of `liste` occurs in `text` (exact bytes, case-sensitive).
/// Empty items (",," or an empty list) are passed over: an empty item would be found in every text.
/// Blanks around an item belong to it.
bool IstInText(std::string_view text, std::string_view liste);

namespace detail {

/// The line-end replacements as a stream: pieces of the input may be cut anywhere, and the output
/// is the same as the replacements on the whole input (each a left-to-right replacement that
/// doesn't look again at what it inserted). Up to three bytes are held back between pieces.
class Zeilenendwandler {
public:
    /// `mitLfCrLf` false: LF → CR LF, CR CR → CR (UNIX files). True: also LF CR LF → CR LF between
    /// the two (mixed files).
    explicit Zeilenendwandler(bool mitLfCrLf) : m_mitLfCrLf(mitLfCrLf) {}

    /// The largest output of a piece of `n` bytes.
    static constexpr std::size_t AusgabeFür(std::size_t n) { return 2 * n + 4; }
    /// Converts the next piece into `aus`, which holds AusgabeFür(stück.size()) bytes; returns the
    /// number of bytes written.
    std::size_t Umwandeln(std::string_view stück, char* aus);
    /// Writes the bytes still held back at the end of the input into `aus` (4 bytes); returns
    /// their number. The converter starts afresh afterwards.
    std::size_t Abschließen(char* aus);

private:
    void LfNachCrLf(char c, char*& aus);
    void LfCrLfZusammenfassen(char c, char*& aus);
    void CrCrZusammenfassen(char c, char*& aus);

    bool m_mitLfCrLf;
    int m_lfCrLfStand = 0;      ///< 0 nothing held, 1 "LF" held, 2 "LF CR" held
    bool m_crGehalten = false;  ///< one CR held: a CR may follow
};

/// True when the piece holds CR LF, or starts with LF after a piece that ended with CR (`crDavor`).
bool HatCrLf(std::string_view stück, bool crDavor);

} // namespace detail

} // namespace flurix::import
