#include "map/layerauswahl.hpp"

#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "map/dienstkatalog.hpp"

#include <charconv>
#include <cmath>

namespace flurix::karte {
namespace {

/// The entries of a `Layer` cell; none for an empty cell.
std::vector<std::string_view> Einträge(std::string_view layer) {
    std::vector<std::string_view> teile;
    if (layer.empty())
        return teile;
    for (std::size_t anfang = 0;;) {
        const auto trenner = layer.find("}{", anfang);
        if (trenner == std::string_view::npos) {
            teile.push_back(layer.substr(anfang));
            return teile;
        }
        teile.push_back(layer.substr(anfang, trenner - anfang));
        anfang = trenner + 2;
    }
}

/// The text behind `schlüssel` up to the next `"`; "" when it is not there.
std::string_view Attribut(std::string_view text, std::string_view schlüssel) {
    const auto a = text.find(schlüssel);
    if (a == std::string_view::npos)
        return {};
    const auto von = a + schlüssel.size();
    const auto bis = text.find('"', von);
    return text.substr(von, bis == std::string_view::npos ? std::string_view::npos : bis - von);
}

double Zahl(std::string_view text) {
    double wert = 0;
    std::from_chars(text.data(), text.data() + text.size(), wert);
    return wert;
}

std::string Gerundet(double wert, double k) {
    const double n = 100.0 * std::floor(wert * k / 100.0) + 100.0;
    return std::to_string(static_cast<long long>(n));
}

} // namespace

std::string LayerListe(std::string_view layer, std::string_view layerAuswahl) {
    const auto einträge = Einträge(layer);
    const auto flaggen = Teilen(layerAuswahl, ',');
    std::string liste;
    for (std::size_t i = 0; i < einträge.size() && i < flaggen.size(); ++i) {
        if (flaggen[i] != "true")
            continue;
        if (!liste.empty())
            liste.push_back(',');
        liste.append(einträge[i].substr(0, einträge[i].find('~')));
    }
    return liste;
}

std::vector<LayerEintrag> LayerEinträge(std::string_view layer, std::string_view layerAuswahl) {
    const auto flaggen = Teilen(layerAuswahl, ',');
    std::vector<LayerEintrag> liste;
    const auto einträge = Einträge(layer);
    for (std::size_t i = 0; i < einträge.size(); ++i) {
        const auto tilde = einträge[i].find('~');
        liste.push_back(
            {std::string(tilde == std::string_view::npos ? einträge[i]
                                                         : einträge[i].substr(tilde + 1)),
             i < flaggen.size() && flaggen[i] == "true"});
    }
    return liste;
}

void LayerAuswahlÜbernehmen(Dienstkatalog& katalog, std::size_t zeile,
                            const std::vector<bool>& gewählt) {
    std::string auswahl;
    std::size_t an = 0;
    for (bool g : gewählt) {
        auswahl += g ? "true," : "false,";
        an += g;
    }
    if (!auswahl.empty())
        auswahl.pop_back();
    katalog.ZelleSetzen(zeile, "LayerAuswahl", auswahl);

    if (!katalog.Prüfzelle(zeile, "vStyle")) {
        katalog.ZelleSetzen(zeile, "Style", "");
        return;
    }
    std::string_view wort = TrimmeLeerzeichen(katalog.Zelle(zeile, "Style"));
    wort = wort.substr(
        wort.find_last_of(' ') == std::string_view::npos ? 0 : wort.find_last_of(' ') + 1);
    wort = wort.substr(
        wort.find_last_of(',') == std::string_view::npos ? 0 : wort.find_last_of(',') + 1);
    std::string style;
    for (std::size_t i = 0; i < an; ++i) {
        if (i > 0)
            style.push_back(',');
        style.append(wort);
    }
    katalog.ZelleSetzen(zeile, "Style", style);
}

std::string MaßstabUmrechnen(std::string_view zelle) {
    if (zelle.find("ScaleHint:") == std::string_view::npos)
        return std::string(zelle);
    const std::string_view min = Attribut(zelle, "min=\"");
    const std::string_view max = Attribut(zelle, "max=\"");
    // Services that give min="100.0" give scales already, not pixel diagonals.
    if (zelle.find("ScaleHint: min=\"100.0\"") != std::string_view::npos)
        return "von 1:" + std::string(min) + " bis 1:" + std::string(max);
    const double k = 96000.0 / (std::sqrt(2.0) * 25.4);
    const double minWert = Zahl(min);
    return "von 1:" + (minWert > 0 ? Gerundet(minWert, k) : std::string("1")) +
           " bis 1:" + Gerundet(Zahl(max), k);
}

Ergebnis MaßstäbeUmrechnen(Dienstkatalog& katalog, Oberfläche& ui) {
    const Fragestellung frage{"Sollen alle ScaleHint-Angaben in Maßstab 1:? umgerechnet werden?",
                              "Web-Service, 96 dpi", Knöpfe::JaNein, Antwort::Ja, Antwort::Ja};
    if (ui.Frage(frage) != Antwort::Ja)
        return Ergebnis::Abbruch();
    std::size_t geändert = 0;
    for (std::size_t zeile = 0; zeile < katalog.Zeilenzahl(); ++zeile) {
        const std::string& alt = katalog.Zelle(zeile, "Maßstab");
        if (alt.find("ScaleHint:") == std::string::npos)
            continue;
        katalog.ZelleSetzen(zeile, "Maßstab", MaßstabUmrechnen(alt));
        ++geändert;
    }
    return Ergebnis::Ok(std::to_string(geändert) + " Maßstäbe umgerechnet");
}

} // namespace flurix::karte
