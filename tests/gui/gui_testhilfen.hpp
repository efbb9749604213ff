#pragma once
// What the GUI tests share: the one QApplication, answering boxes and dialogs, waiting in the
// event loop, transcripts, and a main window over a scratch installation.

#include "core/kataster.hpp"
#include "core/programm.hpp"
#include "gemeinsam/testumgebung.hpp"
#include "gui/form_datenbank.hpp"
#include "gui/kataster_modell.hpp"
#include "gui/qt_oberflaeche.hpp"

#include <QApplication>
#include <QComboBox>
#include <QMessageBox>
#include <QTableView>
#include <QTimer>
#include <QUrl>

#include <gtest/gtest.h>

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

/// A box in one line: `[Symbol] "Titel" [Knopf|Knopf*]: Text`, the default button marked by a star.
QString Beschreibung(const Box& box);

/// What a test saw, one entry a line, compared at its end with the golden file
/// tests/daten/gui/mitschrift/<name>.txt; a scratch folder given is written as "<ordner>".
class Mitschrift {
public:
    explicit Mitschrift(std::string name, std::filesystem::path ordner = {})
        : m_ordner(std::move(ordner)), m_name(std::move(name)) {}
    Mitschrift(const Mitschrift&) = delete;
    Mitschrift& operator=(const Mitschrift&) = delete;
    ~Mitschrift();
    Mitschrift& operator<<(const QString& text);
    Mitschrift& operator<<(const QStringList& texte) { return *this << texte.join(u'\n'); }
    Mitschrift& operator<<(std::string_view text) { return *this << QString::fromUtf8(text); }

private:
    std::filesystem::path m_ordner;
    std::string m_name;
    std::string m_text;
};

/// Answers every message box that opens while it lives: notes what it shows and clicks the button
/// `wahl` names (the default button when `wahl` is NoButton), or the next of `folge` when given
/// (further boxes get the last one).
class Beantworter {
public:
    explicit Beantworter(QMessageBox::StandardButton wahl = QMessageBox::NoButton)
        : Beantworter(std::vector{wahl}) {}
    explicit Beantworter(std::vector<QMessageBox::StandardButton> folge);
    std::vector<Box> boxen;
    QStringList Beschreibungen() const;

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
            if (!dialog || !dialog->isVisible() || std::exchange(gesehen, true))
                return;
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

/// A main window over a scratch installation, started as the program starts (views file
/// `ansichten` given in UTF-8); user settings stay in the folder, files it opens are recorded.
struct Hauptfenster {
    TempOrdner ordner;
    Programmzustand zustand{Installation{ordner.pfad()}};
    ProzessZahlenformat format;
    gui::QtOberfläche ui;
    Ergebnis start; ///< of the start-up
    std::optional<int> exitcode;
    std::vector<QUrl> geöffnet;
    gui::FormDatenbank fenster{zustand, format, ui};

    explicit Hauptfenster(std::string_view ansichten = {});

    Kataster& K() { return fenster.Tabelle(); }
    gui::KatasterModell& M() { return fenster.Modell(); }
    QTableView& Grid() { return *fenster.Grid(); }
    template <typename T> T* Element(const char* name);
    void Auslösen(const char* aktion);
};

/// The text of status panel `nummer` of the window.
QString Panel(const gui::FormDatenbank& fenster, int nummer);

/// The child of `eltern` named `name`; a failure when there is none.
template <typename T> T* Element(const QObject& eltern, const char* name) {
    T* element = eltern.findChild<T*>(QString::fromUtf8(name));
    EXPECT_NE(element, nullptr) << name;
    return element;
}

template <typename T> T* Hauptfenster::Element(const char* name) {
    return test::Element<T>(fenster, name);
}

QStringList Einträge(const QComboBox& box);

} // namespace flurix::test
