// The DXF writer: entity writers, numbers, code page and the file under its temporary name.

#include "export/dxf_schreiber.hpp"

#include "core/cp1252.hpp"
#include "core/fehler.hpp"
#include "core/text.hpp"

#include <charconv>
#include <cmath>
#include <numbers>
#include <string>
#include <system_error>
#include <utility>

namespace flurix::ausgabe {

namespace {

bool AlsZahl(std::string_view s, long& zahl) {
    s = TrimmeLeerzeichen(s);
    if (!s.empty() && s.front() == '+')
        s.remove_prefix(1);
    const auto [ende, fehler] = std::from_chars(s.data(), s.data() + s.size(), zahl);
    return fehler == std::errc() && ende == s.data() + s.size() && !s.empty();
}

} // namespace

std::string DxfLayerName(std::string_view schlüssel) {
    const auto punkt = schlüssel.find('.');
    const std::string_view ebeneText = schlüssel.substr(0, punkt);
    const std::string_view artText =
        punkt == std::string_view::npos ? std::string_view() : schlüssel.substr(punkt + 1);
    long ebene = 0;
    if (!AlsZahl(ebeneText, ebene))
        return {};
    long art = -1;
    if (!AlsZahl(artText.substr(0, artText.find('.')), art))
        art = -1;
    switch (ebene) {
    case 0:
        return "PUNKTE_EINGELESEN";
    case 1:
    case 2:
        return "FLURSTUECKE";
    case 11:
        return "AMTL_GEBAEUDE";
    case 21:
        return "TATS_NUTZUNG_ALB";
    case 51:
        return "AMTLPKT_AUFNP";
    case 52:
        return "AMTLPKT_GRENZP";
    case 81:
        return art == 251 ? "TOPOGRAFIE_GELAENDE" : art == 1401 ? "BODENSCHAETZUNG" : "TOPOGRAFIE_LK";
    case 82:
        return "TOPOGRAFIE_LKWEITERE";
    case 84:
        return "NICHTAMTL_GEBAEUDE";
    case 99:
        return "DEFPOINTS";
    default:
        return {};
    }
}

namespace detail {

std::string DxfZahl(double wert) {
    // Fixed notation: the shortest digits that read back to the same double, never "5.6e+06".
    // 350 places hold every finite double in that form.
    char text[400];
    const auto [ende, fehler] = std::to_chars(text, text + sizeof text, wert, std::chars_format::fixed);
    if (fehler != std::errc())
        return "0.0";
    return std::string(text, ende);
}

} // namespace detail

DxfSchreiber::DxfSchreiber(std::filesystem::path ziel) : m_datei(std::move(ziel)) {}

void DxfSchreiber::Zeile(std::string_view text) {
    m_datei.Puffer().append(text);
    m_datei.Puffer().append("\r\n");
}

void DxfSchreiber::Paar(std::string_view code, std::string_view wert) {
    Zeile(code);
    Zeile(wert);
}

void DxfSchreiber::TextPaar(std::string_view code, std::string_view utf8) {
    // Layer and line type names are plain ASCII nearly always: they go in without a copy.
    bool einfach = true;
    for (const char c : utf8)
        einfach = einfach && static_cast<unsigned char>(c) < 0x80 && c != '\r' && c != '\n';
    if (einfach) {
        Paar(code, utf8);
        return;
    }
    std::string text = Utf8NachCp1252(utf8);
    for (char& c : text)
        if (c == '\r' || c == '\n')
            c = ' ';
    Paar(code, text);
}

void DxfSchreiber::ZahlPaar(std::string_view code, double wert) {
    Paar(code, detail::DxfZahl(wert));
}

void DxfSchreiber::GanzzahlPaar(std::string_view code, int wert) {
    char text[16];
    const auto ende = std::to_chars(text, text + sizeof text, wert).ptr;
    Paar(code, std::string_view(text, static_cast<std::size_t>(ende - text)));
}

void DxfSchreiber::Kommentar() {
    Paar("999", "-------------------");
    m_datei.Weiter();
}

void DxfSchreiber::Anfang(double xmin, double ymin, double xmax, double ymax) {
    detail::DxfGerüst(m_datei.Puffer(), detail::DxfZahl(xmin), detail::DxfZahl(ymin),
                      detail::DxfZahl(xmax), detail::DxfZahl(ymax));
    m_datei.Weiter();
}

void DxfSchreiber::AbschnittWechseln() {
    Paar("  0", "ENDSEC");
    Kommentar();
    Paar("  0", "SECTION");
    Kommentar();
    Paar("  2", "ENTITIES");
    Kommentar();
}

void DxfSchreiber::Abschließen() {
    Paar("  0", "ENDSEC");
    Kommentar();
    Paar("  0", "EOF");
    m_datei.Abschließen();
}

void DxfSchreiber::Punkt(std::string_view layer, int farbe, double x, double y) {
    Paar("  0", "POINT");
    TextPaar("  8", layer);
    GanzzahlPaar(" 62", farbe);
    ZahlPaar(" 10", x);
    ZahlPaar(" 20", y);
    Kommentar();
}

void DxfSchreiber::Linie(std::string_view layer, std::string_view linientyp, int farbe, double x1,
                         double y1, double x2, double y2) {
    Paar("  0", "LINE");
    TextPaar("  8", layer);
    TextPaar("  6", linientyp);
    GanzzahlPaar(" 62", farbe);
    ZahlPaar(" 10", x1);
    ZahlPaar(" 20", y1);
    ZahlPaar(" 11", x2);
    ZahlPaar(" 21", y2);
    Kommentar();
}

void DxfSchreiber::Polylinie(std::string_view layer, std::string_view linientyp, int farbe) {
    Paar("  0", "POLYLINE");
    TextPaar("  8", layer);
    TextPaar("  6", linientyp);
    GanzzahlPaar(" 62", farbe);
    Paar(" 66", "1");
    Paar(" 70", "1");
    Kommentar();
}

void DxfSchreiber::Vertex(std::string_view layer, std::string_view linientyp, int farbe, double x,
                          double y) {
    Paar("  0", "VERTEX");
    TextPaar("  8", layer);
    TextPaar("  6", linientyp);
    GanzzahlPaar(" 62", farbe);
    ZahlPaar(" 10", x);
    ZahlPaar(" 20", y);
    Kommentar();
}

void DxfSchreiber::Seqend(std::string_view layer, std::string_view linientyp, int farbe) {
    Paar("  0", "SEQEND");
    TextPaar("  8", layer);
    TextPaar("  6", linientyp);
    GanzzahlPaar(" 62", farbe);
    Kommentar();
}

void DxfSchreiber::Bogen(std::string_view layer, std::string_view linientyp, int farbe, double x,
                         double y, double radius, double startwinkel, double endwinkel) {
    Paar("  0", "ARC");
    TextPaar("  8", layer);
    TextPaar("  6", linientyp);
    GanzzahlPaar(" 62", farbe);
    ZahlPaar(" 10", x);
    ZahlPaar(" 20", y);
    ZahlPaar(" 40", radius);
    ZahlPaar(" 50", startwinkel);
    ZahlPaar(" 51", endwinkel);
    Kommentar();
}

void DxfSchreiber::Text(std::string_view layer, int farbe, const DxfTextAngaben& a) {
    // The offset reads the angle in gon although group 50 is degrees to a CAD program; only the
    // 0.05 step is affected, and the drawings have always been made so.
    const double bogen = a.winkel * std::numbers::pi / 200.0;
    Paar("  0", "TEXT");
    TextPaar("  8", layer);
    GanzzahlPaar(" 62", farbe);
    ZahlPaar(" 39", a.dicke);
    ZahlPaar(" 10", a.x);
    ZahlPaar(" 20", a.y);
    ZahlPaar(" 40", a.höhe);
    ZahlPaar(" 50", a.winkel);
    ZahlPaar(" 41", a.breitenfaktor);
    ZahlPaar(" 51", a.neigung);
    TextPaar("  1", a.text);
    TextPaar("  7", a.stil);
    GanzzahlPaar(" 72", a.horizontal);
    GanzzahlPaar(" 73", a.vertikal);
    ZahlPaar(" 11", a.x + 0.05 * std::sin(bogen));
    ZahlPaar(" 21", a.y + 0.05 * std::cos(bogen));
    Kommentar();
}

void DxfSchreiber::Einfügen(std::string_view layer, int farbe, std::string_view block, double x,
                           double y) {
    Paar("  0", "INSERT");
    TextPaar("  8", layer);
    GanzzahlPaar(" 62", farbe);
    if (!block.empty()) {
        TextPaar("  2", block);
        ZahlPaar(" 10", x);
        ZahlPaar(" 20", y);
    }
    if (block == "S3125") {
        // The survey mark symbol is drawn smaller than the others.
        Paar("30", "0.0");
        Paar("41", "0.75");
        Paar("42", "0.75");
        Paar("43", "0.75");
    }
    Kommentar();
}

} // namespace flurix::ausgabe
