#include "gui/form_datenbank.hpp"

#include "core/katalog.hpp"
#include "core/spaltenansicht.hpp"
#include "gui/dateifilter.hpp"
#include "gui/form_alkis.hpp"
#include "gui/form_datenbank_darstellung.hpp"
#include "gui/form_optionen_system.hpp"
#include "gui/kataster_modell.hpp"
#include "gui/qt_oberflaeche.hpp"
#include "gui/qt_text.hpp"
#include "import/laden.hpp"
#include "report/registerauszug.hpp"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QDesktopServices>
#include <QFileDialog>
#include <QKeySequence>
#include <QLabel>
#include <QMenu>
#include <QProgressBar>
#include <QStandardPaths>
#include <QStatusBar>
#include <QStyle>
#include <QTableView>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>

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
    : QMainWindow(eltern), m_zustand(zustand), m_format(format), m_ui(ui),
      m_benutzerordner(Benutzerordner()),
      m_dateiÖffnen([](const QUrl& adresse) { return QDesktopServices::openUrl(adresse); }),
      m_auszug(std::make_unique<report::Registerauszug>(report::PdfHerkunft{FensterTitel(), {}})) {
    setObjectName(QStringLiteral("FormDatenbank"));
    setWindowTitle(QText(FensterTitel()));
    // The empty table has the catalogue's columns, so that the grid shows the chosen view's header.
    SpaltenAnlegen(m_kataster);
    ComboColVis(m_kataster, m_zustand.gewünschteAnsicht, m_zustand.installation.Spaltenansichten());
    m_modell = new KatasterModell(m_kataster, m_nummerierung, m_ui, this);
    BedienelementeAnlegen();
    StatusleisteAnlegen();
    m_ui.FensterSetzen(this);
    m_ui.StatusleisteVerbinden(m_panels, m_fortschritt);
    resize(1100, 700);
}

FormDatenbank::~FormDatenbank() {
    delete m_nasFenster.data();
    // The grid still paints its header while QWidget's destructor closes the window, after the
    // table it shows (a member) is gone: it lets go of the model first.
    if (m_tabelle != nullptr)
        m_tabelle->setModel(nullptr);
}

QAction* FormDatenbank::Befehl(const QString& name, QStyle::StandardPixmap symbol,
                               const QString& text, const QString& tipp) {
    QAction* aktion = m_werkzeugleiste->addAction(style()->standardIcon(symbol), text);
    aktion->setObjectName(name);
    aktion->setToolTip(tipp);
    return aktion;
}

void FormDatenbank::BedienelementeAnlegen() {
    m_werkzeugleiste = addToolBar(QStringLiteral("Werkzeugleiste"));
    m_werkzeugleiste->setObjectName(QStringLiteral("Toolbar1"));
    m_werkzeugleiste->setMovable(false);
    m_werkzeugleiste->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    // The style's icons come in 16 and 32 pixels; between them some would stay small.
    m_werkzeugleiste->setIconSize(QSize(32, 32));

    QAction* öffnen =
        Befehl(QStringLiteral("btnDbÖffnen"), QStyle::SP_DialogOpenButton, QStringLiteral("Öffnen"),
               QStringLiteral("Daten einlesen: WLDGE, Flurix-Tabelle, Web-XML, "
                              "NAS, FKZ-Liste"));
    öffnen->setShortcut(QKeySequence::Open);
    QAction* nasFenster = Befehl(QStringLiteral("btnALKIS"), QStyle::SP_FileDialogListView,
                                 QStringLiteral("NAS"), QStringLiteral("Flurix-NAS: das Fenster der NAS-Daten"));
    QAction* system =
        Befehl(QStringLiteral("btnOptSystem"), QStyle::SP_DialogSaveButton,
               QStringLiteral("System"), QStringLiteral("Systemsicherung und Systemdateien"));
    m_werkzeugleiste->addSeparator();

    auto* ansichtText = new QLabel(QStringLiteral(" Spaltenansicht: "), m_werkzeugleiste);
    m_werkzeugleiste->addWidget(ansichtText);
    m_spaltenansicht = new QComboBox(m_werkzeugleiste);
    m_spaltenansicht->setObjectName(QStringLiteral("ComboSpaltenansicht"));
    m_spaltenansicht->setToolTip(QStringLiteral("Spaltenansicht der Tabelle"));
    m_spaltenansicht->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    AnsichtsboxFüllen();
    // A view the file doesn't have leaves the table as the catalogue made it, under "alles".
    m_spaltenansicht->setCurrentIndex(std::max(
        0, static_cast<int>(m_spaltenansicht->findText(QText(m_zustand.gewünschteAnsicht)))));
    m_werkzeugleiste->addWidget(m_spaltenansicht);
    m_werkzeugleiste->addSeparator();

    MarkierungsgruppeAnlegen();
    QAction* stempelPlus = Befehl(
        QStringLiteral("btnStempelPlus"), QStyle::SP_BrowserReload, QStringLiteral("Zahlenformat"),
        QStringLiteral("Flur, Flurstück, Fläche, Grundbuchblatt und BVNR ohne führende Nullen"));
    WerkzeugeAnlegen();
    AusgabeAnlegen();

    auto* abstand = new QWidget(m_werkzeugleiste);
    abstand->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    m_werkzeugleiste->addWidget(abstand);
    HilfeAnlegen();
    QAction* beenden = Befehl(QStringLiteral("btnBeenden"), QStyle::SP_DialogCloseButton,
                              QStringLiteral("Beenden"), QStringLiteral("Flurix beenden"));

    connect(öffnen, &QAction::triggered, this, [this] { DbOeffnen(); });
    connect(system, &QAction::triggered, this, [this] { OptSystem(); });
    connect(nasFenster, &QAction::triggered, this, [this] { NasFensterZeigen(); });
    connect(stempelPlus, &QAction::triggered, this, [this] { StempelPlus(); });
    connect(beenden, &QAction::triggered, this, [this] { BeendenKlick(); });
    connect(m_spaltenansicht, &QComboBox::currentTextChanged, this,
            [this](const QString& ansicht) { SpaltenansichtAnwenden(Utf8(ansicht)); });

    addToolBarBreak();
    m_suchleiste = SuchleisteAnlegen();
    addToolBar(m_suchleiste);
    TabelleAnlegen();
}

