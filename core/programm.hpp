#pragma once
// The life of the process: start-up of the main window, the state it keeps, and the one way out.
// The windows (GUI) and the command line both run these steps; what is drawn is theirs.

#include "core/einstellungen.hpp"
#include "core/fehler.hpp"
#include "core/kommandozeile.hpp"
#include "core/nummernformat.hpp"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace flurix {

class Oberfläche;

/// Where the program is installed: the folder that holds config/.
struct Installation {
    std::filesystem::path ordner;

    std::filesystem::path Konfig() const { return ordner / "config"; }
    std::filesystem::path Einstellungsdatei() const { return Konfig() / "Flurix.dat"; }
    std::filesystem::path Spaltenansichten() const { return Konfig() / "ALB_DatenbankSpalten.dat"; }
    std::filesystem::path WebSchlüsseldatei() const { return Konfig() / "wfs.key"; }
    std::filesystem::path Dienstkatalog() const { return Konfig() / "WebService.fil"; }

    /// The installation of the running program: $FLURIX_HOME when set; else the first of the program
    /// file's folder and its parents (up to four levels) that holds config/Flurix.dat; else the
    /// program file's folder.
    static Installation Finden();
};

/// Caption of the main window: "Flurix V" + major + "." + minor + "(" + revision + ")".
std::string FensterTitel();

/// The state the main window keeps for the whole run.
struct Programmzustand {
    explicit Programmzustand(Installation inst)
        : installation(std::move(inst)), einstellungen(installation.Einstellungsdatei()) {}

    Installation installation;
    Einstellungen einstellungen;
    NummernformatZustand nummernformat;
    Auftrag auftrag; ///< what the command line asked for, with the process flags

    std::filesystem::path arbeitsverzeichnis; ///< everything temporary lies here
    std::string dialogStartordner;            ///< start folder of file dialogs
    std::vector<std::string> spaltenansichten; ///< the view names for the view box
    std::string gewünschteAnsicht;            ///< the view chosen at start-up
    bool protokollMapAnfrage = false;
    std::string webBenutzer;                  ///< login of the gazetteer service, from wfs.key
    std::string webPasswort;
    std::filesystem::path dienstkatalog;      ///< the web-service catalogue in use
    bool BeendenFragen = true;
    /// Working databases of the NAS window and the gazetteer, deleted on exit when set.
    std::vector<std::filesystem::path> arbeitsdatenbanken;
};

/// Default working directory: a folder "flurix" under the system's temp dir.
std::filesystem::path StandardArbeitsverzeichnis();

/// The start-up of the main window, in its order: flags reset, decimal separator check, working
/// directory with its write test, clean-up of an earlier run's leftovers, the view list, wfs.key,
/// the settings of views and map protocol, the service catalogue, the command line.
/// Returns Beenden (with the message already shown) when the process must end: working directory
/// not writable, installation incomplete, job path without "/". Otherwise Ok, and
/// `zustand.auftrag.art` tells what starts next.
Ergebnis Programmstart(Programmzustand& zustand, std::string_view kommandozeile,
                       Zahlenformat& format, Oberfläche& ui);

/// What the shut-down needs from the windows.
struct Beendenumgebung {
    std::function<void()> karteSchließen;  ///< closes the map window, when there is one
    std::string spaltenbreiten;            ///< the grid's column widths, "" when there is no grid
    std::filesystem::path benutzerordner;  ///< folder of the per-user settings
};

/// The one way out: asks "Wollen Sie den Flurix jetzt wirklich beenden?   " unless BeendenFragen is
/// false or the run is unattended; on No returns Abgebrochen and nothing else happens. Otherwise sets
/// the decimal separator back, closes the map, saves the column widths and deletes the temporary
/// files of the working directory; returns Ok: the caller ends the process.
Ergebnis Beenden(Programmzustand& zustand, Zahlenformat& format, Oberfläche& ui,
                 const Beendenumgebung& umgebung);

/// The map's "Starteinstellung bearbeiten": asks, copies the settings file beside itself as
/// "<file>_<stamp>.dat" and rewrites the four StartMapWebService keys (only lines that exist).
struct Kartenstart {
    std::string dienst, koordinate, epsg, maßstab;
};
Ergebnis StarteinstellungÜbernehmen(const Einstellungen& einstellungen, const Kartenstart& werte,
                                    Oberfläche& ui);

} // namespace flurix
