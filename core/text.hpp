#pragma once
// Small text helpers of the core; all text is UTF-8.

#include <string>
#include <string_view>
#include <vector>

namespace flurix {

/// Lower case of ASCII letters and of the German capitals Ä, Ö, Ü (UTF-8); other bytes unchanged.
std::string Kleinbuchstaben(std::string_view text);

/// The pieces of `text` between the separators; n separators give n + 1 pieces (empty ones too).
std::vector<std::string_view> Teilen(std::string_view text, char trenner);

/// The number at the start of `text` the way the program reads numbers typed by people: leading
/// blanks skipped, "." as decimal point, an optional sign and exponent; 0 when there is no number.
/// Independent of the process's locale.
double ZahlLesen(std::string_view text);

/// Each run of blanks made one blank, then blanks cut at both ends (tabs are left alone): the
/// cleaning of register texts and list lines.
std::string TextSäubern(std::string_view text);

/// The text on one line of a file: CR, LF and TAB become blanks (GRAFBAT records, error lists).
std::string Einzeilig(std::string_view text);

/// Blanks trimmed at both ends (only blanks, as the settings files are read).
std::string_view TrimmeLeerzeichen(std::string_view text);

/// Blanks, tabs and line ends trimmed at both ends (texts of XML elements and answers).
std::string_view TrimmeLeerraum(std::string_view text);

/// The first `zeichen` characters (not bytes) of UTF-8 text; a letter is never split.
std::string_view Utf8Anfang(std::string_view text, std::size_t zeichen);

/// A number in a pattern of zeros ("0000000.00", "00000", "0.0", "000"): as many places before
/// the point as the pattern has at least, as many after it, rounded half away from zero.
std::string Zahlmuster(double wert, std::string_view muster);

/// A number rounded to `stellen` places, halves away from zero.
double Gerundet(double wert, int stellen);

/// A number rounded to `stellen` places, in its shortest form ("12.5", "124", "0.004").
std::string ZahlGerundet(double wert, int stellen);

/// Every occurrence of `alt` replaced by `neu`, left to right, without rescanning what was inserted.
std::string Ersetzen(std::string_view text, std::string_view alt, std::string_view neu);

} // namespace flurix
