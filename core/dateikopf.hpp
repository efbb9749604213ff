#pragma once
// The head of a file and the 4 GiB limit of the NAS window: the dispatch of the import and the
// NAS scan both look at a file this way before a reader opens it.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace flurix {

/// The largest file the NAS window takes: 4 GiB.
inline constexpr std::uintmax_t GrößteAusgangsdatei = 4'294'967'296;
/// Refusal of the NAS window for one file above GrößteAusgangsdatei.
inline constexpr std::string_view MeldungAusgangsdateiZuGroß =
    "Fehler: Ausgangsdatei ist mit > 4.294.967.296 Byte zu groß!   ";
/// Refusal of the NAS window when one file of a list is above GrößteAusgangsdatei.
inline constexpr std::string_view MeldungEineAusgangsdateiZuGroß =
    "Fehler: Eine Ausgangsdatei ist mit > 4.294.967.296 Byte zu groß!   ";
/// DateiKopfLesen reads no more than this many bytes unless told otherwise, so that a file
/// without line ends (a one-line XML file, a binary file) is not read whole for a look at its head.
inline constexpr std::size_t KopfHöchstlänge = 16'000'000;

/// The first `anzahl` lines of a file as one string, each with its own line end: LF, CR LF and a
/// lone CR each end a line, so the result is always the file's first bytes, unchanged. Fewer lines
/// give the whole file; `anzahl` <= 0 gives "". Reads only as far as needed and never more than
/// `höchstens` bytes. Throws Fehler naming the file when it can't be read.
std::string DateiKopfLesen(const std::filesystem::path& pfad, int anzahl,
                           std::size_t höchstens = KopfHöchstlänge);

/// True when the file is larger than GrößteAusgangsdatei; the size is taken as a 64-bit value.
/// False when its size can't be read (the reader that opens it reports that).
bool DateiZuGroß(const std::filesystem::path& pfad);

} // namespace flurix
