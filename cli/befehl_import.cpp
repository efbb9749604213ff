#include "cli/befehle.hpp"

#include "cli/argumente.hpp"
#include "cli/sitzung.hpp"
#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
#include "import/datenladen.hpp"
#include "import/laden.hpp"

#include <ostream>

namespace flurix::cli {

int BefehlImport(const std::vector<std::string>& argumente, std::ostream& aus, std::ostream& fehler,
                 const Umgebung& umgebung) {
    const auto args = ArgumenteLesen(argumente,
                                     {"--komplett", "--schnell", "--alle-eigentuemer-in-einer-zeile",
                                      "--name-umdrehen", "--nutzung-verschluesselt", "--anfuegen"},
                                     {"--out"}, fehler);
    if (!args)
        return 2;
    if (args->positionen.empty()) {
        fehler << "flurix import: Bitte mindestens eine Datei angeben.\n";
        return 2;
    }
    if (args->Hat("--komplett") && args->Hat("--schnell")) {
        fehler << "flurix import: --komplett und --schnell schließen sich aus.\n";
        return 2;
    }

    import::Ladeauftrag auftrag;
    for (const auto& datei : args->positionen)
        auftrag.dateien.emplace_back(datei);
    if (!import::EingabeartAusEndung(auftrag.dateien.front(), auftrag.art)) {
        fehler << "Der Dateityp \"" << auftrag.dateien.front().extension().string()
               << "\" kann vom Flurix z.Z. nicht automatisiert eingelesen werden!   \n";
        return 2;
    }
    if (args->Hat("--anfuegen") && auftrag.art != import::Eingabeart::WebXml &&
        auftrag.art != import::Eingabeart::Xml) {
        fehler << "flurix import: --anfuegen gilt nur für Web-XML-Dateien.\n";
        return 2;
    }

    Sitzung sitzung(umgebung, fehler);
    if (!sitzung.Starten(""))
        return 1;
    Kataster kataster;
    const auto ausgabe = args->Wert("--out");
    // Appending starts from the table that is there.
    if (args->Hat("--anfuegen") && ausgabe && std::filesystem::exists(*ausgabe) &&
        !sitzung.TabelleLaden(kataster, *ausgabe))
        return sitzung.Beenden(1);
    // The command line binds its arguments to the load: no dialog, no person to ask.
    import::Ladebindung bindung;
    bindung.ansicht = sitzung.zustand.gewünschteAnsicht;
    bindung.anfügen = args->Hat("--anfuegen");
    import::ImportOptionen optionen;
    optionen.albKomplett = args->Hat("--komplett");
    optionen.alleEigentümerInEinerZeile = args->Hat("--alle-eigentuemer-in-einer-zeile");
    optionen.nameUmdrehen = args->Hat("--name-umdrehen");
    optionen.nutzungTatsächlich = !args->Hat("--nutzung-verschluesselt");
    const auto geladen =
        import::DatenLaden(auftrag, optionen, sitzung.zustand, bindung, kataster, sitzung.ui);
    if (!geladen.ergebnis)
        return sitzung.Beenden(1);
    aus << kataster.Zeilenzahl() << " Zeilen eingelesen\n";
    return sitzung.Beenden(ausgabe && !sitzung.TabelleSpeichern(kataster, *ausgabe) ? 1 : 0);
}

} // namespace flurix::cli
