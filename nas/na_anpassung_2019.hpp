#pragma once
// The land-use keys of the table in the names of the land-use catalogue: the column NA-2019 gets,
// for each key of NA-Schlüssel, the group's name, its area in brackets and the area of the entry
// ("Wald (Vegetation)=1234.50"). The keys and names are the lines "= <key> = <name> = <area>" of
// ALKIS_Nutzungsart.dat.

#include <string_view>

namespace flurix {
class Kataster;
class Oberfläche;
} // namespace flurix

namespace flurix::nas {

/// Fills NA-2019 (added when missing) for every row whose NA-Schlüssel is not blank; the area of
/// entry i is the part behind "=" of entry i of Nutzungsart, in the form "0.00". A key the file
/// does not hold gives no entry. Returns the rows changed.
std::size_t NaAnpassung2019(Kataster& kataster, std::string_view nutzungsart, Oberfläche& ui);

} // namespace flurix::nas
