#include "core/nummernformat.hpp"

#include "core/einstellungen.hpp"
#include "core/oberflaeche.hpp"

#include <clocale>
#include <cstdio>

namespace flurix {

ProzessZahlenformat::ProzessZahlenformat() {
    const char* jetzt = std::setlocale(LC_NUMERIC, nullptr);
    m_ursprung = jetzt ? jetzt : "C";
}

std::string ProzessZahlenformat::EinsKommaEins() const {
    char puffer[16];
    std::snprintf(puffer, sizeof puffer, "%.1f", 1.1);
    return puffer;
}

bool ProzessZahlenformat::SeparatorenSetzen(char dezimal, char) {
    // A process can't choose separators one by one; it chooses a numeric locale that has them.
    const char* ziel = dezimal == '.' ? "C" : m_ursprung.c_str();
    return std::setlocale(LC_NUMERIC, ziel) != nullptr;
}

namespace {

void PunktSetzen(const Einstellungen& einstellungen, Zahlenformat& format,
                 NummernformatZustand& zustand, Oberfläche& ui) {
    format.SeparatorenSetzen('.', ' ');
    zustand.KommaGeändert = true;
    if (einstellungen.Ja("PrüfeNummerFormatMitMeldung"))
        ui.Meldung("Das Dezimaltrennzeichen wurde von 'Komma' nach 'Punkt' geändert!   ",
                   TitelDezimaltrennzeichen, Stil::Information);
}

} // namespace

void PrüfeNummerFormatAufruf(const Einstellungen& einstellungen, Zahlenformat& format,
                             NummernformatZustand& zustand, Oberfläche& ui) {
    if (einstellungen.Nein("PrüfeNummerFormat"))
        return;
    if (!zustand.FormatGeprüft) {
        if (format.EinsKommaEins() == "1,1")
            PunktSetzen(einstellungen, format, zustand, ui);
        zustand.FormatGeprüft = true;
    } else if (einstellungen.Ja("PrüfeNummerFormatBeiBenutzung") &&
               format.EinsKommaEins() == "1,1") {
        PunktSetzen(einstellungen, format, zustand, ui);
    }
}

void NummerFormatZurücksetzen(const Einstellungen& einstellungen, Zahlenformat& format,
                              NummernformatZustand& zustand, Oberfläche& ui) {
    if (!zustand.KommaGeändert)
        return;
    format.SeparatorenSetzen(',', '.');
    zustand.KommaGeändert = false;
    if (einstellungen.Ja("PrüfeNummerFormatMitMeldung"))
        ui.Meldung("Das Dezimalkennzeichen wurde von 'Punkt' nach 'Komma' geändert!   ",
                   TitelDezimaltrennzeichen, Stil::Information);
}

} // namespace flurix
