#include "cli/befehle.hpp"

#include "cli/sitzung.hpp"
#include "core/konfig_sicherung.hpp"

#include <ostream>

namespace flurix::cli {

int BefehlKonfig(const std::vector<std::string>& argumente, std::ostream&, std::ostream& fehler,
                 const Umgebung& umgebung) {
    const bool start = !argumente.empty() && argumente[0] == "starteinstellung";
    if (start ? argumente.size() != 5
              : argumente.size() != 2 || (argumente[0] != "sichern" && argumente[0] != "einlesen")) {
        fehler << "Aufruf: flurix konfig sichern|einlesen <archiv.zip>\n"
                  "       flurix konfig starteinstellung <dienst> <rechtswert;hochwert> <epsg> "
                  "<maßstab>\n";
        return 2;
    }
    Sitzung sitzung(umgebung, fehler);
    if (start) {
        const Kartenstart werte{argumente[1], argumente[2], argumente[3], argumente[4]};
        return Exitcode(StarteinstellungÜbernehmen(sitzung.zustand.einstellungen, werte, sitzung.ui));
    }
    const auto konfig = sitzung.zustand.installation.Konfig();
    if (!KonfigSchreibrechtPrüfen(konfig, sitzung.ui))
        return 1;
    const std::filesystem::path archiv = argumente[1];
    const Ergebnis ergebnis = argumente[0] == "sichern"
                                  ? KonfigSichern(konfig, archiv, sitzung.ui)
                                  : KonfigEinlesen(konfig, archiv, sitzung.ui);
    return Exitcode(ergebnis);
}

} // namespace flurix::cli
