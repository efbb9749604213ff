#include "gui/form_datenbank.hpp"

#include "gui/dateifilter.hpp"
#include "gui/form_datenbank_darstellung.hpp"
#include "gui/form_optionen_system.hpp"
#include "gui/qt_oberflaeche.hpp"
#include "gui/qt_text.hpp"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QFileDialog>
#include <QHeaderView>
#include <QKeySequence>
#include <QLabel>
#include <QProgressBar>
#include <QStandardPaths>
#include <QStatusBar>
#include <QStyle>
#include <QTableView>
#include <QTimer>
#include <QToolBar>

namespace flurix::gui {
namespace {

/// Delay of the command-line start after the window is shown, so that it is painted first.
constexpr int StartVerzögerungMs = 100;

/// Folder of the per-user settings (column widths and the like): ~/.config/flurix.
std::filesystem::path Benutzerordner() {
    return PfadAus(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)) /
           "flurix";
}

} // namespace

FormDatenbank::FormDatenbank(Programmzustand& zustand, Zahlenformat& format, QtOberfläche& ui,
                             QWidget* eltern)
    : QMainWindow(eltern), m_zustand(zustand), m_format(format), m_ui(ui) {
    setObjectName(QStringLiteral("FormDatenbank"));
    setWindowTitle(QText(FensterTitel()));
    BedienelementeAnlegen();
    StatusleisteAnlegen();
    m_ui.FensterSetzen(this);
    m_ui.StatusleisteVerbinden(m_panels, m_fortschritt);
    resize(1100, 700);
}

FormDatenbank::~FormDatenbank() = default;

void FormDatenbank::BedienelementeAnlegen() {
    m_werkzeugleiste = addToolBar(QStringLiteral("Werkzeugleiste"));
    m_werkzeugleiste->setObjectName(QStringLiteral("Toolbar1"));
    m_werkzeugleiste->setMovable(false);
    m_werkzeugleiste->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    // The style's icons come in 16 and 32 pixels; between them some would stay small.
    m_werkzeugleiste->setIconSize(QSize(32, 32));

    const auto befehl = [this](const QString& name, QStyle::StandardPixmap symbol,
                               const QString& text, const QString& tipp) {
        QAction* aktion = m_werkzeugleiste->addAction(style()->standardIcon(symbol), text);
        aktion->setObjectName(name);
        aktion->setToolTip(tipp);
        return aktion;
    };
    QAction* öffnen =
        befehl(QStringLiteral("btnDbÖffnen"), QStyle::SP_DialogOpenButton, QStringLiteral("Öffnen"),
               QStringLiteral("Daten einlesen: WLDGE, Flurix-Tabelle, Web-XML, "
                              "NAS, FKZ-Liste"));
    öffnen->setShortcut(QKeySequence::Open);
    QAction* system =
        befehl(QStringLiteral("btnOptSystem"), QStyle::SP_DialogSaveButton,
               QStringLiteral("System"), QStringLiteral("Systemsicherung und Systemdateien"));
    m_werkzeugleiste->addSeparator();

    auto* ansichtText = new QLabel(QStringLiteral(" Spaltenansicht: "), m_werkzeugleiste);
    m_werkzeugleiste->addWidget(ansichtText);
    m_spaltenansicht = new QComboBox(m_werkzeugleiste);
    m_spaltenansicht->setObjectName(QStringLiteral("ComboSpaltenansicht"));
    m_spaltenansicht->setToolTip(QStringLiteral("Spaltenansicht der Tabelle"));
    m_spaltenansicht->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    for (const std::string& ansicht : m_zustand.spaltenansichten)
        m_spaltenansicht->addItem(QText(ansicht));
    m_spaltenansicht->setCurrentIndex(
        static_cast<int>(m_spaltenansicht->findText(QText(m_zustand.gewünschteAnsicht))));
    m_werkzeugleiste->addWidget(m_spaltenansicht);

    auto* abstand = new QWidget(m_werkzeugleiste);
    abstand->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    m_werkzeugleiste->addWidget(abstand);
    QAction* beenden = befehl(QStringLiteral("btnBeenden"), QStyle::SP_DialogCloseButton,
                              QStringLiteral("Beenden"), QStringLiteral("Flurix beenden"));

    connect(öffnen, &QAction::triggered, this, [this] { DbOeffnen(); });
    connect(system, &QAction::triggered, this, [this] { OptSystem(); });
    connect(beenden, &QAction::triggered, this, [this] { BeendenKlick(); });

    // The table: the model over the cadastre table is set when it is loaded.
    m_tabelle = new QTableView(this);
    m_tabelle->setObjectName(QStringLiteral("GridFlurix"));
    m_tabelle->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_tabelle->horizontalHeader()->setHighlightSections(false);
    setCentralWidget(m_tabelle);
}

void FormDatenbank::StatusleisteAnlegen() {
    QStatusBar* leiste = statusBar();
    leiste->setObjectName(QStringLiteral("StatusBar1"));
    leiste->setSizeGripEnabled(true);
    for (std::size_t i = 0; i < m_panels.size(); ++i) {
        auto* panel = new QLabel(leiste);
        panel->setObjectName(QString::number(i + 1));
        panel->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
        panel->setMinimumWidth(60);
        leiste->addWidget(panel, i == 0 ? 0 : 1);
        m_panels[i] = panel;
    }
    m_panels[0]->setText(QStringLiteral("Status  "));
    m_fortschritt = new QProgressBar(leiste);
    m_fortschritt->setObjectName(QStringLiteral("Fortschritt"));
    m_fortschritt->setMaximumWidth(200);
    m_fortschritt->hide();
    leiste->addPermanentWidget(m_fortschritt);
}

