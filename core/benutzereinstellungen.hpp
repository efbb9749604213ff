#pragma once
// Per-user settings of the windows (column widths and the like): one INI file per application in
// the user's config folder ($XDG_CONFIG_HOME/flurix or ~/.config/flurix), sections and keys as the
// program names them ("MyApplication", "GridFlurix", "ColWidths").

#include <filesystem>
#include <string>
#include <string_view>

namespace flurix {

class Benutzereinstellungen {
public:
    /// Settings kept under `ordner`.
    explicit Benutzereinstellungen(std::filesystem::path ordner) : m_ordner(std::move(ordner)) {}
    /// The user's own folder: $XDG_CONFIG_HOME/flurix, else $HOME/.config/flurix.
    static std::filesystem::path StandardOrdner();

    /// The stored value, `vorgabe` when there is none.
    std::string Lesen(std::string_view anwendung, std::string_view abschnitt,
                      std::string_view schlüssel, std::string_view vorgabe = {}) const;
    /// Stores the value; the folder is created when missing. Throws Fehler when it can't be written.
    void Schreiben(std::string_view anwendung, std::string_view abschnitt, std::string_view schlüssel,
                   std::string_view wert) const;

private:
    std::filesystem::path Datei(std::string_view anwendung) const;

    std::filesystem::path m_ordner;
};

} // namespace flurix
