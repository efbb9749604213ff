#pragma once
// What the reader tests share: the cases of a case file, and what a read gave as text for their
// golden transcripts (the messages and questions with their titles, the last text of each status
// panel, every row with its non-empty cells).

#include "core/cp1252.hpp"
#include "core/kataster.hpp"
#include "core/oberflaeche_skript.hpp"
#include "gemeinsam/testumgebung.hpp"

#include <sstream>
#include <string>
#include <vector>

namespace flurix::test {

/// One case of a case file: its name, its option letters and the lines of its input.
struct Lesefall {
    std::string name, optionen;
    std::vector<std::string> zeilen;
    /// The lines, each ended by LF.
    std::string Text() const {
        std::string text;
        for (const auto& z : zeilen)
            text += z + "\n";
        return text;
    }
};

/// The cases of a file in tests/daten/import: a line "%% name | options" starts a case, the lines
/// up to the next case are its input (UTF-8 in the file, given as Windows-1252 when `windows1252`);
/// lines starting with "#" before the first case are comments.
inline std::vector<Lesefall> Lesefälle(std::string_view datei, bool windows1252 = true) {
    std::vector<Lesefall> fälle;
    std::istringstream ein(DateiLesen(Testdaten() / "import" / datei));
    for (std::string zeile; std::getline(ein, zeile);) {
        if (zeile.starts_with("%% ")) {
            const auto strich = zeile.rfind(" |");
            fälle.push_back({zeile.substr(3, strich - 3), zeile.substr(strich + 2), {}});
        } else if (!fälle.empty()) {
            fälle.back().zeilen.push_back(windows1252 ? Utf8NachCp1252(zeile) : zeile);
        }
    }
    return fälle;
}

/// The messages and questions with their titles, then the last text of each status panel.
inline std::string Meldungsprotokoll(const SkriptOberfläche& ui) {
    std::string text;
    for (const auto& e : ui.Ereignisse())
        if (e.art == Ereignis::Art::Meldung || e.art == Ereignis::Art::Frage)
            text += (e.art == Ereignis::Art::Meldung ? "Meldung [" : "Frage [") + e.titel + "]: " + e.text + "\n";
    for (int panel = 1; panel <= 4; ++panel)
        if (const std::string s = ui.LetzterStatus(panel); !s.empty())
            text += "Status " + std::to_string(panel) + ": " + s + "\n";
    return text;
}

/// The Meldungsprotokoll, then every row of the table ("(ausgewählt)" when selected) with its
/// non-empty cells.
inline std::string Leseprotokoll(const SkriptOberfläche& ui, const Kataster& k) {
    std::string text = Meldungsprotokoll(ui);
    text += std::to_string(k.Spaltenzahl()) + " Spalten, " + std::to_string(k.Zeilenzahl()) + " Zeilen\n";
    for (std::size_t z = 0; z < k.Zeilenzahl(); ++z) {
        text += "Zeile " + std::to_string(z + 1) + (k.Ausgewählt(z) ? " (ausgewählt)" : "") + "\n";
        for (std::size_t s = 0; s < k.Spaltenzahl(); ++s)
            if (!k.Zelle(z, s).empty())
                text += "  " + k.Spalte(s).schlüssel + ": " + std::string(k.Zelle(z, s)) + "\n";
    }
    return text;
}

} // namespace flurix::test
