#pragma once
// The text forms of the PDF writer clsPDF: numbers, colours, escaped strings and the creation date.
// All of them are written with a point whatever the process's locale, because the file is read by
// programs on any system.

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

namespace flurix::report {

/// A number of a drawing operator: the value rounded half up to three decimals (the integer part of
/// v × 1000 + 0.5, towards minus infinity), then written in its shortest form: 12 → "12",
/// 12.5 → "12.5", 0.0004 → "0", -0.4 → "-0.4". Never fails; a value that is not finite or beyond
/// ±9e15 is written in the shortest general form of the unrounded value.
std::string FormatNumber(double v);

/// The plain conversion of a single-precision value, used only for /MediaBox and for the Td that
/// starts a page's text: no rounding to three decimals, at most seven significant digits
/// (596 → "596", 72.5 → "72.5", 841.9 → "841.9"). The program writes numbers with a point for
/// the whole run, so this conversion never writes a comma either.
std::string EinfacheZahl(float v);

/// A colour as a colour operator, before the caller's change of case: red = bits 0-7,
/// green = bits 8-15, blue = bits 16-23. Equal parts give "<gray> gFC", others "<r> <g> <b> RG",
/// each part divided by 255 and through FormatNumber. The stroke colour is written in upper case
/// ("RG", "GFC"), the fill colour in lower case ("rg", "gfc"); "GFC"/"gfc" are no PDF operators,
/// so a gray colour changes nothing in a reader. That is how the file has always looked, and the
/// register extract draws only black, so it stays.
std::string FormatColor(std::int32_t farbe);

/// The text of a string operand: "\" becomes "\\", "(" becomes "\(", ")" becomes "\)", in that order.
std::string EscapeText(std::string_view text);

/// The 14 digits yyyymmddhhnnss of a point in time, as /CreationDate writes them. Fields out of
/// their range are written as they are (a year past 9999 gives more digits).
std::string Zeitstempel(const std::tm& zeit);

/// The local time of the machine now; all fields 0 when the clock cannot be read.
std::tm LokaleZeit();

} // namespace flurix::report
