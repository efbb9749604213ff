#pragma once
// The options dialog in front of the NAS work window (FormNasDarstellung): the check boxes of the
// NAS work, and how the file is taken, straight into the table or only into the NAS database.
// The class name, its slots and signals stay ASCII for moc.

#include "nas/nas_optionen.hpp"

#include <QDialog>

#include <vector>

class QCheckBox;
class QPushButton;

namespace flurix {
class Benutzereinstellungen;
}

namespace flurix::gui {

/// How the dialog was left.
enum class NasStart {
    Abbruch, ///< cmdAbbruch or the close button: nothing is read
    Direkt,  ///< cmdStart: read, compile and take into the table ("Import direkt in den Flurix")
    NurEinlesen, ///< cmdEinlesen: read into the NAS database only, the window shows its tables
};

/// One check box per entry of NasOptionsfelder(), named as the option and captioned by it. The
/// boxes of the area computation's parts are enabled only while "chkMitNaBerechnung" is on, and a
/// click on one of them clears the others (NasOptionen::Setzen); the start button's caption
/// follows NasOptionen::StartKnopfText().
class FormNasDarstellung : public QDialog {
    Q_OBJECT

public:
    explicit FormNasDarstellung(const nas::NasOptionen& optionen, QWidget* eltern = nullptr);

    /// The options as the boxes show them now.
    const nas::NasOptionen& Optionen() const { return m_optionen; }
    /// How the dialog was left (Abbruch while it runs).
    NasStart Wahl() const { return m_wahl; }

    /// Runs the dialog modally over `eltern` with the options kept in `einstellungen`
    /// (NasOptionenAnwendung/Abschnitt/Schlüssel). A start writes the chosen options back there and
    /// into `optionen`; Abbruch leaves both as they were. Throws Fehler when the settings can't be
    /// written.
    static NasStart Bearbeiten(const Benutzereinstellungen& einstellungen,
                               nas::NasOptionen& optionen, QWidget* eltern);

private:
    /// The boxes, their enabled state and the start caption from m_optionen.
    void Zeigen();

    nas::NasOptionen m_optionen;
    NasStart m_wahl = NasStart::Abbruch;
    std::vector<QCheckBox*> m_kästchen; ///< in the order of NasOptionsfelder()
    QPushButton* m_start = nullptr;
};

} // namespace flurix::gui
