#pragma once
// The system options dialog (FormOptionenSystem): backup of the configuration folder as a zip
// archive, reading such a backup back, and editing a configuration file after a copy of it was
// made.
// The class name, its slots and signals stay ASCII for moc.

#include "core/fehler.hpp"
#include "core/oberflaeche.hpp"

#include <QDialog>

#include <filesystem>

class QLabel;

namespace flurix::gui {

/// The dialog over the configuration folder `konfigordner`. Every message goes through `ui`, which
/// must outlive the dialog.
class FormOptionenSystem : public QDialog {
    Q_OBJECT

public:
    FormOptionenSystem(std::filesystem::path konfigordner, Oberfläche& ui,
                       QWidget* eltern = nullptr);

    /// Opens the dialog modally. First the right to change the system files is tested; without it
    /// the message has been shown, the dialog closes again and false is returned.
    static bool Anzeigen(const std::filesystem::path& konfigordner, Oberfläche& ui,
                         QWidget* eltern);

    /// cmdSicherung after the file was chosen: the whole folder into `zipdatei` (the core asks
    /// before an existing file is replaced and shows the outcome).
    Ergebnis Sichern(const std::filesystem::path& zipdatei);
    /// smdZurück after the file was chosen: the archive unpacked over the folder, after the two
    /// questions of the core. The outcome stands in the dialog's status line.
    Ergebnis Einlesen(const std::filesystem::path& zipdatei);
    /// btnOptAlkisEditDat after the file was chosen: a copy "<file>_<stamp>.dat" beside it, then
    /// the file opened with the desktop's program for it (xdg-open). Failures are shown.
    Ergebnis DateiBearbeiten(const std::filesystem::path& datei);

    /// The status line of the dialog (what the last command did).
    QString Zustand() const;

private:
    void SicherungKlick();
    void ZurueckKlick();
    void EditDatKlick();

    std::filesystem::path m_konfig;
    Oberfläche& m_ui;
    QLabel* m_zustand = nullptr;
};

} // namespace flurix::gui
