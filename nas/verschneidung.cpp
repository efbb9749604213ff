#include "nas/verschneidung.hpp"

#include "core/fehler.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace flurix::nas {
namespace {

using ClipperLib::cInt;
using ClipperLib::IntPoint;
using ClipperLib::Path;

Path PfadAus(const Ring& ring, bool gegenUhrzeiger) {
    Path pfad;
    pfad.reserve(ring.punkte.size());
    for (const Punkt& p : ring.punkte) {
        const IntPoint q(static_cast<cInt>(std::llround(p.x * SchnittMaßstab)),
                         static_cast<cInt>(std::llround(p.y * SchnittMaßstab)));
        if (pfad.empty() || !(pfad.back() == q))
            pfad.push_back(q);
    }
    if (pfad.size() > 1 && pfad.front() == pfad.back())
        pfad.pop_back();
    if (pfad.size() < 3)
        return {};
    if (ClipperLib::Orientation(pfad) != gegenUhrzeiger)
        ClipperLib::ReversePath(pfad);
    return pfad;
}

// --- the test whether two polygons can meet; coordinates taken about a common origin ---

struct Strecke {
    double ax, ay, bx, by;
};

struct Rahmen {
    Box box;
    double x0 = 0, y0 = 0; ///< origin the edges are taken about

    bool Berührt(const Punkt& a, const Punkt& b) const {
        return !(std::max(a.x, b.x) < box.minX || std::min(a.x, b.x) > box.maxX ||
                 std::max(a.y, b.y) < box.minY || std::min(a.y, b.y) > box.maxY);
    }
};

/// The edges of a polygon that touch the frame, about its origin.
std::vector<Strecke> KantenIm(const Polygonmenge& polygon, const Rahmen& rahmen) {
    std::vector<Strecke> kanten;
    for (const auto* ringe : {&polygon.außen, &polygon.innen})
        for (const Ring& ring : *ringe) {
            const auto& p = ring.punkte;
            for (std::size_t i = 0; i < p.size(); ++i) {
                const Punkt& a = p[i];
                const Punkt& b = p[(i + 1) % p.size()];
                if (rahmen.Berührt(a, b))
                    kanten.push_back({a.x - rahmen.x0, a.y - rahmen.y0, b.x - rahmen.x0, b.y - rahmen.y0});
            }
        }
    return kanten;
}

double Kreuz(double ax, double ay, double bx, double by, double cx, double cy) {
    return (bx - ax) * (cy - ay) - (by - ay) * (cx - ax);
}

double AbstandPunktStrecke(double px, double py, const Strecke& s) {
    const double dx = s.bx - s.ax;
    const double dy = s.by - s.ay;
    const double länge2 = dx * dx + dy * dy;
    double t = länge2 > 0 ? ((px - s.ax) * dx + (py - s.ay) * dy) / länge2 : 0;
    t = std::clamp(t, 0.0, 1.0);
    return std::hypot(px - (s.ax + t * dx), py - (s.ay + t * dy));
}

bool StreckenNah(const Strecke& s, const Strecke& t) {
    const double d1 = Kreuz(s.ax, s.ay, s.bx, s.by, t.ax, t.ay);
    const double d2 = Kreuz(s.ax, s.ay, s.bx, s.by, t.bx, t.by);
    const double d3 = Kreuz(t.ax, t.ay, t.bx, t.by, s.ax, s.ay);
    const double d4 = Kreuz(t.ax, t.ay, t.bx, t.by, s.bx, s.by);
    if (((d1 > 0 && d2 < 0) || (d1 < 0 && d2 > 0)) && ((d3 > 0 && d4 < 0) || (d3 < 0 && d4 > 0)))
        return true;
    return std::min({AbstandPunktStrecke(t.ax, t.ay, s), AbstandPunktStrecke(t.bx, t.by, s),
                     AbstandPunktStrecke(s.ax, s.ay, t), AbstandPunktStrecke(s.bx, s.by, t)}) <=
           TreffToleranz;
}

/// Winding number of all rings of the polygon around the point (interior rings turned clockwise,
/// as the intersection takes them): not zero means inside.
bool Innen(const Punkt& punkt, const Polygonmenge& polygon) {
    int windung = 0;
    const auto zählen = [&](const Ring& ring, bool außen) {
        const auto& p = ring.punkte;
        const double fläche = RingFlaeche(ring);
        const int richtung = (fläche >= 0) == außen ? 1 : -1;
        int w = 0;
        for (std::size_t i = 0; i < p.size(); ++i) {
            const Punkt& a = p[i];
            const Punkt& b = p[(i + 1) % p.size()];
            if (a.y <= punkt.y) {
                if (b.y > punkt.y && Kreuz(a.x, a.y, b.x, b.y, punkt.x, punkt.y) > 0)
                    ++w;
            } else if (b.y <= punkt.y && Kreuz(a.x, a.y, b.x, b.y, punkt.x, punkt.y) < 0) {
                --w;
            }
        }
        windung += w * richtung;
    };
    for (const Ring& ring : polygon.außen)
        zählen(ring, true);
    for (const Ring& ring : polygon.innen)
        zählen(ring, false);
    return windung != 0;
}

bool EinRingInnen(const Polygonmenge& von, const Polygonmenge& in) {
    for (const auto* ringe : {&von.außen, &von.innen})
        for (const Ring& ring : *ringe)
            if (!ring.punkte.empty() && Innen(ring.punkte.front(), in))
                return true;
    return false;
}

void PfadSvg(std::string& svg, const std::vector<Ring>& ringe, const Box& box, const char* farbe) {
    svg += "<path fill-rule=\"nonzero\" fill=\"";
    svg += farbe;
    svg += "\" fill-opacity=\"0.3\" stroke=\"";
    svg += farbe;
    svg += "\" stroke-width=\"0.05\" d=\"";
    char puffer[80];
    for (const Ring& ring : ringe) {
        for (std::size_t i = 0; i < ring.punkte.size(); ++i) {
            const Punkt& p = ring.punkte[i];
            std::snprintf(puffer, sizeof puffer, "%c%.3f %.3f ", i == 0 ? 'M' : 'L', p.x - box.minX,
                          box.maxY - p.y);
            svg += puffer;
        }
        svg += "Z ";
    }
    svg += "\"/>\n";
}

std::vector<Ring> AlleRinge(const Polygonmenge& p) {
    std::vector<Ring> ringe = p.außen;
    ringe.insert(ringe.end(), p.innen.begin(), p.innen.end());
    return ringe;
}

} // namespace

