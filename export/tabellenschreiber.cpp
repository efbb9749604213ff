#include "export/tabellenschreiber.hpp"

#include "core/cp1252.hpp"
#include "core/fehler.hpp"
#include "core/kataster.hpp"
#include "core/suche.hpp"

#include <cstdint>
#include <numeric>
#include <optional>

namespace flurix::ausgabe {
namespace {

bool IstAscii(std::string_view text) {
    for (const char c : text)
        if (static_cast<unsigned char>(c) >= 0x80)
            return false;
    return true;
}

void HexAnhängen(std::string& ziel, unsigned long wert, int stellen) {
    static constexpr char ziffern[] = "0123456789ABCDEF";
    for (int i = stellen - 1; i >= 0; --i)
        ziel += ziffern[(wert >> (4 * i)) & 0xF];
}

enum class Markup { Xml, Html };

// Appends a cell as XML or HTML text. What the markup can't hold (control characters other than
// TAB, LF and CR, non-characters, invalid UTF-8) becomes "?". In XML the line ends are written as
// character references, because a reader turns a raw CR into LF; in HTML a line break is <br>.
void MarkupText(std::string& ziel, std::string_view text, Markup art) {
    std::size_t pos = 0;
    while (pos < text.size()) {
        const std::size_t anfang = pos;
        const long c = detail::NächstesZeichen(text, pos);
        switch (c) {
        case '&': ziel += "&amp;"; continue;
        case '<': ziel += "&lt;"; continue;
        case '>': ziel += "&gt;"; continue;
        case '"': ziel += "&quot;"; continue;
        case '\'': ziel += art == Markup::Html ? "&#39;" : "'"; continue;
        case '\t': ziel += art == Markup::Xml ? "&#9;" : "\t"; continue;
        case '\n':
            // CR LF in a cell is one line break.
            if (art == Markup::Html && anfang > 0 && text[anfang - 1] == '\r')
                continue;
            ziel += art == Markup::Xml ? "&#10;" : "<br>";
            continue;
        case '\r': ziel += art == Markup::Xml ? "&#13;" : "<br>"; continue;
        default: break;
        }
        if (c < 0x20 || c == 0xFFFE || c == 0xFFFF)
            ziel += '?';
        else
            ziel.append(text.substr(anfang, pos - anfang));
    }
}

// Characters an XML name may hold (XML 1.0, fifth edition), ":" left out on purpose.
bool NamensAnfang(long c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' ||
           (c >= 0xC0 && c <= 0xD6) || (c >= 0xD8 && c <= 0xF6) || (c >= 0xF8 && c <= 0x2FF) ||
           (c >= 0x370 && c <= 0x37D) || (c >= 0x37F && c <= 0x1FFF) ||
           (c >= 0x200C && c <= 0x200D) || (c >= 0x2070 && c <= 0x218F) ||
           (c >= 0x2C00 && c <= 0x2FEF) || (c >= 0x3001 && c <= 0xD7FF) ||
           (c >= 0xF900 && c <= 0xFDCF) || (c >= 0xFDF0 && c <= 0xFFFD) ||
           (c >= 0x10000 && c <= 0xEFFFF);
}

bool NamensZeichen(long c) {
    return NamensAnfang(c) || c == '-' || c == '.' || (c >= '0' && c <= '9') || c == 0xB7 ||
           (c >= 0x300 && c <= 0x36F) || (c >= 0x203F && c <= 0x2040);
}

} // namespace

// --- helpers ---------------------------------------------------------------------------------------

namespace detail {

long NächstesZeichen(std::string_view text, std::size_t& pos) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char b = byte(pos);
    if (b < 0x80) {
        ++pos;
        return b;
    }
    int folge = 0;
    long c = 0;
    long kleinster = 0;
    if ((b & 0xE0) == 0xC0) {
        folge = 1, c = b & 0x1F, kleinster = 0x80;
    } else if ((b & 0xF0) == 0xE0) {
        folge = 2, c = b & 0x0F, kleinster = 0x800;
    } else if ((b & 0xF8) == 0xF0) {
        folge = 3, c = b & 0x07, kleinster = 0x10000;
    } else {
        ++pos;
        return -1;
    }
    if (pos + static_cast<std::size_t>(folge) >= text.size()) {
        ++pos;
        return -1;
    }
    for (int i = 1; i <= folge; ++i) {
        const unsigned char f = byte(pos + static_cast<std::size_t>(i));
        if ((f & 0xC0) != 0x80) {
            ++pos;
            return -1;
        }
        c = (c << 6) | (f & 0x3F);
    }
    if (c < kleinster || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
        ++pos;
        return -1;
    }
    pos += static_cast<std::size_t>(folge) + 1;
    return c;
}


} // namespace detail

