#pragma once
// The work on one NAS data set, without a window: the work database of the run, its protocol, the
// options, and the operations of the NAS window's toolbar (open, compile into the table, take the
// compiled table over, save under). The window binds its controls to it; the unattended run of the
// command line drives the same object through NasLauf (nas_lauf.hpp).

#include "core/fehler.hpp"
#include "nas/nas_direkt.hpp"
#include "nas/nas_optionen.hpp"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace flurix {
class Datenbank;
class Kataster;
class Oberfläche;
struct Programmzustand;
}

namespace flurix::nas {

class NasProtokoll;

/// A change of the cadastre table: the window wraps it in its model's reset and fills its boxes
/// afterwards; the command line runs it on its own table.
using Tabellenänderung = std::function<Ergebnis(const std::function<Ergebnis(Kataster&)>&)>;

class NasArbeitsbereich {
public:
    /// The options are those the caller sets in `optionen` before each operation.
    NasArbeitsbereich(Programmzustand& zustand, Oberfläche& ui);
    /// Closes the database and deletes the work database and its leftovers.
    ~NasArbeitsbereich();
    NasArbeitsbereich(const NasArbeitsbereich&) = delete;
    NasArbeitsbereich& operator=(const NasArbeitsbereich&) = delete;

    NasOptionen optionen;
    std::string ansicht;   ///< the view of the main table after a transfer; "" the run's default
    bool interaktiv = true; ///< a person answers the questions
    /// The parcels of the area computation (the marks of the main table); std::nullopt: all.
    std::optional<std::set<std::string, std::less<>>> auswahl;

    /// Opens a NAS file (.xml, scanned into a new work database) or a saved NAS database (checked
    /// for AP_PTO and copied). Where a data set is open and a person answers, asks first "Soll die
    /// vorhandene NAS-Datenbank überschrieben werden?   "; No changes nothing (Abgebrochen). A
    /// failed open leaves the data set that was open as it was. Logs "Datenbank <name> geladen..."
    /// on success.
    Ergebnis Öffnen(const std::filesystem::path& datei);

    /// True when a data set is open.
    bool HatDaten() const { return m_db != nullptr; }
    /// The file opened last (the NAS file or the saved database); outputs of a batch run lie beside it.
    const std::filesystem::path& Datei() const { return m_datei; }
    /// The work database; empty when none is open.
    const std::filesystem::path& Datenbankpfad() const { return m_datenbankpfad; }
    const NasStand& Stand() const { return m_stand; }
    /// The open database, for the grid and the SQL query. Only while HatDaten().
    Datenbank& Db();
    /// The tables of the database now, in the order they were made (the table list).
    std::vector<std::string> Tabellen();
    /// True when the compiled table Alkis exists ("nach Flurix" is possible).
    bool HatAlkis();

    /// The mapping script alone: the compilation into the table Alkis (with the area step when
    /// the options ask for it), which the grid then shows; "Nach Flurix" takes it over.
    Ergebnis Zusammenstellen(Zusammenstellungsbericht& bericht);
    /// "Direkt nach Flurix": the compilation (with the area step when the options ask for it) and
    /// the transfer into `kataster`. Fehlschlag after the message of the failing stage.
    Ergebnis DirektNachFlurix(Kataster& kataster, NasDirektBericht& bericht);
    /// "Nach Flurix": the compiled table Alkis into `kataster`, without compiling again.
    Ergebnis NachFlurix(Kataster& kataster, NachFlurixBericht& bericht);

    /// The protocol of the open data set; entries before any file go to the window only.
    NasProtokoll& Protokoll() { return *m_protokoll; }
    /// The face the work speaks through.
    Oberfläche& Ui() { return m_ui; }
    /// The program's state: the installation's configuration and the working folder.
    const Programmzustand& Zustand() const { return m_zustand; }

    /// Keeps the work database after the end of this object (the map goes on using it); the
    /// run's end deletes it then.
    void Behalten() { m_behalten = true; }

private:
    NasDirektAuftrag Auftrag(const std::filesystem::path& datei, const std::filesystem::path& db) const;
    void DatenbankSchließen();

    Programmzustand& m_zustand;
    Oberfläche& m_ui;
    std::unique_ptr<NasProtokoll> m_protokoll;
    std::unique_ptr<Datenbank> m_db;
    std::filesystem::path m_datei;
    std::filesystem::path m_datenbankpfad;
    NasStand m_stand;
    bool m_behalten = false;
};

} // namespace flurix::nas
