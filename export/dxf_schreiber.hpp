#pragma once
// The DXF writer: the skeleton of a drawing of release "AC1002" (header, the tables of line types,
// layers and text styles, the four symbol blocks) and one writer per entity kind. It knows nothing
// of cadastre data: the DXF export of NAS data decides what is drawn and calls the writers here.
// The fixed tables carry the cadastre's drawing vocabulary (export/dxf_tabellen.cpp).
//
// The file is a text of lines, group code and value in turn. Group codes are written as the
// literal strings the drawing programs of the offices know (with their leading blanks: "  0",
// " 10", "999"; the scale groups of INSERT without: "41"). Every table entry and every entity ends
// with the comment pair "999" / "-------------------", so that the file stays readable by eye.
//
// Line ends are CR LF: the drawings go to Windows CAD programs (GEOgraf, AutoCAD), which is where
// the offices open them, and the drawings this program always made had CR LF. Every DXF reader we
// know (ezdxf, GDAL, the CAD programs) takes either form, so nothing is lost on Linux.
//
// Texts (layer, line type, block, style and the TEXT string) are written in Windows-1252, the code
// page of an AC1002 drawing. A character that 1252 lacks ("ş", "ğ", a Chinese sign; "€" is in it)
// becomes "?", as everywhere the program writes 1252. A CR or LF inside a text becomes a blank,
// because a line break would split the value and shift every later pair.
//
// Numbers from the caller are the shortest text that reads back to the same double, with "." as
// the decimal point whatever the locale, and never in exponent form ("5600000", "0.05", "-12.5"):
// std::to_chars in fixed notation. Exponent forms ("5.6e+06") are refused by old CAD readers.

#include "core/zieldatei.hpp"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace flurix {
}

namespace flurix::ausgabe {

/// The layer of a GEOgraf key "Ebene.Art" ("81.251"): Ebene 0 PUNKTE_EINGELESEN, 1 and 2
/// FLURSTUECKE, 11 AMTL_GEBAEUDE, 21 TATS_NUTZUNG_ALB, 51 AMTLPKT_AUFNP, 52 AMTLPKT_GRENZP,
/// 81 TOPOGRAFIE_GELAENDE (Art 251), BODENSCHAETZUNG (Art 1401) or TOPOGRAFIE_LK, 82
/// TOPOGRAFIE_LKWEITERE, 84 NICHTAMTL_GEBAEUDE, 99 DEFPOINTS. Both pieces compare as numbers
/// ("0251" is Art 251). Any other key, or one that is not a number, gives "". Never fails.
std::string DxfLayerName(std::string_view schlüssel);

/// What a TEXT entity takes besides layer and colour.
struct DxfTextAngaben {
    double dicke = 0.0;         ///< group 39, thickness
    double x = 0.0, y = 0.0;    ///< groups 10/20, insertion point
    double höhe = 1.0;          ///< group 40
    double winkel = 0.0;        ///< group 50, written unchanged (the caller's gon)
    double breitenfaktor = 1.0; ///< group 41
    double neigung = 0.0;       ///< group 51, oblique angle
    std::string_view text;      ///< group 1, UTF-8
    std::string_view stil;      ///< group 7, a style of the STYLE table ("ISO8")
    int horizontal = 0;         ///< group 72
    int vertikal = 0;           ///< group 73
};

/// One DXF drawing, written as it goes: each call appends its lines to a buffer that goes to the
/// file whenever it fills, so memory stays the same for a drawing of any size. The file is written
/// under a temporary name beside the target (`<ziel>.tmp`) and renamed by Abschließen(); a writer
/// destroyed without it deletes the temporary file and leaves an older target as it was.
/// Every failure of the file throws Fehler with a German message naming the file.
///
/// Order of the calls: Anfang(), then entities (with AbschnittWechseln() between groups where the
/// caller wants a new ENTITIES section), then Abschließen(). A POLYLINE is Polylinie(), its
/// Vertex() calls and Seqend().
class DxfSchreiber {
public:
    /// Creates the temporary file. Throws Fehler when it can't be created.
    explicit DxfSchreiber(std::filesystem::path ziel);
    DxfSchreiber(const DxfSchreiber&) = delete;
    DxfSchreiber& operator=(const DxfSchreiber&) = delete;
    DxfSchreiber(DxfSchreiber&&) = delete;
    DxfSchreiber& operator=(DxfSchreiber&&) = delete;
    /// Without Abschließen(): closes and deletes the temporary file. Never throws.
    ~DxfSchreiber() = default;

    /// HEADER with the drawing's extents ($EXTMIN/$LIMMIN, $EXTMAX/$LIMMAX), the TABLES section
    /// (LTYPE, LAYER, STYLE, VIEW), the BLOCKS section and the head of the ENTITIES section.
    void Anfang(double xmin, double ymin, double xmax, double ymax);
    /// Closes the ENTITIES section and opens a new one. CAD programs read every such section;
    /// GDAL (ogrinfo, QGIS) reads the first only, ezdxf the last only.
    void AbschnittWechseln();
    /// Closes the ENTITIES section, ends the file with EOF, and renames it to the target
    /// (replacing an older file). Throws Fehler naming the file when writing or renaming fails.
    void Abschließen();

    void Punkt(std::string_view layer, int farbe, double x, double y);
    void Linie(std::string_view layer, std::string_view linientyp, int farbe, double x1, double y1,
               double x2, double y2);
    /// The head of a POLYLINE (group 70 "1": closed); Vertex() and Seqend() follow.
    void Polylinie(std::string_view layer, std::string_view linientyp, int farbe);
    void Vertex(std::string_view layer, std::string_view linientyp, int farbe, double x, double y);
    void Seqend(std::string_view layer, std::string_view linientyp, int farbe);
    /// An ARC; the angles go to groups 50/51 as given.
    void Bogen(std::string_view layer, std::string_view linientyp, int farbe, double x, double y,
               double radius, double startwinkel, double endwinkel);
    /// A TEXT. The alignment point (groups 11/21) lies 0.05 from the insertion point in the
    /// direction of the angle read in gon (x + 0.05·sin, y + 0.05·cos): the drawings have always
    /// carried that small offset, and group 50 keeps the angle as the caller gave it.
    void Text(std::string_view layer, int farbe, const DxfTextAngaben& angaben);
    /// An INSERT of a block of the BLOCKS section (S4, S3125, S3005, S3073). S3125 goes in at
    /// scale 0.75, the others at 1. An empty block name writes layer and colour alone.
    void Einfügen(std::string_view layer, int farbe, std::string_view block, double x, double y);

private:
    void Zeile(std::string_view text);
    void Paar(std::string_view code, std::string_view wert);
    void TextPaar(std::string_view code, std::string_view utf8);
    void ZahlPaar(std::string_view code, double wert);
    void GanzzahlPaar(std::string_view code, int wert);
    void Kommentar();

    Zieldatei m_datei;
};

namespace detail {
/// The fixed parts of every drawing as lines (without line ends), in file order, with the
/// extents put in: HEADER, TABLES, BLOCKS and the head of ENTITIES.
void DxfGerüst(std::string& ziel, std::string_view xmin, std::string_view ymin,
               std::string_view xmax, std::string_view ymax);
/// The shortest round-trip text of a double, "." as decimal point, never in exponent form.
std::string DxfZahl(double wert);
} // namespace detail

} // namespace flurix::ausgabe
