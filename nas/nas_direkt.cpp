#include "nas/nas_direkt.hpp"

#include "core/datei.hpp"
#include "core/datenbank.hpp"
#include "core/einstellungen.hpp"
#include "core/oberflaeche.hpp"
#include "core/text.hpp"
#include "nas/konfig_suche.hpp"
#include "nas/na_anpassung_2019.hpp"
#include "nas/nas_datenbank.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <unistd.h>

namespace flurix::nas {

std::filesystem::path NasArbeitsdatenbank(const std::filesystem::path& arbeitsverzeichnis) {
    // Two runs started in the same second (a script's batch jobs) must not share a database: the
    // process id makes the name theirs, a number one made twice in a second.
    const std::string stamm = "_tmpDAOdbFile" + Ersetzen(ZeitStempelText(), " ", "") + "_" +
                              std::to_string(::getpid());
    std::filesystem::path pfad = arbeitsverzeichnis / (stamm + ".sqlite");
    for (int n = 2; DateiVorhanden(pfad); ++n)
        pfad = arbeitsverzeichnis / (stamm + "-" + std::to_string(n) + ".sqlite");
    return pfad;
}

bool IstNasDatenbankDatei(const std::filesystem::path& datei) {
    const std::string endung = Kleinbuchstaben(datei.extension().string());
    return endung == ".mdb" || endung == ".sqlite" || endung == ".db";
}

Ergebnis NasEinlesenOderÖffnen(const NasDirektAuftrag& auftrag, NasProtokoll& protokoll,
                               Oberfläche& ui, NasStand& stand) {
    if (IstNasDatenbankDatei(auftrag.datei))
        return NasDatenbankÖffnen(auftrag.datei, auftrag.datenbank, stand, ui);
    protokoll.Eintrag("Einlesen ALKIS/NAS-Daten...");
    const NasAuftrag einlesen{auftrag.datei, auftrag.datenbank, auftrag.konfigOrdner};
    return DAO_ALKISEinlesen(einlesen, stand, ui, protokoll);
}

Ergebnis NasZusammenstellen(const NasDirektAuftrag& auftrag, const NasStand& stand,
                            NasProtokoll& protokoll, Oberfläche& ui, Zusammenstellungsbericht& bericht) {
    Zusammenstellungsauftrag zusammenstellung;
    zusammenstellung.datenbank = auftrag.datenbank;
    zusammenstellung.nasDatei = auftrag.datei;
    zusammenstellung.konfigOrdner = auftrag.konfigOrdner;
    zusammenstellung.optionen = auftrag.optionen;
    zusammenstellung.großeDatei = stand.großeDatei;
    zusammenstellung.zeichnungsordner = auftrag.zeichnungsordner;
    zusammenstellung.auswahl = auftrag.auswahl;
    return ALKISZusammenstellung(zusammenstellung, protokoll, ui, bericht);
}

Ergebnis NasÜbernehmen(const NasDirektAuftrag& auftrag, NasProtokoll& protokoll, Kataster& kataster,
                       Oberfläche& ui, NachFlurixBericht& bericht) {
    try {
        auto db = DAO_DatenbankÖffnen(auftrag.datenbank);
        const NachFlurixUmgebung umgebung{auftrag.konfigOrdner, auftrag.ansichtsdatei,
                                          auftrag.ansicht, auftrag.interaktiv};
        Ergebnis übernommen = ALKISnachFlurix(*db, kataster, umgebung, protokoll, ui, bericht);
        if (übernommen && auftrag.optionen.mitNaBerechnung)
            NaAnpassung2019(kataster, KonfigText(auftrag.konfigOrdner / "ALKIS_Nutzungsart.dat"), ui);
        return übernommen;
    } catch (const Fehler& e) {
        ui.Meldung(e.what(), "ALKIS-Export", Stil::Fehler);
        return Ergebnis::Fehlschlag(e.what());
    }
}

Ergebnis NasDirektImport(const NasDirektAuftrag& auftrag, Kataster& kataster, Oberfläche& ui,
                         NasDirektBericht& bericht) {
    bericht = NasDirektBericht{};
    NasProtokoll protokoll(ui, auftrag.optionen.protokollNichtSchreiben
                                   ? std::filesystem::path()
                                   : NasProtokoll::DateiZu(auftrag.datei));
    Ergebnis ergebnis = NasEinlesenOderÖffnen(auftrag, protokoll, ui, bericht.stand);
    if (ergebnis)
        ergebnis = NasZusammenstellen(auftrag, bericht.stand, protokoll, ui, bericht.zusammenstellung);
    if (ergebnis)
        ergebnis = NasÜbernehmen(auftrag, protokoll, kataster, ui, bericht.übernahme);
    return ergebnis;
}

} // namespace flurix::nas