// --- delimited text --------------------------------------------------------------------------------

TrennzeichenSchreiber::TrennzeichenSchreiber(const std::filesystem::path& datei,
                                             std::span<const Ausgabespalte> spalten, char trenner)
    : m_datei(datei), m_trenner(trenner) {
    for (const auto& spalte : spalten)
        Feld(spalte.überschrift);
    m_datei.Puffer() += "\r\n";
}

void TrennzeichenSchreiber::Feld(std::string_view text) {
    std::string& puffer = m_datei.Puffer();
    const auto anhängen = [&](std::string_view bytes) {
        for (const char c : bytes)
            puffer += (c == m_trenner || c == '\r' || c == '\n') ? ' ' : c;
    };
    // Most cells are ASCII, which is the same in 1252: no conversion, no allocation.
    if (IstAscii(text))
        anhängen(text);
    else
        anhängen(Utf8NachCp1252(text));
    puffer += m_trenner;
}

void TrennzeichenSchreiber::Zeile(std::span<const std::string_view> zellen) {
    for (const auto zelle : zellen)
        Feld(zelle);
    m_datei.Puffer() += "\r\n";
    m_datei.Weiter();
}

// --- XML -------------------------------------------------------------------------------------------

std::string ElementName(std::string_view schlüssel) {
    if (schlüssel.empty())
        return "_";
    std::string name;
    std::size_t pos = 0;
    while (pos < schlüssel.size()) {
        const std::size_t anfang = pos;
        const long c = detail::NächstesZeichen(schlüssel, pos);
        const bool erstes = anfang == 0;
        const bool maskenAnfang = c == '_' && pos < schlüssel.size() && schlüssel[pos] == 'x';
        if (c >= 0 && !maskenAnfang && (erstes ? NamensAnfang(c) : NamensZeichen(c))) {
            name.append(schlüssel.substr(anfang, pos - anfang));
            continue;
        }
        // A byte of invalid UTF-8 is written as its own value.
        const unsigned long wert =
            c >= 0 ? static_cast<unsigned long>(c) : static_cast<unsigned char>(schlüssel[anfang]);
        name += "_x";
        HexAnhängen(name, wert, wert > 0xFFFF ? 8 : 4);
        name += '_';
    }
    return name;
}

XmlSchreiber::XmlSchreiber(const std::filesystem::path& datei, std::span<const Ausgabespalte> spalten)
    : m_datei(datei) {
    std::string& p = m_datei.Puffer();
    p += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Kataster>\n  <Spalten>\n";
    for (const auto& spalte : spalten) {
        m_namen.push_back(ElementName(spalte.schlüssel));
        p += "    <Spalte name=\"";
        p += m_namen.back();
        p += "\" schluessel=\"";
        MarkupText(p, spalte.schlüssel, Markup::Xml);
        p += "\" ueberschrift=\"";
        MarkupText(p, spalte.überschrift, Markup::Xml);
        p += "\"/>\n";
    }
    p += "  </Spalten>\n";
}

void XmlSchreiber::Zeile(std::span<const std::string_view> zellen) {
    std::string& p = m_datei.Puffer();
    p += "  <Zeile>";
    for (std::size_t i = 0; i < zellen.size(); ++i) {
        p += '<';
        p += m_namen[i];
        if (zellen[i].empty()) {
            p += "/>";
            continue;
        }
        p += '>';
        MarkupText(p, zellen[i], Markup::Xml);
        p += "</";
        p += m_namen[i];
        p += '>';
    }
    p += "</Zeile>\n";
    m_datei.Weiter();
}

void XmlSchreiber::Abschließen() {
    m_datei.Puffer() += "</Kataster>\n";
    m_datei.Abschließen();
}

// --- HTML report -----------------------------------------------------------------------------------

