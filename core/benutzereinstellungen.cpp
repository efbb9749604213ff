#include "core/benutzereinstellungen.hpp"

#include "core/datei.hpp"

#include <cstdlib>

namespace flurix {
namespace {

bool IstAbschnitt(std::string_view zeile, std::string_view abschnitt) {
    return zeile.size() == abschnitt.size() + 2 && zeile.front() == '[' && zeile.back() == ']' &&
           zeile.substr(1, abschnitt.size()) == abschnitt;
}

} // namespace

std::filesystem::path Benutzereinstellungen::StandardOrdner() {
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg)
        return std::filesystem::path(xdg) / "flurix";
    if (const char* heim = std::getenv("HOME"); heim && *heim)
        return std::filesystem::path(heim) / ".config" / "flurix";
    return std::filesystem::temp_directory_path() / "flurix-einstellungen";
}

std::filesystem::path Benutzereinstellungen::Datei(std::string_view anwendung) const {
    return m_ordner / (std::string(anwendung) + ".ini");
}

std::string Benutzereinstellungen::Lesen(std::string_view anwendung, std::string_view abschnitt,
                                         std::string_view schlüssel,
                                         std::string_view vorgabe) const {
    const std::string text = DateiKomplettLesen(Datei(anwendung));
    bool imAbschnitt = false;
    for (std::string_view zeile : TextZeilen(text)) {
        if (zeile.starts_with('['))
            imAbschnitt = IstAbschnitt(zeile, abschnitt);
        else if (imAbschnitt && zeile.starts_with(schlüssel) &&
                 zeile.substr(schlüssel.size()).starts_with('='))
            return std::string(zeile.substr(schlüssel.size() + 1));
    }
    return std::string(vorgabe);
}

void Benutzereinstellungen::Schreiben(std::string_view anwendung, std::string_view abschnitt,
                                      std::string_view schlüssel, std::string_view wert) const {
    std::error_code ec;
    std::filesystem::create_directories(m_ordner, ec);
    const std::string alt = DateiKomplettLesen(Datei(anwendung));
    const std::string neueZeile = std::string(schlüssel) + "=" + std::string(wert) + "\n";
    std::string neu;
    bool imAbschnitt = false, geschrieben = false;
    for (std::string_view zeile : TextZeilen(alt)) {
        if (zeile.starts_with('[')) {
            if (imAbschnitt && !geschrieben) {
                neu += neueZeile;
                geschrieben = true;
            }
            imAbschnitt = IstAbschnitt(zeile, abschnitt);
        } else if (imAbschnitt && zeile.starts_with(schlüssel) &&
                   zeile.substr(schlüssel.size()).starts_with('=')) {
            if (!geschrieben)
                neu += neueZeile;
            geschrieben = true;
            continue;
        }
        neu.append(zeile).append("\n");
    }
    if (!geschrieben) {
        if (!imAbschnitt)
            neu.append("[").append(abschnitt).append("]\n");
        neu += neueZeile;
    }
    DateiSchreiben(Datei(anwendung), neu);
}

} // namespace flurix
