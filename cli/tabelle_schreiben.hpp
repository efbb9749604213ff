#pragma once
// Writing the table from the command line in one of the formats of "Speichern unter", the
// report or the machine form: what `flurix export` and `flurix nas --out` share.

#include "core/fehler.hpp"
#include "export/speichern_unter.hpp"

#include <filesystem>
#include <optional>
#include <ostream>
#include <string_view>

namespace flurix {
class Kataster;
}

namespace flurix::cli {

class Sitzung;

/// A format of --format. html and tsv have no entry in the save dialog: they are told apart by
/// an empty Speicherformat.
struct Exportformat {
    std::string_view name;
    std::optional<ausgabe::Speicherformat> dialog;
};

/// The format of that name; nullptr for a name no format has.
const Exportformat* FormatFinden(std::string_view name);
/// The format a file's extension stands for (.tsv, .fil, .txt, .xlsx, .xml, .mdb, .sqlite, .html,
/// .out); nullptr for any other.
const Exportformat* FormatAusEndung(const std::filesystem::path& datei);
/// The names of all formats, for messages: "txt-tab, txt-dollar, ...".
std::string_view FormatNamen();

/// Writes `kataster` to exactly `datei` in `format`; messages through the session's UI.
Ergebnis TabelleSchreiben(Kataster& kataster, const Exportformat& format,
                          const std::filesystem::path& datei, Sitzung& sitzung);

} // namespace flurix::cli
