#pragma once
// The UI port of the desktop program: message boxes, questions, the status bar of the main window,
// the progress bar beside it, and the Escape poll of long work.

#include "core/oberflaeche.hpp"

#include <QMessageBox>
#include <QPointer>
#include <QString>

#include <array>
#include <functional>
#include <memory>

class QCoreApplication;
class QLabel;
class QProgressBar;
class QWidget;

namespace flurix::gui {

class AbbruchFilter;

/// The Qt implementation of the UI port. One per run, made after the QApplication and living
/// until the event loop has ended. Message boxes are modal over the window given by
/// FensterSetzen (none before the main window stands). Status and progress go to the widgets given
/// by StatusleisteVerbinden; before that (during the start-up) they are dropped, as there is no
/// status bar to show them in. The widgets are watched: once deleted, they are no longer used.
class QtOberfläche final : public Oberfläche {
public:
    /// Installs the Escape filter on the running QApplication (there must be one).
    QtOberfläche();
    ~QtOberfläche() override;
    QtOberfläche(const QtOberfläche&) = delete;
    QtOberfläche& operator=(const QtOberfläche&) = delete;
    QtOberfläche(QtOberfläche&&) = delete;
    QtOberfläche& operator=(QtOberfläche&&) = delete;

    /// The window over which message boxes appear; nullptr for none.
    void FensterSetzen(QWidget* fenster);
    /// The six panels of the status bar (panel 1 first) and the progress bar. The progress bar
    /// is hidden until Fortschritt is called with a maximum above 0.
    void StatusleisteVerbinden(const std::array<QLabel*, 6>& panels, QProgressBar* fortschritt);
    /// Where the lines of the NAS protocol go. Without a target they are written to stderr.
    void ProtokollZielSetzen(std::function<void(const QString&)> ziel);

    /// A QMessageBox with the icon of `stil`, the title as given and an OK button.
    void Meldung(std::string_view text, std::string_view titel, Stil stil) override;
    /// A question box with the buttons of `frage.knöpfe`, `frage.vorgabe` preselected. Escape or
    /// the close button give No (Abbrechen when the box has a cancel button).
    Antwort Frage(const Fragestellung& frage) override;
    /// Sets the text of panel 1..6 (other numbers are ignored) and lets the window repaint.
    void Status(int panel, std::string_view text) override;
    /// Shows wert of max in the progress bar and lets the window repaint. A maximum of 0 or
    /// less, or wert reaching max, hides the bar: the work is done.
    void Fortschritt(long long wert, long long max) override;
    /// True when Escape was pressed since the last poll; reading it resets it. The poll takes in
    /// the keys and clicks that waited while the work ran: Escape is noted, all other user input is
    /// dropped, so that no command starts in the middle of the work.
    bool AbbruchGewünscht() override;
    /// One line of the NAS protocol, passed to the target of ProtokollZielSetzen.
    void Protokoll(std::string_view zeile) override;
    /// A message box with the information icon and an OK button that closes itself after
    /// `sekunden` (at once for 0 or less) unless it is closed before.
    void Hinweis(std::string_view text, std::string_view titel, int sekunden) override;
    /// A QInputDialog with the text, the title and `vorgabe` filled in; "" when it is cancelled.
    std::string Eingabe(std::string_view text, std::string_view titel, std::string_view vorgabe) override;

private:
    /// The parent of message boxes: the main window while it is shown.
    QWidget* Eltern() const;
    /// Shows a box modally with German button texts.
    void Zeigen(QMessageBox& box);
    /// Lets queued paint and timer events run, user input excluded; at most every few ms, so that
    /// a status text per record doesn't cost more than the record.
    void Zeichnen();

    QPointer<QWidget> m_fenster;
    std::array<QPointer<QLabel>, 6> m_panels;
    QPointer<QProgressBar> m_fortschritt;
    std::function<void(const QString&)> m_protokollZiel;
    std::unique_ptr<AbbruchFilter> m_filter;
    long long m_letztesZeichnen = -1; ///< ms of the monotonic clock at the last repaint
};

/// Qt's own texts (file dialogs, context menus) in German, from Qt's translation "qtbase_de"
/// when it is installed (package qt6-translations-l10n); otherwise they stay English. The
/// buttons of the UI port's boxes are German in any case.
void QtTexteDeutsch(QCoreApplication& anwendung);

/// The buttons a question with `knöpfe` shows.
QMessageBox::StandardButtons KnöpfeVon(Knöpfe knöpfe);
/// The button of an answer (QMessageBox::NoButton for none).
QMessageBox::StandardButton KnopfVon(Antwort antwort);
/// The answer a clicked button means; `ohne` when the box was closed without one.
Antwort AntwortVon(QMessageBox::StandardButton knopf, Antwort ohne);

} // namespace flurix::gui
