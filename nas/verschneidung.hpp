#pragma once
// The intersection of two polygons, in the process: Clipper (libpolyclipping) on whole numbers of
// millimetres, the non-zero fill rule on both inputs, holes of the result with their opposite
// direction. A polygon is turned into Clipper's form once (Schnittpolygon) and then intersected
// with many others. Before the intersection, a geometric test tells cheaply whether two polygons
// can meet at all; a drawing of a pair and its result is written on request.

#include "nas/polygon.hpp"

#include <polyclipping/clipper.hpp>

#include <string>
#include <vector>

namespace flurix::nas {

/// Coordinates are kept to three decimals: the scale of the whole numbers Clipper works on.
inline constexpr double SchnittMaßstab = 1000.0;

/// A polygon ready for the intersection: exterior rings turned counter-clockwise, interior rings
/// clockwise, so that the non-zero rule makes holes of the interior rings whatever direction the
/// data gave them; coordinates rounded to millimetres.
class Schnittpolygon {
public:
    Schnittpolygon() = default;
    explicit Schnittpolygon(const Polygonmenge& polygon);

    const ClipperLib::Paths& Pfade() const { return m_pfade; }
    bool Leer() const { return m_pfade.empty(); }

private:
    ClipperLib::Paths m_pfade;
};

/// The result of an intersection: its rings (counter-clockwise outside, clockwise holes) and the
/// signed sum of their areas, in square metres.
struct Schnitt {
    std::vector<Ring> ringe;
    double fläche = 0;
};

/// The intersection of two polygons. Throws Fehler when Clipper refuses the coordinates (a value
/// beyond its range).
Schnitt Schneiden(const Schnittpolygon& a, const Schnittpolygon& b);

/// Tolerance of the test below, in metres: the resolution of the intersection.
inline constexpr double TreffToleranz = 0.001;

/// True when the two polygons can meet: a boundary of one comes within TreffToleranz of a boundary
/// of the other, or a ring of one lies inside the other. It answers yes for every pair whose
/// intersection has an area, and for pairs that only touch; only the edges within the overlap of
/// the two boxes are looked at.
bool KönnenSichTreffen(const Polygonmenge& a, const Box& boxA, const Polygonmenge& b, const Box& boxB);

/// An SVG drawing of a pair and its intersection: the first polygon blue, the second green, the
/// result red, north up.
std::string SchnittSvg(const Polygonmenge& a, const Polygonmenge& b, const std::vector<Ring>& ergebnis);

} // namespace flurix::nas
