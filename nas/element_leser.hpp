#pragma once
// The values of one NAS feature into the object database, as the node file steers it: each
// feature is wrapped into a small complete document under the head of a NAS extract, parsed once,
// and every class of the node file whose element the document holds gets its rows.
//
// Selection. A field path is a child path below the feature ("a/b[0]/c": "[0]" keeps the first
// of each parent); elements without a prefix of their own get the file's prefix. Geometry fields
// (gml:exterior, gml:interior, gml:LineStringSegment, gml:Arc) are searched by tag in the whole
// document. The text of an element is the text of its descendants, each piece trimmed, joined
// with one blank: "<posList>1 2</posList><posList>3 4</posList>" reads "1 2 3 4".

#include "nas/knoten.hpp"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {
class Datenbank;
class Oberfläche;
}

namespace flurix::nas {

/// What the reading of one file found, for the protocol.
struct Lesestatistik {
    std::uint64_t objekte = 0;          ///< features cut from the file
    std::uint64_t ladefehler = 0;       ///< features whose document did not parse
    std::uint64_t ohneKennung = 0;      ///< features without gml:id (no reference can reach them)
    std::map<std::string, std::uint64_t> doppelteKennungen; ///< per table: rows not stored
};

/// The settings the values depend on that come from the file's head.
struct Dateirahmen {
    std::string präfix;      ///< namespace prefix of the file, "" or e.g. "adv:"
    std::string mitgliedTag; ///< "gml:featureMember" or "wfs:member"
    std::string xPfad;       ///< the path prefix of the features, see XPfadPräfix
    std::string srsWert;     ///< the value of every srsName column: EPSG or "Bez: " + system
};

/// The head of every little document: XML declaration, the root of a NAS extract with the NAS
/// namespaces and the member start tag.
std::string Dokumentkopf(std::string_view präfix, std::string_view mitgliedTag);

class ElementLeser {
public:
    /// Prepares the statements of every class. `meldung` is called for a feature that does not
    /// parse, with the message text (the run goes on). Throws Fehler when a statement can't be
    /// prepared (a table of the node file missing in the database).
    ElementLeser(Datenbank& db, const KnotenDatei& knoten, Dateirahmen rahmen,
                 std::function<void(std::string_view)> meldung);
    ~ElementLeser();
    ElementLeser(const ElementLeser&) = delete;
    ElementLeser& operator=(const ElementLeser&) = delete;

    /// Reads one feature (the text between its member tags). Returns the class name of the
    /// feature's first element ("" when none), for the progress display.
    std::string_view Objekt(std::string_view text);

    const Lesestatistik& Statistik() const { return m_statistik; }

private:
    struct Klasse;
    struct Fund;

    void Zeilen(Klasse& klasse, const Fund& fund);

    Datenbank& m_db;
    std::string m_kopf;
    std::string m_fuß;
    Dateirahmen m_rahmen;
    std::function<void(std::string_view)> m_meldung;
    std::vector<std::unique_ptr<Klasse>> m_klassen;
    std::string m_dokument; ///< the buffer of the little document, parsed in place
    std::string m_klassenname;
    Lesestatistik m_statistik;
    struct Intern;
    std::unique_ptr<Intern> m_intern;
};

} // namespace flurix::nas
