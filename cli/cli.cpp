#include "cli/cli.hpp"

#include "cli/argumente.hpp"
#include "cli/befehle.hpp"

#include <ostream>

namespace flurix::cli {

int Ausführen(const std::vector<std::string>& argumente, std::ostream& aus, std::ostream& fehler,
              const Umgebung& umgebung) {
    if (argumente.empty()) {
        Hilfe(aus);
        return 2;
    }
    const std::string& erstes = argumente.front();
    if (erstes == "--help" || erstes == "-h" || erstes == "hilfe") {
        Hilfe(aus);
        return 0;
    }
    if (erstes == "--version") {
        aus << Version() << '\n';
        return 0;
    }
    const std::vector<std::string> rest(argumente.begin() + 1, argumente.end());
    for (const auto& befehl : Befehle())
        if (befehl.name == erstes) {
            if (!rest.empty() && (rest.front() == "--help" || rest.front() == "-h")) {
                aus << befehl.hilfe;
                return 0;
            }
            return befehl.ausführen(rest, aus, fehler, umgebung);
        }
    if (erstes.starts_with("--")) {
        fehler << "flurix: unbekannte Option \"" << erstes << "\". Hilfe: flurix --help\n";
        return 2;
    }
    // Anything else is a job command line: a job file with its path, a batch form or /map.
    return Auftragszeile(argumente, aus, fehler, umgebung);
}

} // namespace flurix::cli
