#pragma once
// The NAS import as the command line runs it: the work database in the working directory (or the
// one asked for), the configuration of the installation, no person to ask.

#include "nas/nas_direkt.hpp"

#include <filesystem>
#include <optional>

namespace flurix::cli {

class Sitzung;

/// The job for `datei`; without `datenbank` the work database is a new one that is deleted when
/// the run ends.
nas::NasDirektAuftrag NasAuftragFür(Sitzung& sitzung, const std::filesystem::path& datei,
                                    const std::optional<std::filesystem::path>& datenbank);

} // namespace flurix::cli
