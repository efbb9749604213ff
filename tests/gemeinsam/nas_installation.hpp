#pragma once
// A scratch installation for the NAS tests: the configuration of the source tree, a work folder
// and the sample NAS file.

#include "gemeinsam/testumgebung.hpp"

#include <filesystem>

namespace flurix::test {

/// `inst/config` (a copy of config/), `arbeit/` and `muster.xml` (samples/musterstadt_nas.xml) in
/// a fresh scratch folder.
struct NasInstallation {
    TempOrdner ordner;

    NasInstallation() {
        namespace fs = std::filesystem;
        const fs::path quellen = FLURIX_QUELLEN;
        fs::create_directories(ordner / "inst");
        fs::copy(quellen / "config", ordner / "inst" / "config", fs::copy_options::recursive);
        fs::create_directories(ordner / "arbeit");
        fs::copy_file(quellen / "samples" / "musterstadt_nas.xml", ordner / "muster.xml");
    }
};

} // namespace flurix::test