HtmlSchreiber::HtmlSchreiber(const std::filesystem::path& datei, std::span<const Ausgabespalte> spalten)
    : m_datei(datei) {
    std::string& p = m_datei.Puffer();
    p += "<!DOCTYPE html>\n<html lang=\"de\">\n<head>\n<meta charset=\"utf-8\">\n"
         "<title>DataGrid Report</title>\n<style>\n"
         "body, table, h1 { font-family: Arial, sans-serif; font-size: 9pt; }\n"
         "h1 { font-weight: bold; margin: 0 0 6pt 0; }\n"
         "table { border-collapse: collapse; }\n"
         "th, td { border: 1px solid #808080; padding: 1px 4px; text-align: left; "
         "vertical-align: top; height: 10px; }\n"
         "th { background: #e0e0e0; }\n"
         "</style>\n</head>\n<body>\n<h1>ALB-Daten</h1>\n<table>\n<thead>\n<tr>";
    for (const auto& spalte : spalten) {
        p += "<th>";
        MarkupText(p, spalte.überschrift, Markup::Html);
        p += "</th>";
    }
    p += "</tr>\n</thead>\n<tbody>\n";
}

void HtmlSchreiber::Zeile(std::span<const std::string_view> zellen) {
    std::string& p = m_datei.Puffer();
    p += "<tr>";
    for (const auto zelle : zellen) {
        p += "<td>";
        MarkupText(p, zelle, Markup::Html);
        p += "</td>";
    }
    p += "</tr>\n";
    ++m_zeilen;
    m_datei.Weiter();
}

void HtmlSchreiber::Abschließen() {
    m_datei.Puffer() += "</tbody>\n</table>\n<footer>" + std::to_string(m_zeilen) +
                        " Zeilen</footer>\n</body>\n</html>\n";
    m_datei.Abschließen();
}

// --- the part of the table that leaves it ----------------------------------------------------------

std::string AccessWert(std::string_view wert) {
    std::size_t pos = 0;
    std::size_t zeichen = 0;
    std::size_t schnitt = 0; // bytes of the first 252 characters
    while (pos < wert.size()) {
        detail::NächstesZeichen(wert, pos);
        if (++zeichen == 252)
            schnitt = pos;
        if (zeichen > 255)
            return std::string(wert.substr(0, schnitt)) + "...";
    }
    return std::string(wert);
}

Ausgabeauswahl AusgabeauswahlBilden(const Kataster& kataster) {
    Ausgabeauswahl auswahl;
    for (const std::size_t spalte : kataster.Anzeigereihenfolge())
        if (kataster.Spalte(spalte).sichtbar)
            auswahl.spalten.push_back(spalte);
    auswahl.zeilen = kataster.AusgewählteZeilen();
    if (auswahl.zeilen.empty()) {
        auswahl.zeilen.resize(kataster.Zeilenzahl());
        std::iota(auswahl.zeilen.begin(), auswahl.zeilen.end(), std::size_t{0});
    }
    return auswahl;
}

std::vector<Ausgabespalte> Ausgabespalten(const Kataster& kataster, const Ausgabeauswahl& auswahl) {
    std::vector<Ausgabespalte> spalten;
    for (const std::size_t s : auswahl.spalten) {
        const auto& kopf = kataster.Spalte(s);
        spalten.push_back({kopf.schlüssel, kopf.überschrift, kopf.breite});
    }
    return spalten;
}

void TabelleSchreiben(const Kataster& kataster, const Ausgabeauswahl& auswahl,
                      Tabellenschreiber& schreiber, Oberfläche* ui, std::string_view statustext) {
    std::vector<std::string_view> zellen(auswahl.spalten.size());
    std::optional<flurix::detail::Prozentanzeige> prozent;
    if (ui != nullptr)
        prozent.emplace(*ui, 2, statustext);
    for (std::size_t i = 0; i < auswahl.zeilen.size(); ++i) {
        const std::size_t zeile = auswahl.zeilen[i];
        for (std::size_t s = 0; s < zellen.size(); ++s)
            zellen[s] = kataster.Zelle(zeile, auswahl.spalten[s]);
        schreiber.Zeile(zellen);
        if (prozent)
            prozent->Zeigen(i + 1, auswahl.zeilen.size());
    }
    schreiber.Abschließen();
}

} // namespace flurix::ausgabe
