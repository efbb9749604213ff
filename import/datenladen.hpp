#pragma once
// ALBDatenLaden: the one entry for all data that comes into the main table. It finds out what kind
// a file is, asks what must be asked, and hands it to the reader of that kind.

#include "core/fehler.hpp"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace flurix {
class Oberfläche;
}

namespace flurix::import {

/// The kinds of input, numbered as the filters of the open dialog.
enum class Eingabeart {
    Wldge = 1,        ///< WLDGE register extract
    Tabelle = 2,      ///< saved table (.fil)
    WebXml = 3,       ///< Web-XML extract; several files allowed
    NasXml = 4,       ///< NAS XML file, for the NAS work window
    NasDatenbank = 5, ///< NAS database, for the NAS work window
    FkzListe = 6,     ///< list of parcel keys, for the gazetteer's parcel search
    Xml = 7,          ///< a ".xml" named by type only: Web-XML or NAS, decided by its content
};

/// The filter string of the open dialog, in the order of the numbers above.
inline constexpr std::string_view DateiFilter =
    "WLDGE-Format (*.wldge)|*.wldge|Flurix (*.fil)|*.fil|Web-XML-Datei (*.xml)|*.xml|"
    "NAS (*.xml)|*.xml|NAS (*.mdb)|*.mdb|FKZ (*.fkz)|*.fkz|";

/// The kind a file's type names: "wldge", "fil", "xml", "mdb", "fkz" (any case); false for others.
bool EingabeartAusEndung(const std::filesystem::path& datei, Eingabeart& art);

/// The import options of the options dialog for one load.
struct ImportOptionen {
    bool albKomplett = false;                ///< the complete WLDGE reader, else the quick one
    bool nutzungTatsächlich = true;          ///< actual land use in full
    bool nameUmdrehen = false;               ///< "Name, Vorname" becomes "Vorname Name"
    bool alleEigentümerInEinerZeile = false; ///< one row per parcel instead of per owner
    bool suchbegriffGemarkung = false;       ///< fill the Gemarkung/Flur boxes of the search
    std::string importFormat;                ///< "32", "35" or "XML": what the dialog was shown for
};

/// The readers and windows the loads are handed to. An empty slot is a reader this version does not
/// have yet: the user gets a clear message instead.
struct Leser {
    std::function<Ergebnis(const std::filesystem::path&, const ImportOptionen&)> wldgeKomplett;
    std::function<Ergebnis(const std::filesystem::path&, const ImportOptionen&)> wldgeSchnell;
    std::function<Ergebnis(const std::vector<std::filesystem::path>&, const ImportOptionen&)> webXml;
    std::function<Ergebnis(const std::filesystem::path&)> tabelle;
    std::function<Ergebnis(const std::filesystem::path&)> nasFenster;
    std::function<Ergebnis(const std::filesystem::path&)> fkzListe;
};

/// What the load needs from its surroundings.
struct Ladeumgebung {
    Leser leser;
    /// The options dialog for a format ("32", "35", "XML"); false when the user cancels.
    /// Empty: the options stay as given in `optionen`.
    std::function<bool(ImportOptionen&)> optionenDialog;
    ImportOptionen optionen;
    /// Rows in the main table now, and the clearing of it (column widths saved first).
    std::function<std::size_t()> tabellenZeilen;
    std::function<void()> tabelleLeeren;
};

/// One load: the chosen files and the filter they were chosen with. `vonKommandozeile` is a file
/// named on the command line; the user is asked first whether to read it.
struct Ladeauftrag {
    std::vector<std::filesystem::path> dateien;
    Eingabeart art = Eingabeart::Wldge;
    bool vonKommandozeile = false;
};

/// Runs one load to its end, with a message through `ui` for each failure. Files are changed only
/// where the line-end check converts a UNIX file in place. Never throws: a run-time error becomes
/// the error exit's message ("..., Bitte überprüfen Sie Ihre Eingaben!").
Ergebnis ALBDatenLaden(const Ladeauftrag& auftrag, Ladeumgebung& umgebung, Oberfläche& ui);

/// What a look at a file tells without changing it: its kind, the WLDGE format, and who takes it.
struct Erkennung {
    Eingabeart art = Eingabeart::Wldge;
    std::string format;  ///< WLDGE format mark ("32", "35", other, "" when no header)
    std::string beschreibung; ///< e.g. "WLDGE-Datei, Abgabeformat \"32\""
    std::string leser;   ///< the reader that takes it, e.g. "WLDGE-Leser (komplett oder schnell)"
    bool unterstützt = false;
};
/// Looks at a file without changing it. Throws Fehler when it can't be read.
Erkennung DateiErkennen(const std::filesystem::path& datei);

/// The WLDGE format mark from the first ten lines: a line with "1" in column 1 and " E   01 " in
/// columns 26 to 33 holds it in columns 34 and 35. "" when no header is among them.
std::string WldgeFormatLesen(std::string_view kopf);

/// True when the first 500 lines show a NAS file ("AX_Bestandsdatenauszug" or "AX_Person").
bool IstNasKopf(std::string_view kopf);


} // namespace flurix::import
