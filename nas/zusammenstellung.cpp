#include "nas/zusammenstellung.hpp"

#include "core/datenbank.hpp"
#include "core/einstellungen.hpp"
#include "core/text.hpp"
#include "nas/geometrie.hpp"
#include "core/oberflaeche.hpp"
#include "nas/anreicherung.hpp"
#include "nas/daten_ordnen.hpp"
#include "nas/konfig_suche.hpp"
#include "nas/nas_datenbank.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

namespace flurix::nas {
namespace {

constexpr char Titel[] = "ALKISZusammenstellung";

/// The parcels' geometry of a very large file is not needed once Alkis has its rings.
void GeometrieEntfernen(Datenbank& db) {
    for (const char* spalte : {"position", "gml:exterior", "gml:interior", "gml:Arc"})
        DAO_FeldLöschen(db, "AX_Flurstueck", spalte);
}

/// The land-use areas, when the options ask for them and the user agrees; a failure of the step
/// leaves the parcels' area columns as they were and the compilation goes on.
void Flächenschritt(const Zusammenstellungsauftrag& auftrag, Datenbank& db, NasProtokoll& protokoll,
                    Oberfläche& ui, Flächenbericht& bericht) {
    const auto ausgewählt = auftrag.auswahl ? std::optional<std::size_t>(auftrag.auswahl->size()) : std::nullopt;
    if (!AuswahlNaBerechnung(ui, ausgewählt))
        return;
    const auto einstellungen = auftrag.konfigOrdner / "Flurix.dat";
    Flächenauftrag flächen;
    flächen.optionen = auftrag.optionen;
    flächen.konfigOrdner = auftrag.konfigOrdner;
    flächen.zeichnungsordner = auftrag.zeichnungsordner;
    flächen.auswahl = auftrag.auswahl;
    flächen.pfeilhöhe = PfeilhöheAusEinstellung(EinstellungLesen(einstellungen, "PfeilhöheKreisZuLinie"));
    const std::string minimum = EinstellungLesen(einstellungen, "ClipperMinFläche");
    if (!TrimmeLeerzeichen(minimum).empty())
        flächen.minFläche = ZahlLesen(minimum);
    Flächenverschneidung(db, flächen, protokoll, ui, bericht);
}

Ergebnis Stufen(const Zusammenstellungsauftrag& auftrag, const std::string& zuordnung,
                NasProtokoll& protokoll, Oberfläche& ui, Zusammenstellungsbericht& bericht) {
    auto db = DAO_DatenbankÖffnen(auftrag.datenbank);
    ZuordnungsfunktionenRegistrieren(*db);
    protokoll.Eintrag(", ALKIS-Daten zusammenstellen...");
    if (auftrag.optionen.Flächenberechnung())
        Flächenschritt(auftrag, *db, protokoll, ui, bericht.flächen);

    bericht.reorganisation = XmlReorganisation(*db, protokoll, ui);

    ui.Status(1, "Zusammenstellung...");
    protokoll.Eintrag(", Daten zusammenstellen...");
    const Antragsbeschreibung antrag = AntragsbeschreibungLesen(*db);
    protokoll.Eintrag(", " + antrag.AntragsText());
    protokoll.Eintrag(", " + antrag.SystemText());
    bericht.zuordnung = ZuordnungAusführen(*db, ZuordnungLesen(zuordnung), protokoll, ui);
    if (auftrag.großeDatei)
        GeometrieEntfernen(*db);
    protokoll.Liste("; Datei \"ALKIS-Zuordnung.dat\" abgearbeitet...");

    ui.Status(1, "Daten ordnen...");
    protokoll.Eintrag(", Daten ordnen...");
    OrdnenUmgebung umgebung;
    umgebung.antragsnummer = antrag.antragsnummer;
    if (antrag.epsg != "0000" && !antrag.epsg.empty())
        umgebung.systemWert = antrag.epsg + "_" + antrag.mkz;
    umgebung.amtsgerichte = KonfigText(auftrag.konfigOrdner / "ALKIS_Amtsgerichte.dat");
    umgebung.optionen = auftrag.optionen;
    bericht.zeilen = DatenOrdnen(*db, umgebung, protokoll, ui);
    if (bericht.zeilen == 0) {
        ui.Meldung("Keine Daten vorhanden!   ", Titel, Stil::Warnung);
        protokoll.Eintrag(", ERR: keine Daten vorhanden, ALKIS-Zusammenstellung...");
        return Ergebnis::Fehlschlag("Keine Daten vorhanden!");
    }

    ui.Status(1, "Zieltabelle laden...");
    ui.Status(1, "Zusammenstellung erfolgt");
    protokoll.Liste(", ALKIS-Zusammenstellung beendet...");
    DatenbankKomprimieren(*db);
    return Ergebnis::Ok();
}

} // namespace

Ergebnis ALKISZusammenstellung(const Zusammenstellungsauftrag& auftrag, NasProtokoll& protokoll,
                               Oberfläche& ui, Zusammenstellungsbericht& bericht) {
    ui.Status(1, "Zusammenstellung...");
    protokoll.Eintrag(", XML-Reorganisation...");
    protokoll.Eintrag(", ALKIS-Zusammenstellung für \"" + auftrag.nasDatei.string() + "\"");
    const auto skript = auftrag.konfigOrdner / "ALKIS_Zuordnung.dat";
    std::string zuordnung;
    try {
        zuordnung = KonfigText(skript);
    } catch (const Fehler&) {
        // An unreadable script is as good as a missing one.
    }
    if (zuordnung.empty()) {
        ui.Meldung(std::string(MeldungZuordnungFehlt) + "\nAbbruch Funktion!", Titel, Stil::Fehler);
        protokoll.Eintrag(std::string(", ") + MeldungZuordnungFehlt);
        return Ergebnis::Fehlschlag(MeldungZuordnungFehlt);
    }
    try {
        return Stufen(auftrag, zuordnung, protokoll, ui, bericht);
    } catch (const std::exception& e) {
        // Fehler of the database; what was built so far stays in the file for a look.
        ui.Meldung(e.what(), Titel, Stil::Fehler);
        protokoll.Eintrag(", ERR: " + std::string(e.what()));
        return Ergebnis::Fehlschlag(e.what());
    }
}

} // namespace flurix::nas
