#include "import/tabelle_laden.hpp"

#include "core/katalog.hpp"
#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
#include "core/markierung.hpp"
#include "core/oberflaeche.hpp"
#include "core/spaltenansicht.hpp"
#include "core/suche.hpp"

namespace flurix::import {

Ergebnis GespeicherteTabelleLaden(const std::filesystem::path& datei,
                                  const TabellenLadeumgebung& umgebung, Kataster& kataster,
                                  Oberfläche& ui, std::vector<std::string>* boxEinträge) {
    ui.Fortschritt(0, 1);
    Kataster neu;
    try {
        KatasterLaden(neu, datei);
    } catch (const std::exception&) {
        std::string text = "Während des Lesens der Daten aus der Datei " + datei.string() +
                           " ist ein Fehler aufgetreten!";
        ui.Meldung(text, ProduktTitel, Stil::Fehler);
        return Ergebnis::Fehlschlag(std::move(text));
    }
    try {
        std::vector<std::string> einträge;
        if (neu.SpaltenIndex("Gemarkung")) {
            if (umgebung.suchbegriffGemarkung)
                einträge = BoxGemFlurNASFüllen(neu, ui);
            else if (neu.Zeilenzahl() < GemFlurBoxGrenze)
                einträge = BoxGemFlurFüllen(neu, ui);
        }
        const std::size_t markierung = MarkierungsspalteSicherstellen(neu);
        neu.Spalte(markierung).kontrollkästchen = true;
        neu.Spalte(markierung).zentriert = true;
        ui.Status(1, std::to_string(neu.Zeilenzahl()) + " Zeilen eingelesen  ");
        ALBDatenColFormatierung(neu);
        neu.Sortieren(StandardSortierung);
        ComboColVis(neu, umgebung.ansicht, umgebung.ansichtsdatei);
        kataster = std::move(neu);
        if (boxEinträge != nullptr)
            *boxEinträge = std::move(einträge);
        ui.Fortschritt(1, 1);
        return Ergebnis::Ok();
    } catch (const std::exception& e) {
        std::string text = e.what();
        ui.Meldung(text, ProduktTitel, Stil::Fehler);
        return Ergebnis::Fehlschlag(std::move(text));
    }
}

} // namespace flurix::import
