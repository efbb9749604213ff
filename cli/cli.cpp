#include "cli/cli.hpp"

#include <ostream>

namespace flurix::cli {

int Ausführen(const std::vector<std::string>& argumente, std::ostream& aus, std::ostream& fehler) {
    (void)argumente;
    (void)aus;
    fehler << "flurix: noch in Arbeit\n";
    return 2;
}

} // namespace flurix::cli
