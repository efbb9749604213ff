#pragma once
// Windows-1252 at the edges of the program: inside, all text is UTF-8.

#include <filesystem>
#include <string>
#include <string_view>

namespace flurix {

/// Windows-1252 bytes to UTF-8. Never fails: the five bytes that 1252 leaves unassigned
/// (0x81, 0x8D, 0x8F, 0x90, 0x9D) become the control characters of the same number, so that
/// the way back gives the same bytes.
std::string Cp1252NachUtf8(std::string_view text);

/// Appends the UTF-8 bytes of the code point `c` (below 0x110000).
void Utf8Anhängen(std::string& ziel, char32_t c);

/// UTF-8 to Windows-1252. A character that 1252 cannot hold becomes "?"; so does each byte of
/// an invalid UTF-8 sequence.
std::string Utf8NachCp1252(std::string_view text);

/// True when the text is well-formed UTF-8 (pure ASCII included).
bool IstGültigesUtf8(std::string_view text);

/// Text of a file whose code page is not told: well-formed UTF-8 stays as it is (a leading byte
/// order mark is dropped), anything else is taken as Windows-1252. Configuration files are read
/// this way, so that a file saved by a Linux editor works as well as one of Windows-1252.
std::string DateitextNachUtf8(std::string_view text);

/// The whole text of a configuration file as UTF-8 (Windows-1252 or UTF-8 on disk); "" when the
/// file is missing. Throws Fehler when it exists but can't be read.
std::string KonfigText(const std::filesystem::path& datei);

} // namespace flurix