Schnittpolygon::Schnittpolygon(const Polygonmenge& polygon) {
    for (const Ring& ring : polygon.außen)
        if (Path pfad = PfadAus(ring, true); !pfad.empty())
            m_pfade.push_back(std::move(pfad));
    if (m_pfade.empty())
        return;
    for (const Ring& ring : polygon.innen)
        if (Path pfad = PfadAus(ring, false); !pfad.empty())
            m_pfade.push_back(std::move(pfad));
}

Schnitt Schneiden(const Schnittpolygon& a, const Schnittpolygon& b) {
    Schnitt schnitt;
    if (a.Leer() || b.Leer())
        return schnitt;
    ClipperLib::Paths lösung;
    try {
        ClipperLib::Clipper clipper;
        clipper.AddPaths(a.Pfade(), ClipperLib::ptSubject, true);
        clipper.AddPaths(b.Pfade(), ClipperLib::ptClip, true);
        clipper.Execute(ClipperLib::ctIntersection, lösung, ClipperLib::pftNonZero, ClipperLib::pftNonZero);
    } catch (const ClipperLib::clipperException& e) {
        throw Fehler(std::string("Verschneidung nicht möglich: ") + e.what());
    }
    double summe = 0;
    for (const Path& pfad : lösung) {
        Ring ring;
        ring.punkte.reserve(pfad.size());
        for (const IntPoint& q : pfad)
            ring.punkte.push_back({static_cast<double>(q.X) / SchnittMaßstab,
                                   static_cast<double>(q.Y) / SchnittMaßstab});
        summe += ClipperLib::Area(pfad);
        schnitt.ringe.push_back(std::move(ring));
    }
    schnitt.fläche = summe / (SchnittMaßstab * SchnittMaßstab);
    return schnitt;
}

bool KönnenSichTreffen(const Polygonmenge& a, const Box& boxA, const Polygonmenge& b, const Box& boxB) {
    Rahmen rahmen;
    rahmen.box = {std::max(boxA.minX, boxB.minX) - TreffToleranz, std::max(boxA.minY, boxB.minY) - TreffToleranz,
                  std::min(boxA.maxX, boxB.maxX) + TreffToleranz, std::min(boxA.maxY, boxB.maxY) + TreffToleranz};
    if (rahmen.box.minX > rahmen.box.maxX || rahmen.box.minY > rahmen.box.maxY)
        return false;
    rahmen.x0 = rahmen.box.minX;
    rahmen.y0 = rahmen.box.minY;
    const std::vector<Strecke> kantenA = KantenIm(a, rahmen);
    const std::vector<Strecke> kantenB = KantenIm(b, rahmen);
    for (const Strecke& s : kantenA)
        for (const Strecke& t : kantenB)
            if (StreckenNah(s, t))
                return true;
    // No boundaries meet: each ring lies wholly inside or wholly outside the other polygon.
    return EinRingInnen(a, b) || EinRingInnen(b, a);
}

std::string SchnittSvg(const Polygonmenge& a, const Polygonmenge& b, const std::vector<Ring>& ergebnis) {
    Box box{0, 0, 1, 1};
    if (const auto ba = BoxVon(a), bb = BoxVon(b); ba && bb)
        box = {std::min(ba->minX, bb->minX), std::min(ba->minY, bb->minY), std::max(ba->maxX, bb->maxX),
               std::max(ba->maxY, bb->maxY)};
    else if (ba)
        box = *ba;
    char kopf[200];
    std::snprintf(kopf, sizeof kopf,
                  "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %.3f %.3f\" width=\"800\">\n",
                  std::max(box.maxX - box.minX, 0.001), std::max(box.maxY - box.minY, 0.001));
    std::string svg = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    svg += kopf;
    PfadSvg(svg, AlleRinge(a), box, "blue");
    PfadSvg(svg, AlleRinge(b), box, "green");
    PfadSvg(svg, ergebnis, box, "red");
    svg += "</svg>\n";
    return svg;
}

} // namespace flurix::nas
