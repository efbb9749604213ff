// The geometry of the NAS drawing export: arcs from their end points, the rings of a POS text and
// the hatch lines of a building.

#include "export/dxf_nas.hpp"

#include "core/fehler.hpp"

#include <polyclipping/clipper.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <numbers>
#include <system_error>

namespace flurix::ausgabe::detail {

namespace {

double Grad(double bogen) {
    double grad = bogen * 180.0 / std::numbers::pi;
    if (grad < 0)
        grad += 360.0;
    // -0.0000000001 rad gives 360 after the addition: DXF wants [0, 360).
    return grad >= 360.0 ? grad - 360.0 : grad;
}

// Clipper works on whole millimetres, relative to a point of the area: absolute Gauss-Krüger
// coordinates in millimetres would still fit, but the differences keep the rounding local.
constexpr double Maßstab = 1000.0;

ClipperLib::IntPoint Ganz(DxfPunkt p, DxfPunkt ursprung) {
    return {static_cast<ClipperLib::cInt>(std::llround((p.x - ursprung.x) * Maßstab)),
            static_cast<ClipperLib::cInt>(std::llround((p.y - ursprung.y) * Maßstab))};
}

DxfPunkt Zurück(const ClipperLib::IntPoint& p, DxfPunkt ursprung) {
    return {ursprung.x + static_cast<double>(p.X) / Maßstab,
            ursprung.y + static_cast<double>(p.Y) / Maßstab};
}

} // namespace

DxfBogenLage BogenAusEndpunkten(DxfPunkt a, DxfPunkt b, double radius, int richtung) {
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double sehne = std::hypot(dx, dy);
    DxfBogenLage bogen;
    bogen.radius = radius;
    const DxfPunkt mitte{(a.x + b.x) / 2, (a.y + b.y) / 2};
    // The centre lies on the perpendicular through the chord's middle, on the left of a → b for
    // an arc turning left: then the shorter arc runs counter-clockwise from a to b.
    const double halbeSehne = sehne / 2;
    const double abstand = halbeSehne < radius ? std::sqrt(radius * radius - halbeSehne * halbeSehne) : 0.0;
    const double seite = richtung < 0 ? -1.0 : 1.0;
    if (sehne > 0) {
        bogen.x = mitte.x - dy / sehne * abstand * seite;
        bogen.y = mitte.y + dx / sehne * abstand * seite;
    } else {
        bogen.x = mitte.x;
        bogen.y = mitte.y;
    }
    const double winkelA = Grad(std::atan2(a.y - bogen.y, a.x - bogen.x));
    const double winkelB = Grad(std::atan2(b.y - bogen.y, b.x - bogen.x));
    // DXF draws an ARC counter-clockwise from start to end: a right turn is drawn from b to a.
    bogen.start = seite > 0 ? winkelA : winkelB;
    bogen.ende = seite > 0 ? winkelB : winkelA;
    return bogen;
}

std::vector<DxfRing> PosRinge(std::string_view pos) {
    std::vector<DxfRing> ringe;
    std::size_t anfang = 0;
    while (anfang <= pos.size()) {
        const std::size_t ende = std::min(pos.find(';', anfang), pos.size());
        const std::string_view teil = pos.substr(anfang, ende - anfang);
        std::vector<double> zahlen;
        std::size_t i = 0;
        while (i < teil.size()) {
            if (teil[i] == ' ' || teil[i] == '\t') {
                ++i;
                continue;
            }
            std::size_t j = i;
            while (j < teil.size() && teil[j] != ' ' && teil[j] != '\t')
                ++j;
            double zahl = 0;
            const auto [zeiger, fehler] = std::from_chars(teil.data() + i, teil.data() + j, zahl);
            if (fehler == std::errc() && zeiger == teil.data() + j && std::isfinite(zahl))
                zahlen.push_back(zahl);
            i = j;
        }
        DxfRing ring;
        for (std::size_t k = 0; k + 1 < zahlen.size(); k += 2)
            ring.push_back({zahlen[k], zahlen[k + 1]});
        if (ring.size() >= 3)
            ringe.push_back(std::move(ring));
        anfang = ende + 1;
    }
    return ringe;
}

std::vector<DxfStrecke> Schraffurlinien(const std::vector<DxfRing>& ringe, double abstand,
                                        double winkelGon) {
    std::vector<DxfStrecke> strecken;
    if (!(abstand > 0) || ringe.empty() || ringe.front().empty())
        return strecken;
    const double bogen = winkelGon * std::numbers::pi / 200.0;
    const DxfPunkt richtung{std::cos(bogen), std::sin(bogen)};
    const DxfPunkt normale{-richtung.y, richtung.x};
    // The extent of the area along the hatch direction (t) and across it (s).
    double sMin = std::numeric_limits<double>::max(), sMax = -sMin, tMin = sMin, tMax = -sMin;
    for (const auto& ring : ringe)
        for (const auto& p : ring) {
            const double s = p.x * normale.x + p.y * normale.y;
            const double t = p.x * richtung.x + p.y * richtung.y;
            sMin = std::min(sMin, s);
            sMax = std::max(sMax, s);
            tMin = std::min(tMin, t);
            tMax = std::max(tMax, t);
        }
    // The lines lie on multiples of the Abstand from the origin, so that the hatch of neighbouring
    // buildings with the same Abstand and Winkel runs on through both.
    const double erste = std::ceil(sMin / abstand), letzte = std::floor(sMax / abstand);
    if (!(letzte >= erste) || letzte - erste + 1 > static_cast<double>(SchraffurlinienMax))
        return strecken;

    const DxfPunkt ursprung = ringe.front().front();
    try {
        ClipperLib::Clipper clipper;
        for (const auto& ring : ringe) {
            ClipperLib::Path pfad;
            pfad.reserve(ring.size());
            for (const auto& p : ring)
                pfad.push_back(Ganz(p, ursprung));
            clipper.AddPath(pfad, ClipperLib::ptClip, true);
        }
        // One metre beyond the area at both ends, so that no line ends inside it.
        tMin -= 1.0;
        tMax += 1.0;
        for (double k = erste; k <= letzte; k += 1.0) {
            const double s = k * abstand;
            const DxfPunkt von{normale.x * s + richtung.x * tMin, normale.y * s + richtung.y * tMin};
            const DxfPunkt bis{normale.x * s + richtung.x * tMax, normale.y * s + richtung.y * tMax};
            clipper.AddPath({Ganz(von, ursprung), Ganz(bis, ursprung)}, ClipperLib::ptSubject, false);
        }
        ClipperLib::PolyTree baum;
        clipper.Execute(ClipperLib::ctIntersection, baum, ClipperLib::pftEvenOdd,
                        ClipperLib::pftEvenOdd);
        ClipperLib::Paths offen;
        ClipperLib::OpenPathsFromPolyTree(baum, offen);
        for (const auto& pfad : offen)
            for (std::size_t i = 0; i + 1 < pfad.size(); ++i)
                strecken.push_back({Zurück(pfad[i], ursprung), Zurück(pfad[i + 1], ursprung)});
    } catch (const ClipperLib::clipperException& e) {
        throw Fehler(std::string("Schraffur nicht berechenbar: ") + e.what());
    }
    return strecken;
}

} // namespace flurix::ausgabe::detail
