#pragma once
// Helpers of the core tests: value tables kept as golden files under tests/daten/core/, texts
// quoted for them, and what the scripted UI was told, as text.

#include "core/kataster.hpp"
#include "core/oberflaeche_skript.hpp"

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace flurix::test {

/// A text in double quotes: `"` and `\` escaped, control bytes and bytes that are no UTF-8 as
/// \t \n \r \0 or \xHH. Different texts never give the same quote.
std::string Zitat(std::string_view text);

/// The texts quoted and joined: `["a", "b"]`.
std::string Liste(const std::vector<std::string>& texte);

/// The arguments of one call of a value table: quoted texts unescaped, bare words as written.
using Argumente = std::vector<std::string>;
using Tabellenfunktion = std::function<std::string(const Argumente&)>;

/// Runs the value table tests/daten/core/<name>. Each line `Name(arg, ...) -> ergebnis` calls
/// funktionen[Name] and writes what it returns behind "-> "; a Fehler it throws gives
/// `Fehler "<message>"`. Empty lines and lines starting with '#' stay. The result is compared
/// with the file by GoldenVergleich: "" when every line holds, else the first differing line.
/// With `ordner` given, "<ordner>" in the arguments stands for it, and it is written so in results.
std::string Wertetabelle(const std::string& name,
                         const std::map<std::string, Tabellenfunktion>& funktionen,
                         const std::filesystem::path& ordner = {});

/// Everything the UI was told, one line each: `Meldung [titel] "text"`, `Frage [titel] "text"`,
/// `Status <panel> "text"`, `Protokoll "text"`. Einzeilig, each stands behind " | " instead.
std::string Verlauf(const SkriptOberfläche& ui, bool einzeilig = false);

/// The message of the Fehler that `arbeit` throws; "" when it throws none.
std::string FehlerText(const std::function<void()>& arbeit);

/// A table from a header of keys (also the captions) and rows, the cells joined by tabs.
Kataster Tabelle(std::string_view kopf, const std::vector<std::string>& zeilen);
/// The cells of a column in table order; with `nurGewählte` of the chosen rows only.
std::vector<std::string> Spalte(const Kataster& kataster, std::string_view schlüssel, bool nurGewählte = false);

/// The keys of the visible columns in display order.
std::vector<std::string> SichtbareSpalten(const Kataster& kataster);

/// The text with every `alt` written as `neu`.
std::string Ersetzt(std::string text, std::string_view alt, std::string_view neu);

/// All 256 byte values in order.
std::string AlleBytes();

} // namespace flurix::test
