#pragma once
// GDAL's programs on NAS files, and the real test district (licensed for tests only: decompressed
// once into the build tree, never copied into the repository). GDAL writes a .gfs file beside its
// input, so it reads a link in a folder of its own.

#include "core/datenbank.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "nas/objektdatenbank.hpp"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <system_error>
#include <unistd.h>

namespace flurix::test {

inline constexpr std::uintmax_t BezirkBytes = 119'575'596;

/// The decompressed district, or why there is none: `fehlt` skips, `fehler` fails.
struct Bezirk {
    std::filesystem::path xml;
    std::string fehlt;
    std::string fehler;
};

inline Bezirk BezirkBereitstellen() {
    Bezirk b;
    const auto archiv = GemeinsameTestdaten() / "postnas-rlp-gid60" / "gm2566-testdaten-gid60-2008-11-11.xml.xz";
    const auto entpackt =
        std::filesystem::path(FLURIX_BINAER) / ".." / "testdaten" / "gm2566-testdaten-gid60-2008-11-11.xml";
    if (!std::filesystem::exists(archiv))
        b.fehlt = "Testbezirk fehlt (" + archiv.string() + "): kein Vergleich mit GDAL.";
    else if (!ImSuchpfad("xz"))
        b.fehlt = "xz fehlt: der Testbezirk kann nicht entpackt werden.";
    else if (!ImSuchpfad("ogrinfo") || !ImSuchpfad("ogr2ogr"))
        b.fehlt = "ogrinfo oder ogr2ogr (gdal-bin) fehlt: kein Vergleich mit GDAL.";
    if (!b.fehlt.empty())
        return b;
    std::error_code ec;
    if (std::filesystem::file_size(entpackt, ec) != BezirkBytes) {
        // Renamed when whole: test processes side by side never read a half-written file.
        std::filesystem::create_directories(entpackt.parent_path());
        auto teil = entpackt;
        teil += "." + std::to_string(::getpid()) + ".teil";
        const auto lauf = Ausführen("xz -dc " + Wort(archiv) + " > " + Wort(teil) + " 2>&1");
        if (lauf.status != 0 || std::filesystem::file_size(teil, ec) != BezirkBytes) {
            std::filesystem::remove(teil, ec);
            b.fehler = "xz -dc " + archiv.string() + " gab nicht die erwarteten " + std::to_string(BezirkBytes) +
                       " Bytes: " + lauf.ausgabe;
            return b;
        }
        std::filesystem::rename(teil, entpackt);
    }
    b.xml = entpackt;
    return b;
}

inline const Bezirk& TestBezirk() {
    static const Bezirk bezirk = BezirkBereitstellen();
    return bezirk;
}

/// Runs a GDAL program on `datei`: `befehl` (program and options), a link to the file in
/// `ordner`, then `danach` (layers, say). The environment's schema templates are switched off, so
/// GDAL builds its schema from the file. A run that fails returns GDAL's messages as its output.
inline Programmlauf GdalAuf(const std::filesystem::path& ordner, const std::filesystem::path& datei,
                            const std::string& befehl, const std::string& danach = {}) {
    const auto link = ordner / "eingabe.xml";
    std::error_code ec;
    if (!std::filesystem::exists(link)) {
        std::filesystem::create_hard_link(datei, link, ec);
        if (ec)
            std::filesystem::copy_file(datei, link);
    }
    const auto meldungen = ordner / "meldungen.txt";
    auto lauf = Ausführen("env -u NAS_GFS_TEMPLATE -u GML_GFS_TEMPLATE " + befehl + " " + Wort(link) + " " + danach +
                          " 2>" + Wort(meldungen));
    if (lauf.status != 0)
        lauf.ausgabe = befehl + " " + danach + " endete mit " + std::to_string(lauf.status) + ": " +
                       DateiLesen(meldungen).substr(0, 2000);
    return lauf;
}

inline std::string Klein(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// The feature classes ogrinfo lists in a file with their numbers of features, by lower-case
/// name ("alkis_beziehungen": every reference); `nas` when GDAL read the file as NAS.
struct GdalKlassen {
    std::map<std::string, std::int64_t> anzahl;
    bool nas = false;
    std::string fehler;
};

inline GdalKlassen KlassenNachGdal(const std::filesystem::path& datei) {
    GdalKlassen k;
    TempOrdner ordner;
    const auto lauf = GdalAuf(ordner.pfad(), datei, "ogrinfo -ro -so -al");
    if (lauf.status != 0) {
        k.fehler = lauf.ausgabe;
        return k;
    }
    k.nas = lauf.ausgabe.find("using driver `NAS' successful") != std::string::npos;
    std::istringstream zeilen(lauf.ausgabe);
    std::string zeile, klasse;
    while (std::getline(zeilen, zeile)) {
        if (zeile.starts_with("Layer name: "))
            klasse = Klein(zeile.substr(12));
        else if (zeile.starts_with("Feature Count: ") && !klasse.empty())
            k.anzahl[klasse] = std::stoll(zeile.substr(15));
    }
    return k;
}

/// The rows of each feature class table of an object database, by lower-case name: no relation
/// table ("...#..."), not the description of the order.
inline std::map<std::string, std::int64_t> KlassenDerDatenbank(Datenbank& db) {
    std::map<std::string, std::int64_t> zeilen;
    for (const auto& tabelle : nas::DAO_Tabellen(db))
        if (tabelle.find('#') == std::string::npos && tabelle != "Antragsbeschreibung")
            zeilen[Klein(tabelle)] = nas::DAO_Zeilenzahl(db, tabelle);
    return zeilen;
}

} // namespace flurix::test
