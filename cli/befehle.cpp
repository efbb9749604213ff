#include "cli/befehle.hpp"

#include "core/programm.hpp"

#include <ostream>

namespace flurix::cli {

const std::vector<Befehl>& Befehle() {
    static const std::vector<Befehl> befehle = {
        {"erkennen", "sagt, welcher Art eine Eingabedatei ist und welcher Leser sie nimmt",
         "Aufruf: flurix erkennen <datei>...\n"
         "  Sieht sich jede Datei an, ohne sie zu ändern, und gibt je Datei eine Zeile aus:\n"
         "  <datei> TAB <Art> TAB <Leser>. Ende mit 1, wenn eine Datei nicht unterstützt wird.\n",
         BefehlErkennen},
        {"import", "liest eine Eingabedatei wie \"Datei öffnen\", ohne Fenster und ohne Fragen",
         "Aufruf: flurix import <datei> [<datei>...] [Optionen]\n"
         "  Die Art folgt der Dateiendung: .wldge, .fil, .xml (Web-XML oder NAS), .mdb, .fkz.\n"
         "  --komplett        WLDGE-Daten komplett einlesen (nur Abgabeformat 32)\n"
         "  --schnell         WLDGE-Daten teilweise einlesen (Vorgabe)\n"
         "  --alle-eigentuemer-in-einer-zeile   alle Eigentümer je Flurstück eine Datenzeile\n"
         "  --name-umdrehen   [Name, Vorname] in [Vorname Name] ändern\n"
         "  --nutzung-verschluesselt   tatsächliche Nutzung nicht vollständig\n"
         "  --anfuegen        Web-XML an die vorhandene Tabelle anfügen\n"
         "  --out <datei>     die Tabelle schreiben (.tsv, .fil)\n",
         BefehlImport},
        {"konfig", "sichert das Konfigurationsverzeichnis als Zip-Archiv oder liest es zurück",
         "Aufruf: flurix konfig sichern <archiv.zip>\n"
         "        flurix konfig einlesen <archiv.zip>\n"
         "        flurix konfig starteinstellung <dienst> <rechtswert;hochwert> <epsg> <maßstab>\n"
         "  Sichert alle Dateien von config/ der Installation mit ihren Pfaden, oder packt ein\n"
         "  solches Archiv über config/ aus. \"starteinstellung\" schreibt den Start der Karte\n"
         "  (StartMapWebService...) in Flurix.dat, nach einer Sicherungskopie der Datei.\n",
         BefehlKonfig},
    };
    return befehle;
}

std::string Version() { return "flurix " + FensterTitel().substr(std::string("Flurix ").size()); }

void Hilfe(std::ostream& aus) {
    aus << "Flurix: Daten des Liegenschaftskatasters (WLDGE, Web-XML, NAS) einlesen und ausgeben.\n\n"
           "Aufruf: flurix <befehl> [argumente]   (flurix <befehl> --help sagt mehr)\n\n"
           "Befehle:\n";
    for (const auto& befehl : Befehle()) {
        std::string name(befehl.name);
        name.resize(12, ' ');
        aus << "  " << name << befehl.kurz << '\n';
    }
    aus << "\nAuftragszeilen wie im Windows-Programm:\n"
           "  flurix <pfad>/<datei>.wldge|.xml|.fil|.mdb   öffnet die Datei in flurix-gui\n"
           "  flurix <pfad>/<auftrag>.xml /ggout /still    unbeaufsichtigter NAS-Lauf (GEOgraf)\n"
           "  flurix <pfad>/<auftrag>.xml /ggout /still /txt-sch\n"
           "  flurix <pfad>/<auftrag>.xml /dxfout /still   unbeaufsichtigter NAS-Lauf (DXF)\n"
           "  flurix /map [<rechtswert>;<hochwert>]        öffnet die Karte\n"
           "\nMeldungen stehen auf stderr. Ende: 0 erledigt, 1 Fehler, 2 falscher Aufruf.\n";
}

} // namespace flurix::cli
