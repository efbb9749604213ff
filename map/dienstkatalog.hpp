#pragma once
// The web-service catalogue: one row per WMS service, kept as our table file "WebService.fil" and
// as the semicolon text "<name>.dat" beside it. Maps, templates, the layer control and the tile
// batch find a service here by its name (column "Web-Service").
//
// The text form is for people and other programs: a cell holding ";" or a line break does not
// survive it (the table file keeps every byte).
//
// Check columns hold "true" or "false". Older files hold "1"/"0" or "wahr"/"falsch": they are read
// as well and written back as "true"/"false".

#include "core/fehler.hpp"
#include "core/tabellendatei.hpp"

#include <array>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {
class Oberfläche;
}

namespace flurix::karte {

/// The columns of the catalogue, in the grid's order. Every lookup names a column by one of these.
inline constexpr std::array<std::string_view, 25> KatalogSpalten = {
    "id",
    "Web-Service",
    "URL",
    "Anfrage",
    "Layer",
    "LayerAuswahl",
    "GetCapabilities",
    "MapQuelle",
    "Transparenz",
    "Format",
    "URL-Legende",
    "Style",
    "vStyle",
    "Zugang",
    "ZugangKey",
    "Maßstab",
    "vTransparenz",
    "vHelligkeit",
    "vKontrast",
    "vInvers",
    "vSW",
    "vTxt",
    "vGrau",
    "Ebene",
    "Position",
};

/// The capabilities query of a new service.
inline constexpr std::string_view StandardCapabilities =
    "?REQUEST=GetCapabilities&SERVICE=WMS&version=1.1.1";

/// True for the columns that hold a check: Transparenz, vStyle, Zugang, vInvers, vSW, vTxt, vGrau.
bool IstPrüfspalte(std::string_view spalte);
/// A check cell as bool: "true", "1" and "wahr" (any case) are true, anything else false.
bool PrüfwertLesen(std::string_view zelle);
/// The text a check cell is written with: "true" or "false".
std::string_view PrüfwertText(bool wert);

/// A move of one row through the grid's popup or the toolbar.
enum class Verschiebung {
    Erste,  ///< "first": to id 1
    Vor,    ///< "vor": one up
    Zurück, ///< "zurück": one down
    Letzte, ///< "last": to the end
};

/// The catalogue in memory: rows of 25 cells in the order of KatalogSpalten.
class Dienstkatalog {
public:
    using Zeile = std::array<std::string, KatalogSpalten.size()>;

    Dienstkatalog();

    std::size_t Zeilenzahl() const { return m_zeilen.size(); }
    const std::vector<Zeile>& Zeilen() const { return m_zeilen; }
    /// Column part of the table file (widths, visibility); ZugangKey, Ebene have width 0 and
    /// Position is hidden unless a loaded file said otherwise.
    const std::vector<TabellenSpalte>& Spalten() const { return m_spalten; }

    /// Index of the column of that name; std::nullopt for a name the catalogue has not.
    static std::optional<std::size_t> SpaltenIndex(std::string_view spalte);

    /// The first row whose "Web-Service" is `dienst` (exact), std::nullopt when there is none.
    std::optional<std::size_t> ZeileFinden(std::string_view dienst) const;
    /// A cell by row and column name. Throws Fehler for an unknown column or a row out of range.
    const std::string& Zelle(std::size_t zeile, std::string_view spalte) const;
    void ZelleSetzen(std::size_t zeile, std::string_view spalte, std::string wert);
    /// A check cell as bool (PrüfwertLesen); the setter writes "true"/"false".
    bool Prüfzelle(std::size_t zeile, std::string_view spalte) const;
    void PrüfzelleSetzen(std::size_t zeile, std::string_view spalte, bool wert);

    /// Appends a row of cells in column order: missing cells are empty, extra ones dropped, check
    /// cells made "true"/"false". Does not renumber (Nummerieren() does).
    void ZeileAnfügen(const std::vector<std::string>& zellen);
    /// Adds a new service with the defaults: Transparenz on, Format "png", MapQuelle "©GeoBasis",
    /// vTransparenz, vHelligkeit, vKontrast "0", GetCapabilities StandardCapabilities, the other
    /// checks off. Returns its row index; id continues the numbering.
    std::size_t NeuerDienst(std::string_view name = {});
    /// Removes every row.
    void Leeren() { m_zeilen.clear(); }
    /// Writes id as 1, 2, 3 ... in row order.
    void Nummerieren();

