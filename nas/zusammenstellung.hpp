#pragma once
// The compilation of a NAS object database into the table Alkis: the reorganisation (the joins),
// the column mapping of ALKIS_Zuordnung.dat and "Daten ordnen" (the per-row forms). What the
// compilation could not join is counted and shown as hints; the rows stay.

#include "core/fehler.hpp"
#include "nas/flaechenverschneidung.hpp"
#include "nas/nas_optionen.hpp"
#include "nas/reorganisation.hpp"
#include "nas/zuordnung.hpp"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>

namespace flurix {
class Oberfläche;
}

namespace flurix::nas {

class NasProtokoll;

struct Zusammenstellungsauftrag {
    std::filesystem::path datenbank;    ///< the object database of the NAS file
    std::filesystem::path nasDatei;     ///< the NAS file, for the protocol
    std::filesystem::path konfigOrdner; ///< ALKIS_Zuordnung.dat, ALKIS_Amtsgerichte.dat
    NasOptionen optionen;
    bool großeDatei = false; ///< drop the parcels' geometry columns after the mapping
    /// Where the drawings of the area computation go when the options keep them.
    std::filesystem::path zeichnungsordner;
    /// The parcels the area computation is asked for (the selection of the main table);
    /// std::nullopt: all.
    std::optional<std::set<std::string, std::less<>>> auswahl;
};

struct Zusammenstellungsbericht {
    Flächenbericht flächen;
    Reorganisationsbericht reorganisation;
    Zuordnungsbericht zuordnung;
    std::int64_t zeilen = 0; ///< rows of Alkis at the end
};

/// Message when the script is missing (caption "ALKISZusammenstellung").
inline constexpr char MeldungZuordnungFehlt[] =
    "ERR: Knotendatei \"ALKIS_Zuordnung.dat\" nicht vorhanden!";

/// Runs the three stages on the database. Fehlschlag (after its message through `ui`) when the
/// script is missing, the table comes out empty ("Keine Daten vorhanden!   ") or the database
/// fails; Ok with the report otherwise.
Ergebnis ALKISZusammenstellung(const Zusammenstellungsauftrag& auftrag, NasProtokoll& protokoll,
                               Oberfläche& ui, Zusammenstellungsbericht& bericht);

} // namespace flurix::nas
