#include "map/capabilities.hpp"

#include "core/datei.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "map/dienstkatalog.hpp"
#include "map/zugang.hpp"

#include <pugixml.hpp>

#include <algorithm>
#include <array>
#include <sstream>

namespace flurix::karte {
namespace {

/// Whitespace-only text is dropped, as the services' indentation means nothing; entities are
/// expanded as usual, a DOCTYPE with its internal subset is skipped.
constexpr unsigned int Leseoptionen = pugi::parse_default;

/// What stands between the first `anfang` and the next `ende` behind it; "" when either is missing.
std::string_view Zwischen(std::string_view text, std::string_view anfang, std::string_view ende) {
    const auto a = text.find(anfang);
    if (a == std::string_view::npos)
        return {};
    const auto von = a + anfang.size();
    const auto b = text.find(ende, von);
    if (b == std::string_view::npos)
        return {};
    return text.substr(von, b - von);
}

/// One UTF-8 character at `i`: its code point and length, or std::nullopt for a byte that starts
/// no valid sequence.
std::optional<std::pair<char32_t, std::size_t>> Utf8Zeichen(std::string_view text, std::size_t i) {
    const auto b0 = static_cast<unsigned char>(text[i]);
    if (b0 < 0x80)
        return std::pair<char32_t, std::size_t>{b0, 1};
    std::size_t länge = 0;
    char32_t c = 0;
    if ((b0 & 0xE0) == 0xC0) {
        länge = 2;
        c = b0 & 0x1F;
    } else if ((b0 & 0xF0) == 0xE0) {
        länge = 3;
        c = b0 & 0x0F;
    } else if ((b0 & 0xF8) == 0xF0) {
        länge = 4;
        c = b0 & 0x07;
    } else {
        return std::nullopt;
    }
    if (i + länge > text.size())
        return std::nullopt;
    for (std::size_t k = 1; k < länge; ++k) {
        const auto b = static_cast<unsigned char>(text[i + k]);
        if ((b & 0xC0) != 0x80)
            return std::nullopt;
        c = (c << 6) | (b & 0x3F);
    }
    constexpr std::array<char32_t, 5> kleinste = {0, 0, 0x80, 0x800, 0x10000};
    if (c < kleinste[länge] || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF))
        return std::nullopt;
    return std::pair<char32_t, std::size_t>{c, länge};
}

/// Title text from a nested CDATA written as text: "<![CDATA[Wald]]>" gives "Wald".
std::string_view CdataKürzen(std::string_view titel) {
    if (titel.find("[CDATA[") == std::string_view::npos)
        return titel;
    const auto teile = Teilen(titel, '[');
    if (teile.size() < 3)
        return titel;
    return teile[2].substr(0, teile[2].find(']'));
}

std::string Knotentext(const pugi::xml_node& knoten) {
    std::string text;
    for (const auto& kind : knoten.children())
        if (kind.type() == pugi::node_pcdata || kind.type() == pugi::node_cdata)
            text += kind.value();
    return text;
}

/// The layer list of a parsed document.
void LayerSuchen(const pugi::xml_document& dokument, CapabilitiesInhalt& inhalt) {
    static const pugi::xpath_query namen("descendant::Layer/child::Name");
    static const pugi::xpath_query geschwisterLayer("following-sibling::Layer");
    static const pugi::xpath_query geschwisterTitel("following-sibling::Title");
    std::string liste;
    std::size_t anzahl = 0;
    for (const auto& treffer : namen.evaluate_node_set(dokument)) {
        const pugi::xml_node name = treffer.node();
        std::string titel;
        // A group layer (its Name followed by Layer elements) is no layer to request.
        if (geschwisterLayer.evaluate_node_set(name).empty()) {
            const auto titelknoten = geschwisterTitel.evaluate_node_set(name);
            if (!titelknoten.empty())
                titel = Knotentext(titelknoten.first().node());
        }
        const std::string_view titelText = CdataKürzen(TrimmeLeerraum(titel));
        if (titelText.empty())
            continue;
        // Each part is repaired alone: the 7-bit replacements of "{", "}" and "~" would take the
        // separators of the list.
        liste += "}{" + UmlauteReparieren(TrimmeLeerraum(Knotentext(name))) + "~" +
                 UmlauteReparieren(titelText);
        ++anzahl;
    }
    inhalt.layer = liste.size() >= 2 ? liste.substr(2) : std::string();
    inhalt.layerAnzahl = anzahl;
}

/// The line that holds byte `position`, as [anfang, ende) without its line end. A position at the
/// end of the text (a document cut short) belongs to the last line that has text.
std::pair<std::size_t, std::size_t> Zeilenbereich(std::string_view text, std::size_t position) {
    if (text.empty())
        return {0, 0};
    position = std::min(position, text.size() - 1);
    const auto vorher = position == 0 ? std::string_view::npos : text.rfind('\n', position - 1);
    const std::size_t anfang = vorher == std::string_view::npos ? 0 : vorher + 1;
    const auto ende = text.find('\n', anfang);
    return {anfang, ende == std::string_view::npos ? text.size() : ende};
}

Lesefehler FehlerBeschreiben(std::string_view text, const pugi::xml_parse_result& ergebnis) {
    Lesefehler fehler;
    fehler.nummer = static_cast<int>(ergebnis.status);
    fehler.grund = ergebnis.description();
    fehler.position = std::min(
        static_cast<std::size_t>(std::max<std::ptrdiff_t>(ergebnis.offset, 0)), text.size());
    const auto [anfang, ende] = Zeilenbereich(text, fehler.position);
    fehler.zeile = 1 + static_cast<std::size_t>(std::count(
                           text.begin(), text.begin() + static_cast<long>(anfang), '\n'));
    fehler.spalte = fehler.position - anfang + 1;
    fehler.quelltext = TrimmeLeerraum(text.substr(anfang, ende - anfang));
    return fehler;
}

void FehlerZeigen(const Lesefehler& f, std::string_view adresse, Oberfläche& ui) {
    const std::string zeilen[] = {
        "Dienst nicht erreichbar oder ungültig!",
        "due to the following error.",
        "Error #: " + std::to_string(f.nummer) + " " + f.grund,
        "Line #: " + std::to_string(f.zeile),
        "Line Position: " + std::to_string(f.spalte),
        "Position In File: " + std::to_string(f.position),
        "Source Text: " + f.quelltext,
        "Document URL: " + std::string(adresse),
        "!",
    };
    std::string text;
    for (const auto& zeile : zeilen)
        text += (text.empty() ? "" : "\n") + zeile;
    ui.Meldung(text, "Error Web-Service", Stil::Fehler);
}

bool NameZeichen(char c) {
    return c != ' ' && c != '\t' && c != '\r' && c != '\n' && c != '>' && c != '/' && c != '<';
}

} // namespace

