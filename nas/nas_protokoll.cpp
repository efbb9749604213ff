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

} // namespace

NasProtokoll::NasProtokoll(Oberfläche& ui, const std::filesystem::path& datei) : m_ui(ui) {
    if (!datei.empty())
        m_datei.open(datei, std::ios::binary | std::ios::app);
}

std::filesystem::path NasProtokoll::DateiZu(const std::filesystem::path& nasDatei) {
    return nasDatei.string() + ".prn";
}

void NasProtokoll::Eintrag(std::string_view meldung) {
    std::string zeile = Uhrzeit();
    if (!meldung.starts_with(", "))
        zeile += ", ";
    zeile += meldung;
    m_ui.Protokoll(zeile);
    // The file is read by the same Windows tools as the program's other text files.
    if (m_datei.is_open())
        m_datei << Utf8NachCp1252(zeile) << "\r\n" << std::flush;
}

} // namespace flurix::nas
