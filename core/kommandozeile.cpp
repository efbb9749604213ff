#include "core/kommandozeile.hpp"

#include "core/einstellungen.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"

#include <array>

namespace flurix {
namespace {

struct Stapelform {
    std::string_view text;
    bool txtSch;
    bool dxf;
};

// The unattended forms, matched as the whole text behind the last dot.
constexpr std::array<Stapelform, 3> Stapelformen = {{
    {"xml /ggout /still /txt-sch", true, false},
    {"xml /ggout /still", false, false},
    {"xml /dxfout /still", false, true},
}};

constexpr std::array<std::string_view, 4> Dateitypen = {"wldge", "xml", "fil", "mdb"};

void KarteLesen(std::string_view zeile, std::string_view klein, Auftrag& auftrag, Oberfläche& ui) {
    auftrag.art = Startart::Karte;
    auftrag.MapModus = true;
    const std::string rest(TrimmeLeerzeichen(zeile.substr(klein.find("/map") + 4)));
    if (rest.empty())
        return;
    const std::string paar = KoordinatenpaarNormalisieren(rest);
    if (paar.find(';') == std::string::npos) {
        ui.Meldung("ETRS89-Koordinaten müssen mit \";\" getrennt werden!   ", ProduktTitel,
                   Stil::Warnung);
        return;
    }
    auftrag.mitte = Kartenmitte{ZahlLesen(TokenNr(paar, 1, ";")), ZahlLesen(TokenNr(paar, 2, ";"))};
}

} // namespace

std::string KoordinatenpaarNormalisieren(std::string_view rest) {
    std::string text(rest);
    for (char& c : text)
        if (c == ';')
            c = ' ';
    std::string gesammelt;
    for (char c : text)
        if (!(c == ' ' && !gesammelt.empty() && gesammelt.back() == ' '))
            gesammelt += c;
    std::string ergebnis(TrimmeLeerzeichen(gesammelt));
    for (char& c : ergebnis)
        if (c == ' ')
            c = ';';
    return ergebnis;
}

Auftrag KommandozeileLesen(std::string_view zeile, Oberfläche& ui) {
    Auftrag auftrag;
    std::string ohneAnführung;
    for (char c : zeile)
        if (c != '"')
            ohneAnführung += c;
    auftrag.Kommandozeile = std::string(TrimmeLeerzeichen(ohneAnführung));
    const std::string& text = auftrag.Kommandozeile;
    const std::string klein = Kleinbuchstaben(text);

    if (klein.find("/map") != std::string::npos) {
        KarteLesen(text, klein, auftrag, ui);
        return auftrag;
    }
    if (text.empty())
        return auftrag;

    // Everything before the last dot names the job; with a dot in a folder name the first piece
    // alone would name another file. The switches of the batch forms stand behind the dot, so the
    // job's folder is looked for before it: "/ggout" is no folder.
    const std::string jobOhneTyp = text.substr(0, klein.rfind('.'));

    // A job must be given with its path.
    const auto letzterTrenner = jobOhneTyp.rfind('/');
    if (letzterTrenner == std::string::npos) {
        ui.Meldung("Fehlerhafte Auftragspfadbeschreibung! Abbruch!   ", ProduktTitel, Stil::Fehler);
        auftrag.art = Startart::Beenden;
        return auftrag;
    }
    auftrag.AuftragsPfad = jobOhneTyp.substr(0, letzterTrenner + 1);

    const auto stücke = Teilen(klein, '.');
    if (stücke.size() > 2)
        ui.Meldung("Der Dateiname " + text.substr(0, stücke.front().size()) +
                       "xml ist nicht eineindeutig!   ",
                   "Flurix: Dateiname", Stil::Warnung);
    const std::string_view letztes = stücke.back();

    for (const auto& form : Stapelformen) {
        if (stücke.size() > 1 && letztes == form.text) {
            auftrag.art = Startart::NasStapel;
            // The extension as written: "X.XML" is another file than "X.xml" here.
            auftrag.AuftragsDatei = jobOhneTyp + text.substr(jobOhneTyp.size(), 4);
            auftrag.StillModus = true;
            auftrag.AusgabeGG = true;
            auftrag.AusgabeTxtSch = form.txtSch;
            auftrag.AusgabeDXF = form.dxf;
            return auftrag;
        }
    }
    for (std::string_view typ : Dateitypen) {
        if (stücke.size() > 1 && letztes == typ) {
            auftrag.art = Startart::DateiLaden;
            auftrag.AuftragsDatei = std::string(typ);
            auftrag.AutoStartDatei = true;
            return auftrag;
        }
    }
    ui.Meldung("Der Dateityp \"." + std::string(letztes) +
                   "\" kann vom Flurix z.Z. nicht automatisiert eingelesen werden!   ",
               ProduktTitel, Stil::Warnung);
    return auftrag;
}

} // namespace flurix