QLabel* FormDatenbank::StatusPanel(int panel) const {
    if (panel < 1 || panel > static_cast<int>(m_panels.size()))
        return nullptr;
    return m_panels[static_cast<std::size_t>(panel - 1)];
}

void FormDatenbank::Starten() {
    const Auftrag& auftrag = m_zustand.auftrag;
    if (!auftrag.StillModus && !auftrag.MapModus)
        show();
    switch (auftrag.art) {
    case Startart::Interaktiv:
        break;
    case Startart::DateiLaden:
        QTimer::singleShot(StartVerzögerungMs, this, [this] { DateiLadenZeitgeber(); });
        break;
    case Startart::NasStapel:
        QTimer::singleShot(StartVerzögerungMs, this, [this] { NasStapelZeitgeber(); });
        break;
    case Startart::Karte:
        QTimer::singleShot(0, this, [this] { KarteZeitgeber(); });
        break;
    case Startart::Beenden:
        QTimer::singleShot(0, this, [this] { TimerEnd(1); });
        break;
    }
}

void FormDatenbank::DateiLadenZeitgeber() {
    const std::filesystem::path datei(m_zustand.auftrag.JobPfad());
    import::Ladeauftrag auftrag;
    auftrag.dateien = {datei};
    auftrag.vonKommandozeile = true;
    if (!import::EingabeartAusEndung(datei, auftrag.art))
        return; // the start-up accepts only the types that have a kind
    Laden(auftrag);
}

void FormDatenbank::NasStapelZeitgeber() {
    m_ui.Meldung(import::NochNichtVerfügbar("Der NAS-Arbeitsbereich"), ProduktTitel,
                 Stil::Information);
    TimerEnd(1);
}

void FormDatenbank::KarteZeitgeber() {
    m_ui.Meldung(import::NochNichtVerfügbar("Das Kartenfenster"), ProduktTitel, Stil::Information);
    // Closing the map ends the program without a question.
    TimerEnd(1);
}

void FormDatenbank::TimerEnd(int exitcode) {
    m_zustand.auftrag.StillModus = true;
    BeendenKlick(exitcode);
}

void FormDatenbank::DbOeffnen() {
    if (m_beschaeftigt)
        return;
    const QStringList filter = QtDateifilterListe(import::DateiFilter);
    QString gewählt = m_letzterFilter.isEmpty() ? filter.value(0) : m_letzterFilter;
    const QStringList dateien = QFileDialog::getOpenFileNames(
        this, QStringLiteral("Daten einlesen"), QText(m_zustand.dialogStartordner),
        filter.join(QStringLiteral(";;")), &gewählt);
    if (dateien.isEmpty())
        return;
    const int nummer = FilterNummer(filter, gewählt);
    if (nummer < 1)
        return; // the dialog returned no filter of ours: nothing to tell the kind by
    m_letzterFilter = gewählt;
    import::Ladeauftrag auftrag;
    auftrag.art = static_cast<import::Eingabeart>(nummer);
    for (const QString& datei : dateien)
        auftrag.dateien.push_back(PfadAus(datei));
    Laden(auftrag);
}

void FormDatenbank::OptSystem() {
    if (m_beschaeftigt)
        return;
    FormOptionenSystem::Anzeigen(m_zustand.installation.Konfig(), m_ui, this);
}

import::Ladeumgebung FormDatenbank::LadeumgebungAnlegen(){import::Ladeumgebung umgebung;
// The readers come with their modules; until then the load tells the user so.
umgebung.optionenDialog = [this](import::ImportOptionen& optionen) {
    return FormDatenbankDarstellung::Bearbeiten(optionen, this);
};
// The table model comes with the cadastre table; until then the table is always empty.
umgebung.tabellenZeilen = [] { return std::size_t{0}; };
umgebung.tabelleLeeren = [] {};
return umgebung;
} // namespace flurix::gui

Ergebnis FormDatenbank::Laden(const import::Ladeauftrag& auftrag) {
    Sperren(true);
    import::Ladeumgebung umgebung = LadeumgebungAnlegen();
    Ergebnis ergebnis = import::ALBDatenLaden(auftrag, umgebung, m_ui);
    Sperren(false);
    return ergebnis;
}

void FormDatenbank::Sperren(bool gesperrt) {
    m_beschaeftigt = gesperrt;
    m_werkzeugleiste->setEnabled(!gesperrt);
    m_tabelle->setEnabled(!gesperrt);
}

bool FormDatenbank::BeendenKlick(int exitcode) {
    if (m_beendet)
        return true;
    Beendenumgebung umgebung;
    umgebung.benutzerordner = Benutzerordner();
    const Ergebnis ergebnis = Beenden(m_zustand, m_format, m_ui, umgebung);
    if (ergebnis.status() == Ergebnis::Status::Abgebrochen)
        return false;
    // No second question, whatever still closes the window now.
    m_zustand.BeendenFragen = false;
    m_beendet = true;
    hide();
    m_programmEnde(exitcode);
    return true;
}

void FormDatenbank::closeEvent(QCloseEvent* ereignis) {
    if (m_beendet || (!m_beschaeftigt && BeendenKlick()))
        ereignis->accept();
    else
        ereignis->ignore();
}

} // namespace flurix::gui
