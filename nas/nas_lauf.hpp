#pragma once
// The run of the NAS window after its first paint, and of the unattended batch lines
// "<file>.xml /ggout /still" (with "/txt-sch") and "<file>.xml /dxfout /still": read the file,
// compile and take it into the table when asked, export beside the input, clean up. The window and
// the command line run this one routine.

#include "core/fehler.hpp"
#include "nas/nas_arbeitsbereich.hpp"

#include <filesystem>

namespace flurix {
struct Auftrag;
}

namespace flurix::nas {

/// The output of a batch run.
enum class NasAusgabe { Keine, Geograf, Dxf };

struct NasLaufauftrag {
    std::filesystem::path datei; ///< the NAS file or saved database
    bool direktImport = true;    ///< compile and take into the table after reading
    NasAusgabe ausgabe = NasAusgabe::Keine;
    bool textSchraffur = false;  ///< "/txt-sch": texts and hatching in the GEOgraf output
    bool still = false;          ///< unattended: ends with the notice, ".err" on failure
};

struct NasLaufbericht {
    NasDirektBericht direkt;
    std::filesystem::path ausgabe; ///< the file written by the export, when there is one
};

/// The run a batch line asks for: its file, no transfer into a table, GEOgraf or DXF output
/// (with "/txt-sch" texts and hatching), unattended.
NasLaufauftrag NasStapelauftrag(const Auftrag& auftrag);

/// The output file of a batch run beside the input: "<name>.out" or "<name>.dxf".
std::filesystem::path NasAusgabedatei(const std::filesystem::path& datei, NasAusgabe ausgabe);
/// The error file of a failed batch run beside the input: the file's name + ".err", as the
/// protocol is its name + ".prn".
std::filesystem::path NasFehlerdatei(const std::filesystem::path& datei);

/// Runs the steps with their status texts: "Einlesen ALKIS/NAS-Daten...", with the direct import
/// the compilation and the transfer through `tabelle`, with an output "Export ALKIS/NAS nach
/// Geograf..." / "... nach DXF..." and the writer. In an unattended run the notice that closes
/// itself ends it ("ALKIS Export erfolgreich..." or "Der ALKIS Export wurde abgebrochen!   ");
/// a failure writes the ".err" file with the protocol of the failure. The temporary files of the
/// export are removed in any case. Ok when every step asked for succeeded.
Ergebnis NasLauf(NasArbeitsbereich& bereich, const NasLaufauftrag& auftrag,
                 const Tabellenänderung& tabelle, NasLaufbericht& bericht);

} // namespace flurix::nas
