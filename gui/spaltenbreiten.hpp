#pragma once
// Column widths of the grid: the table keeps them in twips (1440 to the inch), the screen shows
// pixels, and the per-user settings keep them by column key as the text
// "Schlüssel:Breite;Schlüssel:Breite;..." under "MyApplication", "GridFlurix", "ColWidths".

#include <string>
#include <string_view>

namespace flurix {
class Kataster;
}

namespace flurix::gui {

/// Twips per inch.
inline constexpr int TwipsJeZoll = 1440;

/// Pixels per twip on a screen of `dpi` dots per inch whose font draws a digit `ziffernbreite`
/// pixels wide. The table's fitted widths count 100 twips a character (TextbreiteTwips); a font
/// with wider characters than that widens every column by the same ratio, so that fitted texts
/// still fit. A narrower font never narrows them. A `dpi` of 0 or less is taken as 96.
double PixelJeTwip(int dpi, double ziffernbreite);

/// Pixels of a width in twips, rounded; at least 1 for a positive width.
int TwipsZuPixel(int twips, double pixelJeTwip);
/// Twips of a width in pixels, rounded; the inverse of TwipsZuPixel.
int PixelZuTwips(int pixel, double pixelJeTwip);

/// The widths of all columns of the table, in column order, as the settings keep them. A table
/// without columns gives "".
std::string SpaltenbreitenText(const Kataster& kataster);

/// Gives the columns named in a text of SpaltenbreitenText their width. Keys the table hasn't,
/// pieces without ":" and widths that are no positive number are passed over. Returns the number
/// of columns set.
int SpaltenbreitenAnwenden(Kataster& kataster, std::string_view text);

} // namespace flurix::gui
