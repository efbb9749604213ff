#include "nas/nas_protokoll.hpp"

#include "core/cp1252.hpp"
#include "core/oberflaeche.hpp"

#include <chrono>
#include <ctime>

namespace flurix::nas {
namespace {

std::string Uhrzeit() {
    const std::time_t jetzt = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm zeit{};
    localtime_r(&jetzt, &zeit);
    char text[16];
    std::strftime(text, sizeof text, "%H:%M:%S", &zeit);
    return text;
}

std::string MitUhrzeit(std::string_view meldung) {
    std::string zeile = Uhrzeit();
    if (!meldung.starts_with(", "))
        zeile += ", ";
    zeile += meldung;
    return zeile;
}

} // namespace

NasProtokoll::NasProtokoll(Oberfläche& ui, const std::filesystem::path& datei) : m_ui(ui) {
    if (!datei.empty())
        m_datei.open(datei, std::ios::binary | std::ios::app);
}

std::filesystem::path NasProtokoll::DateiZu(const std::filesystem::path& nasDatei) {
    return nasDatei.string() + ".prn";
}

void NasProtokoll::Eintrag(std::string_view meldung) {
    const std::string zeile = MitUhrzeit(meldung);
    m_ui.Protokoll(zeile);
    NurDatei(zeile);
    // A step's line is on disk before the step runs: a crash leaves the protocol up to it.
    if (m_datei.is_open())
        m_datei.flush();
}

void NasProtokoll::Liste(std::string_view meldung) {
    if (m_datei.is_open())
        NurDatei(MitUhrzeit(meldung));
}

void NasProtokoll::NurDatei(std::string_view meldung) {
    // The file is read by the same Windows tools as the program's other text files.
    if (m_datei.is_open())
        m_datei << Utf8NachCp1252(meldung) << "\r\n";
}

} // namespace flurix::nas
