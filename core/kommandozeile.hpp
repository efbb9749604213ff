#pragma once
// The command line of the program: a job file with its path, the unattended batch forms, or /map.

#include <optional>
#include <string>
#include <string_view>

namespace flurix {

class Oberfläche;

/// What the command line asks the program to do after start-up.
enum class Startart {
    Interaktiv,  ///< no job: the main window waits for the user
    DateiLaden,  ///< a job file of type wldge, xml, fil or mdb is loaded (after the user agrees)
    NasStapel,   ///< an unattended NAS run: "<job>.xml /ggout /still" and its siblings
    Karte,       ///< "/map": the map window alone
    Beenden,     ///< the job path is unusable: the process ends
};

/// A map centre given as "/map y;x" (east first, north second).
struct Kartenmitte {
    double y = 0;
    double x = 0;
};

/// The process flags that the command line sets, and what it asks for.
struct Auftrag {
    Startart art = Startart::Interaktiv;
    /// The whole command line without double quotes, trimmed. It is matched lower-cased, but kept in
    /// its own case: Linux file names are case-sensitive, so the path must stay as it was given.
    std::string Kommandozeile;
    /// For DateiLaden: the type ("wldge", "xml", "fil", "mdb"); for NasStapel: the job file.
    std::string AuftragsDatei;
    /// Folder of the job file; the start folder of file dialogs.
    std::string AuftragsPfad;
    bool StillModus = false;
    bool AusgabeGG = false;
    bool AusgabeTxtSch = false;
    bool AusgabeDXF = false;
    bool AutoStartDatei = false;
    bool MapModus = false;
    std::optional<Kartenmitte> mitte; ///< "/map" with a usable coordinate pair

    /// The job file's path for DateiLaden (the command line itself, which holds nothing else).
    std::string JobPfad() const { return Kommandozeile; }
};

/// Reads the command line `zeile` as the program's start does, with every message through `ui`:
/// a job path without "/" ends the program ("Fehlerhafte Auftragspfadbeschreibung! Abbruch!   "),
/// a file name with more than one dot is warned about, an unknown type is refused, "/map" takes an
/// optional "y;x" pair. The batch forms are matched as one text behind the last dot, so a blank too
/// many makes an unknown type.
Auftrag KommandozeileLesen(std::string_view zeile, Oberfläche& ui);

/// "/map" rest brought to the form "y;x": ";" to blank, double blanks collapsed, trimmed, blank to ";".
std::string KoordinatenpaarNormalisieren(std::string_view rest);

} // namespace flurix
