#pragma once
// The protocol of the NAS road: every entry is the time, ", " and the message, shown in the work
// window (through the UI port) and appended to "<NAS file>.prn" unless the user switched the file
// off. Messages that begin with ", " already carry their separator.

#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>

namespace flurix {
class Oberfläche;
}

namespace flurix::nas {

class NasProtokoll {
public:
    /// `datei` empty: the window only. A file that can't be opened is left out (the window
    /// protocol stays complete).
    NasProtokoll(Oberfläche& ui, const std::filesystem::path& datei);

    void Eintrag(std::string_view meldung);

    /// The protocol file name of a NAS file: the name + ".prn" ("a.xml" → "a.xml.prn").
    static std::filesystem::path DateiZu(const std::filesystem::path& nasDatei);

private:
    Oberfläche& m_ui;
    std::ofstream m_datei;
};

} // namespace flurix::nas
