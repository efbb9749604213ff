#pragma once
// The dialog in front of the GEOgraf batch export (FormExportGG): which columns go into the text
// blocks or the stamp and in what order, the output form, Art, Ebene and meridian code of the
// texts, and the two check boxes. What the user chose last is kept in the user's settings and
// shown again the next time. The class name stays ASCII for moc.

#include "export/geograf_out.hpp"

#include <QDialog>

#include <array>

class QCheckBox;
class QLineEdit;
class QListWidget;
class QRadioButton;

namespace flurix {
class Benutzereinstellungen;
}

namespace flurix::gui {

/// Where the dialog keeps its settings: application, section (keys as the controls are named).
inline constexpr std::string_view GeografEinstellungenAnwendung = "MyApplication";
inline constexpr std::string_view GeografEinstellungenAbschnitt = "FormExportGG";

/// The entry of the output list for a column of the thirty offered: its number in that list, two
/// digits, a blank, the name ("15 Flurstück"). Columns not offered get "00".
QString GeografListeneintrag(std::string_view spalte);

class FormExportGG : public QDialog {
    Q_OBJECT

public:
    /// The controls set from `optionen`.
    explicit FormExportGG(const ausgabe::GeografOptionen& optionen, QWidget* eltern = nullptr);

    /// The settings as the controls show them now.
    ausgabe::GeografOptionen Optionen() const;

    /// The settings kept, the defaults where none are: form "ohne", no columns, Art and Ebene 0,
    /// meridian code "3".
    static ausgabe::GeografOptionen Gespeichert(const Benutzereinstellungen& einstellungen);
    /// Keeps `optionen` for the next time (after "Weiter"; "Abbrechen" keeps nothing). Throws Fehler when the settings can't be written.
    static void Speichern(const Benutzereinstellungen& einstellungen,
                          const ausgabe::GeografOptionen& optionen);

private:
    void Hinzufügen(const QString& spalte);
    void Weiter();

    QListWidget* m_alle = nullptr;
    QListWidget* m_ausgabe = nullptr;
    std::array<QRadioButton*, 5> m_formen{}; ///< by the index of ausgabe::GeografForm
    QLineEdit* m_art = nullptr;
    QLineEdit* m_ebene = nullptr;
    QLineEdit* m_mkz = nullptr;
    QCheckBox* m_ohneNullen = nullptr;
    QCheckBox* m_eineZeile = nullptr;
};

} // namespace flurix::gui