std::string UmlauteReparieren(std::string_view text) {
    struct Ersatz {
        char32_t zeichen; ///< what the byte is in Windows-1252
        unsigned char byte;
        std::string_view neu;
    };
    static constexpr std::array<Ersatz, 7> tabelle = {{
        {0x017D, 142, "Ä"}, // Ž
        {0x0161, 154, "Ü"}, // š
        {0x2122, 153, "Ö"}, // ™
        {0x201E, 132, "ä"}, // „
        {0x0081, 129, "ü"},
        {0x201D, 148, "ö"}, // ”
        {0x00E1, 225, "ß"}, // á
    }};
    std::string neu;
    neu.reserve(text.size() + 8);
    for (std::size_t i = 0; i < text.size();) {
        const char c = text[i];
        // The German 7-bit letters of old services.
        if (const auto stelle = std::string_view("{|}~").find(c);
            stelle != std::string_view::npos) {
            static constexpr std::array<std::string_view, 4> deutsch = {"ä", "ö", "ü", "ß"};
            neu.append(deutsch[stelle]);
            ++i;
            continue;
        }
        const auto zeichen = Utf8Zeichen(text, i);
        std::string_view ersatz;
        for (const auto& e : tabelle)
            if (zeichen ? zeichen->first == e.zeichen : static_cast<unsigned char>(c) == e.byte)
                ersatz = e.neu;
        const std::size_t länge = zeichen ? zeichen->second : 1;
        if (ersatz.empty())
            neu.append(text.substr(i, länge));
        else
            neu.append(ersatz);
        i += länge;
    }
    return neu;
}

std::optional<std::string> KnotenEntfernen(std::string_view text, std::size_t position) {
    if (text.empty())
        return std::nullopt;
    const auto [anfang, ende] = Zeilenbereich(text, position);
    std::size_t tag = anfang;
    while ((tag = text.find('<', tag)) < ende) {
        const char nächstes = tag + 1 < text.size() ? text[tag + 1] : '\0';
        if (NameZeichen(nächstes) && nächstes != '!' && nächstes != '?')
            break;
        ++tag;
    }
    std::size_t bis = ende;
    if (tag >= ende) {
        tag = anfang; // no element opens on this line: the line goes
        bis = ende < text.size() ? ende + 1 : ende;
    } else {
        std::size_t nameEnde = tag + 1;
        while (nameEnde < text.size() && NameZeichen(text[nameEnde]))
            ++nameEnde;
        const std::string schluss = "</" + std::string(text.substr(tag + 1, nameEnde - tag - 1));
        const auto tagEnde = text.find('>', nameEnde);
        if (tagEnde != std::string_view::npos && tagEnde < ende && text[tagEnde - 1] == '/') {
            bis = tagEnde + 1; // an empty element
        } else if (const auto s = text.find(schluss, nameEnde); s != std::string_view::npos) {
            const auto sEnde = text.find('>', s);
            bis = sEnde == std::string_view::npos ? text.size() : sEnde + 1;
        }
    }
    if (bis <= tag)
        return std::nullopt;
    std::string neu(text.substr(0, tag));
    neu.append(text.substr(bis));
    return neu;
}

