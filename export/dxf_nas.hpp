#pragma once
// The DXF export of a NAS drawing. The NAS window draws its object database as a GEOgraf batch
// file ("<ziel>_dxf.out", see README "The drawing of a NAS data set"); this module reads that file
// back with the GRAFBAT reader into the work tables of a temporary SQLite database and draws them
// with the DXF writer. It knows the record kinds and the Ebene.Art keys of the drawing, not NAS.
//
// The drawing has four ENTITIES sections, in this order: the lines and arcs of the LI records,
// the texts of the TE records, the points of the PK records (symbols, numbers and data), the
// polylines of the SCH outlines with the hatch lines of the hatched buildings.
// Coordinates: DXF x is the easting Y of the file, DXF y the northing X.
//
// Files: dxf_nas_tabellen.cpp reads the file into the work tables, dxf_nas.cpp draws them,
// dxf_nas_geometrie.cpp holds the arcs, the POS rings and the hatch lines.

#include "core/fehler.hpp"
#include "core/oberflaeche.hpp"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace flurix::ausgabe {

/// What the person chose in the export dialog.
struct DxfNasOptionen {
    bool schraffur = false;    ///< "mit Schraffur Gebäude": SCH Typ 1 outlines get hatch LINEs
    bool punktnummern = false; ///< "mit Beschriftung Punktnummer": point numbers as texts
    bool sachdaten = false;    ///< "mit Sachdatenbeschriftung Punkt GWT": DA data as texts
    bool calibri = false;      ///< texts in style "Calibri" instead of "ISO8"
    /// Where the work database is made; empty: the system's temp folder.
    std::filesystem::path arbeitsverzeichnis;
    /// Where the protocol lines go (the NAS window's protocol file); empty: ui.Protokoll.
    std::function<void(std::string_view)> protokoll;
};

/// What was drawn.
struct DxfNasZählung {
    std::size_t punkte = 0;      ///< PK records drawn (symbol or point)
    std::size_t linien = 0;      ///< LI records drawn (LINE or ARC)
    std::size_t texte = 0;       ///< TE records drawn (a fraction counts once)
    std::size_t polylinien = 0;  ///< POLYLINE entities, one per ring
    std::size_t schraffuren = 0; ///< hatched areas (SCH Typ 1 with at least one hatch line)
    std::size_t übergangen = 0;  ///< lines passed over (unreadable, or incomplete records)
};

/// Draws the GEOgraf file `outDatei` as the DXF `ziel`. Never throws. Returns Ok, or Fehler with
/// the message "Error DXF-Export: <what>" that was also shown (ui.Meldung, title "Flurix",
/// Stil::Fehler); then no target file is left and an older one stays as it was. The work
/// database is deleted in either case. Protocol lines: records without their TX or POS, lines
/// passed over, and the counts at the end. `zählung`, when given, receives the counts.
Ergebnis DXFExport(const std::filesystem::path& outDatei, const std::filesystem::path& ziel,
                   const DxfNasOptionen& optionen, Oberfläche& ui, DxfNasZählung* zählung = nullptr);

/// The layer of a record of kind `kennung` ("LI", "PK", "TE", "SCH") with the key `ebeneArt`
/// ("1.3"): DxfLayerName of the key, refined by kind. Lines of Ebene 1 by their Art: 1
/// FLURSTUECKE, 3 FLURGRENZE, 4 GEMARKUNGSGRENZE, 5 GEMEINDEGRENZE, 6 KREISGRENZE, 7
/// SONST_BESONDERE_FLSTGRENZE; lines of Ebene 2 BOV-GRENZEN; texts of Ebene 1 and 2
/// AMTLTXT_FLURSTUECK; points of Ebene 11 AMTLPKT_GEBAEUDE. A key DxfLayerName does not know
/// gives "0". Never fails.
std::string NasDxfLayer(std::string_view kennung, std::string_view ebeneArt);

/// The line type a layer's lines are drawn with; CONTINUOUS for all layers without their own.
std::string_view NasDxfLinientyp(std::string_view layer);

namespace detail {

/// A point of the drawing in DXF coordinates (x = Y, y = X).
struct DxfPunkt {
    double x = 0, y = 0;
};
using DxfRing = std::vector<DxfPunkt>;

/// An ARC as DXF wants it: centre, radius, start and end angle in degrees counter-clockwise from
/// the x axis, in [0, 360).
struct DxfBogenLage {
    double x = 0, y = 0, radius = 0, start = 0, ende = 0;
};

/// The arc of radius `radius` from `a` to `b`, turning left (richtung 1, counter-clockwise) or
/// right (-1); it is the shorter of the two arcs, at most a half circle. A chord longer than the
/// diameter is taken as the diameter.
DxfBogenLage BogenAusEndpunkten(DxfPunkt a, DxfPunkt b, double radius, int richtung);

/// The rings of a POS text: rings separated by ";", in each "Y X" pairs separated by blanks.
/// A ring closed by repeating its first point keeps it. Tokens that are no numbers, an odd last
/// token and rings of fewer than three points are left out.
std::vector<DxfRing> PosRinge(std::string_view pos);

/// A straight piece of a hatch line.
struct DxfStrecke {
    DxfPunkt a, b;
};

/// Most hatch lines one area gets: a tiny Abstand over a large area must not fill the memory.
inline constexpr std::size_t SchraffurlinienMax = 20000;

/// The hatch of an area with holes (the rings in any direction, the even-odd rule decides what is
/// inside): parallel lines `abstand` metres apart in the direction `winkelGon` (gon counter-
/// clockwise from the x axis), on the lines through the multiples of `abstand` from the origin,
/// clipped to the area (Clipper, whole millimetres). Nothing for an Abstand of 0 or less, or for
/// more lines than SchraffurlinienMax. Throws Fehler when Clipper refuses the coordinates.
std::vector<DxfStrecke> Schraffurlinien(const std::vector<DxfRing>& ringe, double abstand,
                                        double winkelGon);

} // namespace detail
} // namespace flurix::ausgabe
