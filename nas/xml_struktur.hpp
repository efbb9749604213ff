#pragma once
// The generic XML reader: a small XML document (the answer of a gazetteer or feature service)
// loaded whole and turned into one table "XML" of a database beside the file. One row per record
// of the document, one text column per element name, so that the map viewer can search the
// answer with SQL whatever its schema.
//
// Table XML. The columns XMLId (running row number of this load), XMLlfdKnotenNr (running number
// of the record node), XMLDaten (the names of the value elements of the row, joined with ";") and
// typename (the type name of the request, see XmlSatzebene), then one column per element name of
// the document, named exactly as the element with its prefix ("gml:name", "dog:Ort"). SQLite
// compares column names without regard to ASCII case, so "Name" and "name" share one column, the
// one met first. An element occurring several times in a row adds its value behind ";". All
// cells are text; a cell the row has no value for is NULL.
//
// Records. The document element has depth 1; every element at the record level (its depth)
// opens a record. A value element is an element whose first child is text; the first value
// element met after a new record opened starts a new row, the others go to the row of their
// record. Values before the first record form a row with XMLlfdKnotenNr 0; values behind a
// record at a shallower depth go to that record's row.

#include "core/fehler.hpp"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace flurix {
class Oberfläche;
}

namespace flurix::nas {

/// What a load did.
struct XmlStrukturErgebnis {
    /// Ok when the table was written (also after a parse error that was reported and passed
    /// over); Fehlschlag with the message otherwise. Every failure except a missing file has
    /// already been shown through the UI port.
    Ergebnis ergebnis;
    std::filesystem::path datenbank; ///< the database written; empty when none was
    int satzebene = 0;               ///< the record level used
    std::string typname;             ///< the type name of the request, "" when the text has none
    std::int64_t zeilen = 0;         ///< rows written by this load
    std::size_t elementSpalten = 0;  ///< distinct element names of the document (columns)

    explicit operator bool() const { return static_cast<bool>(ergebnis); }
};

/// Loads the XML file `datei` into the table XML of the database XmlDatenbankPfad(datei).
///
/// `satzebene` is the depth of the record elements; 0 (or less) lets the reader find it in the
/// text (XmlSatzebene). With `anhängen` the rows are added to an existing database (missing
/// columns are added); otherwise an existing database is deleted first. With
/// `fortschrittZeigen` the three steps are shown in status panel 1 ("XML(DOM)-Datei wird
/// geladen...", "XML-DAO-Datenbank anlegen...", "XML-Daten der DAO-Datenbank zuordnen...") and
/// the rows as progress. All rows are written in one transaction.
///
/// Outcomes:
/// - a missing file ends the call with nothing shown (the caller knows what it asked for);
/// - a text with fewer than 5 characters after trimming shows "OpenXMLDocumentAndFillStructure:
///   leeres Abfrageergebnis! Bitte kontaktieren Sie den Programmautor!   " (title "Map-Viewer")
///   and writes no database;
/// - a document type declaration (DOCTYPE) is refused before anything is written: entity
///   declarations are never expanded;
/// - a parse error shows "Fehler beim Laden des Dokumentes. Der Fehler wird ignoriert!   " with
///   "Grund: ", "Zeile: " and "Zeichen: " (title "Fehler"), and the part of the document read up
///   to the error is loaded;
/// - more element names than a table can hold as columns, and database errors, are shown and
///   end the call; nothing of this load stays in the database.
/// Never throws.
XmlStrukturErgebnis XmlStrukturLaden(const std::filesystem::path& datei, int satzebene,
                                     bool anhängen, bool fortschrittZeigen, Oberfläche& ui);

/// The database of a file: the same path with the extension ".sqlite" (the Windows program wrote
/// an Access file ".mdb" there). A path that already ends in ".sqlite" gets a second one, so
/// that the input is never overwritten.
std::filesystem::path XmlDatenbankPfad(const std::filesystem::path& datei);

/// Record level and type name found in the text. The level is 1 by default; 2 when the text
/// holds "TYPENAME=dog" or "TYPENAME=app" (the request of a gazetteer service); 5 when it holds
/// "AX_Bestandsdatenauszug" (a NAS extract: root, enthaelt, FeatureCollection, member, feature).
/// The type name is what stands behind ";TYPENAME=dog:" or ";TYPENAME=app:" up to the next "&"
/// (or the end of the text). Exact, case-sensitive text tests.
struct XmlSatz {
    int ebene = 1;
    std::string typname;
};
XmlSatz XmlSatzebene(std::string_view text);

/// The text of the file as the reader parses it: UTF-8 with CR LF line ends.
/// - A UTF-8 byte order mark is dropped. Well-formed UTF-8 (the normal case of XML) keeps its
///   letters as they are.
/// - Any other text is 8-bit. When it holds none of the Windows-1252 umlauts (Ä Ö Ü ä ö ü ß) but
///   bytes where the DOS code pages put them (142 Ä, 154 Ü, 153 Ö, 132 ä, 129 ü, 148 ö, 225 ß),
///   it comes from a DOS program, and these bytes are made the umlauts; then the text is read
///   as Windows-1252. A text that has 1252 umlauts keeps those bytes as what 1252 says („ ” á ...).
/// - The old 7-bit forms "{ | } ~" for "ä ö ü ß" are not replaced: in XML these characters
///   stand for themselves (addresses, patterns), and a 7-bit text can't be told from ASCII.
/// - Line ends: a run of CR becomes one CR, and an LF without CR before it becomes CR LF.
std::string XmlTextVorbereiten(std::string_view bytes);

} // namespace flurix::nas
