#pragma once
// What the DXF tests share: a copy of a drawing that ezdxf's strict loader takes, and whether
// ezdxf and the DXF judge are there.

#include "gemeinsam/testumgebung.hpp"

#include <cstdio>
#include <filesystem>
#include <string>

namespace flurix::test {

// ezdxf reads section names in capitals only; the header opens with the "Section" every drawing
// of the writer has, so ezdxf gets a copy with that one word in capitals. Its loader files the
// sections by name and keeps the last ENTITIES section alone: in the copy the four are one.
inline std::filesystem::path StrikteKopie(const std::filesystem::path& datei) {
    std::string bytes = DateiLesen(datei);
    if (bytes.starts_with("  0\r\nSection\r\n"))
        bytes.replace(5, 7, "SECTION");
    const std::string wechsel = "  0\r\nENDSEC\r\n999\r\n-------------------\r\n  0\r\nSECTION\r\n999\r\n"
                                "-------------------\r\n  2\r\nENTITIES\r\n999\r\n-------------------\r\n";
    // The first such change is the one from BLOCKS to ENTITIES.
    const auto erste = bytes.find(wechsel);
    if (erste != std::string::npos)
        for (auto stelle = bytes.find(wechsel, erste + 1); stelle != std::string::npos;
             stelle = bytes.find(wechsel, stelle))
            bytes.erase(stelle, wechsel.size());
    const std::filesystem::path kopie = datei.parent_path() / ("strikt_" + datei.filename().string());
    DateiSchreiben(kopie, bytes);
    return kopie;
}

inline bool EzdxfDa() {
    if (std::filesystem::exists(FLURIX_GEMEINSAM "/tools/dxfcheck.py") &&
        Ausführen("/usr/bin/python3 -c 'import ezdxf' 2>/dev/null").status == 0)
        return true;
    std::printf("dxfcheck.py oder python3-ezdxf fehlt: Prüfung mit ezdxf übersprungen\n");
    return false;
}

/// The judge's command line for a drawing (dxfcheck.py through the system python, which has
/// ezdxf).
inline std::string DxfPrüfung(const std::filesystem::path& datei) {
    return "/usr/bin/python3 " FLURIX_GEMEINSAM "/tools/dxfcheck.py " + Wort(datei) + " 2>&1";
}

} // namespace flurix::test