QToolButton* FormDatenbank::Gruppenknopf(const QString& name, QStyle::StandardPixmap symbol,
                                         const QString& text, const QString& tipp) {
    auto* knopf = new QToolButton(m_werkzeugleiste);
    knopf->setObjectName(name);
    knopf->setIcon(style()->standardIcon(symbol));
    knopf->setText(text);
    knopf->setToolTip(tipp);
    knopf->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    knopf->setPopupMode(QToolButton::InstantPopup);
    knopf->setMenu(new QMenu(knopf));
    m_werkzeugleiste->addWidget(knopf);
    return knopf;
}

void FormDatenbank::MarkierungsgruppeAnlegen() {
    QMenu* menü = Gruppenknopf(QStringLiteral("btnMarkierung"), QStyle::SP_DialogApplyButton,
                               QStringLiteral("Markierung"),
                               QStringLiteral("Markierungen setzen, löschen, laden und speichern"))
                      ->menu();
    struct Eintrag {
        const char* name;
        const char* text;
        void (FormDatenbank::*aktion)();
    };
    static constexpr std::array<Eintrag, 8> einträge{{
        {"btnDbMarkierungErzeugen", "Auswahl markieren", &FormDatenbank::MarkierungErzeugen},
        {"btnDbFlurstückMarkieren", "alle Eigentümerzeilen der gewählten Flurstücke markieren",
         &FormDatenbank::FlurstückMarkieren},
        {"btnDbMarkierungAlle", "alle Zeilen markieren", &FormDatenbank::MarkierungAlle},
        {"btnDbMarkerErzeugen", "Marker für die Karte erzeugen", &FormDatenbank::MarkerErzeugen},
        {"btnDbMarkierungLöschen", "alle Markierungen und Marker löschen",
         &FormDatenbank::MarkierungLöschen},
        {"btnDbMarkierungLaden", "Flurstücksliste laden und markieren …",
         &FormDatenbank::MarkierungLaden},
        {"btnDbMarkierungSpeichern", "Markierte als Flurstücksliste speichern …",
         &FormDatenbank::MarkierungSpeichern},
        {"btnDbEigentümerGGStempel", "Stempelnummern für den amtlichen Lageplan",
         &FormDatenbank::EigentümerGGStempel},
    }};
    for (const Eintrag& e : einträge) {
        if (e.aktion == &FormDatenbank::MarkierungLaden ||
            e.aktion == &FormDatenbank::EigentümerGGStempel)
            menü->addSeparator();
        QAction* aktion = menü->addAction(QString::fromUtf8(e.text));
        aktion->setObjectName(QString::fromUtf8(e.name));
        connect(aktion, &QAction::triggered, this, [this, f = e.aktion] { (this->*f)(); });
    }
}

