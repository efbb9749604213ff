#include "nas/geometrie.hpp"

#include "core/cp1252.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <numbers>

namespace flurix::nas {
namespace {

bool IstBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

/// The tokens of a text one after the other; blanks separate them, and ";" too when asked.
class Tokenleser {
public:
    Tokenleser(std::string_view text, bool semikolonTrennt)
        : m_rest(text), m_semikolon(semikolonTrennt) {}

    /// The next token, or false at the end of the text.
    bool Nächstes(std::string_view& token) {
        std::size_t i = 0;
        while (i < m_rest.size() && Trennt(m_rest[i]))
            ++i;
        if (i == m_rest.size())
            return false;
        std::size_t ende = i;
        while (ende < m_rest.size() && !Trennt(m_rest[ende]))
            ++ende;
        token = m_rest.substr(i, ende - i);
        m_rest.remove_prefix(ende);
        return true;
    }

private:
    bool Trennt(char c) const { return IstBlank(c) || (m_semikolon && c == ';'); }

    std::string_view m_rest;
    bool m_semikolon;
};

/// The token as a finite number ("." as decimal mark, optional sign and exponent), or nothing.
std::optional<double> Zahl(std::string_view token) {
    if (token.starts_with('+'))
        token.remove_prefix(1);
    double wert = 0;
    const char* ende = token.data() + token.size();
    const auto [p, fehler] = std::from_chars(token.data(), ende, wert);
    if (fehler != std::errc() || p != ende || !std::isfinite(wert))
        return std::nullopt;
    return wert;
}

/// Appends the number in fixed notation: with `stellen` decimals, or (stellen < 0) in the shortest
/// form that reads back to the same value. A zero is never written with a minus sign.
void ZahlAnhängen(std::string& text, double wert, int stellen) {
    std::array<char, 512> puffer{}; // enough for any finite double in fixed notation
    const auto [ende, fehler] = stellen < 0
                                    ? std::to_chars(puffer.data(), puffer.data() + puffer.size(),
                                                    wert, std::chars_format::fixed)
                                    : std::to_chars(puffer.data(), puffer.data() + puffer.size(),
                                                    wert, std::chars_format::fixed, stellen);
    if (fehler != std::errc()) {
        text += '0';
        return;
    }
    std::string_view zahl(puffer.data(), static_cast<std::size_t>(ende - puffer.data()));
    if (zahl.starts_with('-') && zahl.find_first_not_of("0.", 1) == std::string_view::npos)
        zahl.remove_prefix(1);
    text.append(zahl);
}

void PunktAnhängen(std::string& text, double x, double y, int stellen) {
    ZahlAnhängen(text, x, stellen);
    text += ' ';
    ZahlAnhängen(text, y, stellen);
}

/// Runs of blanks made one blank, no blank beside ";", trimmed at both ends.
std::string Normalisieren(std::string_view text) {
    std::string aus;
    aus.reserve(text.size());
    bool blankOffen = false;
    for (char c : text) {
        if (IstBlank(c)) {
            blankOffen = !aus.empty() && aus.back() != ';';
            continue;
        }
        if (blankOffen && c != ';')
            aus += ' ';
        blankOffen = false;
        aus += c;
    }
    return aus;
}

/// Every occurrence of `alt` that stands as whole tokens (bounded by the text's ends, blanks or
/// ";") replaced by `neu`.
std::string GanzeTokensErsetzen(std::string_view text, std::string_view alt, std::string_view neu) {
    auto grenze = [&text](std::size_t i) { return text[i] == ' ' || text[i] == ';'; };
    std::string aus;
    std::size_t kopiertBis = 0;
    for (auto pos = text.find(alt); pos != std::string_view::npos;) {
        const std::size_t ende = pos + alt.size();
        if ((pos == 0 || grenze(pos - 1)) && (ende == text.size() || grenze(ende))) {
            aus.append(text.substr(kopiertBis, pos - kopiertBis)).append(neu);
            kopiertBis = ende;
            pos = text.find(alt, ende);
        } else {
            pos = text.find(alt, pos + 1);
        }
    }
    aus.append(text.substr(kopiertBis));
    return aus;
}

/// Calls `weiter` with each point of the text: the coordinates paired, a pair with something
/// other than a number skipped, an odd last coordinate dropped.
template <class Folge>
void PaarweiseLesen(std::string_view text, bool semikolonTrennt, Folge weiter) {
    Tokenleser leser(text, semikolonTrennt);
    std::string_view x;
    std::string_view y;
    while (leser.Nächstes(x) && leser.Nächstes(y)) {
        const auto px = Zahl(x);
        const auto py = Zahl(y);
        if (px && py)
            weiter(Punkt{*px, *py});
    }
}

/// The points of one ring's text; a point equal to the one before is dropped.
Ring RingLesen(std::string_view text) {
    Ring ring;
    PaarweiseLesen(text, false, [&ring](const Punkt& p) {
        if (ring.punkte.empty() || !(ring.punkte.back() == p))
            ring.punkte.push_back(p);
    });
    return ring;
}

/// Centre of the box of the points, each coordinate rounded to 3 places.
class Box {
public:
    void Dazu(const Punkt& p) {
        m_min.x = std::min(m_min.x, p.x);
        m_min.y = std::min(m_min.y, p.y);
        m_max.x = std::max(m_max.x, p.x);
        m_max.y = std::max(m_max.y, p.y);
        m_leer = false;
    }
    std::optional<Punkt> Mitte() const {
        if (m_leer)
            return std::nullopt;
        return Punkt{Runden3((m_min.x + m_max.x) / 2), Runden3((m_min.y + m_max.y) / 2)};
    }

private:
    static double Runden3(double wert) { return std::round(wert * 1000) / 1000 + 0.0; }

