#pragma once
// What the export tests share: the example table with every kind of awkward cell, and the outside
// judges (Debian's python3 for .xlsx and XML, the sqlite3 shell for the Access form).

#include "core/kataster.hpp"
#include "core/oberflaeche_skript.hpp"

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace flurix::test {

/// Columns Gemarkung, Flur, Flurstück, Name (caption "Eigentümer", shown first), Geheim (hidden),
/// checkdruck (blank caption); three rows with "&", "<", quotes, TAB, "$", CR LF, "€" and
/// characters outside Windows-1252.
Kataster Beispieltabelle();

/// Rows as lists of cells.
using Zellen = std::vector<std::vector<std::string>>;

/// The questions the UI was asked, as (text, title).
std::vector<std::pair<std::string, std::string>> Fragen(const SkriptOberfläche& ui);

/// Runs a shell command; its stdout, or nothing when it could not run or ended with an error.
std::optional<std::string> Befehl(const std::string& befehl);

/// Debian's python3 (/usr/bin/python3), or "" when missing.
std::string Python();

/// Splits a judge's output: rows end in RS (0x1E), cells end in US (0x1F).
Zellen Zerlegen(std::string_view ausgabe);

} // namespace flurix::test
