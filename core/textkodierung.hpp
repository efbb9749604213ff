#pragma once
// Text files in UTF-16: the readers take Windows-1252 and UTF-8 (with or without byte order mark)
// and would read UTF-16 as binary garbage, one NUL after every letter. Editors on Windows save
// "Unicode" text that way, so the dispatch and the readers recognise it by its head and refuse it
// with a message that says what to do.

#include <filesystem>
#include <string>
#include <string_view>

namespace flurix {

/// True when the bytes begin as UTF-16 text: a byte order mark (FF FE or FE FF), or, without one,
/// a NUL in every second byte of the first 32 bytes and none in the others (Latin text in UTF-16).
/// A Windows-1252 or UTF-8 file with a stray NUL is no UTF-16 file.
bool IstUtf16(std::string_view kopf);

/// "Die Datei "<pfad>" ist in UTF-16 kodiert! Flurix liest Textdateien in Windows-1252 oder UTF-8:
/// bitte die Datei in einer dieser Kodierungen speichern und erneut öffnen.   "
std::string MeldungUtf16(const std::filesystem::path& datei);

/// True when the file's first bytes are UTF-16 (IstUtf16); false for a file that can't be read,
/// which its reader reports in its own words.
bool IstUtf16Datei(const std::filesystem::path& datei);

} // namespace flurix
