#include "nas/polygon.hpp"

#include "core/datei.hpp"
#include "core/text.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace flurix::nas {
namespace {

/// The rings of one text, closing points dropped; rings of fewer than three points left out.
std::vector<Ring> Ringe(std::string_view text, std::string_view bögen, double pfeilhöhe,
                        Ringbefund* befund) {
    std::vector<Ring> ringe = RingeAusText(text, bögen, pfeilhöhe, nullptr);
    std::erase_if(ringe, [&](Ring& ring) {
        auto& p = ring.punkte;
        if (p.size() > 1 && p.front() == p.back())
            p.pop_back();
        else if (befund && p.size() > 1)
            befund->offen = true;
        if (p.size() >= 3)
            return false;
        if (befund)
            befund->zuWenigPunkte = true;
        return true;
    });
    return ringe;
}

/// The trapezoid sum of one ring, taken about its first point: the same value as the plain form,
/// without the loss of digits that coordinates of millions of metres would cost.
double Trapezsumme(const Ring& ring) {
    const auto& p = ring.punkte;
    if (p.size() < 3)
        return 0;
    const double x0 = p.front().x;
    const double y0 = p.front().y;
    double summe = 0;
    for (std::size_t i = 0; i < p.size(); ++i) {
        const Punkt& a = p[i];
        const Punkt& b = p[(i + 1) % p.size()];
        summe += ((a.y - y0) + (b.y - y0)) * ((a.x - x0) - (b.x - x0));
    }
    return summe / 2;
}

std::string PunktSchlüssel(const Punkt& p) {
    char puffer[96];
    const int n = std::snprintf(puffer, sizeof puffer, "%.3f %.3f", p.x, p.y);
    return std::string(puffer, static_cast<std::size_t>(std::max(n, 0)));
}

std::vector<std::string> Punktliste(const Polygonmenge& polygon) {
    std::vector<std::string> liste;
    liste.reserve(polygon.Punktzahl());
    for (const auto* ringe : {&polygon.außen, &polygon.innen})
        for (const Ring& ring : *ringe)
            for (const Punkt& p : ring.punkte)
                liste.push_back(PunktSchlüssel(p));
    std::sort(liste.begin(), liste.end());
    return liste;
}

void ZahlAnhängen(std::string& text, double wert) {
    char puffer[64];
    const auto [ende, fehler] = std::to_chars(puffer, puffer + sizeof puffer, wert);
    text.append(puffer, fehler == std::errc() ? ende : puffer);
}

} // namespace

std::size_t Polygonmenge::Punktzahl() const {
    std::size_t n = 0;
    for (const auto* ringe : {&außen, &innen})
        for (const Ring& ring : *ringe)
            n += ring.punkte.size();
    return n;
}

Polygonmenge PolygonAusTexten(std::string_view außen, std::string_view innen, std::string_view bögen,
                              double pfeilhöhe, Ringbefund* befund) {
    Polygonmenge polygon;
    polygon.außen = Ringe(außen, bögen, pfeilhöhe, befund);
    polygon.innen = Ringe(innen, bögen, pfeilhöhe, befund);
    return polygon;
}

double RingFlaeche(const std::vector<Ring>& ringe) {
    double summe = 0;
    for (const Ring& ring : ringe)
        summe += Trapezsumme(ring);
    return summe;
}

double RingFlaeche(const Ring& ring) { return Trapezsumme(ring); }

double GesamtFlaeche(const Polygonmenge& polygon) {
    double außen = 0;
    for (const Ring& ring : polygon.außen)
        außen += std::abs(Trapezsumme(ring));
    double innen = 0;
    for (const Ring& ring : polygon.innen)
        innen += std::abs(Trapezsumme(ring));
    return außen - innen;
}

std::optional<Box> BoxVon(const Polygonmenge& polygon) {
    std::optional<Box> box;
    for (const auto* ringe : {&polygon.außen, &polygon.innen})
        for (const Ring& ring : *ringe)
            for (const Punkt& p : ring.punkte) {
                if (!box) {
                    box = Box{p.x, p.y, p.x, p.y};
                    continue;
                }
                box->minX = std::min(box->minX, p.x);
                box->minY = std::min(box->minY, p.y);
                box->maxX = std::max(box->maxX, p.x);
                box->maxY = std::max(box->maxY, p.y);
            }
    return box;
}

bool RingeGleich(const Polygonmenge& a, const Polygonmenge& b) {
    // Point lists of different length can't be equal: the common case costs no text at all.
    if (a.Punktzahl() != b.Punktzahl())
        return false;
    return Punktliste(a) == Punktliste(b);
}

std::string ClpText(const Polygonmenge& polygon) {
    std::string text = std::to_string(polygon.außen.size() + polygon.innen.size()) + "\r\n";
    for (const auto* ringe : {&polygon.außen, &polygon.innen})
        for (const Ring& ring : *ringe) {
            text += std::to_string(ring.punkte.size()) + "\r\n";
            for (const Punkt& p : ring.punkte) {
                ZahlAnhängen(text, p.x);
                text += ',';
                ZahlAnhängen(text, p.y);
                text += "\r\n";
            }
        }
    return text;
}

std::vector<Ring> ClpAusText(std::string_view text) {
    std::vector<std::string_view> zeilen = TextZeilen(text);
    for (auto& zeile : zeilen)
        zeile = TrimmeLeerzeichen(zeile);
    std::size_t nächste = 0;
    const auto ganzzahl = [&](long& wert) {
        if (nächste >= zeilen.size())
            return false;
        const std::string_view z = zeilen[nächste++];
        const auto [p, fehler] = std::from_chars(z.data(), z.data() + z.size(), wert);
        return fehler == std::errc() && p == z.data() + z.size() && wert >= 0;
    };
    std::vector<Ring> ringe;
    long ringzahl = 0;
    if (!ganzzahl(ringzahl))
        return ringe;
    for (long r = 0; r < ringzahl; ++r) {
        long punkte = 0;
        if (!ganzzahl(punkte) || static_cast<std::size_t>(punkte) > zeilen.size() - nächste)
            return ringe;
        Ring ring;
        for (long i = 0; i < punkte; ++i) {
            const auto teile = Teilen(zeilen[nächste++], ',');
            if (teile.size() != 2)
                return ringe;
            Punkt p;
            const auto [px, fx] = std::from_chars(teile[0].data(), teile[0].data() + teile[0].size(), p.x);
            const auto [py, fy] = std::from_chars(teile[1].data(), teile[1].data() + teile[1].size(), p.y);
            if (fx != std::errc() || fy != std::errc())
                return ringe;
            ring.punkte.push_back(p);
        }
        ringe.push_back(std::move(ring));
    }
    return ringe;
}

std::vector<Ring> ClpLesen(const std::filesystem::path& datei) {
    return ClpAusText(DateiKomplettLesen(datei));
}

} // namespace flurix::nas