void FormDatenbank::WerkzeugeAnlegen() {
    QMenu* menü = Gruppenknopf(QStringLiteral("btnTools"), QStyle::SP_FileDialogDetailedView,
                               QStringLiteral("Extras"),
                               QStringLiteral("Bearbeiten, Sortierung und Spalten der Tabelle"))
                      ->menu();
    const auto schalter = [&](const QString& name, const QString& text) {
        QAction* aktion = menü->addAction(text);
        aktion->setObjectName(name);
        aktion->setCheckable(true);
        return aktion;
    };
    m_entsperren = schalter(QStringLiteral("btnEntsperren"), QStringLiteral("Tabelle entsperren"));
    m_nachfragen =
        schalter(QStringLiteral("btnÄnderungNachfragen"), QStringLiteral("Änderungen nachfragen"));
    m_mehrfachsortierung =
        schalter(QStringLiteral("btnMehrfachsortierung"), QStringLiteral("Mehrfachsortierung"));
    menü->addSeparator();
    const auto befehl = [&](const QString& name, const QString& text, void (FormDatenbank::*f)()) {
        QAction* aktion = menü->addAction(text);
        aktion->setObjectName(name);
        connect(aktion, &QAction::triggered, this, [this, f] { (this->*f)(); });
    };
    befehl(QStringLiteral("ALBDatenAnsichtManuell"), QStringLiteral("Spalten auswählen …"),
           &FormDatenbank::AnsichtManuell);
    befehl(QStringLiteral("ALBDatenSpalteEdit"), QStringLiteral("Spaltenansichten bearbeiten …"),
           &FormDatenbank::AnsichtsdateiBearbeiten);
    befehl(QStringLiteral("ALBDatenSpalteNeu"), QStringLiteral("Spaltenansichten neu einlesen"),
           &FormDatenbank::AnsichtenNeuLesen);
    menü->addSeparator();
    befehl(QStringLiteral("ALBbtnDbSpaltenbreite"), QStringLiteral("Spaltenbreiten anpassen"),
           &FormDatenbank::SpaltenbreitenAnpassen);
    befehl(QStringLiteral("ALBDatenSpalteMin"), QStringLiteral("Spalten minimieren"),
           &FormDatenbank::SpaltenMinimieren);

    connect(m_entsperren, &QAction::toggled, this,
            [this](bool an) { m_modell->EntsperrtSetzen(an); });
    connect(m_nachfragen, &QAction::toggled, this,
            [this](bool an) { m_modell->NachfragenSetzen(an); });
    connect(m_mehrfachsortierung, &QAction::toggled, this, [this](bool) {
        // Each multi-sort starts with an empty list.
        m_sortierliste.Leeren();
        m_einzelsortierung.clear();
        SortierungZeigen();
    });
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
    SpaltenbreitenWiederherstellen();
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

void FormDatenbank::KarteZeitgeber() {
    m_ui.Meldung(NochNichtVerfügbar("Das Kartenfenster"), ProduktTitel, Stil::Information);
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

import::Ladebindung FormDatenbank::Bindung() {
    // The window binds its dialog, its model and its boxes to the load; the load decides the rest.
    import::Ladebindung bindung;
    bindung.optionenDialog = [this](import::ImportOptionen& optionen) {
        return FormDatenbankDarstellung::Bearbeiten(optionen, this);
    };
    bindung.tabelleÄndern = [this](const std::function<void()>& arbeit) {
        // A new table starts locked against edits; the model is reset around the change.
        m_entsperren->setChecked(false);
        Umbauen(arbeit);
    };
    bindung.vorDemLeeren = [this] { SpaltenbreitenSichern(); };
    bindung.nasFenster = [this](const std::filesystem::path& datei) { return NasFensterÖffnen(datei); };
    bindung.ansicht = Spaltenansicht();
    bindung.interaktiv = true;
    bindung.gemarkungsbox = true;
    return bindung;
}

void FormDatenbank::Geladen(const import::Ladeergebnis& geladen) {
    if (geladen.gemarkungsbox)
        GemarkungsboxFüllen(*geladen.gemarkungsbox, geladen.boxAusKennzeichen);
    // Even a failed read may have changed the columns.
    SuchspaltenFüllen();
}

Ergebnis FormDatenbank::Laden(const import::Ladeauftrag& auftrag) {
    Sperren(true);
    const import::Ladeergebnis geladen =
        import::DatenLaden(auftrag, m_optionen, m_zustand, Bindung(), m_kataster, m_ui);
    Geladen(geladen);
    Sperren(false);
    return geladen.ergebnis;
}

Ergebnis FormDatenbank::TabelleFüllen(const std::function<Ergebnis(Kataster&)>& füllen) {
    Sperren(true);
    const import::Ladeergebnis geladen = import::TabelleFüllen(
        [&](Kataster& kataster, Oberfläche&) { return füllen(kataster); }, m_zustand, Bindung(), m_kataster, m_ui);
    Geladen(geladen);
    Sperren(false);
    return geladen.ergebnis;
}

void FormDatenbank::Sperren(bool gesperrt) {
    m_beschaeftigt = gesperrt;
    m_werkzeugleiste->setEnabled(!gesperrt);
    m_suchleiste->setEnabled(!gesperrt);
    m_tabelle->setEnabled(!gesperrt);
}

bool FormDatenbank::BeendenKlick(int exitcode) {
    if (m_beendet)
        return true;
    Beendenumgebung umgebung;
    umgebung.benutzerordner = m_benutzerordner;
    umgebung.spaltenbreiten = Spaltenbreiten();
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
