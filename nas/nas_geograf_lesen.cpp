#include "nas/nas_geograf_lesen.hpp"

#include "core/datenbank.hpp"
#include "core/fehler.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "nas/flaechenklassen.hpp"
#include "nas/nas_protokoll.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numbers>

namespace flurix::nas {
namespace {

std::string Schlüssel(const Lage& a, const Lage& b, const Lage& c) {
    std::string text;
    for (const Lage* l : {&a, &b, &c}) {
        const std::uint64_t k = Lageschlüssel(*l);
        text.append(reinterpret_cast<const char*>(&k), sizeof k);
    }
    return text;
}

std::vector<double> Zahlen(std::string_view text) {
    std::vector<double> zahlen;
    for (std::string_view teil : Teilen(text, ' ')) {
        if (teil.empty())
            continue;
        double wert = 0;
        const auto [ende, fehler] = std::from_chars(teil.data(), teil.data() + teil.size(), wert);
        if (fehler != std::errc() || ende != teil.data() + teil.size())
            return {};
        zahlen.push_back(wert);
    }
    return zahlen;
}

} // namespace

std::string Auswahl(Datenbank& db, std::string_view tabelle,
                    std::span<const std::string_view> spalten, std::string_view zusatz) {
    if (!db.TabelleVorhanden(tabelle))
        return {};
    const auto vorhanden = Spaltenliste(db, tabelle);
    std::string sql = "SELECT ";
    bool erste = true;
    for (std::string_view spalte : spalten) {
        sql += erste ? "" : ", ";
        erste = false;
        sql += vorhanden.contains(spalte) ? "t." + Bezeichner(spalte) : std::string("''");
    }
    sql += " FROM " + Bezeichner(tabelle) + " t";
    if (!zusatz.empty())
        sql += " " + std::string(zusatz);
    return sql;
}

Bögen::Bögen(std::string_view text) {
    for (std::string_view bogen : Teilen(text, ';')) {
        const std::vector<double> z = Zahlen(bogen);
        if (z.size() != 6)
            continue;
        const Lage a{z[0], z[1]}, b{z[2], z[3]}, c{z[4], z[5]};
        m_bögen.insert(Schlüssel(a, b, c));
        m_bögen.insert(Schlüssel(c, b, a));
    }
}

bool Bögen::Enthält(const Lage& a, const Lage& b, const Lage& c) const {
    return !m_bögen.empty() && m_bögen.contains(Schlüssel(a, b, c));
}

void SegmenteGehen(
    const std::vector<Punkt>& punkte, const Bögen& bögen, bool schließen,
    const std::function<void(const Lage&, const Lage&, const std::optional<Lage>&)>& segment,
    bool* offen) {
    const auto lage = [&](std::size_t i) { return Lage{punkte[i].x, punkte[i].y}; };
    std::size_t i = 0;
    while (i + 1 < punkte.size()) {
        if (i + 2 < punkte.size() && bögen.Enthält(lage(i), lage(i + 1), lage(i + 2))) {
            segment(lage(i), lage(i + 2), lage(i + 1));
            i += 2;
        } else {
            segment(lage(i), lage(i + 1), std::nullopt);
            ++i;
        }
    }
    if (schließen && punkte.size() > 2 &&
        Lageschlüssel(lage(0)) != Lageschlüssel(lage(punkte.size() - 1))) {
        segment(lage(punkte.size() - 1), lage(0), std::nullopt);
        if (offen != nullptr)
            *offen = true;
    }
}

std::size_t UmringeGehen(
    std::string_view außen, std::string_view innen, std::string_view bögen,
    const std::function<void(const Lage&, const Lage&, const std::optional<Lage>&)>& segment,
    bool* offen) {
    const Bögen arcs(bögen);
    std::size_t ringe = 0;
    for (std::string_view text : {außen, innen})
        for (const Ring& ring : RingeAusText(text, "", 0, nullptr)) {
            ++ringe;
            SegmenteGehen(ring.punkte, arcs, true, segment, offen);
        }
    return ringe;
}

std::optional<Lage> ErsteLage(std::string_view text) {
    const auto ringe = RingeAusText(text, "", 0, nullptr);
    if (ringe.empty() || ringe.front().punkte.empty())
        return std::nullopt;
    return Lage{ringe.front().punkte.front().x, ringe.front().punkte.front().y};
}

double LabelGon(std::string_view drehwinkel) {
    double rad = 0;
    const std::string_view t = TrimmeLeerzeichen(drehwinkel);
    if (t.empty() || std::from_chars(t.data(), t.data() + t.size(), rad).ec != std::errc())
        return 0;
    double gon = std::fmod(rad * 200.0 / std::numbers::pi, 400.0);
    if (gon < 0)
        gon += 400;
    if (gon > 100 && gon <= 300)
        gon -= 200;
    return gon;
}

std::optional<Lage> Innenpunkt(const Polygonmenge& polygon) {
    const auto box = BoxVon(polygon);
    if (!box)
        return std::nullopt;
    const double y = (box->minY + box->maxY) / 2;
    // The crossings of the horizontal line with every edge; between the 1st and 2nd, 3rd and 4th,
    // ... the line is inside.
    std::vector<double> schnitte;
    for (const auto* ringe : {&polygon.außen, &polygon.innen})
        for (const Ring& ring : *ringe)
            for (std::size_t i = 0; i < ring.punkte.size(); ++i) {
                const Punkt& p = ring.punkte[i];
                const Punkt& q = ring.punkte[(i + 1) % ring.punkte.size()];
                if ((p.y > y) != (q.y > y))
                    schnitte.push_back(p.x + (y - p.y) / (q.y - p.y) * (q.x - p.x));
            }
    std::sort(schnitte.begin(), schnitte.end());
    double breite = 0;
    Lage punkt{(box->minX + box->maxX) / 2, y};
    for (std::size_t i = 0; i + 1 < schnitte.size(); i += 2)
        if (schnitte[i + 1] - schnitte[i] > breite) {
            breite = schnitte[i + 1] - schnitte[i];
            punkt.rechts = (schnitte[i] + schnitte[i + 1]) / 2;
        }
    return punkt;
}

bool Zeichnungslauf::ImSystem(std::string_view klasse, std::string_view id,
                              std::string_view objektSrs) {
    if (objektSrs.empty() || srs.empty() || objektSrs == srs)
        return true;
    protokoll.Eintrag("GEOgraf-Ausgabe: " + std::string(klasse) + " " + std::string(id) +
                      " liegt im Koordinatensystem " + std::string(objektSrs) + " statt " + srs +
                      " und wird übersprungen...");
    ++übersprungen;
    return false;
}

void Zeichnungslauf::Abbruchprüfung(std::size_t zeile) {
    if (zeile % 2048 == 0 && ui.AbbruchGewünscht())
        throw Fehler("Der ALKIS Export wurde abgebrochen!   ");
}

} // namespace flurix::nas
