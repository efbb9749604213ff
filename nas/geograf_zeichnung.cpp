#include "nas/geograf_zeichnung.hpp"

#include "core/cp1252.hpp"
#include "core/text.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <numbers>

namespace flurix::nas {
namespace {

constexpr double Pi = std::numbers::pi;

// The shortest text that reads back to the value, with a point and never with an exponent.
void Zahl(std::string& ziel, double wert) {
    char puffer[64];
    const auto [ende, fehler] =
        std::to_chars(puffer, puffer + sizeof puffer, wert, std::chars_format::fixed);
    ziel.append(puffer, fehler == std::errc() ? ende : puffer);
}

std::string ZahlText(double wert) {
    std::string text;
    Zahl(text, wert);
    return text;
}

Lage AufDemKreis(const Kreisbogen& k, double winkel) {
    return {k.mitte.rechts + k.radius * std::cos(winkel),
            k.mitte.hoch + k.radius * std::sin(winkel)};
}

double Richtungswinkel(const Lage& mitte, const Lage& p) {
    return std::atan2(p.hoch - mitte.hoch, p.rechts - mitte.rechts);
}

} // namespace

std::uint64_t Lageschlüssel(const Lage& lage) {
    // 32 bits each of millimetres: a span of 4,294 km, more than any zone's coordinates need.
    const auto mm = [](double v) {
        return static_cast<std::uint32_t>(static_cast<std::int64_t>(std::llround(v * 1000.0)));
    };
    return (static_cast<std::uint64_t>(mm(lage.rechts)) << 32) | mm(lage.hoch);
}

std::optional<Kreisbogen> BogenDurch(const Lage& a, const Lage& b, const Lage& c) {
    const double ax = a.rechts, ay = a.hoch, bx = b.rechts, by = b.hoch, cx = c.rechts, cy = c.hoch;
    const double d = 2.0 * (ax * (by - cy) + bx * (cy - ay) + cx * (ay - by));
    const double seite = std::max(
        {std::hypot(bx - ax, by - ay), std::hypot(cx - bx, cy - by), std::hypot(cx - ax, cy - ay)});
    // Nearly on a line: a radius beyond a million times the longest side is a straight line.
    if (seite == 0 || std::abs(d) < seite * seite * 1e-6)
        return std::nullopt;
    // Relative to a, so that coordinates of millions of metres keep their digits.
    const double bx0 = bx - ax, by0 = by - ay, cx0 = cx - ax, cy0 = cy - ay;
    const double d0 = 2.0 * (bx0 * cy0 - by0 * cx0);
    const double b2 = bx0 * bx0 + by0 * by0, c2 = cx0 * cx0 + cy0 * cy0;
    Kreisbogen k;
    k.mitte = {ax + (cy0 * b2 - by0 * c2) / d0, ay + (bx0 * c2 - cx0 * b2) / d0};
    k.radius = std::hypot(ax - k.mitte.rechts, ay - k.mitte.hoch);
    const double kreuz = (bx - ax) * (cy - by) - (by - ay) * (cx - bx);
    k.richtung = kreuz > 0 ? 1 : -1;
    const double von = Richtungswinkel(k.mitte, a), bis = Richtungswinkel(k.mitte, c);
    double winkel = k.richtung > 0 ? bis - von : von - bis;
    while (winkel <= 0)
        winkel += 2 * Pi;
    while (winkel > 2 * Pi)
        winkel -= 2 * Pi;
    k.winkel = winkel;
    return k;
}

void GeografZeichnung::Zeile(std::string_view text) {
    std::string& puffer = m_datei.Puffer();
    puffer += Utf8NachCp1252(text);
    puffer += "\r\n";
    m_datei.Weiter();
}

void GeografZeichnung::Kopf(std::string_view datum, std::string_view uhrzeit) {
    Zeile("*");
    Zeile("* GRAFBAT - D A T E I  GEOgraf");
    Zeile("*");
    Zeile("* Ausgabe ALKIS/NAS für Geograf");
    Zeile("* erstellt am: " + std::string(datum) + ", Uhrzeit: " + std::string(uhrzeit));
    Zeile("* erstellt mit GeografOutWriter");
    Zeile("*");
    Zeile("Typ: GRAFBAT V4");
    Zeile("PAR: \"zvautneu.art\",\"zvautal.sym\",\"GEOGRAF\", 500");
}

void GeografZeichnung::Koordinaten(std::string& ziel, const Lage& lage) const {
    ziel += m_zone;
    Zahl(ziel, lage.rechts);
    ziel += ',';
    Zahl(ziel, lage.hoch);
}

long long GeografZeichnung::Punkt(std::string_view kennung, std::string_view ebeneArt,
                                  const Lage& lage, std::string_view daten) {
    const long long n = ++m_pk;
    std::string zeile =
        "PK" + std::to_string(n) + ": " + Einzeilig(kennung) + "," + std::string(ebeneArt) + ",";
    Koordinaten(zeile, lage);
    zeile += ",,,0,0,,,,,,0,,0,,0,0,,1,0,0,0,,,,";
    Zeile(zeile);
    if (!daten.empty())
        Zeile("DA" + std::to_string(n) + ": " + Einzeilig(daten));
    m_punkte.emplace(Lageschlüssel(lage), n);
    ++m_zählung.punkte;
    return n;
}

std::string GeografZeichnung::Endpunkt(const Lage& lage) const {
    if (const auto p = m_punkte.find(Lageschlüssel(lage)); p != m_punkte.end())
        return std::to_string(p->second);
    std::string text = "PK=" + m_zone;
    Zahl(text, lage.rechts);
    text += ' ';
    Zahl(text, lage.hoch);
    return text;
}

void GeografZeichnung::Segment(const Lage& a, const Lage& b, const std::optional<Lage>& mitte,
                               int rang, std::string_view ebeneArt) {
    std::uint64_t ka = Lageschlüssel(a), kb = Lageschlüssel(b);
    if (ka == kb)
        return;
    if (ka > kb)
        std::swap(ka, kb);
    std::string schlüssel(reinterpret_cast<const char*>(&ka), sizeof ka);
    schlüssel.append(reinterpret_cast<const char*>(&kb), sizeof kb);
    if (mitte) {
        const std::uint64_t km = Lageschlüssel(*mitte);
        schlüssel.append(reinterpret_cast<const char*>(&km), sizeof km);
    }
    const auto [eintrag, neu] = m_segmentIndex.try_emplace(std::move(schlüssel), m_segmente.size());
    if (neu) {
        m_segmente.push_back({a, b, mitte, rang, std::string(ebeneArt)});
    } else if (Gespeichert& alt = m_segmente[eintrag->second]; rang > alt.rang) {
        alt.rang = rang;
        alt.ebeneArt = ebeneArt;
    }
}

void GeografZeichnung::Linie(const Lage& a, const Lage& b, const std::optional<Kreisbogen>& bogen,
                             std::string_view ebeneArt) {
    std::string zeile = "LI" + std::to_string(++m_li) + ": " + Endpunkt(a) + "," + Endpunkt(b) +
                        "," + std::string(ebeneArt) + ",";
    if (bogen) {
        // A tenth of a millimetre is more than any radius of the cadastre is known to.
        Zahl(zeile, std::round(bogen->radius * 1e4) / 1e4);
        zeile += bogen->richtung > 0 ? ",1" : ",-1";
    } else {
        zeile += ',';
    }
    Zeile(zeile);
    ++m_zählung.linien;
}

std::size_t GeografZeichnung::SegmenteSchreiben() {
    const std::size_t vorher = m_zählung.linien;
    for (const Gespeichert& s : m_segmente) {
        if (!s.mitte) {
            Linie(s.a, s.b, std::nullopt, s.ebeneArt);
            continue;
        }
        const auto bogen = BogenDurch(s.a, *s.mitte, s.b);
        if (!bogen) {
            Linie(s.a, *s.mitte, std::nullopt, s.ebeneArt);
            Linie(*s.mitte, s.b, std::nullopt, s.ebeneArt);
        } else if (bogen->winkel <= Pi) {
            Linie(s.a, s.b, bogen, s.ebeneArt);
        } else {
            // No arc longer than a half circle: such a one is two, split at its middle.
            const Lage halb = AufDemKreis(*bogen, Richtungswinkel(bogen->mitte, s.a) +
                                                      bogen->richtung * bogen->winkel / 2);
            Linie(s.a, halb, bogen, s.ebeneArt);
            Linie(halb, s.b, bogen, s.ebeneArt);
        }
    }
    m_segmente.clear();
    m_segmentIndex.clear();
    return m_zählung.linien - vorher;
}

void GeografZeichnung::Text(std::string_view ebeneArt, const Lage& lage, const Lage& bezug,
                            double höhe, double winkel, int ausrichtung, std::string_view text) {
    const std::string n = std::to_string(++m_te);
    std::string zeile = "TE" + n + ": ," + std::string(ebeneArt) + ", ";
    const auto paar = [&](const Lage& l) {
        zeile += m_zone;
        Zahl(zeile, l.rechts);
        zeile += ", ";
        Zahl(zeile, l.hoch);
        zeile += ", ";
    };
    paar(lage);
    paar(bezug);
    // A ten-thousandth of a gon is finer than any label is set; "+ 0.0" makes -0 a plain 0.
    zeile += ZahlText(höhe) + ", " + ZahlText(std::round(winkel * 1e4) / 1e4 + 0.0) + ", 0, " +
             std::to_string(ausrichtung) + ", 0, , 0, , , , , , \"";
    Zeile(zeile);
    Zeile("  TX" + n + ": " + Einzeilig(text));
    ++m_zählung.texte;
}

void GeografZeichnung::Fläche(std::string_view ebeneArt, int typ, double abstand, double winkel,
                              const std::vector<Ring>& außen, const std::vector<Ring>& innen) {
    const std::string n = std::to_string(++m_sch);
    Zeile("SCH" + n + ": ," + std::string(ebeneArt) + "," + std::to_string(typ) + "," +
          ZahlText(abstand) + "," + ZahlText(winkel));
    std::string pos = "  POS" + n + ":";
    bool ersterRing = true;
    for (const auto* ringe : {&außen, &innen})
        for (const Ring& ring : *ringe) {
            if (!ersterRing)
                pos += " ;";
            ersterRing = false;
            for (const nas::Punkt& p : ring.punkte) {
                pos += ' ';
                pos += m_zone;
                Zahl(pos, p.x);
                pos += ' ';
                Zahl(pos, p.y);
            }
        }
    Zeile(pos);
    ++m_zählung.flächen;
}

} // namespace flurix::nas
