#pragma once
// The main window: the cadastre table, the toolbar of the program's commands, the status bar of six
// panels, and the start of what the command line asked for.
// The class name, its slots and signals stay ASCII for moc.

#include "core/programm.hpp"
#include "import/datenladen.hpp"

#include <QCoreApplication>
#include <QMainWindow>
#include <QString>

#include <array>
#include <functional>

class QCloseEvent;
class QComboBox;
class QLabel;
class QProgressBar;
class QTableView;
class QToolBar;

namespace flurix::gui {

class QtOberfläche;

/// The main window FormDatenbank. It draws what the start-up in `zustand` found (caption, view
/// list) and runs the commands of its toolbar through the core. The three references must outlive
/// the window. The constructor connects `ui` to this window's status bar and message parent.
class FormDatenbank : public QMainWindow {
    Q_OBJECT

public:
    FormDatenbank(Programmzustand& zustand, Zahlenformat& format, QtOberfläche& ui,
                  QWidget* eltern = nullptr);
    ~FormDatenbank() override;
    FormDatenbank(const FormDatenbank&) = delete;
    FormDatenbank& operator=(const FormDatenbank&) = delete;
    FormDatenbank(FormDatenbank&&) = delete;
    FormDatenbank& operator=(FormDatenbank&&) = delete;

    /// After the start-up: shows the window unless the run is unattended or the map alone, then
    /// starts by a single-shot timer what the command line asked for, so that the window is painted
    /// first: a file to load (Timer1), the unattended NAS run (Timer2), the map.
    void Starten();

    /// btnDbÖffnen: the open dialog (several files may be chosen), then the load of the chosen
    /// files with the kind of the chosen filter. Cancel ends silently.
    void DbOeffnen();
    /// btnOptSystem: the dialog of the configuration backup.
    void OptSystem();
    /// btnBeenden (Beenden_Click): the one way out. Returns false when the user chose to stay;
    /// otherwise the window is hidden and the event loop is told to end with `exitcode`.
    bool BeendenKlick(int exitcode = 0);

    /// The load of one job with the readers and dialogs of this window; other commands are locked
    /// while it runs. Every failure has been shown through the UI port when it returns.
    Ergebnis Laden(const import::Ladeauftrag& auftrag);

    /// What ends the program once Beenden has run, with the exit code: QCoreApplication::exit
    /// unless set otherwise (a test records the code instead of ending its event loops).
    void ProgrammEndeSetzen(std::function<void(int)> ende) { m_programmEnde = std::move(ende); }

    /// Label of status panel 1..6; nullptr for other numbers.
    QLabel* StatusPanel(int panel) const;

protected:
    /// The window's close button (Form_QueryUnload): the same question as Beenden; No keeps the
    /// program running. While a load runs the window can't be closed.
    void closeEvent(QCloseEvent* ereignis) override;

private:
    void BedienelementeAnlegen();
    void StatusleisteAnlegen();
    void DateiLadenZeitgeber();
    void NasStapelZeitgeber();
    void KarteZeitgeber();
    void TimerEnd(int exitcode);
    import::Ladeumgebung LadeumgebungAnlegen();
    void Sperren(bool gesperrt);

    Programmzustand& m_zustand;
    Zahlenformat& m_format;
    QtOberfläche& m_ui;

    QToolBar* m_werkzeugleiste = nullptr;
    QComboBox* m_spaltenansicht = nullptr;
    QTableView* m_tabelle = nullptr;
    std::array<QLabel*, 6> m_panels{};
    QProgressBar* m_fortschritt = nullptr;
    std::function<void(int)> m_programmEnde = [](int code) { QCoreApplication::exit(code); };
    QString m_letzterFilter;     ///< the open dialog's filter of the last load in this run
    bool m_beschaeftigt = false; ///< a load runs
    bool m_beendet = false;      ///< Beenden has run; the process is ending
};

} // namespace flurix::gui
