#include "nas/nas_optionen.hpp"

#include "core/text.hpp"

#include <algorithm>
#include <array>

namespace flurix::nas {
namespace {

using O = NasOptionen;

constexpr std::array<NasOptionsfeld, 18> Felder = {{
    {"chkMitNaBerechnung", "Flächenverschneidung Nutzungsart, Bodenschätzung und BOV", &O::mitNaBerechnung},
    {"chkQuickNaBerechnung", "nur ausgewählte NA-Flächen und Bodenschätzung berechnen", &O::quickNaBerechnung},
    {"chkQuickBSBerechnung", "nur Bodenschätzung berechnen", &O::quickBSBerechnung},
    {"chkQuickLWBerechnung", "nur Landwirtschaft berechnen", &O::quickLWBerechnung},
    {"chkQuickBROBBerechnung", "nur Bau-, Raum- oder Bodenordnungsrecht (BOV)", &O::quickBROBBerechnung},
    {"chkMitFlächenAnpassung", "mit Flächenanpassung an Buchfläche", &O::mitFlächenAnpassung},
    {"chkSVGlöschen", "grafischen Nachweis *.svg für Flächenberechnung löschen", &O::svgLöschen},
    {"chkWriteAlkisProtokolldatei", "Protokolldatei nicht schreiben", &O::protokollNichtSchreiben},
    {"chkNutzung_tatsächlich", "Anzeige \"Nutzung_tatsächlich\" ohne \"AX-Nutzung\" im Text", &O::nutzungOhneAx},
    {"chkAlkisAnschrift", "mehrere Anschriften pro Eigentümer zulässig (zusätzliche Zeilen)",
     &O::mehrereAnschriften},
    {"chkFlurixSuchbegriffGemarkung", "Flurstückssuche im Flurix vereinfachen", &O::suchbegriffGemarkung},
    // The box has no caption of its own in the dialog; this one says what it does.
    {"chkSQLAbfrage", "SQL-Abfrage nach dem Öffnen einer Datei anzeigen", &O::sqlAbfrage},
    {"chkSQLMeridianKZ", "mit voller Meridiankennziffer", &O::sqlMeridianKZ},
    {"chkSQLGGmitSchraffur", "mit Schraffur Gebäude", &O::ggMitSchraffur},
    {"chkALKISDXFmitSchraffur", "mit Schraffur Gebäude", &O::dxfMitSchraffur},
    {"chkALKISDXFmitPunktbeschriftung", "mit Beschriftung Punktnummer", &O::dxfMitPunktbeschriftung},
    {"chkALKISDXFmitSachdaten", "mit Sachdatenbeschriftung Punkt GWT", &O::dxfMitSachdaten},
    // The DXF's texts in the style "Calibri" rather than "ISO8".
    {"chkALKISDXFmitCalibri", "Schrift Calibri", &O::dxfMitCalibri},
}};

constexpr std::array<bool O::*, 4> NurFelder = {&O::quickNaBerechnung, &O::quickBSBerechnung,
                                               &O::quickLWBerechnung, &O::quickBROBBerechnung};

} // namespace

std::span<const NasOptionsfeld> NasOptionsfelder() { return Felder; }

NasOptionen NasOptionen::AusText(std::string_view text) {
    NasOptionen optionen;
    for (std::string_view eintrag : Teilen(text, '#')) {
        const auto komma = eintrag.find(',');
        if (komma == std::string_view::npos)
            continue;
        const std::string_view name = TrimmeLeerzeichen(eintrag.substr(0, komma));
        const std::string_view wert = TrimmeLeerzeichen(eintrag.substr(komma + 1));
        for (const auto& bekannt : Felder)
            if (bekannt.name == name)
                optionen.*bekannt.feld = wert == "1";
    }
    return optionen;
}

std::string NasOptionen::AlsText() const {
    std::string text;
    for (const auto& f : Felder) {
        text += '#';
        text += f.name;
        text += this->*f.feld ? ",1" : ",0";
    }
    return text;
}

bool NasOptionen::HängtAnFlächenberechnung(bool NasOptionen::*feld) {
    return std::find(NurFelder.begin(), NurFelder.end(), feld) != NurFelder.end();
}

void NasOptionen::Setzen(bool NasOptionen::*feld, bool an) {
    this->*feld = an;
    if (feld == &O::mitNaBerechnung && !an) {
        for (auto nur : NurFelder)
            this->*nur = false;
    } else if (an && HängtAnFlächenberechnung(feld)) {
        for (auto nur : NurFelder)
            if (nur != feld)
                this->*nur = false;
    }
}

std::string NasOptionen::StartKnopfText() const {
    std::string text = "Import direkt in den Flurix";
    if (mitNaBerechnung)
        text += mitFlächenAnpassung ? " mit Flächenanpassung an BF" : " ohne Flächenanpassung an BF";
    return text;
}

} // namespace flurix::nas
