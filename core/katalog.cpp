#include "core/katalog.hpp"

#include "core/kataster.hpp"

#include <array>
#include <utility>

namespace flurix {

const std::vector<KatalogSpalte>& Katalog() {
    static const std::vector<KatalogSpalte> katalog = {
    {"Landkreis", "Landkreis", 1200},
    {"Katasteramt", "Katasteramt", 3000},
    {"Gemeinde", "Gemeinde", 1200},
    {"Gemeindeschlüssel", "GD-ID", 1000},
    {"Gemarkung", "Gemarkung", 1200},
    {"Gemarkungsschlüssel", "GK-ID", 800},
    {"Flur", "Flur", 600},
    {"Amtsgericht", "Amtsgericht", 1200},
    {"Amtsgerichtsschlüssel", "AG-ID", 600},
    {"Grundbuchbezirk", "Grundbuchbezirk", 700},
    {"Grundbuchblatt", "Grundbuchblatt", 700},
    {"BVNR", "BVNR", 600},
    {"Buchungsart", "BA", 1200},
    {"Flurstück", "Flurstück", 1200},
    {"Nutzungsart", "Nutzungsart", 1500},
    {"Fläche", "Fläche", 1200},
    {"Prüfzeichen", "PZ", 400},
    {"Aktualitätsnummer", "A", 400},
    {"Eigentümerposition", "E", 400},
    {"Name", "Name", 3000},
    {"Namenszusatz", "Namenszusatz", 3000},
    {"Straße", "Straße", 3000},
    {"Ort", "Ort", 2000},
    {"Eigentümerzusatz", "Eigentümerzusatz", 3000},
    {"sonstigesBOV", "sonstiges BOV", 3000},
    {"Lagebezeichnung", "Lagebezeichnung", 3000},
    {"Straßenschlüssel", "Straßen ID", 2000},
    {"Rechtswert", "Rechtswert", 1000},
    {"Hochwert", "Hochwert", 1000},
    // The mark column's sign must survive the text exports, which write Windows-1252: a check
    // mark would become "?" there, the multiplication sign reads as the cross a form is marked with.
    {"checkdruck", "×", 600},
    {"Nutzung_tatsächlich", "Nutzung_tatsächlich", 1500},
    {"NA_Klassifizierung", "NA_Klassifizierung", 1500},
    {"NA-Fläche", "NA-Fläche", 1200},
    {"NrStp", "NrStp", 600},
    {"Flurstückskennzeichen", "Flurstückskennzeichen", 2000},
    {"Finanzamt", "Finanzamt", 1000},
    {"Finanzamtsschlüssel", "F-ID", 600},
    {"Klassifizierung", "Klassifizierung", 1500},
    {"Namensnummer", "Namensnummer", 1500},
    {"Flurstück-Vorgänger", "Flurstück-Vorgänger", 1500},
    {"Flurstück-Nachfolger", "Flurstück-Nachfolger", 1500},
    {"Flurstück-Zähler", "Flurstück-Zähler", 1200},
    {"Flurstück-Nenner", "Flurstück-Nenner", 1200},
    {"BZ", "BZ", 1000},
    {"AZ", "AZ", 1000},
    {"AZ-Mittel", "AZ-Mittel", 1000},
    {"EMZ", "EMZ", 1000},
    {"EMZ-Summe", "EMZ-Summe", 1000},
    {"BZ-AZ-Fläche", "BZ-AZ-Fläche", 1000},
    {"Angaben_Klassifizierung", "Angaben_Klassifizierung", 1000},
    {"Schlüssel_Klassifizierung", "Schlüssel_Klassifizierung", 1000},
    {"Bezeichnung_Klassifizierung", "Bezeichnung_Klassifizierung", 1000},
    {"Schätzung", "Schätzung", 1000},
    {"Vorname_sonstiges", "Vorname_sonstiges", 3000},
    {"Geburtsname", "Geburtsname", 3000},
    {"Anteilsverhältnis", "Anteilsverhältnis", 1000},
    {"Entstehung", "Entstehung", 2000},
    {"Fortführung", "Fortführung", 2000},
    {"LiegenschKarte", "LiegenschKarte", 2000},
    {"Grundbuchbezirkschlüssel", "Grundbuchbezirkschlüssel", 2000},
    {"Schlüssel_Bezeichnung_Hinweis_Flurstück", "Schlüssel Hinweis Flurstück", 2000},
    {"Bezeichnung_Hinweis_Flurstück", "Hinweis Flurstück", 2000},
    {"GB-Aktualität", "GB-Aktualität", 600},
    {"F-Anteil", "F-Anteil", 600},
    {"Beschreibung Sondereigentum", "Beschreibung Sondereigentum", 1000},
    {"Auszug Format", "Auszug Format", 600},
    };
    return katalog;
}

KatasterSpalte KatalogSpalteFür(std::string_view schlüssel) {
    KatasterSpalte spalte{std::string(schlüssel), std::string(schlüssel), 1000};
    for (const auto& k : Katalog())
        if (k.schlüssel == schlüssel) {
            spalte.überschrift = k.überschrift;
            spalte.breite = k.breite;
        }
    if (schlüssel == "checkdruck") {
        spalte.zentriert = true;
        spalte.kontrollkästchen = true;
    } else if (schlüssel == "NrStp") {
        spalte.sichtbar = false;
    } else if (schlüssel == "Flurstück") {
        spalte.schattiert = true;
    }
    return spalte;
}

void SpaltenAnlegen(Kataster& kataster) {
    kataster.Leeren();
    for (const auto& k : Katalog())
        kataster.SpalteHinzufügen(KatalogSpalteFür(k.schlüssel));
}

std::string SpaltenHinweis(std::string_view überschrift) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 11> langnamen = {{
        {"BA", "Buchungsart"},
        {"PZ", "Prüfzeichen"},
        {"A", "Aktualitätsnummer"},
        {"E", "Anzahl Eigentümer"},
        {"GBBL", "Grundbuchblattnummer"},
        {"GBBZ", "Grundbuchbblattbezirk"},
        {"BVNR", "Bestandsverzeichnisnummer"},
        {"GD-ID", "Gemeinde-Schlüssel (Identifikation)"},
        {"GK-ID", "Gemarkung-Schlüssel (Identifikation)"},
        {"F-ID", "Finanzamt-Schlüssel (Identifikation)"},
        {"AG-ID", "Amtsgericht-Schlüssel (Identifikation)"},
    }};
    for (const auto& [kurz, lang] : langnamen)
        if (kurz == überschrift)
            return "Spalte " + std::string(lang);
    return std::string(überschrift);
}

} // namespace flurix
