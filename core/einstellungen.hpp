#pragma once
// The settings file Flurix.dat and the small text helpers that every part of the program reads it with.

#include "core/text.hpp"

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>

namespace flurix {

/// The n-th piece (n counts from 1) of `text` split at `trenner`, with every tab deleted first and
/// blanks trimmed at both ends. A piece that does not exist gives "" (so a key line without "="
/// has no value). An empty separator leaves the text as one piece.
std::string TokenNr(std::string_view text, int n, std::string_view trenner);

/// Value of `schlüssel` in a settings file of `key =value` lines: token 2 of the first line whose
/// token 1 equals the key exactly. A missing file, a missing key or a line without separator give "".
/// The file is read anew on every call (the user may edit it while the program runs). A value that
/// holds the separator itself is cut there: settings files rely on it. The file may be Windows-1252
/// or UTF-8; the result is UTF-8.
std::string EinstellungLesen(const std::filesystem::path& datei, std::string_view schlüssel,
                             std::string_view trenner = "=");

/// Rewrites a text file: every line that contains `präfix` anywhere becomes `neueZeile`, every other
/// line is kept unless it is blank after trimming (blank lines are dropped). A key that has no line
/// yet is not added. The file keeps its code page (UTF-8 stays UTF-8, anything else is written as
/// Windows-1252) and gets CR LF line ends. Throws Fehler when the file can't be read or written.
void ZeileErsetzen(const std::filesystem::path& datei, std::string_view präfix,
                   std::string_view neueZeile);

/// Date and time as the program prints them ("23.11.2026 07:24:27") with ".", "/", ":", "am" and
/// "pm" removed and blanks trimmed: "23112026 072427". Used to name backup copies.
std::string ZeitStempelText(std::chrono::system_clock::time_point zeitpunkt);
std::string ZeitStempelText();

/// The settings of one installation: the file is named once and read anew on every query.
class Einstellungen {
public:
    explicit Einstellungen(std::filesystem::path datei) : m_datei(std::move(datei)) {}

    const std::filesystem::path& Datei() const { return m_datei; }
    /// Value of the key, "" when missing.
    std::string Wert(std::string_view schlüssel) const { return EinstellungLesen(m_datei, schlüssel); }
    /// True only for the exact value "ja".
    bool Ja(std::string_view schlüssel) const { return Wert(schlüssel) == "ja"; }
    /// True only for the exact value "nein".
    bool Nein(std::string_view schlüssel) const { return Wert(schlüssel) == "nein"; }

private:
    std::filesystem::path m_datei;
};

} // namespace flurix
