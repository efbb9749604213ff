#pragma once
// The class tables of the area computation in memory: each polygon with its box, area, the
// attributes the result lists take and its state in the run (used up, what parcels took of it),
// a grid over the boxes, and the texts of the codes (ALKIS_Werteart.dat, ALKIS_Nutzungsart.dat),
// looked up once per code.

#include "nas/flaechen_index.hpp"
#include "nas/verschneidung.hpp"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace flurix {
class Datenbank;
}

namespace flurix::nas {

class NasProtokoll;

enum class Klassenart { Nutzung, Bodenschätzung, Sonderfläche };

/// One polygon of a class table.
struct Klassenfläche {
    std::int64_t zeile = 0; ///< rowid
    Polygonmenge polygon;
    std::optional<Schnittpolygon> schnitt; ///< made when first intersected
    double fläche = 0;       ///< area, rounded to 3 places (checkAlkisGesamtFlaeche)
    double summe = 0;        ///< what parcels took of it (checkAlkisSummeTeilFlaechen)
    bool erreicht = false;   ///< a parcel's walk has reached it (the sum is no longer Null)
    std::string verbraucht;  ///< "True " + the key of the parcel that used it up (checkFullNA)
    std::vector<std::string> attribute; ///< the columns of Klassentabelle::attributnamen
};

/// A class table in memory.
struct Klassentabelle {
    std::string name;
    Klassenart art = Klassenart::Nutzung;
    std::vector<std::string_view> attributnamen; ///< those of the kind the table has
    std::vector<Klassenfläche> flächen;          ///< in row order
    std::unique_ptr<Flächenindex> index; ///< the polygons' boxes
    /// Polygons whose area rounds to 0.0 m²: every parcel's walk reaches them, whatever their box,
    /// until a second parcel finds them used up.
    std::vector<std::uint32_t> winzig;

    /// The attribute of polygon i, std::nullopt when the table has no such column.
    std::optional<std::string_view> Attribut(std::size_t i, std::string_view spalte) const;
};

/// The column names of a table as it is now (one query, no refresh of the name lists).
std::set<std::string, std::less<>> Spaltenliste(Datenbank& db, std::string_view tabelle);
/// Adds the text columns the table lacks.
void SpaltenErgänzen(Datenbank& db, std::string_view tabelle, std::span<const std::string_view> spalten);

/// The attributes each kind takes from its table.
const std::vector<std::string_view>& Attributnamen(Klassenart art);
Klassenart ArtDerKlasse(std::string_view klasse);

/// Reads a class table whole. std::nullopt when the table lacks gml:exterior (noted in the
/// protocol). Rings that do not close or have too few points are noted per polygon.
std::optional<Klassentabelle> KlassentabelleLaden(Datenbank& db, std::string_view name, double pfeilhöhe,
                                                  NasProtokoll& protokoll);

/// Texts of codes, each looked up once.
class Flächentexte {
public:
    Flächentexte(std::string werteart, std::string nutzungsart)
        : m_werteart(std::move(werteart)), m_nutzungsart(std::move(nutzungsart)) {}

    /// The short text of a soil-assessment code (ALKIS_Werteart.dat, column 4); several values
    /// "a;b" give "text a / text b".
    const std::string& Bodentext(std::string_view attribut, std::string_view wert);
    /// Text and catalogue key of a land-use code (ALKIS_Nutzungsart.dat, columns 5 and 6).
    const std::pair<std::string, std::string>& Nutzungstext(std::string_view klasse, std::string_view attribut,
                                                           std::string_view wert);

private:
    std::string m_werteart;
    std::string m_nutzungsart;
    std::map<std::string, std::string, std::less<>> m_boden;
    std::map<std::string, std::pair<std::string, std::string>, std::less<>> m_nutzung;
};

} // namespace flurix::nas
