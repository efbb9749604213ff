#pragma once
// What the tests of the desktop program share: the one QApplication (offscreen), a helper that
// answers message boxes, waiting in the event loop, and a main window over a scratch installation.

#include "core/programm.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "gui/form_datenbank.hpp"
#include "gui/qt_oberflaeche.hpp"

#include <QApplication>
#include <QMessageBox>
#include <QStringList>
#include <QTimer>
#include <QUrl>

#include <functional>
#include <optional>
#include <vector>

namespace flurix::test {

/// What a message box showed before it was answered.
struct Box {
    QString titel;
    QString text;
    QMessageBox::Icon symbol = QMessageBox::NoIcon;
    QMessageBox::StandardButtons knöpfe;
    QMessageBox::StandardButton vorgabe = QMessageBox::NoButton;
    QStringList beschriftungen; ///< of its buttons Yes, No, Cancel, Ok, in that order
};

/// Answers every message box that opens while it lives: notes what it shows and clicks the button
/// `wahl` names (the default button when `wahl` is NoButton), or the next of `folge` when given.
class Beantworter {
public:
    explicit Beantworter(QMessageBox::StandardButton wahl = QMessageBox::NoButton);
    /// Answers the boxes in turn with these buttons; further boxes get the last one.
    explicit Beantworter(std::vector<QMessageBox::StandardButton> folge);
    std::vector<Box> boxen;

private:
    void Antworten();

    std::vector<QMessageBox::StandardButton> m_folge;
    QTimer m_zeitgeber;
};

/// Runs `handeln` once on the first modal dialog of type T that opens while it lives.
template <typename T> class Dialoghelfer {
public:
    explicit Dialoghelfer(std::function<void(T&)> handeln) : m_handeln(std::move(handeln)) {
        m_zeitgeber.setInterval(5);
        QObject::connect(&m_zeitgeber, &QTimer::timeout, [this] {
            auto* dialog = qobject_cast<T*>(QApplication::activeModalWidget());
            if (!dialog || !dialog->isVisible() || gesehen)
                return;
            gesehen = true;
            m_handeln(*dialog);
        });
        m_zeitgeber.start();
    }
    bool gesehen = false;

private:
    std::function<void(T&)> m_handeln;
    QTimer m_zeitgeber;
};

/// Runs the event loop until `fertig` holds or two seconds have passed.
void Warten(const std::function<bool()>& fertig);

/// A main window over an installation in a scratch folder, made as the program makes it: the
/// start-up runs first (working directory "arbeit" in the folder, the views file `ansichten` in
/// Windows-1252 when given), then the window. Its per-user settings lie in the folder too, and the
/// files it would open in the system's programs are recorded instead.
struct Hauptfenster {
    using FormDatenbank = gui::FormDatenbank;
    using QtOberfläche = gui::QtOberfläche;

    TempOrdner ordner;
    Programmzustand zustand{Installation{ordner.pfad()}};
    ProzessZahlenformat format;
    QtOberfläche ui;
    Ergebnis start; ///< of the start-up
    std::optional<int> exitcode;
    std::vector<QUrl> geöffnet;
    FormDatenbank fenster{zustand, format, ui};

    /// `ansichten` in UTF-8.
    explicit Hauptfenster(std::string_view ansichten = {});
};

/// The text of status panel `nummer` of the window.
QString Panel(const gui::FormDatenbank& fenster, int nummer);

} // namespace flurix::test