    /// Moves row `zeile` to the place of id `zielId` (1-based, clamped to the rows); the rows in
    /// between shift by one and all are renumbered. A move to the row's own id changes nothing.
    /// Throws Fehler for a row out of range.
    void VerschiebenNach(std::size_t zeile, std::size_t zielId);
    /// First, one up, one down, last. Returns the row's new index.
    std::size_t Verschieben(std::size_t zeile, Verschiebung wohin);

    /// Takes the column part of a loaded table file (widths, visibility) for the known columns.
    void SpaltenÜbernehmen(const std::vector<TabellenSpalte>& spalten);

private:
    void Prüfen(std::size_t zeile) const;

    std::vector<TabellenSpalte> m_spalten;
    std::vector<Zeile> m_zeilen;
};

// --- Files --------------------------------------------------------------------------------------

/// Reads a catalogue: ".dat" as the semicolon text, anything else as our table file. Columns of
/// a table file are matched by key; columns it lacks stay empty. id is renumbered. Throws Fehler
/// naming the file when it can't be read.
Dienstkatalog KatalogLesen(const std::filesystem::path& datei);
/// The semicolon text to rows: lines that hold "Web-Service" are the header and skipped, every
/// other non-empty line is split at ";" into the cells in column order. id is renumbered.
void DatTextAnfügen(Dienstkatalog& katalog, std::string_view text);
/// The catalogue as semicolon text: the header of column names, then one line per row, each cell
/// followed by ";", lines ended by CR LF.
std::string DatText(const Dienstkatalog& katalog);

/// Writes the catalogue as our table file `fil` and its text form beside it (same name with
/// ".dat"), each under a temporary name and renamed when complete. The text is Windows-1252 like
/// the other configuration files, or UTF-8 when a cell holds a character Windows-1252 lacks.
/// Throws Fehler naming the file when writing fails.
void KatalogSpeichern(const Dienstkatalog& katalog, const std::filesystem::path& fil);
/// Only the table file (the text form is left as it is).
void KatalogFilSpeichern(const Dienstkatalog& katalog, const std::filesystem::path& fil);
/// Only the text form.
void KatalogDatSpeichern(const Dienstkatalog& katalog, const std::filesystem::path& dat);

/// The catalogue file of an installation: "WebService.fil" in `konfig` when `einstellung` is
/// empty; when it holds the word "user", "user/" + its last path element below `konfig` (the
/// per-user catalogues); else the setting itself.
std::filesystem::path KatalogPfad(const std::filesystem::path& konfig,
                                  std::string_view einstellung);

// --- Operations of the catalogue window (messages and questions through the UI port) ------------

/// The stop when the catalogue is missing: `Web-Service Datei: "<name>" nicht vorhanden!`,
/// "Bitte Web-Service installieren!", "Abbruch!" (title "MAP-Viewer"). Returns the failure.
Ergebnis KatalogFehlt(const std::filesystem::path& datei, Oberfläche& ui);

/// An entry into the cell `Format` of row `zeile`: "png" and "jpeg" are taken; anything else is
/// refused with "Bitte geben Sie das Format <png> oder <jpeg> vor!" and the cell keeps its value.
Ergebnis FormatSetzen(Dienstkatalog& katalog, std::size_t zeile, std::string_view format,
                      Oberfläche& ui);

/// Replaces the catalogue with a ".dat" or ".fil" file after `Datei "<name>" neu einlesen?` and
/// "Achtung: Alle Voreinstellungen werden überschrieben!". A missing file says
/// `Web-Service "<name>" nicht gefunden! Abbruch!`. On No or failure the catalogue is unchanged.
Ergebnis KatalogÖffnen(Dienstkatalog& katalog, const std::filesystem::path& datei, Oberfläche& ui);
/// Appends the rows of a ".dat" after "Soll die Datei <name> an die vorhandenen WMS-Daten anhängt
/// werden?" and reports "Es wurden N Datenzeilen angehängt!".
Ergebnis KatalogAnfügen(Dienstkatalog& katalog, const std::filesystem::path& datei, Oberfläche& ui);
/// Saves as `<name>.fil` and `<name>.dat` (whatever extension `datei` has) and reports
/// "Web-Service Daten gespeichert unter: " with both names.
Ergebnis KatalogSpeichernUnter(const Dienstkatalog& katalog, const std::filesystem::path& datei,
                               Oberfläche& ui);

} // namespace flurix::karte
