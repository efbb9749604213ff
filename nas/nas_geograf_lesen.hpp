#pragma once
// What the parts of the NAS drawing share: reading the object tables (columns a table lacks read
// as empty), the coordinate system of the data set, the arcs of an object and the walk along its
// rings segment by segment.

#include "nas/geograf_zeichnung.hpp"
#include "nas/polygon.hpp"

#include <functional>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace flurix {
class Anweisung;
class Datenbank;
class Oberfläche;
} // namespace flurix

namespace flurix::nas {

class NasProtokoll;

/// "SELECT" of the named columns of `tabelle`, a column it lacks as ''; an empty text when the
/// table is missing. `zusatz` follows the FROM (a join, a condition).
std::string Auswahl(Datenbank& db, std::string_view tabelle,
                    std::span<const std::string_view> spalten, std::string_view zusatz = {});
inline std::string Auswahl(Datenbank& db, std::string_view tabelle,
                           std::initializer_list<std::string_view> spalten,
                           std::string_view zusatz = {}) {
    return Auswahl(db, tabelle, std::span<const std::string_view>(spalten.begin(), spalten.size()),
                   zusatz);
}

/// The arcs of an object's gml:Arc text, to find them again in its rings.
class Bögen {
public:
    explicit Bögen(std::string_view text);
    /// The middle point when a→b→c (or c→b→a) is one of the arcs.
    bool Enthält(const Lage& a, const Lage& b, const Lage& c) const;
    bool Leer() const { return m_bögen.empty(); }

private:
    std::unordered_set<std::string> m_bögen;
};

/// Calls `segment` for each segment of the line or ring `punkte`: straight, or an arc with its
/// middle point where `bögen` knows the three points. With `schließen`, a ring that does not end
/// at its first point gets the closing segment (and `offen` is set).
void SegmenteGehen(
    const std::vector<Punkt>& punkte, const Bögen& bögen, bool schließen,
    const std::function<void(const Lage&, const Lage&, const std::optional<Lage>&)>& segment,
    bool* offen = nullptr);

/// The rings of an object's gml:exterior and gml:interior texts, walked segment by segment
/// (SegmenteGehen, rings closed) with the arcs of its gml:Arc text; returns how many rings it has.
std::size_t UmringeGehen(
    std::string_view außen, std::string_view innen, std::string_view bögen,
    const std::function<void(const Lage&, const Lage&, const std::optional<Lage>&)>& segment,
    bool* offen = nullptr);

/// The first point of a coordinate text ("x y ..."); nothing when it has none.
std::optional<Lage> ErsteLage(std::string_view text);
/// A label's direction in gon (counter-clockwise from the easting axis) from the NAS angle in
/// radians; a text that would stand on its head is turned by half a circle. 0 for no number.
double LabelGon(std::string_view drehwinkel);

/// A point inside the polygon for its label: the middle of the widest stretch of the line through
/// the middle of its box; the box's middle when the polygon is too thin to find one.
std::optional<Lage> Innenpunkt(const Polygonmenge& polygon);

/// The rest of the drawing's shared state: the coordinate system of the parcels, and the
/// protocol and the count of objects left out.
struct Zeichnungslauf {
    Datenbank& db;
    GeografZeichnung& zeichnung;
    NasProtokoll& protokoll;
    Oberfläche& ui;
    std::string srs; ///< the parcels' srsName; objects in another one are left out
    std::size_t übersprungen = 0;
    bool texte = true;
    bool schraffur = false;
    bool umringe = false;

    /// False (with a protocol line and a count) for an object of another coordinate system.
    bool ImSystem(std::string_view klasse, std::string_view id, std::string_view objektSrs);
    /// Asks for Escape every so often; throws Fehler when it is pressed.
    void Abbruchprüfung(std::size_t zeile);
};

/// The areas, boundaries and outlines: parcels with the boundaries of Flur, Gemarkung,
/// Gemeinde, Kreis and the special boundaries, BOV, buildings, land use and soil assessment (with
/// their texts when the run has texts).
void FlächenZeichnen(Zeichnungslauf& lauf, const std::filesystem::path& konfigOrdner);

} // namespace flurix::nas
