#pragma once
// Parcel geometry in its text forms. A parcel's boundary comes from NAS as rings of line segments
// and arcs; the object database keeps it as text:
//   gml:exterior, gml:interior  the coordinates of each ring, blank-separated; rings joined by ";"
//   gml:Arc                     each arc as "x1 y1 x2 y2 x3 y3" (start, a point on the arc, end);
//                               arcs joined by ";"
//   point list                  "x y;x y;x y", "." as decimal mark, no point twice in a row
// Numbers are read and written with "." whatever the locale (std::from_chars, std::to_chars).
// Nothing here throws.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {
class Oberfläche;
}

namespace flurix::nas {

/// Sagitta of chords, in metres, when the setting PfeilhöheKreisZuLinie is 0 or missing.
inline constexpr double StandardPfeilhöhe = 0.01;
/// Sagitta the XML reorganisation replaces arcs with.
inline constexpr double ReorganisationsPfeilhöhe = 0.0001;
/// Most chords one arc is turned into, whatever sagitta and radius ask for: a tiny sagitta or an
/// enormous circle must not fill the memory. Past it the sagitta bound no longer holds.
inline constexpr int MaxSehnenJeBogen = 100000;

struct Punkt {
    double x = 0;
    double y = 0;
    bool operator==(const Punkt&) const = default;
};

/// One ring, its points in order as the text gives them (a closing point equal to the first one
/// stays, as the ring's text has it).
struct Ring {
    std::vector<Punkt> punkte;
};

/// Cleans the text of a line segment into the point list form: runs of blanks (tabs and line
/// ends count as blanks) become one, the tokens are paired as "x y" and joined with ";", and a pair
/// equal (as text) to the pair before it is dropped. "1 2 1 2 3 4" gives "1 2;3 4". It is a text
/// cleaner: tokens that are no numbers are kept as they are; an odd last token is dropped.
std::string PosUmring(std::string_view text);

/// The chords of an arc "x1 y1 x2 y2 x3 y3" (start A, a point B on the arc, end C) whose sagitta is
/// at most `pfeilhöhe` (0, negative or not a number: 0.01), as a point list "x y;x y;...": from A
/// around the circle through A, B and C, to 4 decimal places, ending with C as its coordinates are
/// written in the arc. The number of chords is at most MaxSehnenJeBogen. Points that lie on a line
/// (or nearly so: a radius above a million times the longest side), and an arc with two equal
/// points, give the three points as they are, "A;B;C". Blank text, or a text that is not six
/// finite numbers, gives "".
std::string BogenZuSehnen(std::string_view bogen, double pfeilhöhe);

/// Sagitta from the value of the setting PfeilhöheKreisZuLinie: the number, or 0.01 when the value
/// is empty, 0, negative or not a number with "." as decimal mark ("0,05" gives 0.01).
double PfeilhöheAusEinstellung(std::string_view wert);

/// The ring text (gml:exterior, gml:interior) with each arc of `bögen` (the gml:Arc text, arcs
/// joined with ";") that stands in it as whole numbers replaced by its chords (BogenZuSehnen with
/// `pfeilhöhe`), the chord points separated by blanks as the ring's own points are. Runs of
/// blanks become one and the text is trimmed; "; " becomes ";". An arc that can't be read, or
/// that the text doesn't hold, changes nothing.
std::string BögenErsetzen(std::string_view text, std::string_view bögen, double pfeilhöhe);
/// The rings of the text of gml:exterior or gml:interior. Runs of blanks become one and the text is
/// trimmed; "; " becomes ";". A text without data (nothing but blanks and ";") shows the message
/// "Koordinaten-Trenner ohne Daten!" through `ui` (warning, title Flurix; no message when `ui` is
/// null) and gives no rings. Each arc of `bögen` (the gml:Arc text, arcs joined with ";") that
/// stands in the text as whole numbers is replaced by its chords (BogenZuSehnen with `pfeilhöhe`);
/// an arc that can't be read stays as it is. The text is then split into rings at ";"; each ring's
/// coordinates are paired, a pair with a token that is no number is skipped, an odd last coordinate
/// is dropped, and a point equal to the point before it is dropped. A ring without points is left
/// out.
std::vector<Ring> RingeAusText(std::string_view text, std::string_view bögen, double pfeilhöhe,
                               Oberfläche* ui);

/// Point list text of a ring, "x y;x y": each number in the shortest form that reads back to the
/// same value, without exponent ("389012.5", "5800000").
std::string PunktlisteText(const Ring& ring);

/// Centre of the box of all points, each coordinate rounded to 3 places (halves away from zero).
/// The text form takes a point list or a ring text: ";" counts as a blank, the numbers are paired
/// over the whole text, a pair with a token that is no number is skipped. std::nullopt when there
/// is no point.
std::optional<Punkt> BoxMitte(std::string_view ringText);
std::optional<Punkt> BoxMitte(const std::vector<Ring>& ringe);

/// Check digits of a text, to compare ring texts: each Windows-1252 byte of the text (UTF-8 is
/// converted, a character outside the code page counts as "?") is added to a running sum modulo
/// 256, and the decimal form of each running sum is appended: "AB" gives "65131".
std::string Prüfsumme(std::string_view text);

} // namespace flurix::nas
