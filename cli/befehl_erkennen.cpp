#include "cli/befehle.hpp"

#include "core/fehler.hpp"
#include "import/datenladen.hpp"

#include <ostream>

namespace flurix::cli {

int BefehlErkennen(const std::vector<std::string>& argumente, std::ostream& aus,
                   std::ostream& fehler, const Umgebung&) {
    if (argumente.empty()) {
        fehler << "flurix erkennen: Bitte mindestens eine Datei angeben.\n";
        return 2;
    }
    int code = 0;
    for (const auto& datei : argumente) {
        try {
            const auto erkennung = import::DateiErkennen(datei);
            aus << datei << '\t' << erkennung.beschreibung << '\t' << erkennung.leser << '\n';
            if (!erkennung.unterstützt)
                code = 1;
        } catch (const Fehler& e) {
            fehler << e.what() << '\n';
            code = 1;
        }
    }
    return code;
}

} // namespace flurix::cli
