#pragma once
// One run of the program from the command line: the start-up steps with the batch UI, and the end.

#include "cli/cli.hpp"
#include "core/oberflaeche_batch.hpp"
#include "core/programm.hpp"

#include <filesystem>
#include <functional>

namespace flurix {
class Kataster;
}

namespace flurix::cli {

class Sitzung {
public:
    /// Messages of the run go to `fehler`.
    Sitzung(const Umgebung& umgebung, std::ostream& fehler);

    /// The start-up of the program with this command line; false when the process must end
    /// (the message has been written).
    bool Starten(std::string_view kommandozeile);
    /// Runs `arbeit`: a Fehler it throws is written as every message of the run; false then.
    bool Versuchen(const std::function<void()>& arbeit);
    /// Loads a table file (.fil, .tsv) into `kataster`; false when it can't be read (the message
    /// has been written, `kataster` is left as it was).
    bool TabelleLaden(Kataster& kataster, const std::filesystem::path& datei);
    /// Writes `kataster` as a table file by its extension; false when it can't be written.
    bool TabelleSpeichern(const Kataster& kataster, const std::filesystem::path& datei);
    /// The end of the run, without a question; returns `code`.
    int Beenden(int code);

    Programmzustand zustand;
    BatchOberfläche ui;
    ProzessZahlenformat format;
};

/// Exit code of a core result: 0 done, 1 anything else.
int Exitcode(const Ergebnis& ergebnis);

} // namespace flurix::cli
