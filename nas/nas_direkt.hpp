#pragma once
// The direct import of NAS data into the cadastre table: the file is read into its object
// database (or a saved database is opened again), compiled into Alkis and carried over into the
// table. What the command line and the desktop program run for a NAS file.

#include "core/fehler.hpp"
#include "nas/nach_flurix.hpp"
#include "nas/nas_einlesen.hpp"
#include "nas/nas_optionen.hpp"
#include "nas/zusammenstellung.hpp"

#include <filesystem>
#include <optional>
#include <set>
#include <string>

namespace flurix {
class Kataster;
class Oberfläche;
}

namespace flurix::nas {

class NasProtokoll;

struct NasDirektAuftrag {
    std::filesystem::path datei;         ///< a NAS file (.xml) or a saved NAS database
    std::filesystem::path datenbank;     ///< the work database, made anew
    std::filesystem::path konfigOrdner;  ///< the ALKIS_*.dat files
    std::filesystem::path ansichtsdatei; ///< ALB_DatenbankSpalten.dat
    std::string ansicht = "alles";
    NasOptionen optionen;
    bool interaktiv = false; ///< a person answers the questions
    std::filesystem::path zeichnungsordner; ///< drawings of the area computation, when kept
    /// The parcels of the area computation (the selection of the main table); std::nullopt: all.
    std::optional<std::set<std::string, std::less<>>> auswahl;
};

struct NasDirektBericht {
    NasStand stand;
    Zusammenstellungsbericht zusammenstellung;
    NachFlurixBericht übernahme;
};

/// A new work database in `arbeitsverzeichnis`: "_tmpDAOdbFile<date and time digits>_<process
/// id>.sqlite" ("-2" ... behind it for a second one of the same second), a name the end of the
/// program clears away.
std::filesystem::path NasArbeitsdatenbank(const std::filesystem::path& arbeitsverzeichnis);

/// True for the extensions of a saved NAS database (.mdb, .sqlite, .db).
bool IstNasDatenbankDatei(const std::filesystem::path& datei);

/// The first step alone: the NAS file scanned into the work database, or a saved database copied
/// there; `stand` gets the tables and the order's description.
Ergebnis NasEinlesenOderÖffnen(const NasDirektAuftrag& auftrag, NasProtokoll& protokoll,
                               Oberfläche& ui, NasStand& stand);

/// The compilation of the read database into Alkis, with the area step when the options ask for it.
Ergebnis NasZusammenstellen(const NasDirektAuftrag& auftrag, const NasStand& stand,
                            NasProtokoll& protokoll, Oberfläche& ui, Zusammenstellungsbericht& bericht);

/// The compiled table Alkis into `kataster`, with the NA-2019 column when the areas were computed.
Ergebnis NasÜbernehmen(const NasDirektAuftrag& auftrag, NasProtokoll& protokoll, Kataster& kataster,
                       Oberfläche& ui, NachFlurixBericht& bericht);

/// Runs the import with its messages and protocol ("<file>.prn" unless the options switch it
/// off). Fails, after the message, where a stage fails; `kataster` is changed only by the last
/// stage.
Ergebnis NasDirektImport(const NasDirektAuftrag& auftrag, Kataster& kataster, Oberfläche& ui,
                         NasDirektBericht& bericht);

} // namespace flurix::nas
