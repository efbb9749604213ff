#pragma once
// Lookups on the text of a configuration file held in memory (ALKIS_EPSG.dat, ALKIS_Werteart.dat,
// ALKIS_Nutzungsart.dat, ALKIS_Amtsgerichte.dat, ...), the key form of NAS identifiers and the
// repair of doubly encoded letters in a feature's text.
//
// The configuration text is UTF-8 (the files are converted when read, see core/cp1252.hpp). Lines
// may end with CR LF or with a lone LF. Every comparison is exact, with regard to case, and plain
// text: a configuration file can be replaced without a change of code. None of these functions
// throws; a lookup that finds nothing gives "".

#include "core/cp1252.hpp"
#include <filesystem>
#include <string>
#include <string_view>

namespace flurix::nas {

using flurix::KonfigText;

/// Value of the first line whose key column is contained in `schlüssel`. Lines that hold "*"
/// anywhere are passed over. For each other line, a = TokenNr(line, schlüsselSpalte, trenner):
/// the first line where a is not empty and `schlüssel` contains a (not the other way round) gives
/// TokenNr(line, wertSpalte, trenner). So the key "urn:adv:crs:ETRS89_UTM32" finds the line
/// "ETRS89_UTM32=25832_32". "" when no line matches.
std::string KonfigWert(int schlüsselSpalte, std::string_view schlüssel, std::string_view trenner,
                       int wertSpalte, std::string_view text);

/// What stands behind `schlüssel` on each line that holds it, joined with ";": with the lines
/// "AX_Person = anrede = 1000 = Frau" and "AX_Person = anrede = 2000 = Herr" the key
/// "AX_Person = anrede" gives "1000 = Frau;2000 = Herr". The key is found anywhere in a line, but
/// it must be followed (after blanks) by "=", which is cut off with the blanks around it: so
/// "AX_Person = anrede" does not take the lines of "AX_Person = anredeX". Tabs are removed and
/// blanks trimmed; empty and comment ("*") lines are passed over. The lines of one key may stand
/// anywhere in the file. "" when no line holds the key.
std::string KonfigWerteListe(std::string_view schlüssel, std::string_view text);

/// Columns of the line that begins with the key. The key is written with ";" between its parts,
/// for instance "AX_Bodenschaetzung;bodenart;1200": all blanks are removed from it and every ";"
/// becomes blank + trenner + blank, which gives "AX_Bodenschaetzung = bodenart = 1200". The first
/// line (empty and comment lines passed over) that holds this text, followed by the end of the
/// line, a blank or the separator (so the code 1200 does not find the line of 12000), is the hit;
/// the line is taken from there to its end. `spalten` names the wanted columns as ";"-separated
/// numbers ("4" or "1;2"); the result is TokenNr(line, column, trenner) of each, joined with ";".
/// The last part of the key may hold alternatives, "a;b;c|d": that asks for the lines "a;b;c" and
/// "a;b;d"; the result is that of the first line and, for each further line that exists, " / " and
/// its columns (so a missing first line gives " / " + the second). "" when no line is found.
std::string KonfigZeile(std::string_view schlüssel, std::string_view spalten,
                        std::string_view trenner, std::string_view text);

/// Value columns of the first line whose search columns hold the search values. `suchwerte`,
/// `suchspalten` and `wertspalten` are ";"-separated lists; search value i belongs to search column
/// i. A line matches when TokenNr(line, column i, trenner) equals search value i (trimmed) for
/// every search column. Empty and comment ("*") lines are passed over. The result is the value
/// columns of the first matching line joined with ";", "" when no line matches.
std::string KonfigAuswahl(std::string_view suchwerte, std::string_view suchspalten,
                          std::string_view wertspalten, std::string_view trenner,
                          std::string_view text);

/// Key form of a NAS identifier. The object database compares keys without regard to case, while
/// NAS identifiers differ in case; so for the reference attributes (istGebucht, zeigtAuf, weistAuf,
/// gml:id, istBestandteilVon, hat, dientZurDarstellungVon, benennt, zu, an, istTeilVon and
/// zeigtAufExternes/AA_Fachdatenverbindung/fachdatenobjekt) an apostrophe is put behind every
/// lower-case letter a..z: "DEBBAL4200001hHH" becomes "DEBBAL4200001h'HH". Any other attribute,
/// and a value without lower-case letters, keeps the value as it is. Other bytes are never touched.
std::string IdKennzeichnen(std::string_view wert, std::string_view attribut);

/// Repairs letters of a feature's text that were encoded twice (UTF-8 read as Windows-1252 and
/// encoded again): "Ã" followed by "¤ „ ¶ – ¼ œ Ÿ" becomes "ä Ä ö Ö ü Ü ß"; "Ã" followed by the
/// Windows-1252 form of the second byte of È É Ì Ò Ó Ù Ú á è é ì í ò ó ù ú ý becomes that letter;
/// any other "Ã" becomes "à"; every "Â" is removed. A text without "Ã" and "Â" (the common case)
/// is returned unchanged after one scan.
std::string Utf8Reparatur(std::string_view text);

} // namespace flurix::nas