std::string LegendenAdresse(std::string_view text) {
    const std::string_view legende = Zwischen(text, "<LegendURL ", "</LegendURL>");
    const std::string_view adresse = Zwischen(legende, " xlink:href=\"", "\"");
    return Ersetzen(adresse, "&amp;", "&");
}

std::string MaßstabAusText(std::string_view text) {
    const std::string_view hinweis = TrimmeLeerraum(Zwischen(text, "<ScaleHint", "/>"));
    if (!hinweis.empty())
        return "ScaleHint: " + std::string(hinweis);
    const std::string bereich =
        std::string(Zwischen(text, "<MinScaleDenominator>", "</MinScaleDenominator>")) + "-" +
        std::string(Zwischen(text, "<MaxScaleDenominator>", "</MaxScaleDenominator>"));
    return bereich == "-" ? "frei" : bereich;
}

std::string LayerAuswahlAlle(std::size_t anzahl) {
    std::string auswahl;
    for (std::size_t i = 0; i < anzahl; ++i)
        auswahl += i == 0 ? "true" : ",true";
    return auswahl;
}

CapabilitiesInhalt WebServiceAnfrage(std::string_view antwort, std::string_view adresse,
                                     Oberfläche& ui, const std::filesystem::path& speichern) {
    CapabilitiesInhalt inhalt;
    pugi::xml_document dokument;
    std::string repariert;
    std::string_view text = antwort;
    pugi::xml_parse_result ergebnis = dokument.load_buffer(text.data(), text.size(), Leseoptionen);
    if (!ergebnis) {
        inhalt.fehler = FehlerBeschreiben(text, ergebnis);
        if (auto neu = KnotenEntfernen(text, inhalt.fehler->position)) {
            repariert = std::move(*neu);
            text = repariert;
            ergebnis = dokument.load_buffer(text.data(), text.size(), Leseoptionen);
            inhalt.repariert = static_cast<bool>(ergebnis);
        }
    }
    if (!ergebnis) {
        // An HTML page or a download without answer is told by the caller's state; only a
        // document that claims to be one gets the parser's report.
        if (antwort.find("h1") == std::string_view::npos &&
            antwort.find("HTTP Download ohne Ergebnis") == std::string_view::npos)
            FehlerZeigen(*inhalt.fehler, adresse, ui);
        return inhalt;
    }
    inhalt.gelesen = true;

    const pugi::xml_node meldung =
        dokument.select_node("ItemSearchResponse/OperationRequest/Errors/Error/Message").node();
    if (meldung)
        ui.Meldung(Knotentext(meldung), "Web-Service", Stil::Fehler);

    inhalt.mitRequest = text.find("<Request>") != std::string_view::npos;
    if (inhalt.mitRequest)
        LayerSuchen(dokument, inhalt);
    inhalt.legende = LegendenAdresse(text);
    inhalt.maßstab = MaßstabAusText(text);

    if (!speichern.empty()) {
        std::ostringstream aus;
        dokument.save(aus);
        DateiSchreiben(speichern, aus.str());
    }
    return inhalt;
}

std::string CapabilitiesAdresse(Dienstkatalog& katalog, std::size_t zeile) {
    std::string anfrage = katalog.Zelle(zeile, "GetCapabilities");
    if (anfrage.empty())
        anfrage = "?REQUEST=GetCapabilities&VERSION=1.1.1&SERVICE=WMS";
    if (Kleinbuchstaben(anfrage).find("version=") == std::string::npos) {
        anfrage += "&version=1.1.1";
        katalog.ZelleSetzen(zeile, "GetCapabilities", anfrage);
    }
    const std::string& url = katalog.Zelle(zeile, "URL");
    if (url.size() >= 4 && std::string_view(url).substr(url.size() - 4) == ".map" &&
        anfrage.starts_with('?'))
        anfrage[0] = '&';
    // An address that holds its query already ("…/mapserv?map=x.map&") goes on with "&", and
    // one that ends in its separator gets none more: the map requests it the same way.
    if (anfrage.starts_with('?') && url.find('?') != std::string::npos)
        anfrage[0] = '&';
    if (anfrage.starts_with('&') && (url.ends_with('?') || url.ends_with('&')))
        anfrage.erase(0, 1);
    return url + anfrage;
}

