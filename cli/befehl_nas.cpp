#include "cli/befehle.hpp"

#include "cli/argumente.hpp"
#include "cli/sitzung.hpp"
#include "core/datenbank.hpp"
#include "core/einstellungen.hpp"
#include "core/text.hpp"
#include "nas/nas_datenbank.hpp"
#include "nas/nas_einlesen.hpp"
#include "nas/nas_protokoll.hpp"
#include "nas/objektdatenbank.hpp"

#include <ostream>

namespace flurix::cli {

int BefehlNas(const std::vector<std::string>& argumente, std::ostream& aus, std::ostream& fehler,
              const Umgebung& umgebung) {
    const auto args = ArgumenteLesen(argumente, {"--ohne-protokoll"}, {"--db"}, fehler);
    if (!args)
        return 2;
    if (args->positionen.size() != 1) {
        fehler << "flurix nas: Bitte genau eine NAS-Datei angeben.\n";
        return 2;
    }
    Sitzung sitzung(umgebung, fehler);
    if (!sitzung.Starten(""))
        return 1;

    nas::NasAuftrag auftrag;
    auftrag.xmlDatei = args->positionen.front();
    auftrag.konfigOrdner = sitzung.zustand.installation.Konfig();
    if (const auto db = args->Wert("--db"))
        auftrag.datenbank = *db;
    else
        auftrag.datenbank = sitzung.zustand.arbeitsverzeichnis /
                            ("_tmpDAOdbFile" + Ersetzen(ZeitStempelText(), " ", "") + ".sqlite");
    nas::NasStand stand;
    Ergebnis ergebnis;
    const auto endung = auftrag.xmlDatei.extension().string();
    if (endung == ".sqlite" || endung == ".mdb" || endung == ".db") {
        // A database saved earlier: opened again, no scan.
        ergebnis = nas::NasDatenbankÖffnen(auftrag.xmlDatei, auftrag.datenbank, stand, sitzung.ui);
    } else {
        nas::NasProtokoll protokoll(sitzung.ui, args->Hat("--ohne-protokoll")
                                                    ? std::filesystem::path()
                                                    : nas::NasProtokoll::DateiZu(auftrag.xmlDatei));
        protokoll.Eintrag("Einlesen ALKIS/NAS-Daten...");
        ergebnis = nas::DAO_ALKISEinlesen(auftrag, stand, sitzung.ui, protokoll);
    }
    if (!ergebnis)
        return sitzung.Beenden(1);
    fehler << stand.antrag.AntragsText() << '\n' << stand.antrag.SystemText() << '\n';
    try {
        auto db = nas::DAO_DatenbankÖffnen(auftrag.datenbank);
        for (const auto& tabelle : stand.tabellen)
            aus << tabelle << '\t' << nas::DAO_Zeilenzahl(*db, tabelle) << '\n';
    } catch (const Fehler& e) {
        fehler << e.what() << '\n';
        return sitzung.Beenden(1);
    }
    fehler << "Datenbank: " << auftrag.datenbank.string() << '\n';
    return sitzung.Beenden(0);
}

} // namespace flurix::cli
