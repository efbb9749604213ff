#pragma once
// The column catalogue of the cadastre table: the 66 columns a quick import starts from, their
// headers and widths, the views of ALB_DatenbankSpalten.dat, and the layouts of the table.

#include <string>
#include <string_view>
#include <vector>

namespace flurix {

class Kataster;
class Oberfläche;
struct KatasterSpalte;

/// One column of the catalogue: key, header, width in twips.
struct KatalogSpalte {
    std::string_view schlüssel;
    std::string_view überschrift;
    int breite;
};

/// The catalogue in its order.
const std::vector<KatalogSpalte>& Katalog();

/// A column as the catalogue makes it: header and width of the catalogue, `checkdruck` a centred
/// check box column, `NrStp` hidden, `Flurstück` shaded. A key the catalogue doesn't have is its
/// own header, 1000 twips wide.
KatasterSpalte KatalogSpalteFür(std::string_view schlüssel);

/// Makes the catalogue's columns on an emptied table: `checkdruck` a centred check box column,
/// `NrStp` hidden, `Flurstück` shaded, every other column visible, left-aligned text.
void SpaltenAnlegen(Kataster& kataster);

/// The column order a quick import shows.
inline constexpr std::string_view SchnellimportAnsicht =
    "Flurstückskennzeichen;Gemeinde;Gemeindeschlüssel;Gemarkung;Gemarkungsschlüssel;Flur;"
    "Grundbuchblatt;BVNR;Flurstück;Nutzungsart;Klassifizierung;Fläche;Prüfzeichen;"
    "Aktualitätsnummer;Eigentümerposition;Name;Namenszusatz;Straße;Ort;Eigentümerzusatz;"
    "Lagebezeichnung;Straßenschlüsselname;Straßenschlüssel;sonstigesBOV;Rechtswert;Hochwert;"
    "checkdruck";

/// The default order of rows; every reader ends with it.
inline constexpr std::string_view StandardSortierung = "Gemarkung,Flur,Flurstück,Eigentümerposition";

/// The hint of a column header: "Spalte " + the long name for the short headers (BA, PZ, A, E, ...),
/// else the header itself.
std::string SpaltenHinweis(std::string_view überschrift);

} // namespace flurix
