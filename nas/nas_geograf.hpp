#pragma once
// The drawing of a NAS data set as a GEOgraf batch file (PositionNachGG): boundary, control and
// building points, parcel boundaries with the boundaries of Flur, Gemarkung, Gemeinde and Kreis,
// buildings, land-use, soil-assessment and BOV boundaries, parcel numbers, house numbers and the
// label positions the data carries, read from the NAS object database. The README ("The drawing
// of a NAS data set") has the line forms and the table of object class → record → Ebene.Art; the
// DXF export of NAS data reads the same file back.

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace flurix {
class Datenbank;
class Oberfläche;
} // namespace flurix

namespace flurix::nas {

class NasProtokoll;

/// What the drawing holds besides points and lines (DefAusgabeGGout).
struct NasZeichnungsauftrag {
    bool texte = true;       ///< "te": parcel numbers, house numbers, labels
    bool schraffur = false;  ///< "sch": buildings hatched (SCH Typ 1)
    bool umringe = false;    ///< parcel and building outlines (SCH Typ 0), for the DXF's polylines
    bool meridianKZ = false; ///< "mit voller Meridiankennziffer": the zone before each easting
    /// ALKIS_Werteart.dat and ALKIS_Nutzungsart.dat, for the texts of soil and land use.
    std::filesystem::path konfigOrdner;
    /// Date and time of the head; empty: now.
    std::string datum, uhrzeit;
};

/// DefAusgabeGGout: the parts named in `auswahl` ("te;sch": texts and hatching), separated by
/// ";"; the others off.
void DefAusgabeGGout(NasZeichnungsauftrag& auftrag, std::string_view auswahl);

/// What PositionNachGG wrote and passed over.
struct NasZeichnungsbericht {
    std::size_t punkte = 0, linien = 0, texte = 0, flächen = 0;
    /// Objects left out: without geometry, or in another coordinate system than the parcels.
    std::size_t übersprungen = 0;
};

/// Writes the drawing of the object database `db` to `ziel` (under a temporary name, renamed when
/// whole). Objects in another coordinate system than the parcels' are left out with a protocol
/// line; objects without geometry are counted; a ring that does not close is closed. Status and
/// progress through `ui`, "Escape" cancels. Throws Fehler (the target is then unchanged).
NasZeichnungsbericht PositionNachGG(Datenbank& db, const std::filesystem::path& ziel,
                                    const NasZeichnungsauftrag& auftrag, NasProtokoll& protokoll,
                                    Oberfläche& ui);

} // namespace flurix::nas
