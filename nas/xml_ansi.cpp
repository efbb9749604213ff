// "UTF8 nach ANSI": a UTF-8 NAS file written as Windows-1252, block by block.
#include "nas/xml_werkzeuge.hpp"

#include "core/cp1252.hpp"
#include "core/dateikanal.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "nas/xml_werkzeug_basis.hpp"

#include <array>
#include <cstdint>

namespace flurix::nas {
namespace {

namespace fs = std::filesystem;
using namespace detail;

constexpr std::string_view Titel = "UTF8 nach ANSI";
constexpr std::size_t Lesemenge = 4u << 20;
constexpr std::string_view Kodierung = "windows-1252";
// Windows-1252 has no character above U+2122 (the trade mark sign).
constexpr char32_t GrößtesZeichen = 0x2200;

// The Windows-1252 byte of each code point from 0x80 to GrößtesZeichen, -1 where there is none;
// taken once from the code page conversion of the core.
const std::array<std::int16_t, GrößtesZeichen>& Codetabelle() {
    static const auto tabelle = [] {
        std::array<std::int16_t, GrößtesZeichen> t{};
        t.fill(-1);
        std::string utf8;
        for (char32_t c = 0x80; c < GrößtesZeichen; ++c) {
            utf8.clear();
            Utf8Anhängen(utf8, c);
            const std::string byte = Utf8NachCp1252(utf8);
            if (byte.size() == 1 && byte != "?")
                t[c] = static_cast<unsigned char>(byte[0]);
        }
        return t;
    }();
    return tabelle;
}

// The length of the UTF-8 sequence a lead byte opens; 0 for a byte that can't open one.
std::size_t Sequenzlänge(unsigned char c) {
    if (c >= 0xC2 && c <= 0xDF)
        return 2;
    if (c >= 0xE0 && c <= 0xEF)
        return 3;
    if (c >= 0xF0 && c <= 0xF4)
        return 4;
    return 0;
}

// The code point of a complete sequence, or -1 when it is not valid UTF-8 (a wrong continuation
// byte, an overlong form, a surrogate, beyond U+10FFFF).
long Dekodieren(std::string_view s) {
    const auto b = [&](std::size_t i) { return static_cast<unsigned char>(s[i]); };
    for (std::size_t i = 1; i < s.size(); ++i)
        if ((b(i) & 0xC0) != 0x80)
            return -1;
    if (s.size() == 3 && ((b(0) == 0xE0 && b(1) < 0xA0) || (b(0) == 0xED && b(1) > 0x9F)))
        return -1;
    if (s.size() == 4 && ((b(0) == 0xF0 && b(1) < 0x90) || (b(0) == 0xF4 && b(1) > 0x8F)))
        return -1;
    long c = s.size() == 2 ? (b(0) & 0x1F) : s.size() == 3 ? (b(0) & 0x0F) : (b(0) & 0x07);
    for (std::size_t i = 1; i < s.size(); ++i)
        c = (c << 6) | (b(i) & 0x3F);
    return c;
}

/// The conversion of a stream: bytes of a sequence cut by the block end wait for the next block.
class Umsetzer {
public:
    explicit Umsetzer(XmlBericht& bericht) : m_tabelle(Codetabelle()), m_bericht(bericht) {}

