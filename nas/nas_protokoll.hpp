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
    /// A line of the running list of the compilation (one per script line or table row): into the
    /// file only, with the time in front. The window shows the steps and the hints, not a line per
    /// row, which would bury them.
    void Liste(std::string_view meldung);
    /// A line for the file only, as it stands (the per-row notes of the reorganisation).
    void NurDatei(std::string_view meldung);
    /// True when a protocol file is written.
    bool MitDatei() const { return m_datei.is_open(); }

    /// The protocol file name of a NAS file: the name + ".prn" ("a.xml" → "a.xml.prn").
    static std::filesystem::path DateiZu(const std::filesystem::path& nasDatei);

private:
    Oberfläche& m_ui;
    std::ofstream m_datei;
};

} // namespace flurix::nas
