#pragma once
// The operations of an update delivery (AX_NutzerbezogeneBestandsdatenaktualisierung_NBA): the
// wfs:Insert, wfsext:Replace, wfs:Delete and wfs:Update elements of its wfs:Transaction, one at a
// time, read in blocks so that memory follows the largest operation, not the file. Applying them
// to an object database is the next step; this reader only takes them apart.
//
// Identifiers of an update carry the time of their version behind the 16 characters of the
// object ("DENW44AL00003IkM20110429T070635Z"): Objektkennung() gives the object's part.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

namespace flurix::nas {

struct NbaOperation {
    enum class Art { Einfügen, Ersetzen, Löschen, Ändern };
    Art art = Art::Einfügen;
    /// The feature class: typeName of a delete or update, the element of an inserted or replacing
    /// feature ("AX_Flurstueck").
    std::string typName;
    /// The FeatureId of the object deleted, replaced or changed ("" for an insert).
    std::string kennung;
    /// The gml:id of an inserted or replacing feature.
    std::string neueKennung;
    /// The feature's text, from its start tag to its end tag (insert and replace).
    std::string objekt;
    /// safeToIgnore of a replace ("false" unless the file says "true").
    bool ignorierbar = false;
};

/// The 16 characters that name an object, without the time stamp of its version.
std::string_view Objektkennung(std::string_view kennung);

class NbaLeser {
public:
    /// Opens the file; throws Fehler when it can't be read.
    explicit NbaLeser(const std::filesystem::path& datei);

    /// The next operation; nothing at the end. An operation cut off by the end of the file is
    /// not returned (Abgeschnitten() tells).
    std::optional<NbaOperation> Nächste();

    bool Abgeschnitten() const { return m_abgeschnitten; }

private:
    bool Nachlesen();

    std::ifstream m_datei;
    std::string m_puffer;
    std::size_t m_anfang = 0;
    bool m_dateiende = false;
    bool m_abgeschnitten = false;
};

} // namespace flurix::nas
