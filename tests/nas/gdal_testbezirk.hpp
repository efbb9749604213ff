#pragma once
// The real test district and GDAL's programs on it, for the tests that measure our NAS work
// against a reader we did not write.
//
// The district is licensed for tests only: it is read where it lies, decompressed once into the
// build tree (and reused while its size is right), and never copied into the repository. GDAL
// writes a .gfs file beside its input, so its programs read a link to the file in a folder of
// their own. Tests skip with the message of `fehlt` when the archive, xz or ogrinfo is missing.

#include "gemeinsam/testumgebung.hpp"

#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <unistd.h>

namespace flurix::test {

inline constexpr std::uintmax_t BezirkBytes = 119'575'596;

inline std::filesystem::path BezirkArchiv() {
    return GemeinsameTestdaten() / "postnas-rlp-gid60" / "gm2566-testdaten-gid60-2008-11-11.xml.xz";
}

inline std::filesystem::path BezirkEntpackt() {
    return std::filesystem::path(FLURIX_BINAER) / ".." / "testdaten" /
           "gm2566-testdaten-gid60-2008-11-11.xml";
}

/// The decompressed district, or why there is none: `fehlt` skips, `fehler` fails.
struct Bezirk {
    std::filesystem::path xml;
    std::string fehlt;
    std::string fehler;
};

inline Bezirk BezirkBereitstellen() {
    Bezirk b;
    const auto archiv = BezirkArchiv();
    const auto entpackt = BezirkEntpackt();
    if (!std::filesystem::exists(archiv))
        b.fehlt = "Testbezirk fehlt (" + archiv.string() + "): kein Vergleich mit GDAL.";
    else if (!ImSuchpfad("xz"))
        b.fehlt = "xz fehlt: der Testbezirk kann nicht entpackt werden.";
    else if (!ImSuchpfad("ogrinfo"))
        b.fehlt = "ogrinfo (gdal-bin) fehlt: kein Vergleich mit GDAL.";
    if (!b.fehlt.empty())
        return b;
    std::error_code ec;
    if (std::filesystem::file_size(entpackt, ec) != BezirkBytes) {
        // Written beside the target under a name of this process and renamed when whole, so that
        // test processes running side by side never read a half-written file.
        std::filesystem::create_directories(entpackt.parent_path());
        auto teil = entpackt;
        teil += "." + std::to_string(::getpid()) + ".teil";
        const auto lauf = Ausführen("xz -dc " + Wort(archiv) + " > " + Wort(teil) + " 2>&1");
        if (lauf.status != 0 || std::filesystem::file_size(teil, ec) != BezirkBytes) {
            std::filesystem::remove(teil, ec);
            b.fehler = "xz -dc " + archiv.string() + " gab nicht die erwarteten " +
                       std::to_string(BezirkBytes) + " Bytes: " + lauf.ausgabe;
            return b;
        }
        std::filesystem::rename(teil, entpackt);
    }
    b.xml = entpackt;
    return b;
}

/// The district of this test process, decompressed at the first call.
inline const Bezirk& TestBezirk() {
    static const Bezirk bezirk = BezirkBereitstellen();
    return bezirk;
}

/// Runs a GDAL program on the district: `befehl` (program and options), a link to the district
/// in `ordner`, then `danach` (layers, say). The environment's schema templates are switched off,
/// so GDAL builds its schema from the file. A run that fails returns GDAL's messages in place of
/// its output.
inline Programmlauf GdalAufBezirk(const std::filesystem::path& ordner, const std::string& befehl,
                                  const std::string& danach = {}) {
    const auto link = ordner / "bezirk.xml";
    std::error_code ec;
    if (!std::filesystem::exists(link)) {
        std::filesystem::create_hard_link(TestBezirk().xml, link, ec);
        if (ec)
            std::filesystem::copy_file(TestBezirk().xml, link);
    }
    const auto meldungen = ordner / "meldungen.txt";
    auto lauf = Ausführen("env -u NAS_GFS_TEMPLATE -u GML_GFS_TEMPLATE " + befehl + " " + Wort(link) +
                          " " + danach + " 2>" + Wort(meldungen));
    if (lauf.status != 0)
        lauf.ausgabe = befehl + " " + danach + " endete mit " + std::to_string(lauf.status) + ": " +
                       DateiLesen(meldungen).substr(0, 2000);
    return lauf;
}

} // namespace flurix::test
