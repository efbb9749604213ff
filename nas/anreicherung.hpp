#pragma once
// The steps after the scan of a NAS file that complete the object database: code values become
// their texts, accuracies become metres, parcels get their readable key and their municipality,
// buildings their building key, Gemarkungen a relation to their offices, and the table
// Antragsbeschreibung the order number and the coordinate system of the file. Each step is passed
// over when its table is missing (an extract without buildings is normal).

#include <filesystem>
#include <string>
#include <string_view>

namespace flurix {
class Datenbank;
class Oberfläche;
}

namespace flurix::nas {

class NasProtokoll;

/// What the last step found, as the work window shows it.
struct Antragsbeschreibung {
    std::string antragsnummer = "ohne";
    std::string systemName;  ///< e.g. "ETRS89_UTM32"
    std::string epsg = "0000";
    std::string mkz = "0";
    std::string höhensystem; ///< "DE_DHHN92_NH", "DE_DHHN2016_NH", "GRS80_h" or ""

    /// "AntragsNr.: " + the first 30 characters, or "AntragsNr.: ohne".
    std::string AntragsText() const;
    /// "System: <name>, EPSG: <epsg> , MKZ: <mkz>".
    std::string SystemText() const;
};

/// Config texts the steps look values up in.
struct Werttabellen {
    std::string werteart; ///< ALKIS_Werteart.dat
    std::string epsg;     ///< ALKIS_EPSG.dat
};

/// Runs the seven steps on the database of `nasDatei`, each with its status text and its number
/// as the progress (of 7). Throws Fehler only when the database itself fails.
Antragsbeschreibung NasAnreichern(Datenbank& db, const std::filesystem::path& nasDatei,
                                  const Werttabellen& tabellen, Oberfläche& ui);

/// The building key parts, exposed for their own tests.
/// The house number part: first word "0000", second word right-bound in four places or four
/// blanks ("12 a" → "0012   a", "7" → "0007    ").
std::string HausnummerTeil(std::string_view nummer);
/// The running number part: "P12" → "P12", "123" → "123", "7" → " 07".
std::string LaufendeNummerTeil(std::string_view laufendeNummer);
/// The readable key: first 8 characters | 5 from the 9th | the house number, "P" + pseudo
/// number, or "(" + running number + ")P" + pseudo number.
std::string GebäudekennzeichenAlkis(std::string_view kennzeichen, std::string_view hausnummer,
                                    std::string_view laufendeNummer, std::string_view pseudonummer);
/// "120101|1|12" from "12010100100012000000"; "/" + the denominator when it is not 0.
std::string FlurstückskennzeichenAlkis(std::string_view kennzeichen);

} // namespace flurix::nas
