#pragma once
// The record writer of the NAS drawing: points, lines, texts and areas as GRAFBAT records of a
// GEOgraf batch file (the line forms are in the README, "The drawing of a NAS data set"). It
// numbers the records, gives each point one number by its coordinates so that lines can name
// their end points, and writes each boundary segment once however many objects share it.

#include "core/zieldatei.hpp"
#include "nas/geometrie.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace flurix::nas {

/// A point of the map: Rechtswert (easting) and Hochwert (northing), in metres.
struct Lage {
    double rechts = 0;
    double hoch = 0;
};

/// A point's key: its coordinates in millimetres. Two vertices of two objects that are one point
/// in the data meet in it although their texts may differ in the last digit.
std::uint64_t Lageschlüssel(const Lage& lage);

/// The circle of an arc from a through b to c: its centre and radius, the side it turns to from
/// a to c (1 left, counter-clockwise; -1 right) and the angle it sweeps. Nothing when the points
/// lie on a line or two of them are one.
struct Kreisbogen {
    Lage mitte;
    double radius = 0;
    int richtung = 0;
    double winkel = 0; ///< the angle the arc sweeps, radians, positive
};
std::optional<Kreisbogen> BogenDurch(const Lage& a, const Lage& b, const Lage& c);

class GeografZeichnung {
public:
    /// `zone`: written before each easting (the full meridian code), "" for none.
    GeografZeichnung(Zieldatei& datei, std::string zone)
        : m_datei(datei), m_zone(std::move(zone)) {}

    /// The head lines; `datum`, `uhrzeit` as in "24.11.2026", "22:05:00".
    void Kopf(std::string_view datum, std::string_view uhrzeit);

    /// A PK record (and its DA line when `daten` is not empty); returns its number. A point at the
    /// place of an earlier one gets its own record all the same.
    long long Punkt(std::string_view kennung, std::string_view ebeneArt, const Lage& lage,
                    std::string_view daten = {});

    /// A segment of a boundary of kind `rang` (a higher rank wins where segments meet: a Flur
    /// boundary over a parcel boundary) under `ebeneArt`; straight, or an arc through `mitte`.
    /// Kept until SegmenteSchreiben.
    void Segment(const Lage& a, const Lage& b, const std::optional<Lage>& mitte, int rang,
                 std::string_view ebeneArt);
    /// The segments kept, each once, in the order first seen; then forgets them. Returns how many
    /// LI records it wrote.
    std::size_t SegmenteSchreiben();

    /// A TE record with its TX line. `winkel` in gon counter-clockwise from the easting axis.
    void Text(std::string_view ebeneArt, const Lage& lage, const Lage& bezug, double höhe,
              double winkel, int ausrichtung, std::string_view text);

    /// An SCH record with its POS line: Typ 0 outline, 1 hatched (`abstand` metres, `winkel` gon).
    void Fläche(std::string_view ebeneArt, int typ, double abstand, double winkel,
                const std::vector<Ring>& außen, const std::vector<Ring>& innen);

    /// Records written so far: PK, LI, TE, SCH.
    struct Zählung {
        std::size_t punkte = 0, linien = 0, texte = 0, flächen = 0;
    };
    const Zählung& Gezählt() const { return m_zählung; }

private:
    struct Gespeichert {
        Lage a, b;
        std::optional<Lage> mitte;
        int rang = 0;
        std::string ebeneArt;
    };
    void Zeile(std::string_view text);
    void Koordinaten(std::string& ziel, const Lage& lage) const;
    /// "PK=<Y> <X>" or the number of the point there.
    std::string Endpunkt(const Lage& lage) const;
    void Linie(const Lage& a, const Lage& b, const std::optional<Kreisbogen>& bogen,
               std::string_view ebeneArt);

    Zieldatei& m_datei;
    std::string m_zone;
    long long m_pk = 0, m_li = 0, m_te = 0, m_sch = 0;
    std::unordered_map<std::uint64_t, long long> m_punkte;
    std::vector<Gespeichert> m_segmente;
    std::unordered_map<std::string, std::size_t> m_segmentIndex;
    Zählung m_zählung;
};

} // namespace flurix::nas
