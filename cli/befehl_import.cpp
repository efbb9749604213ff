#include "cli/befehle.hpp"

#include "cli/argumente.hpp"
#include "cli/nas_lauf.hpp"
#include "cli/sitzung.hpp"
#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
#include "import/datenladen.hpp"
#include "import/leser.hpp"

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
    // Several files are Web-XML extracts; the dispatch refuses them for any other kind.
    if (auftrag.dateien.size() > 1 && auftrag.art == import::Eingabeart::Xml)
        auftrag.art = import::Eingabeart::WebXml;
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
    try {
        // Appending starts from the table that is there.
        if (args->Hat("--anfuegen") && ausgabe && std::filesystem::exists(*ausgabe))
            KatasterLaden(kataster, *ausgabe);
    } catch (const Fehler& e) {
        fehler << e.what() << '\n';
        return sitzung.Beenden(1);
    }
    import::Ladeumgebung ladeumgebung;
    const import::LeserOrt ort{sitzung.zustand.arbeitsverzeichnis,
                               sitzung.zustand.installation.Spaltenansichten(),
                               sitzung.zustand.gewünschteAnsicht, args->Hat("--anfuegen")};
    import::LeserEintragen(ladeumgebung, kataster, sitzung.ui, ort);
    // NAS goes the direct way into the table, as "Import direkt in den Flurix" does.
    ladeumgebung.leser.nasFenster = [&sitzung, &kataster](const std::filesystem::path& datei) {
        nas::NasDirektBericht bericht;
        return nas::NasDirektImport(NasAuftragFür(sitzung, datei, std::nullopt), kataster,
                                    sitzung.ui, bericht);
    };
    auto& optionen = ladeumgebung.optionen;
    optionen.albKomplett = args->Hat("--komplett");
    optionen.alleEigentümerInEinerZeile = args->Hat("--alle-eigentuemer-in-einer-zeile");
    optionen.nameUmdrehen = args->Hat("--name-umdrehen");
    optionen.nutzungTatsächlich = !args->Hat("--nutzung-verschluesselt");
    const Ergebnis ergebnis = import::ALBDatenLaden(auftrag, ladeumgebung, sitzung.ui);
    if (!ergebnis)
        return sitzung.Beenden(1);
    aus << kataster.Zeilenzahl() << " Zeilen eingelesen\n";
    if (ausgabe) {
        try {
            KatasterSpeichern(kataster, *ausgabe);
        } catch (const Fehler& e) {
            fehler << e.what() << '\n';
            return sitzung.Beenden(1);
        }
    }
    return sitzung.Beenden(0);
}

} // namespace flurix::cli
