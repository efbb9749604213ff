// The fixed parts of every DXF drawing: header variables, line types, layers, text styles and the
// symbol blocks. The values stand as the texts the drawings have always carried ("     0" with its
// six places, "0.0"), so they are kept as strings, not computed.

#include "export/dxf_schreiber.hpp"

#include <array>
#include <initializer_list>
#include <string>
#include <string_view>

namespace flurix::ausgabe::detail {

namespace {

constexpr std::string_view Kommentarstrich = "-------------------";

class Zeilen {
public:
    explicit Zeilen(std::string& ziel) : m_ziel(ziel) {}
    void operator()(std::initializer_list<std::string_view> zeilen) {
        for (const auto z : zeilen) {
            m_ziel.append(z);
            m_ziel.append("\r\n");
        }
    }
    void Kommentar() { (*this)({"999", Kommentarstrich}); }

private:
    std::string& m_ziel;
};

// Header variables with one value; those with points or an extent are written in place.
struct Variable {
    std::string_view name, code, wert;
};

// $ORTHOMODE up to $SKPOLY, in the order of the header.
constexpr Variable VariablenMitte[] = {
    {"$ORTHOMODE", " 70", "     0"},  {"$REGENMODE", " 70", "     1"},
    {"$FILLMODE", " 70", "     1"},   {"$QTEXTMODE", " 70", "     0"},
    {"$DRAGMODE", " 70", "     2"},   {"$LTSCALE", " 40", "1.0"},
    {"$OSMODE", " 70", "    37"},     {"$ATTMODE", " 70", "     1"},
    {"$TEXTSIZE", " 40", "1.0"},      {"$TRACEWID", " 40", "0.05"},
    {"$TEXTSTYLE", "  7", "ISO8"},    {"$CLAYER", "  8", "0"},
    {"$CELTYPE", "  6", "BYBLOCK"},   {"$CECOLOR", " 62", "   256"},
    {"$DIMSCALE", " 40", "1.0"},      {"$DIMASZ", " 40", "0.18"},
    {"$DIMEXO", " 40", "0.0625"},     {"$DIMDLI", " 40", "0.38"},
    {"$DIMRND", " 40", "0.0"},        {"$DIMDLE", " 40", "0.0"},
    {"$DIMEXE", " 40", "0.18"},       {"$DIMTP", " 40", "0.0"},
    {"$DIMTM", " 40", "0.0"},         {"$DIMTXT", " 40", "0.18"},
    {"$DIMCEN", " 40", "0.09"},       {"$DIMTSZ", " 40", "0.0"},
    {"$DIMTOL", " 70", "     0"},     {"$DIMLIM", " 70", "     0"},
    {"$DIMTIH", " 70", "     1"},     {"$DIMTOH", " 70", "     1"},
    {"$DIMSE1", " 70", "     0"},     {"$DIMSE2", " 70", "     0"},
    {"$DIMTAD", " 70", "     0"},     {"$DIMZIN", " 70", "     0"},
    {"$DIMBLK", "  1", ""},           {"$LUNITS", " 70", "     2"},
    {"$LUPREC", " 70", "     4"},     {"$SKETCHINC", " 40", "0.1"},
    {"$FILLETRAD", " 40", "0.5"},     {"$AUNITS", " 70", "     0"},
    {"$AUPREC", " 70", "     0"},     {"$MENU", "  1", "."},
    {"$ELEVATION", " 40", "0.0"},     {"$THICKNESS", " 40", "0.0"},
    {"$LIMCHECK", " 70", "     0"},   {"$CHAMFERA", " 40", "0.0"},
    {"$CHAMFERB", " 40", "0.0"},      {"$SKPOLY", " 70", "     0"},
    // Every file claims the same creation time: the drawings compare byte for byte.
    {"$TDCREATE", " 40", "2457084.272581019"},
    {"$TDUPDATE", " 40", "2457084.31433044"},
    {"$TDINDWG", " 40", "0.0000000116"},
    {"$TDUSRTIMER", " 40", "0.0000000116"},
    {"$USRTIMER", " 70", "     1"},   {"$ANGBASE", " 50", "0.0"},
};

// $ANGDIR up to $UCSNAME.
constexpr Variable VariablenEnde[] = {
    {"$ANGDIR", " 70", "     0"},
    {"$PDMODE", " 70", "     0"},
    {"$PDSIZE", " 40", "0.0"},
    {"$PLINEWID", " 40", "0.0"},
    {"$COORDS", " 70", "     1"},
    {"$SURFTAB1", " 70", "     6"},
    {"$SURFTAB2", " 70", "     6"},
    {"$SURFTYPE", " 70", "     6"},
    {"$SURFU", " 70", "     6"},
    {"$SURFV", " 70", "     6"},
    {"$UCSNAME", "  2", ""},
};

struct Linientyp {
    std::string_view name, beschreibung, anzahl, länge;
    std::initializer_list<std::string_view> striche;
};

// GEMARKUNGGRENZE lacks the "S" of the layer GEMARKUNGSGRENZE: drawings made before rely on both
// names as they are.
const std::array<Linientyp, 14> Linientypen = {{
    {"CONTINUOUS", "solid line", "     0", "0.0", {}},
    {"NUTZUNGSART", "_ ", "     2", "1.0", {"0.5", "-0.5"}},
    {"GELAENDE", "solid line", "     0", "0.0", {}},
    {"GEBAEUDE", "solid line", "     0", "0.0", {}},
    {"BOVGRENZE", "__________     ", "     2", "15.0", {"10.0", "-5.0"}},
    {"BODENSCHAETZUNG", ".. ", "     2", "2.0", {"0.1", "-1.9"}},
    {"1837", "solid line", "     0", "0.0", {}},
    {"0", "solid line", "     0", "0.0", {}},
    {"220", "solid line", "     0", "0.0", {}},
    {"FLSTGRENZE", "solid line", "     0", "0.0", {}},
    {"FLURGRENZE", "______ . . . ", "     8", "10.0",
     {"6.0", "-1.0", "0.0", "-1.0", "0.0", "-1.0", "0.0", "-1.0"}},
    {"GEMARKUNGGRENZE", "______ . . ", "     6", "9.0", {"6.0", "-1.0", "0.0", "-1.0", "0.0", "-1.0"}},
    {"GEMEINDEGRENZE", "______  .  ", "     4", "10.0", {"6.0", "-2.0", "0.0", "-2.0"}},
    {"KREISGRENZE", "____ ____  .  ", "     6", "10.0", {"3.0", "-1.0", "3.0", "-1.0", "0.0", "-1.0"}},
}};

struct Layer {
    std::string_view name, farbe, linientyp;
};

constexpr std::array<Layer, 28> Layers = {{
    {"BOV-GRENZEN", "     1", "CONTINUOUS"},
    {"SACHDATEN_PKT", "     7", "CONTINUOUS"},
    {"GEBAEUDE_POLYLINE", "     7", "CONTINUOUS"},
    {"GEBAEUDE_SCHRAFFUR", "     7", "CONTINUOUS"},
    {"0", "     1", "CONTINUOUS"},
    {"DEFPOINTS", "     1", "CONTINUOUS"},
    {"TATS_NUTZUNG_ALB", "     3", "NUTZUNGSART"},
    {"AMTLPKT_GEBAEUDE", "     7", "CONTINUOUS"},
    {"AMTLPKT_AUFNP", "     7", "CONTINUOUS"},
    {"AMTLPKT_GRENZP", "     3", "CONTINUOUS"},
    {"AMTLTXT_GEBAEUDE", "     7", "CONTINUOUS"},
    {"AMTLTXT_AUFNP", "     7", "CONTINUOUS"},
    {"AMTLTXT_GRENZP", "     3", "CONTINUOUS"},
    {"AMTLTXT_FLURSTUECK", "     3", "CONTINUOUS"},
    {"PUNKTE_EINGELESEN", "     1", "CONTINUOUS"},
    {"AMTL_GEBAEUDE", "     7", "GEBAEUDE"},
    {"FLURSTUECKE_POLYLINE", "     3", "FLSTGRENZE"},
    {"FLURSTUECKE", "     3", "FLSTGRENZE"},
    {"SONST_BESONDERE_FLSTGRENZE", "     3", "FLSTGRENZE"},
    {"KREISGRENZE", "     3", "FLSTGRENZE"},
    {"GEMEINDEGRENZE", "     3", "FLSTGRENZE"},
    {"GEMARKUNGSGRENZE", "     3", "FLSTGRENZE"},
    {"FLURGRENZE", "     3", "FLSTGRENZE"},
    {"TOPOGRAFIE_LK", "     7", "NUTZUNGSART"},
    {"TOPOGRAFIE_GELAENDE", "   100", "GELAENDE"},
    {"NICHTAMTL_GEBAEUDE", "     7", "GEBAEUDE"},
    {"TOPOGRAFIE_LKWEITERE", "     7", "NUTZUNGSART"},
    {"BODENSCHAETZUNG", "     7", "BODENSCHAETZUNG"},
}};

struct Stil {
    std::string_view name, breite, letzteHöhe, schrift;
};

constexpr std::array<Stil, 4> Stile = {{
    {"STANDARD", "1.0", "0.2", "txt"},
    {"ISO8", "0.8", "1.0", "ISO8"},
    {"ARIAL_TTF", "0.8", "1.0", "Arial"},
    {"Calibri", "0.8", "1.0", "Calibri"},
}};

struct Strecke {
    std::string_view x1, y1, x2, y2;
};

// The symbol blocks, all centred on the origin.
struct Block {
    std::string_view name;
    std::initializer_list<std::string_view> kreise; // radii
    std::initializer_list<Strecke> strecken;
};

const std::array<Block, 4> Blöcke = {{
    {"S4", {"0.5"}, {}},
    {"S3125", {"0.05", "0.025", "0.035", "0.06"}, {}},
    {"S3005", {"0.5", "0.3"}, {}},
    {"S3073",
     {},
     {{"-0.5", "0.0", "-0.435", "0.25"},
      {"-0.25", "0.435", "0.0", "0.5"},
      {"0.25", "0.435", "0.435", "0.25"},
      {"0.5", "0.0", "0.435", "-0.25"},
      {"0.25", "-0.435", "0.0", "-0.5"},
      {"-0.25", "-0.435", "-0.435", "-0.25"}}},
}};

void Variablen(Zeilen& z, const auto& liste) {
    for (const auto& v : liste)
        z({"  9", v.name, v.code, v.wert});
}

void Kopf(Zeilen& z, std::string_view xmin, std::string_view ymin, std::string_view xmax,
          std::string_view ymax) {
    // "Section" in mixed case opens the header alone, as it always did. CAD programs and GDAL take
    // it; ezdxf's strict loader wants "SECTION" and refuses the drawing for that word alone.
    z({"  0", "Section", "  2", "HEADER"});
    z({"  9", "$ACADVER", "  1", "AC1002"});
    z({"  9", "$INSBASE", " 10", "0.0", " 20", "0.0"});
    z({"  9", "$EXTMIN", " 10", xmin, " 20", ymin});
    z({"  9", "$EXTMAX", " 10", xmax, " 20", ymax});
    z({"  9", "$LIMMIN", " 10", xmin, " 20", ymin});
    z({"  9", "$LIMMAX", " 10", xmax, " 20", ymax});
    Variablen(z, VariablenMitte);
    Variablen(z, VariablenEnde);
    z({"  9", "$UCSORG", " 10", "0.0", " 20", "0.0", " 30", "0.0"});
    z({"  9", "$UCSXDIR", " 10", "1.0", " 20", "0.0", " 30", "0.0"});
    z({"  9", "$UCSYDIR", " 10", "0.0", " 20", "1.0", " 30", "0.0"});
    for (const std::string_view name : {"$USERI1", "$USERI2", "$USERI3", "$USERI4", "$USERI5"})
        z({"  9", name, " 70", "     0"});
    for (const std::string_view name : {"$USERR1", "$USERR2", "$USERR3", "$USERR4", "$USERR5"})
        z({"  9", name, " 40", "0.0"});
    z({"  0", "ENDSEC", "999", "========================"});
}

void Tabellen(Zeilen& z) {
    z({"  0", "SECTION", "  2", "TABLES"});
    z.Kommentar();

    z({"  0", "TABLE", "  2", "LTYPE", " 70", " 14"});
    z.Kommentar();
    for (const auto& l : Linientypen) {
        z({"  0", "LTYPE", "  2", l.name, " 70", "     0", "  3", l.beschreibung, " 72", "    65",
           " 73", l.anzahl, " 40", l.länge});
        for (const auto strich : l.striche)
            z({" 49", strich});
        z.Kommentar();
    }
    z({"  0", "ENDTAB"});
    z.Kommentar();

    z({"  0", "TABLE", "  2", "LAYER", " 70", "    28"});
    z.Kommentar();
    for (const auto& l : Layers) {
        z({"  0", "LAYER", "  2", l.name, " 70", "     0", " 62", l.farbe, "  6", l.linientyp});
        z.Kommentar();
    }
    z({"  0", "ENDTAB"});
    z.Kommentar();

    z({"  0", "TABLE", "  2", "STYLE", " 70", "     4"});
    z.Kommentar();
    for (const auto& s : Stile) {
        z({"  0", "STYLE", "  2", s.name, " 70", "     0", " 40", "0.0", " 41", s.breite, " 50",
           "0.0", " 71", "     0", " 42", s.letzteHöhe, "  3", s.schrift, "  4", ""});
        z.Kommentar();
    }
    z({"  0", "ENDTAB"});
    z.Kommentar();

    z({"  0", "TABLE", "  2", "VIEW", " 70", "0", "  0", "ENDTAB"});
    z.Kommentar();
    z({"  0", "ENDSEC"});
    z.Kommentar();
}

void BlockAbschnitt(Zeilen& z) {
    z({"  0", "SECTION"});
    z.Kommentar();
    z({"  2", "BLOCKS"});
    for (std::size_t i = 0; i < Blöcke.size(); ++i) {
        const Block& b = Blöcke[i];
        z({"  0", "BLOCK", "  8", "0", "  2", b.name, " 70", "     0", " 10", "0.0", " 20", "0.0"});
        for (const auto r : b.kreise)
            z({"  0", "CIRCLE", "  8", "0", " 62", "     0", " 10", "0.0", " 20", "0.0", " 40", r});
        for (const auto& s : b.strecken)
            z({"  0", "LINE", "  8", "0", " 62", "     0", " 10", s.x1, " 20", s.y1, " 11", s.x2,
               " 21", s.y2});
        if (i + 1 < Blöcke.size())
            z({"  0", "ENDBLK", "  8", "0", " 62", "     0"});
        else
            z({"  0", "ENDBLK"});
    }
    z.Kommentar();
    z({"  0", "ENDSEC"});
    z.Kommentar();
}

} // namespace

void DxfGerüst(std::string& ziel, std::string_view xmin, std::string_view ymin,
               std::string_view xmax, std::string_view ymax) {
    Zeilen z(ziel);
    Kopf(z, xmin, ymin, xmax, ymax);
    Tabellen(z);
    BlockAbschnitt(z);
    z({"  0", "SECTION"});
    z.Kommentar();
    z({"  2", "ENTITIES"});
    z.Kommentar();
}

} // namespace flurix::ausgabe::detail
