#include "cli/argumente.hpp"

#include <ostream>

namespace flurix::cli {

std::optional<std::string> Argumente::Wert(const std::string& name) const {
    const auto it = werte.find(name);
    if (it == werte.end())
        return std::nullopt;
    return it->second;
}

std::optional<Argumente> ArgumenteLesen(const std::vector<std::string>& argumente,
                                        const std::set<std::string>& schalter,
                                        const std::set<std::string>& mitWert,
                                        std::ostream& fehler) {
    Argumente ergebnis;
    for (std::size_t i = 0; i < argumente.size(); ++i) {
        const std::string& arg = argumente[i];
        if (!arg.starts_with("--") || arg == "--") {
            ergebnis.positionen.push_back(arg);
        } else if (schalter.contains(arg)) {
            ergebnis.schalter.insert(arg);
        } else if (mitWert.contains(arg)) {
            if (i + 1 >= argumente.size()) {
                fehler << "flurix: Die Option " << arg << " braucht einen Wert.\n";
                return std::nullopt;
            }
            ergebnis.werte[arg] = argumente[++i];
        } else {
            fehler << "flurix: unbekannte Option \"" << arg << "\". Hilfe: flurix --help\n";
            return std::nullopt;
        }
    }
    return ergebnis;
}

} // namespace flurix::cli