Ergebnis DienstAnfragen(Dienstkatalog& katalog, std::size_t zeile, const Einleseumgebung& umgebung,
                        Oberfläche& ui) {
    const std::string adresse = CapabilitiesAdresse(katalog, zeile);
    const auto optionen = ZugangFürZeile(katalog, zeile, umgebung.konfig, umgebung.besitzer, ui);
    if (!optionen)
        return Ergebnis::Fehlschlag(std::string(ZugangVerweigert));

    std::string antwort;
    const HttpErgebnis http = umgebung.abruf ? umgebung.abruf(adresse, antwort, *optionen)
                                             : HttpAnfrageAlsText(adresse, antwort, *optionen);
    if (!http.ok || antwort.empty())
        antwort = OhneErgebnis;

    const CapabilitiesInhalt inhalt = WebServiceAnfrage(antwort, adresse, ui);
    const bool alteLayer = !katalog.Zelle(zeile, "Layer").empty();
    if (!inhalt.gelesen || !inhalt.mitRequest) {
        // The row keeps what an earlier reading found; without one it is emptied.
        const std::string zustand = alteLayer ? "alte Anfrage" : inhalt.gelesen ? "ohne" : "ERROR";
        katalog.ZelleSetzen(zeile, "Anfrage", zustand);
        if (!alteLayer)
            for (std::string_view spalte : {"Layer", "LayerAuswahl", "URL-Legende"})
                katalog.ZelleSetzen(zeile, spalte, "");
        return Ergebnis::Fehlschlag(zustand);
    }
    katalog.ZelleSetzen(zeile, "Anfrage", inhalt.layer.empty() ? "ohne" : "erfolgt");
    katalog.ZelleSetzen(zeile, "Layer", inhalt.layer);
    katalog.ZelleSetzen(zeile, "LayerAuswahl", LayerAuswahlAlle(inhalt.layerAnzahl));
    katalog.ZelleSetzen(zeile, "URL-Legende", inhalt.legende);
    katalog.ZelleSetzen(zeile, "Maßstab", inhalt.maßstab);
    return inhalt.layer.empty() ? Ergebnis::Fehlschlag("ohne") : Ergebnis::Ok("erfolgt");
}

Ergebnis DienstNeuEinlesen(Dienstkatalog& katalog, std::optional<std::size_t> zeile,
                           const Einleseumgebung& umgebung, Oberfläche& ui) {
    if (!zeile || *zeile >= katalog.Zeilenzahl()) {
        const std::string text = "Wählen Sie bitte zuerst den zu ändernden Web-Service aus!";
        ui.Meldung(text, "Web-Service", Stil::Information);
        return Ergebnis::Abbruch(text);
    }
    const Fragestellung frage{"Möchten Sie \"" + katalog.Zelle(*zeile, "Web-Service") +
                                  "\" neu einlesen?",
                              "Web-Service", Knöpfe::JaNein, Antwort::Ja, Antwort::Ja};
    if (ui.Frage(frage) != Antwort::Ja)
        return Ergebnis::Abbruch();
    return DienstAnfragen(katalog, *zeile, umgebung, ui);
}

Ergebnis AlleDiensteNeuEinlesen(Dienstkatalog& katalog, const Einleseumgebung& umgebung,
                                Oberfläche& ui) {
    for (std::string text :
         {std::string("Möchten Sie alle Dienste neu anfragen?"),
          std::string("Achtung: Alle Voreinstellungen werden dann überschrieben!")})
        if (ui.Frage({text, "Web-Service", Knöpfe::JaNein, Antwort::Nein, Antwort::Ja}) !=
            Antwort::Ja)
            return Ergebnis::Abbruch();
    std::size_t erfolgt = 0;
    const auto anzahl = static_cast<long long>(katalog.Zeilenzahl());
    for (std::size_t zeile = 0; zeile < katalog.Zeilenzahl(); ++zeile) {
        if (ui.AbbruchGewünscht())
            return Ergebnis::Abbruch();
        ui.Fortschritt(static_cast<long long>(zeile), anzahl);
        erfolgt += static_cast<bool>(DienstAnfragen(katalog, zeile, umgebung, ui));
    }
    ui.Fortschritt(anzahl, anzahl);
    const std::string text = std::to_string(erfolgt) + " von " + std::to_string(anzahl) +
                             " Web-Services erfolgreich angefragt";
    return erfolgt == katalog.Zeilenzahl() ? Ergebnis::Ok(text) : Ergebnis::Fehlschlag(text);
}

} // namespace flurix::karte
