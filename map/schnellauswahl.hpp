#pragma once
// The two short lists beside the catalogue: the quick selections of the user
// (ALKIS_WMSDienstErweitert.dat, one line "Dienst;Dienst;Dienst:Name" each: the services of the
// levels and behind ":" the name shown) and the fixed templates (ALKIS_WebMapDienst.dat, one
// combination a line). Both are text files of the config folder with CR LF line ends.

#include "core/fehler.hpp"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {
class Oberfläche;
}

namespace flurix::karte {

/// The entry both lists show when their file is missing; it can't be deleted.
inline constexpr std::string_view OhneEintrag = "ohne";

/// One quick selection.
struct Schnellauswahl {
    std::string name;                 ///< behind the last ":"
    std::vector<std::string> dienste; ///< the service names ahead of it, split at ";"

    bool operator==(const Schnellauswahl&) const = default;
};

/// One line of the quick selections read; a line without ":" is all name.
Schnellauswahl SchnellauswahlZeile(std::string_view zeile);
/// The line of an entry: the services joined with ";", ":" and the name.
std::string SchnellauswahlText(const Schnellauswahl& auswahl);

/// The quick selections of the file, in file order; a missing file gives the one entry "ohne"
/// without services. Empty lines are passed over.
std::vector<Schnellauswahl> SchnellauswahlenLesen(const std::filesystem::path& datei);

/// Adds an entry with `dienste` under a name asked for with "Name Schnellauswahl WMS-Dienst:";
/// reports `Schnellauswahl WMS-Dienst mit "<Name>" erweitert!`. An empty name cancels.
Ergebnis SchnellauswahlHinzufügen(const std::filesystem::path& datei,
                                  const std::vector<std::string>& dienste, Oberfläche& ui);
/// Replaces the services of the entry `name`; reports `Schnellauswahl WMS-Dienst "<Name>"
/// aktualisiert!`. An unknown name is a failure with a message.
Ergebnis SchnellauswahlAktualisieren(const std::filesystem::path& datei, std::string_view name,
                                     const std::vector<std::string>& dienste, Oberfläche& ui);
/// Asks `Schnellauswahl WMS-Dienst: "<Name>" löschen?`, copies the file to
/// "<file>_<time stamp>.dat", removes the entry and reports `Schnellauswahl WMS-Dienst: "<Name>"
/// gelöscht!`. "ohne" is never deleted (Abgebrochen, nothing asked).
Ergebnis SchnellauswahlLöschen(const std::filesystem::path& datei, std::string_view name,
                               Oberfläche& ui);

/// The templates of ALKIS_WebMapDienst.dat, one a line; a missing file gives {"ohne"}.
std::vector<std::string> VorlagenLesen(const std::filesystem::path& datei);

} // namespace flurix::karte
