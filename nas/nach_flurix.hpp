#pragma once
// The rows of Alkis into the cadastre table: the last step of a NAS import, after which search,
// marks, exports, reports and the map work on NAS data as on any other.

#include "core/fehler.hpp"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace flurix {
class Datenbank;
class Kataster;
class Oberfläche;
}

namespace flurix::nas {

class NasProtokoll;

/// Above this many rows only the columns of ALB_ALKISImport.dat go over.
inline constexpr std::int64_t GroßeAlkisTabelle = 50'000;

struct NachFlurixUmgebung {
    std::filesystem::path konfigOrdner;  ///< ALB_ALKISImport.dat
    std::filesystem::path ansichtsdatei; ///< ALB_DatenbankSpalten.dat
    std::string ansicht = "alles";       ///< the view chosen in the view box
    /// When the table holds rows, a person is asked whether to extend or replace them. Without a
    /// person the question takes its unattended answer, extend, so that nothing is lost.
    bool interaktiv = false;
};

struct NachFlurixBericht {
    std::int64_t zeilen = 0;                ///< rows that went over
    bool nurVorlage = false;                ///< only the template's columns went over
    std::vector<std::string> gemarkungFlur; ///< "Gemarkung, Flur" of the rows, each pair once
};

/// Carries Alkis over into `kataster`: replacing its rows, or extending them when it has rows and
/// the person says so. Fehlschlag (after the message) when Alkis is empty or can't be read.
Ergebnis ALKISnachFlurix(Datenbank& db, Kataster& kataster, const NachFlurixUmgebung& umgebung,
                         NasProtokoll& protokoll, Oberfläche& ui, NachFlurixBericht& bericht);

/// The columns of Alkis that go over: all up to GroßeAlkisTabelle rows, else those named in the
/// template text (one name a line) that Alkis has; all when the template names none.
std::vector<std::string> ÜbernahmeSpalten(const std::vector<std::string>& alkisSpalten,
                                          std::int64_t zeilen, const std::string* vorlage);

} // namespace flurix::nas
