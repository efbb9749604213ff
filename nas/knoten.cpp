#include "nas/knoten.hpp"

#include "core/cp1252.hpp"
#include "core/datei.hpp"
#include "core/einstellungen.hpp"
#include "core/text.hpp"

#include <charconv>

namespace flurix::nas {
namespace {

// The common line rule of the configuration files: tabs removed, blanks trimmed.
std::string Säubern(std::string_view zeile) {
    std::string ohneTab;
    ohneTab.reserve(zeile.size());
    for (char c : zeile)
        if (c != '\t' && c != '\r')
            ohneTab += c;
    return std::string(TrimmeLeerzeichen(ohneTab));
}

int TypLesen(std::string_view text) {
    int typ = TypText;
    const auto wert = TrimmeLeerzeichen(text);
    const auto [ende, fehler] = std::from_chars(wert.data(), wert.data() + wert.size(), typ);
    (void)ende;
    return fehler == std::errc{} ? typ : TypText;
}

bool IstGeometrie(std::string_view feld) {
    for (std::string_view tag : {"exterior", "interior", "gml:LineStringSegment", "gml:Arc"})
        if (feld.find(tag) != std::string_view::npos)
            return true;
    return false;
}

KnotenFeld FeldLesen(std::string_view klasse, std::string_view zeile) {
    KnotenFeld feld;
    feld.text = TokenNr(zeile, 1, "=");
    feld.typ = TypLesen(TokenNr(zeile, 2, "="));
    if (feld.text == std::string(klasse) + "@gml:id") {
        feld.art = Feldart::Kennung;
    } else if (feld.text.find('@') != std::string::npos) {
        feld.art = Feldart::Relation;
        feld.element = TokenNr(feld.text, 1, "@");
        feld.attribut = TokenNr(feld.text, 2, "@");
        feld.ziel = TokenNr(feld.text, 3, "@");
    } else if (IstGeometrie(feld.text)) {
        feld.art = Feldart::Geometrie;
    } else {
        // Teilen gives views into its text: the text must outlive the loop.
        const std::string weitere = TokenNr(zeile, 3, "=");
        for (auto pfad : Teilen(weitere, ';'))
            if (const auto p = TrimmeLeerzeichen(pfad); !p.empty())
                feld.auch.emplace_back(p);
    }
    return feld;
}

} // namespace

std::string KnotenFeld::RelationsTabelle(std::string_view klasse) const {
    return std::string(klasse) + "_" + element + "#" + ziel;
}

KnotenDatei KnotenAusText(std::string_view text) {
    KnotenDatei datei;
    for (std::string_view roh : TextZeilen(text)) {
        const std::string zeile = Säubern(roh);
        if (zeile.empty() || zeile.front() == '*')
            continue;
        if (zeile.starts_with("XMLBaumTree")) {
            const std::string liste = TokenNr(zeile, 2, "=");
            for (auto tag : Teilen(liste, ';'))
                if (const auto t = TrimmeLeerzeichen(tag); !t.empty())
                    datei.mitgliedTags.emplace_back(t);
        } else if (zeile.starts_with("XMLBaum")) {
            datei.xmlBaum = TokenNr(zeile, 2, "=");
        } else if (zeile.front() == '<') {
            datei.klassen.push_back({std::string(TrimmeLeerzeichen(zeile.substr(1))), {}});
        } else if (!datei.klassen.empty()) {
            datei.klassen.back().felder.push_back(FeldLesen(datei.klassen.back().tabelle, zeile));
        }
    }
    return datei;
}

KnotenDatei KnotenLesen(const std::filesystem::path& datei) {
    return KnotenAusText(DateitextNachUtf8(DateiKomplettLesen(datei)));
}

std::string MitgliedTagWählen(const std::vector<std::string>& tags, std::string_view kopf) {
    for (const auto& tag : tags)
        if (kopf.find(tag) != std::string_view::npos)
            return tag;
    return {};
}

std::string XPfadPräfix(std::string_view xmlBaum, std::string_view mitgliedTag,
                        std::string_view präfix) {
    std::string pfad = "/" + std::string(xmlBaum) + "/" + std::string(mitgliedTag) + "/";
    pfad = Ersetzen(pfad, "/TypName", "/" + std::string(präfix));
    pfad = Ersetzen(pfad, " ", "");
    while (pfad.find("//") != std::string::npos)
        pfad = Ersetzen(pfad, "//", "/");
    return pfad;
}

} // namespace flurix::nas