    Punkt m_min{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
    Punkt m_max{-std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    bool m_leer = true;
};

} // namespace

std::string PosUmring(std::string_view text) {
    std::string liste;
    liste.reserve(text.size());
    Tokenleser leser(text, false);
    std::string_view x;
    std::string_view y;
    std::string_view vorX;
    std::string_view vorY;
    bool erster = true;
    while (leser.Nächstes(x) && leser.Nächstes(y)) {
        if (!erster && x == vorX && y == vorY)
            continue;
        if (!erster)
            liste += ';';
        liste.append(x).append(" ").append(y);
        vorX = x;
        vorY = y;
        erster = false;
    }
    return liste;
}

std::string BogenZuSehnen(std::string_view bogen, double pfeilhöhe) {
    std::array<std::string_view, 6> token;
    std::array<double, 6> wert{};
    Tokenleser leser(bogen, false);
    std::size_t anzahl = 0;
    std::string_view t;
    while (leser.Nächstes(t)) {
        if (anzahl == token.size())
            return {}; // more than six numbers: no arc
        const auto z = Zahl(t);
        if (!z)
            return {};
        token[anzahl] = t;
        wert[anzahl] = *z;
        ++anzahl;
    }
    if (anzahl != token.size())
        return {};
    if (!(pfeilhöhe > 0) || !std::isfinite(pfeilhöhe))
        pfeilhöhe = StandardPfeilhöhe;

    // B and C relative to A, so that coordinates of millions of metres keep their decimals.
    const double ax = wert[0];
    const double ay = wert[1];
    const double bx = wert[2] - ax;
    const double by = wert[3] - ay;
    const double cx = wert[4] - ax;
    const double cy = wert[5] - ay;
    const double kreuz = bx * cy - by * cx;
    const double ab = std::hypot(bx, by);
    const double ac = std::hypot(cx, cy);
    const double bc = std::hypot(cx - bx, cy - by);
    const double längste = std::max({ab, ac, bc});
    // Radius = ab·bc·ac / (2·|kreuz|). Points on a line, or with a radius beyond a million times
    // the longest side, are no circle worth the name: they stay a straight list.
    const bool kreis =
        ab > 0 && ac > 0 && bc > 0 && 2 * std::abs(kreuz) * 1e6 * längste > ab * bc * ac;
    std::string liste;
    if (!kreis) {
        for (std::size_t i = 0; i < token.size(); i += 2) {
            if (i > 0)
                liste += ';';
            liste.append(token[i]).append(" ").append(token[i + 1]);
        }
        return liste;
    }

    // Centre M relative to A.
    const double b2 = bx * bx + by * by;
    const double c2 = cx * cx + cy * cy;
    const double mx = (cy * b2 - by * c2) / (2 * kreuz);
    const double my = (bx * c2 - cx * b2) / (2 * kreuz);
    const double r = std::hypot(mx, my);
    const double winkelA = std::atan2(-my, -mx);
    const double winkelC = std::atan2(cy - my, cx - mx);
    constexpr double vollkreis = 2 * std::numbers::pi;
    double bogenwinkel = winkelC - winkelA; // counter-clockwise when A, B, C turn left
    if (kreuz > 0 && bogenwinkel <= 0)
        bogenwinkel += vollkreis;
    else if (kreuz < 0 && bogenwinkel >= 0)
        bogenwinkel -= vollkreis;

    // Sagitta s of a chord over the angle w: s = r (1 - cos(w/2)), so w = 4 asin(sqrt(s / 2r)),
    // which stays exact for a sagitta far below the radius.
    const double schritt =
        pfeilhöhe >= 2 * r ? vollkreis : 4 * std::asin(std::sqrt(pfeilhöhe / (2 * r)));
    const double teile = std::abs(bogenwinkel) / schritt;
    const int sehnen = teile < MaxSehnenJeBogen ? static_cast<int>(teile) + 1 : MaxSehnenJeBogen;

    liste.reserve(static_cast<std::size_t>(sehnen + 1) * 26);
    PunktAnhängen(liste, ax, ay, 4);
    for (int k = 1; k < sehnen; ++k) {
        const double w = winkelA + bogenwinkel * k / sehnen;
        liste += ';';
        PunktAnhängen(liste, ax + mx + r * std::cos(w), ay + my + r * std::sin(w), 4);
    }
    liste += ';';
    liste.append(token[4]).append(" ").append(token[5]);
    return liste;
}

double PfeilhöheAusEinstellung(std::string_view wert) {
    Tokenleser leser(wert, false);
    std::string_view token;
    std::string_view zuviel;
    if (!leser.Nächstes(token) || leser.Nächstes(zuviel))
        return StandardPfeilhöhe;
    const auto zahl = Zahl(token);
    return zahl && *zahl > 0 ? *zahl : StandardPfeilhöhe;
}

std::string BögenErsetzen(std::string_view text, std::string_view bögen, double pfeilhöhe) {
    std::string normal = Normalisieren(text);
    const std::string bogenliste = Normalisieren(bögen);
    for (std::string_view bogen : Teilen(bogenliste, ';')) {
        if (bogen.empty() || normal.find(bogen) == std::string::npos)
            continue;
        std::string sehnen = BogenZuSehnen(bogen, pfeilhöhe);
        if (sehnen.empty())
            continue;
        // Inside a ring the points are separated by blanks; ";" separates rings.
        std::replace(sehnen.begin(), sehnen.end(), ';', ' ');
        normal = GanzeTokensErsetzen(normal, bogen, sehnen);
    }
    return normal;
}

std::vector<Ring> RingeAusText(std::string_view text, std::string_view bögen, double pfeilhöhe,
                               Oberfläche* ui) {
    if (Normalisieren(text).find_first_not_of("; ") == std::string::npos) {
        if (ui != nullptr)
            ui->Meldung("Koordinaten-Trenner ohne Daten!", ProduktTitel, Stil::Warnung);
        return {};
    }
    const std::string normal = BögenErsetzen(text, bögen, pfeilhöhe);
    std::vector<Ring> ringe;
    for (std::string_view ringtext : Teilen(normal, ';')) {
        Ring ring = RingLesen(ringtext);
        if (!ring.punkte.empty())
            ringe.push_back(std::move(ring));
    }
    return ringe;
}

std::string PunktlisteText(const Ring& ring) {
    std::string liste;
    liste.reserve(ring.punkte.size() * 24);
    for (const Punkt& p : ring.punkte) {
        if (!liste.empty())
            liste += ';';
        PunktAnhängen(liste, p.x, p.y, -1);
    }
    return liste;
}

std::optional<Punkt> BoxMitte(std::string_view ringText) {
    Box box;
    PaarweiseLesen(ringText, true, [&box](const Punkt& p) { box.Dazu(p); });
    return box.Mitte();
}

std::optional<Punkt> BoxMitte(const std::vector<Ring>& ringe) {
    Box box;
    for (const Ring& ring : ringe)
        for (const Punkt& p : ring.punkte)
            box.Dazu(p);
    return box.Mitte();
}

std::string Prüfsumme(std::string_view text) {
    const std::string bytes = Utf8NachCp1252(text);
    std::string ziffern;
    ziffern.reserve(bytes.size() * 3);
    unsigned summe = 0;
    for (char c : bytes) {
        summe = (summe + static_cast<unsigned char>(c)) % 256;
        ziffern += std::to_string(summe);
    }
    return ziffern;
}

} // namespace flurix::nas
