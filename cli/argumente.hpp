#pragma once
// Reading the arguments of a subcommand: positional arguments and "--name" or "--name value"
// options. Reading does no work.

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace flurix::cli {

struct Argumente {
    std::vector<std::string> positionen;
    std::map<std::string, std::string> werte; ///< options with a value
    std::set<std::string> schalter;           ///< options without a value

    bool Hat(const std::string& schalterName) const { return schalter.contains(schalterName); }
    std::optional<std::string> Wert(const std::string& name) const;
};

/// Splits `argumente` by the options a command knows. Returns nullopt and writes a German message
/// to `fehler` for an unknown option or a missing value.
std::optional<Argumente> ArgumenteLesen(const std::vector<std::string>& argumente,
                                        const std::set<std::string>& schalter,
                                        const std::set<std::string>& mitWert, std::ostream& fehler);

} // namespace flurix::cli
