#pragma once
// After the last line of a complete WLDGE import: the staging tables are joined into rows of the
// cadastre table, one row for each pair of parcel entry and owner of its folio.

#include <filesystem>
#include <string_view>

namespace flurix {
class Datenbank;
class Kataster;
class Oberfläche;
} // namespace flurix

namespace flurix::import {

struct WldgeKomplettBericht;

/// Fills `kataster` anew from the staging database: the Gemarkung/Flur pairs into tblGemFlur and
/// the report, the join of tblFlurstück and tblBestand (a field both tables have keeps its name on
/// the parcel side and gets "_aus_Bestandsdaten" on the owner side), the rows with a check box
/// column `checkdruck`, widths, layout, the default sort and the view `ansicht`. Status texts go
/// through `ui`. Throws Fehler when the database can't be read.
void WldgeZusammenführen(Datenbank& db, Kataster& kataster,
                         const std::filesystem::path& ansichtsdatei, std::string_view ansicht,
                         Oberfläche& ui, WldgeKomplettBericht& bericht);

} // namespace flurix::import
