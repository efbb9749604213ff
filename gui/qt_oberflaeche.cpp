#include "gui/qt_oberflaeche.hpp"

#include "gui/qt_text.hpp"

#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QLibraryInfo>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QTranslator>
#include <QWidget>

#include <algorithm>
#include <array>
#include <chrono>
#include <iostream>
#include <utility>

namespace flurix::gui {

/// Watches the whole application while the work polls for Escape: notes Escape and drops every
/// other key and click that arrives in the poll. Outside a poll it lets everything pass.
class AbbruchFilter final : public QObject {
public:
    bool abfrage = false; ///< a poll is running
    bool abbruch = false; ///< Escape came in a poll

    bool eventFilter(QObject* ziel, QEvent* ereignis) override {
        if (!abfrage)
            return QObject::eventFilter(ziel, ereignis);
        switch (ereignis->type()) {
        case QEvent::KeyPress:
            if (static_cast<QKeyEvent*>(ereignis)->key() == Qt::Key_Escape)
                abbruch = true;
            return true;
        case QEvent::KeyRelease:
        case QEvent::ShortcutOverride:
        case QEvent::Shortcut:
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::Wheel:
        case QEvent::ContextMenu:
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TouchEnd:
            return true;
        default:
            return QObject::eventFilter(ziel, ereignis);
        }
    }
};

namespace {

QMessageBox::Icon SymbolVon(Stil stil) {
    switch (stil) {
    case Stil::Information:
        return QMessageBox::Information;
    case Stil::Warnung:
        return QMessageBox::Warning;
    case Stil::Fehler:
        return QMessageBox::Critical;
    case Stil::Frage:
        return QMessageBox::Question;
    }
    return QMessageBox::NoIcon;
}

/// Each answer, the button that gives it, and the button's text: German whether or not Qt's own
/// translations are installed.
struct Knopfzuordnung {
    Antwort antwort;
    QMessageBox::StandardButton knopf;
    const char* text;
};
constexpr std::array<Knopfzuordnung, 4> KnopfZuordnung{{
    {Antwort::Ok, QMessageBox::Ok, "OK"},
    {Antwort::Abbrechen, QMessageBox::Cancel, "Abbrechen"},
    {Antwort::Ja, QMessageBox::Yes, "Ja"},
    {Antwort::Nein, QMessageBox::No, "Nein"},
}};

/// Gives every standard button of the box its German text.
void KnöpfeBeschriften(QMessageBox& box) {
    for (const Knopfzuordnung& z : KnopfZuordnung)
        if (QAbstractButton* knopf = box.button(z.knopf))
            knopf->setText(QString::fromUtf8(z.text));
}

long long MonotonMs() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace

QMessageBox::StandardButtons KnöpfeVon(Knöpfe knöpfe) {
    switch (knöpfe) {
    case Knöpfe::JaNein:
        return QMessageBox::Yes | QMessageBox::No;
    case Knöpfe::JaNeinAbbrechen:
        return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    case Knöpfe::OkAbbrechen:
        return QMessageBox::Ok | QMessageBox::Cancel;
    }
    return QMessageBox::Ok;
}

QMessageBox::StandardButton KnopfVon(Antwort antwort) {
    for (const Knopfzuordnung& z : KnopfZuordnung)
        if (z.antwort == antwort)
            return z.knopf;
    return QMessageBox::NoButton;
}

Antwort AntwortVon(QMessageBox::StandardButton knopf, Antwort ohne) {
    for (const Knopfzuordnung& z : KnopfZuordnung)
        if (z.knopf == knopf)
            return z.antwort;
    return ohne;
}

void QtTexteDeutsch(QCoreApplication& anwendung) {
    auto* übersetzung = new QTranslator(&anwendung);
    if (übersetzung->load(QLocale(QLocale::German, QLocale::Germany), QStringLiteral("qtbase"),
                          QStringLiteral("_"), QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(übersetzung);
    else
        delete übersetzung;
}

QtOberfläche::QtOberfläche() : m_filter(std::make_unique<AbbruchFilter>()) {
    QCoreApplication::instance()->installEventFilter(m_filter.get());
}

QtOberfläche::~QtOberfläche() {
    if (QCoreApplication::instance())
        QCoreApplication::instance()->removeEventFilter(m_filter.get());
}

void QtOberfläche::FensterSetzen(QWidget* fenster) { m_fenster = fenster; }

void QtOberfläche::StatusleisteVerbinden(const std::array<QLabel*, 6>& panels,
                                         QProgressBar* fortschritt) {
    for (std::size_t i = 0; i < panels.size(); ++i)
        m_panels[i] = panels[i];
    m_fortschritt = fortschritt;
    if (m_fortschritt)
        m_fortschritt->hide();
}

void QtOberfläche::ProtokollZielSetzen(std::function<void(const QString&)> ziel) {
    m_protokollZiel = std::move(ziel);
}

QWidget* QtOberfläche::Eltern() const {
    // A hidden main window (map alone, batch run) is no parent: the box would open off screen.
    return m_fenster && m_fenster->isVisible() ? m_fenster.data() : nullptr;
}

void QtOberfläche::Zeigen(QMessageBox& box) {
    KnöpfeBeschriften(box);
    // A box opened from inside a poll (by a timer) must take its clicks and keys.
    const bool abfrage = std::exchange(m_filter->abfrage, false);
    box.exec();
    m_filter->abfrage = abfrage;
}

void QtOberfläche::Meldung(std::string_view text, std::string_view titel, Stil stil) {
    QMessageBox box(SymbolVon(stil), QText(titel), QText(text), QMessageBox::Ok, Eltern());
    box.setDefaultButton(QMessageBox::Ok);
    Zeigen(box);
}

Antwort QtOberfläche::Frage(const Fragestellung& frage) {
    QMessageBox box(QMessageBox::Question, QText(frage.titel), QText(frage.text),
                    KnöpfeVon(frage.knöpfe), Eltern());
    if (QAbstractButton* vorgabe = box.button(KnopfVon(frage.vorgabe)))
        box.setDefaultButton(qobject_cast<QPushButton*>(vorgabe));
    const Antwort ohne = frage.knöpfe == Knöpfe::JaNein ? Antwort::Nein : Antwort::Abbrechen;
    box.setEscapeButton(box.button(KnopfVon(ohne)));
    Zeigen(box);
    return AntwortVon(box.standardButton(box.clickedButton()), ohne);
}

std::string QtOberfläche::Eingabe(std::string_view text, std::string_view titel, std::string_view vorgabe) {
    bool ok = false;
    const QString eingabe =
        QInputDialog::getText(Eltern(), QText(titel), QText(text), QLineEdit::Normal, QText(vorgabe), &ok);
    return ok ? eingabe.toStdString() : std::string();
}

void QtOberfläche::Status(int panel, std::string_view text) {
    if (panel < 1 || panel > static_cast<int>(m_panels.size()))
        return;
    if (QLabel* label = m_panels[static_cast<std::size_t>(panel - 1)]) {
        label->setText(QText(text));
        // A panel is narrower than a long text (a path): the tooltip shows it whole.
        label->setToolTip(label->text());
    }
    Zeichnen();
}

void QtOberfläche::Fortschritt(long long wert, long long max) {
    if (!m_fortschritt)
        return;
    if (max <= 0 || wert >= max) {
        m_fortschritt->hide();
    } else {
        // The bar counts in int: long counts are shown in thousandths.
        constexpr int Schritte = 1000;
        const long long teil = wert <= 0 ? 0 : wert * Schritte / max;
        m_fortschritt->setRange(0, Schritte);
        m_fortschritt->setValue(static_cast<int>(teil));
        m_fortschritt->show();
    }
    Zeichnen();
}

bool QtOberfläche::AbbruchGewünscht() {
    m_filter->abfrage = true;
    QCoreApplication::processEvents(QEventLoop::AllEvents);
    m_filter->abfrage = false;
    const bool abbruch = m_filter->abbruch;
    m_filter->abbruch = false;
    return abbruch;
}

void QtOberfläche::Hinweis(std::string_view text, std::string_view titel, int sekunden) {
    QMessageBox box(QMessageBox::Information, QText(titel), QText(text), QMessageBox::Ok, Eltern());
    box.setDefaultButton(QMessageBox::Ok);
    // An unattended run waits on nothing: the box goes by itself.
    QTimer::singleShot(std::max(0, sekunden) * 1000, &box, &QMessageBox::accept);
    Zeigen(box);
}

void QtOberfläche::Protokoll(std::string_view zeile) {
    if (m_protokollZiel)
        m_protokollZiel(QText(zeile));
    else
        std::cerr << zeile << '\n';
}

void QtOberfläche::Zeichnen() {
    constexpr long long AbstandMs = 40;
    const long long jetzt = MonotonMs();
    if (m_letztesZeichnen >= 0 && jetzt - m_letztesZeichnen < AbstandMs)
        return;
    m_letztesZeichnen = jetzt;
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

} // namespace flurix::gui
