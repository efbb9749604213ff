#pragma once
// One run of the map: from the reference state and the three levels' services to the picture.
// The stages, in their order: the input check, the frame, the EPSG check, the requests of the
// levels, the logins, the downloads (all levels at once; an existing cache file is taken as it
// is), the answer tests with their messages and the request log, the corrections of each level,
// the composition from the background level to the foreground. The window calls it for every new
// picture; the command line calls it once.

#include "map/antwort.hpp"
#include "map/ebenen_korrektur.hpp"
#include "map/getmap.hpp"
#include "map/referenz.hpp"

#include <QImage>

#include <array>
#include <chrono>
#include <filesystem>
#include <string>

namespace flurix {
class Oberfläche;
}

namespace flurix::karte {

class Dienstkatalog;

/// The levels as the window's controls set them: level 1 (foreground) to 3 (background).
struct Kartenwahl {
    std::array<std::string, 3> dienste{"ohne", "ohne", "ohne"}; ///< "ohne": no service
    std::array<EbenenEinstellung, 3> einstellungen{EbenenEinstellung{.ebene = 1},
                                                   EbenenEinstellung{.ebene = 2},
                                                   EbenenEinstellung{.ebene = 3}};
};

/// Where the run works and what it may do.
struct Kartenumgebung {
    std::filesystem::path tempOrdner; ///< the cache files and "_MAP-Anfrage.prn"
    std::filesystem::path konfig;     ///< the login files of the services
    std::string besitzer;             ///< the account the login files must belong to
    bool neuLaden = false;            ///< "Hardzoom": delete the cache files and download again
    bool protokoll = false;           ///< append the requests to "_MAP-Anfrage.prn"
    std::string plotbox;              ///< the plot box named in the status line
    std::chrono::milliseconds zeitlimit{std::chrono::seconds(60)}; ///< per download
};

/// What a run gave.
struct Kartenbild {
    QImage bild;                         ///< the composed picture; null when no level succeeded
    std::array<EbenenAnfrage, 3> ebenen; ///< the requests as they went out, with their results
    std::string fehlertext;              ///< the blocks of the window's error box
    std::string capabilitiesAnfrage;     ///< the capabilities request of level 1
    std::string status;                  ///< "    Maßstab: 1:1000    Plotbox: A4 hoch"
    int downloads = 0;                   ///< requests actually sent (the others came from the cache)
    bool ok = false;                     ///< the run went through (a level may still have failed)
};

/// The map of `ref` in a picture box of breitePx × höhePx (the bitmap grows with the bitmap
/// factor). `ref` is updated as the frame computation says. Messages go through `ui`; the run
/// polls ui.AbbruchGewünscht() while it downloads and stops the downloads when asked.
Kartenbild MapLoad(MapReferenz& ref, const Dienstkatalog& katalog, const Kartenwahl& wahl,
                   double breitePx, double höhePx, const Kartenumgebung& umgebung, Oberfläche& ui);

/// The composition of the levels' pictures, background first: pure white (0xffffff) is see-through,
/// any other colour covers what lies below. Null pictures are left out.
QImage EbenenZusammensetzen(const std::array<QImage, 3>& ebenen, QSize größe);

/// The question on opening the map when the temp folder holds more than 10000 files: "Im
/// temporären Verzeichnis wurden über N Dateien vorgefunden!" / "Alle Dateien löschen?"; on Yes
/// the files of the folder are deleted. Returns the number deleted.
int TempOrdnerAufräumen(const std::filesystem::path& ordner, Oberfläche& ui);

} // namespace flurix::karte
