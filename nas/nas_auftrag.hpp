#pragma once
// The job of a NAS import for one run of the program: the work database in the run's working
// folder (deleted when the run ends) or the one asked for, the configuration of the installation
// and the view of the table. The command line and the window build it the same way.

#include "nas/nas_direkt.hpp"

#include <filesystem>
#include <optional>
#include <string>

namespace flurix {
struct Programmzustand;
}

namespace flurix::nas {

/// The job for `datei`. Without `datenbank` a new work database is made and noted in `zustand`,
/// whose end clears it away. An empty `ansicht` keeps the table's default view.
NasDirektAuftrag NasAuftragFür(Programmzustand& zustand, const std::filesystem::path& datei,
                               const std::optional<std::filesystem::path>& datenbank,
                               const std::string& ansicht, bool interaktiv);

} // namespace flurix::nas
