#pragma once
// Polygons of the area computation: a parcel or a land-use, soil or public-law area as its
// exterior and interior rings, their areas, boxes, the equality test of two polygons and the
// exchange text of the clipping (".clp": ring count, then per ring its point count and "x,y"
// lines, CR LF). The clipping itself is in nas/verschneidung.hpp.

#include "nas/geometrie.hpp"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace flurix::nas {

/// A polygon: exterior and interior rings, each ring's first point not repeated at its end.
struct Polygonmenge {
    std::vector<Ring> außen;
    std::vector<Ring> innen;

    bool Leer() const { return außen.empty(); }
    std::size_t Punktzahl() const;
};

/// Axis-parallel box of a polygon.
struct Box {
    double minX = 0, minY = 0, maxX = 0, maxY = 0;

    /// Two boxes overlap unless one lies wholly beside the other (touching counts as overlap).
    bool Überlappt(const Box& andere) const {
        return !(andere.minX > maxX || andere.maxX < minX || andere.minY > maxY || andere.maxY < minY);
    }
};

/// What the rings of a polygon text look like, for the protocol.
struct Ringbefund {
    bool offen = false;       ///< a ring whose last point is not its first
    bool zuWenigPunkte = false; ///< a ring of fewer than three points (left out)
};

/// The polygon of a feature from its texts (gml:exterior, gml:interior, gml:Arc): arcs become
/// chords with `pfeilhöhe`, the closing point of each ring is dropped, a ring of fewer than three
/// points is left out. No message is shown; an empty text gives an empty polygon.
Polygonmenge PolygonAusTexten(std::string_view außen, std::string_view innen, std::string_view bögen,
                              double pfeilhöhe, Ringbefund* befund = nullptr);

/// Signed area of the rings by the trapezoid form: per ring the sum over its edges (closing edge
/// included) of (y1 + y2) × (x1 − x2), halved; the rings added with their signs. Counter-clockwise
/// rings count positive.
double RingFlaeche(const std::vector<Ring>& ringe);
double RingFlaeche(const Ring& ring);

/// Area of a polygon: the absolute area of the exterior rings less that of the interior rings.
double GesamtFlaeche(const Polygonmenge& polygon);

/// Box of all points; std::nullopt for an empty polygon.
std::optional<Box> BoxVon(const Polygonmenge& polygon);

/// True when both polygons have the same points, whatever the start point and direction of their
/// rings: every point written as "x y" with three decimals, the two lists compared sorted.
bool RingeGleich(const Polygonmenge& a, const Polygonmenge& b);

/// Exchange text: the number of rings (exterior, then interior), then per ring its number of
/// points and a line "x,y" per point, "." as decimal mark; lines end with CR LF.
std::string ClpText(const Polygonmenge& polygon);

/// The rings of an exchange text (as the clipping's "solution.txt" holds them); a first line 0
/// gives none. Lines that are no numbers end the reading.
std::vector<Ring> ClpAusText(std::string_view text);

/// ClpAusText of a file; no rings when it can't be read.
std::vector<Ring> ClpLesen(const std::filesystem::path& datei);

} // namespace flurix::nas