    /// Appends `block` converted to `aus`; at the end of the file (`ende`) a cut sequence is
    /// invalid.
    void Block(std::string_view block, bool ende, std::string& aus) {
        std::string verbunden;
        if (!m_rest.empty()) {
            verbunden = m_rest + std::string(block);
            m_rest.clear();
            block = verbunden;
        }
        std::size_t i = 0;
        while (i < block.size()) {
            // The text is ASCII nearly throughout: runs of it are copied whole.
            std::size_t lauf = i;
            while (lauf < block.size() && static_cast<unsigned char>(block[lauf]) < 0x80)
                ++lauf;
            aus.append(block.substr(i, lauf - i));
            i = lauf;
            if (i == block.size())
                break;
            const std::size_t länge = Sequenzlänge(static_cast<unsigned char>(block[i]));
            if (länge > 0 && i + länge > block.size() && !ende) {
                m_rest.assign(block.substr(i));
                break;
            }
            const long c =
                länge == 0 || i + länge > block.size() ? -1 : Dekodieren(block.substr(i, länge));
            if (c < 0) {
                aus += '?';
                ++m_bericht.fehler;
                ++i;
                continue;
            }
            if (c < static_cast<long>(GrößtesZeichen) &&
                m_tabelle[static_cast<std::size_t>(c)] >= 0) {
                aus += static_cast<char>(m_tabelle[static_cast<std::size_t>(c)]);
            } else {
                aus += "&#" + std::to_string(c) + ";";
                ++m_bericht.ersetzt;
            }
            i += länge;
        }
    }

private:
    const std::array<std::int16_t, GrößtesZeichen>& m_tabelle;
    XmlBericht& m_bericht;
    std::string m_rest;
};

// The declaration's encoding as its value; "" when the text has no declaration or it names none.
std::string DeklarierteKodierung(std::string_view text) {
    if (!text.starts_with("<?xml"))
        return {};
    const auto deklaration = text.substr(0, text.find("?>"));
    const auto fund = deklaration.find("encoding");
    if (fund == std::string_view::npos)
        return {};
    const auto anfang = deklaration.find_first_of("\"'", fund);
    if (anfang == std::string_view::npos)
        return {};
    const auto ende = deklaration.find(deklaration[anfang], anfang + 1);
    return Kleinbuchstaben(
        deklaration.substr(anfang + 1, ende == std::string_view::npos ? ende : ende - anfang - 1));
}

// The first block with its declaration naming Windows-1252: the value of its encoding replaced, the
// attribute put behind the version when there is none, a declaration put in front when the file
// has none. A byte order mark is dropped.
std::string DeklarationSetzen(std::string_view block) {
    if (block.starts_with("\xEF\xBB\xBF"))
        block.remove_prefix(3);
    std::string text(block);
    const std::string attribut = " encoding=\"" + std::string(Kodierung) + "\"";
    if (!text.starts_with("<?xml")) {
        const std::string zeilenende = text.find("\r\n") != std::string::npos ? "\r\n" : "\n";
        return "<?xml version=\"1.0\"" + attribut + "?>" + zeilenende + text;
    }
    const auto schluss = text.find("?>");
    const auto fund = text.find("encoding", 0);
    if (fund != std::string::npos && fund < schluss) {
        const auto anfang = text.find_first_of("\"'", fund);
        const auto ende =
            anfang == std::string::npos ? anfang : text.find(text[anfang], anfang + 1);
        if (ende != std::string::npos && ende < schluss)
            return text.replace(anfang + 1, ende - anfang - 1, Kodierung);
        return text;
    }
    // encoding comes after version and before standalone.
    std::size_t hinter = 5;
    if (const auto version = text.find("version", 0);
        version != std::string::npos && version < schluss) {
        const auto anfang = text.find_first_of("\"'", version);
        const auto ende =
            anfang == std::string::npos ? anfang : text.find(text[anfang], anfang + 1);
        if (ende != std::string::npos && ende < schluss)
            hinter = ende + 1;
    }
    return text.insert(hinter, attribut);
}

bool IstEinbyteKodierung(std::string_view kodierung) {
    return kodierung.starts_with("iso-8859") || kodierung.starts_with("windows-") ||
           kodierung.starts_with("cp125") || kodierung == "latin1" || kodierung == "us-ascii";
}

} // namespace

Ergebnis XmlNachAnsi(const fs::path& datei, Oberfläche& ui, XmlBericht& bericht,
                     const XmlOptionen& optionen) {
    bericht = {};
    if (auto fehler = EingabePrüfen(ui, Titel, datei))
        return *fehler;
    const fs::path ziel = ZielNeben(datei, "_Ansi.xml");
    if (!ZielFreigegeben(ui, ziel, optionen,
                         "Soll die Datei " + ziel.string() + " überschrieben werden?   ", Titel))
        return Ergebnis::Abbruch();
    ui.Meldung(
        "Es kann für diese Applikation kein Fortschritt angezeigt werden! Bitte brechen Sie diese "
        "Aktion trotz unklarer Wartezeit nicht ab!   ",
        Titel, Stil::Information);
    try {
        Dateikanal eingabe(datei, Dateikanal::Zweck::Lesen);
        Zieldatei ausgabe(ziel);
        Umsetzer umsetzer(bericht);
        const std::uint64_t größe = fs::file_size(datei);
        Laufanzeige anzeige(ui, größe, [](int schritt) {
            return "UTF8 nach ANSI  " + std::string(Drehzeichen(schritt));
        });
        std::string block(Lesemenge, '\0');
        std::string aus;
        std::uint64_t gelesen = 0;
        for (bool erster = true;; erster = false) {
            const std::size_t n = eingabe.Lesen(block.data(), block.size());
            gelesen += n;
            std::string_view text(block.data(), n);
            std::string mitDeklaration;
            if (erster) {
                const std::string kodierung =
                    DeklarierteKodierung(text.starts_with("\xEF\xBB\xBF") ? text.substr(3) : text);
                if (IstEinbyteKodierung(kodierung))
                    throw Fehler("Die Datei \"" + datei.string() +
                                 "\" ist laut XML-Deklaration schon " + kodierung +
                                 "-kodiert, nicht UTF-8!   ");
                mitDeklaration = DeklarationSetzen(text);
                text = mitDeklaration;
            }
            aus.clear();
            umsetzer.Block(text, n < block.size(), aus);
            ausgabe.Schreiben(aus);
            if (n < block.size())
                break;
            if (!anzeige.Weiter(gelesen))
                return Abgebrochen();
        }
        ausgabe.Abschließen();
        bericht.dateien = 1;
    } catch (const std::exception& f) {
        return ZielNichtErstellt(ui, Titel, ziel, f);
    }
    bericht.ziel = ziel;
    return Erledigt(ui, Titel, "ANSI-Datei " + ziel.string() + " erzeugt");
}

} // namespace flurix::nas
