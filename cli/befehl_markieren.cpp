#include "cli/befehle.hpp"

#include "cli/argumente.hpp"
#include "cli/sitzung.hpp"
#include "core/fehler.hpp"
#include "core/kataster.hpp"
#include "core/kataster_datei.hpp"
#include "core/markierung.hpp"

#include <ostream>

namespace flurix::cli {

int BefehlMarkieren(const std::vector<std::string>& argumente, std::ostream&, std::ostream& fehler,
                    const Umgebung& umgebung) {
    const auto args = ArgumenteLesen(argumente, {}, {"--liste", "--out"}, fehler);
    if (!args)
        return 2;
    const auto liste = args->Wert("--liste");
    const auto out = args->Wert("--out");
    if (args->positionen.size() != 1 || !liste || !out) {
        fehler << "flurix markieren: Bitte eine Tabelle, --liste und --out angeben. Hilfe: flurix "
                  "markieren --help\n";
        return 2;
    }

    Sitzung sitzung(umgebung, fehler);
    if (!sitzung.Starten(""))
        return 1;
    Kataster kataster;
    if (!sitzung.TabelleLaden(kataster, args->positionen.front()))
        return sitzung.Beenden(1);
    // The message of a failed list has been written; the marks set up to there are kept, as in
    // the main window, so the table is written all the same.
    const Listenergebnis ergebnis = DbMarkierungLaden(kataster, *liste, sitzung.ui);
    if (!sitzung.TabelleSpeichern(kataster, *out))
        return sitzung.Beenden(1);
    return sitzung.Beenden(Exitcode(ergebnis.ergebnis));
}

} // namespace flurix::cli
