#pragma once
// The Web-XML extract reader: the XML answers of a register web service, one parcel an extract,
// one or several extracts a file, one or several files a run. Each owner gives one row.
//
// The reader reads one tag a line, the layout the service writes, and not through an XML parser.
// A line is taken apart by a small tag reader of our own (name, attributes by name, text, the five
// entities and character references). That keeps what the users rely on: a truncated file still
// gives its rows up to the cut, a tag broken over two lines is not seen and the rest of the file is
// read, and bytes of another code page are taken as Windows-1252. A DOM parser (pugixml) refuses
// such a file whole, and gives the same rows for well-formed files, so it would add a dependency
// and lose rows. Entity declarations are never expanded: only the predefined entities are.
//
// Sections are read in a fixed order within an extract, whatever their order in the file: all
// parcel sections first, then the Bestände, so that every owner's row carries the whole parcel.

#include "core/fehler.hpp"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {
class Kataster;
class Oberfläche;
} // namespace flurix

namespace flurix::import {

struct ImportOptionen;

/// The columns of a Web-XML row, in the order XMLDatenSchreiben writes them.
const std::vector<std::string_view>& XMLSpalten();

/// What the reader tells besides the table.
struct WebXmlBericht {
    long long zeilen = 0;      ///< rows added in this run
    long long flurstücke = 0;  ///< rows of the table with Eigentümerposition "0001"
    std::vector<std::string> amtsanschrift; ///< "Straße, Ort" of each extract's office, for reports
};

/// Reads the extracts of `dateien` into `kataster`. With several files it asks first "Es werden " +
/// count + " ausgewählte XML-Dateien eingelesen! Weiter?   " (title "Flurix - XML-Import"). When the
/// table has rows it asks "Sollen die Daten an die vorhandene Datenbank angefügt werden?   " with
/// `anfügen`, else "Soll die vorhandene Datenbank überschrieben werden?   " and empties the table on
/// Yes; No to any question gives Abbruch with the table unchanged. An empty table gets the columns
/// of XMLSpalten() and `checkdruck`; a table with other columns gets the missing ones. At the end
/// the rows with Eigentümerposition "0001" are counted as parcels and selected, status panel 4
/// shows "ALB-Zeilen: " + rows + ", Flurstücke: " + parcels + "   ", and the table is sorted by
/// the default order. A file that can't be read gives Fehlschlag with its message (the files before
/// it stay in the table); a broken line or a missing section only leaves cells empty.
Ergebnis WebXmlLesen(const std::vector<std::filesystem::path>& dateien,
                     const ImportOptionen& optionen, bool anfügen, Kataster& kataster,
                     Oberfläche& ui, WebXmlBericht* bericht = nullptr);

/// The rows of one extract text (UTF-8 or Windows-1252) appended to `kataster`, whose columns must
/// hold XMLSpalten(); returns the number of rows added. Never throws for any input text.
long long WebXmlTextLesen(std::string_view text, const ImportOptionen& optionen,
                          Kataster& kataster);

} // namespace flurix::import
