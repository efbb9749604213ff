#pragma once
// The import of a NAS file into its object database: the checks of the file's head, the database
// made from the node file, the scan of every feature, the enrichment, the compaction and the list
// of tables. What was read stays in the database whatever happens later: a cancelled or broken
// scan still runs the steps after it on the rows it has.

#include "core/fehler.hpp"
#include "nas/anreicherung.hpp"
#include "nas/element_leser.hpp"
#include "nas/objektdatenbank.hpp"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace flurix {
class Oberfläche;
}

namespace flurix::nas {

class NasProtokoll;

/// The file above which the old file functions failed and the program asks before it reads.
inline constexpr std::uint64_t GroßeNasDatei = 2'147'254'272;

struct NasAuftrag {
    std::filesystem::path xmlDatei;
    std::filesystem::path datenbank;    ///< made anew
    std::filesystem::path konfigOrdner; ///< ALKIS_Knoten.dat, ALKIS_EPSG.dat, ALKIS_Werteart.dat
    int seitencacheMiB = NasSeitencacheMiB; ///< SQLite's page cache while scanning
};

/// What an import leaves for the work window and the next import.
struct NasStand {
    /// The member tag; kept for the next import when a file names none of the node file's tags.
    std::string mitgliedTag = "gml:featureMember";
    std::string standardSystem; ///< the system marked as standard in the file's head
    std::string zweitesSystem;  ///< a further system of a point, "" when none
    bool großeDatei = false;    ///< the user chose to read a file above GroßeNasDatei
    bool abgebrochen = false;   ///< the user stopped the scan
    Lesestatistik statistik;
    Antragsbeschreibung antrag;
    std::vector<std::string> tabellen; ///< the tables of the database, for the table list
};

/// Reads the NAS file into a new database. Messages go through `ui` with the program's texts;
/// the protocol gets the steps. Ok when the database holds the file's data (also after a cancel,
/// which sets `stand.abgebrochen`); Fehlschlag after an "ERR:" message or when the database can't
/// be made; Abbruch when the user declined to read a large file.
Ergebnis DAO_ALKISEinlesen(const NasAuftrag& auftrag, NasStand& stand, Oberfläche& ui,
                           NasProtokoll& protokoll);

/// The notes on coordinate systems: fed the lines of the file, they find the system marked as
/// standard, the system of the first geometry (for files without the reference system object)
/// and a second system of a point.
class KoordinatenNotizen {
public:
    void Zeile(std::string_view zeile);
    /// A feature's text: its geometry names the system, its points may name a second one.
    void Objekt(std::string_view text);

    const std::string& Standard() const { return m_standard; }
    /// The srsName of the first geometry ("ETRS89_UTM32"), sought only while no standard is known.
    const std::string& Geometrie() const { return m_geometrie; }
    const std::string& Zweites() const { return m_zweites; }

private:
    void Punkt(std::string_view zeile);

    bool m_offen = false;
    std::string m_aktuell;
    std::string m_standard;
    std::string m_geometrie;
    std::string m_zweites;
};

/// The value of the srsName columns: the EPSG pair of the system in ALKIS_EPSG.dat, or
/// "Bez: " + the system's name when the file knows no EPSG code for it.
std::string SrsWert(std::string_view system, std::string_view epsgText);


} // namespace flurix::nas
