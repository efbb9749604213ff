#pragma once
// An update delivery (NBA) applied to an object database made by an earlier scan: deletes and
// replacements by the object's identifier (its first 16 characters: the version's time stamp
// behind them is dropped, as references name the object, not the version), inserts through the
// element reader of the scan. All in one transaction with a journal: a failure leaves the
// database as it was.

#include <cstddef>
#include <filesystem>

namespace flurix {
class Oberfläche;
}

namespace flurix::nas {

class NasProtokoll;

struct NbaBericht {
    std::size_t eingefügt = 0, ersetzt = 0, gelöscht = 0;
    std::size_t nichtVorhanden = 0; ///< deletes and replacements of objects the database lacks
    std::size_t übergangen = 0;     ///< property updates (wfs:Update), not applied
};

/// Applies the update file `datei` to the database `datenbank` with the node file of
/// `konfigOrdner`. Each operation gets a protocol line. Throws Fehler (the database unchanged) when
/// the file is no update delivery, the database no object database, or an operation fails.
NbaBericht NbaAnwenden(const std::filesystem::path& datei, const std::filesystem::path& datenbank,
                       const std::filesystem::path& konfigOrdner, NasProtokoll& protokoll,
                       Oberfläche& ui);

} // namespace flurix::nas
