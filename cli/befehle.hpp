#pragma once
// The subcommands of flurix and the job command line.

#include "cli/cli.hpp"

#include <string_view>

namespace flurix::cli {

using Befehlsfunktion = int (*)(const std::vector<std::string>& argumente, std::ostream& aus,
                                std::ostream& fehler, const Umgebung& umgebung);

struct Befehl {
    std::string_view name;
    std::string_view kurz;  ///< one line for the overview
    std::string_view hilfe; ///< the text of "flurix <name> --help"
    Befehlsfunktion ausführen;
};

/// Every subcommand, in the order the overview lists them.
const std::vector<Befehl>& Befehle();

/// The overview of "flurix --help".
void Hilfe(std::ostream& aus);
/// "flurix " + the version of the main window's caption.
std::string Version();

int BefehlErkennen(const std::vector<std::string>&, std::ostream&, std::ostream&, const Umgebung&);
int BefehlImport(const std::vector<std::string>&, std::ostream&, std::ostream&, const Umgebung&);
int BefehlKonfig(const std::vector<std::string>&, std::ostream&, std::ostream&, const Umgebung&);
int BefehlSuchen(const std::vector<std::string>&, std::ostream&, std::ostream&, const Umgebung&);
int BefehlAuszug(const std::vector<std::string>&, std::ostream&, std::ostream&, const Umgebung&);
int BefehlExport(const std::vector<std::string>&, std::ostream&, std::ostream&, const Umgebung&);
int BefehlNas(const std::vector<std::string>&, std::ostream&, std::ostream&, const Umgebung&);
int BefehlNasWerkzeug(const std::vector<std::string>&, std::ostream&, std::ostream&, const Umgebung&);
int BefehlKarte(const std::vector<std::string>&, std::ostream&, std::ostream&, const Umgebung&);
int BefehlMarkieren(const std::vector<std::string>&, std::ostream&, std::ostream&, const Umgebung&);
int BefehlKoordinaten(const std::vector<std::string>&, std::ostream&, std::ostream&, const Umgebung&);
int BefehlDienste(const std::vector<std::string>&, std::ostream&, std::ostream&, const Umgebung&);

/// A job command line: "<path>/job.wldge" and the other interactive types open the desktop program;
/// "<path>/job.xml /ggout /still" and its siblings run unattended; "/map y;x" opens the map.
int Auftragszeile(const std::vector<std::string>& argumente, std::ostream& aus,
                  std::ostream& fehler, const Umgebung& umgebung);

} // namespace flurix::cli
