#include "cli/befehle.hpp"

#include "cli/sitzung.hpp"
#include "core/konfig_sicherung.hpp"

#include <ostream>

namespace flurix::cli {

int BefehlKonfig(const std::vector<std::string>& argumente, std::ostream&, std::ostream& fehler,
                 const Umgebung& umgebung) {
    if (argumente.size() != 2 || (argumente[0] != "sichern" && argumente[0] != "einlesen")) {
        fehler << "Aufruf: flurix konfig sichern|einlesen <archiv.zip>\n";
        return 2;
    }
    Sitzung sitzung(umgebung, fehler);
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
