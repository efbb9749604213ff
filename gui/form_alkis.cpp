// The NAS work window: its controls, the run after the first paint, opening, the work of the
// toolbar that goes to the session, hiding and ending.

#include "gui/form_alkis.hpp"

#include "core/benutzereinstellungen.hpp"
#include "core/datenbank.hpp"
#include "core/kataster.hpp"
#include "core/programm.hpp"
#include "gui/form_nas_darstellung.hpp"
#include "gui/nas_filterzeile.hpp"
#include "gui/nas_tabellenmodell.hpp"
#include "gui/qt_oberflaeche.hpp"
#include "gui/qt_text.hpp"
#include "nas/nas_arbeitsbereich.hpp"
#include "nas/nas_einlesen.hpp"
#include "nas/nas_lauf.hpp"

#include <QAction>
#include <QCloseEvent>
#include <QComboBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QSplitter>
#include <QStatusBar>
#include <QTableView>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <string_view>

namespace flurix::gui {
namespace {

constexpr char Titel[] = "Flurix-NAS";

/// A command of the toolbar (Coolbar2).
struct Knopf {
    const char* name;
    QStyle::StandardPixmap symbol;
    const char* text;
    const char* tipp;
    void (*aufruf)(FormAlkis&);
};

const Knopf Knöpfe[] = {
    {"btnDbÖffnen", QStyle::SP_DialogOpenButton, "Öffnen",
     "NAS-Datei oder gespeicherte NAS-Datenbank öffnen", [](FormAlkis& f) { f.DbOeffnen(); }},
    {"btnDbSpeichernUnter", QStyle::SP_DialogSaveButton, "Speichern",
     "NAS-Datenbank oder Tabelle speichern unter: Access, Excel, Geograf, ACAD",
     [](FormAlkis& f) { f.SpeichernUnterDialog(); }},
    {"btnSQLAbfrage", QStyle::SP_FileDialogContentsView, "SQL-Abfrage",
     "Eine SQL-Anweisung auf der NAS-Datenbank ausführen",
     [](FormAlkis& f) { f.SqlAbfrageDialog(); }},
    {"btnSQLZuordnung", QStyle::SP_FileDialogListView, "Zuordnung",
     "NAS-Daten zur Tabelle Alkis zusammenstellen (ALKIS_Zuordnung.dat)",
     [](FormAlkis& f) { f.Zuordnung(); }},
    {"btnDirektNachFlurix", QStyle::SP_MediaSeekForward, "Direkt nach Flurix",
     "Zusammenstellen und in die Flurix-Tabelle übernehmen",
     [](FormAlkis& f) { f.DirektNachFlurix(); }},
    {"btnNachFlurix", QStyle::SP_ArrowForward, "Nach Flurix",
     "Die Tabelle Alkis in die Flurix-Tabelle übernehmen", [](FormAlkis& f) { f.NachFlurix(); }},
    {"btnDatenansicht", QStyle::SP_FileDialogInfoView, "Datenansicht",
     "Die aktuelle Zeile als Liste von Feld und Wert", [](FormAlkis& f) { f.Datenansicht(); }},
    {"btnALKISausblenden", QStyle::SP_ArrowDown, "Ausblenden",
     "Fenster ausblenden, die NAS-Datenbank bleibt geöffnet", [](FormAlkis& f) { f.Ausblenden(); }},
    {"btnEnde", QStyle::SP_DialogCloseButton, "Ende",
     "Flurix-NAS beenden und die NAS-Datenbank schließen", [](FormAlkis& f) { f.Beenden(); }},
};

/// The filters of the open dialog: a NAS file, or a NAS database saved before.
const QString ÖffnenFilter = QStringLiteral("NAS (*.xml);;NAS (*.mdb *.sqlite)");

} // namespace

static_assert(std::is_same_v<FormAlkis::Tabellenaenderung, nas::Tabellenänderung>);

FormAlkis::FormAlkis(Programmzustand& zustand, QtOberfläche& ui, Tabellenaenderung tabelle,
                     QWidget* eltern)
    : QMainWindow(eltern), m_zustand(zustand), m_ui(ui), m_tabelle(std::move(tabelle)),
      m_bereich(std::make_unique<nas::NasArbeitsbereich>(zustand, ui)),
      m_benutzerordner(Benutzereinstellungen::StandardOrdner()) {
    setObjectName(QStringLiteral("FormALKIS"));
    setWindowTitle(QString::fromUtf8(Titel));
    BedienelementeAnlegen();
    m_ui.ProtokollZielSetzen([box = QPointer<QPlainTextEdit>(m_protokoll)](const QString& zeile) {
        if (box)
            box->appendPlainText(zeile);
    });
    DatenbestandZeigen();
    resize(1000, 700);
}

FormAlkis::~FormAlkis() {
    m_ui.ProtokollZielSetzen({});
    // The grid reads from the session's database: it goes first.
    m_modell->AbfrageSetzen(nullptr);
}

QAction* FormAlkis::Befehl(const QString& name, QStyle::StandardPixmap symbol, const QString& text,
                           const QString& tipp) {
    QAction* aktion = m_werkzeugleiste->addAction(style()->standardIcon(symbol), text);
    aktion->setObjectName(name);
    aktion->setToolTip(tipp);
    return aktion;
}

void FormAlkis::BedienelementeAnlegen() {
    m_werkzeugleiste = addToolBar(QStringLiteral("Werkzeugleiste"));
    m_werkzeugleiste->setObjectName(QStringLiteral("Coolbar2"));
    m_werkzeugleiste->setMovable(false);
    m_werkzeugleiste->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    // The style's icons come in 16 and 32 pixels; between them some would stay small.
    m_werkzeugleiste->setIconSize(QSize(32, 32));

    for (const Knopf& k : Knöpfe) {
        QAction* aktion = Befehl(QString::fromUtf8(k.name), k.symbol, QString::fromUtf8(k.text),
                                 QString::fromUtf8(k.tipp));
        connect(aktion, &QAction::triggered, this, [this, aufruf = k.aufruf] { aufruf(*this); });
        if (std::string_view(k.name) == "btnNachFlurix")
            m_nachFlurix = aktion;
        if (std::string_view(k.name) != "btnDatenansicht")
            continue;
        // The menu of the XML tools follows the data view, then a gap before hide and end.
        auto* werkzeuge = new QToolButton(m_werkzeugleiste);
        werkzeuge->setObjectName(QStringLiteral("btnXMLTools"));
        werkzeuge->setText(QStringLiteral("XML-Tools"));
        werkzeuge->setToolTip(QStringLiteral("Werkzeuge für NAS-Dateien"));
        werkzeuge->setIcon(style()->standardIcon(QStyle::SP_DirIcon));
        werkzeuge->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        werkzeuge->setPopupMode(QToolButton::InstantPopup);
        werkzeuge->setMenu(XmlWerkzeugeAnlegen());
        m_werkzeugleiste->addWidget(werkzeuge);
        m_werkzeugleiste->addSeparator();
    }

    // The protocol below the grid, its height shared by a splitter.
    auto* protokollteil = new QWidget(this);
    m_protokoll = new QPlainTextEdit(protokollteil);
    m_protokoll->setObjectName(QStringLiteral("txtALKISErr"));
    m_protokoll->setReadOnly(true);
    m_protokoll->setLineWrapMode(QPlainTextEdit::NoWrap);
    auto* leeren = new QPushButton(QStringLiteral("Protokoll leeren"), protokollteil);
    leeren->setObjectName(QStringLiteral("btnClearInfoManager"));
    connect(leeren, &QPushButton::clicked, m_protokoll, &QPlainTextEdit::clear);
    auto* protokollLayout = new QVBoxLayout(protokollteil);
    protokollLayout->setContentsMargins(0, 0, 0, 0);
    protokollLayout->addWidget(m_protokoll);
    protokollLayout->addWidget(leeren, 0, Qt::AlignLeft);

    auto* teiler = new QSplitter(Qt::Vertical, this);
    teiler->addWidget(TabellenbereichAnlegen());
    teiler->addWidget(protokollteil);
    teiler->setStretchFactor(0, 3);
    teiler->setStretchFactor(1, 1);
    m_mitte = teiler;
    setCentralWidget(teiler);
    statusBar()->setObjectName(QStringLiteral("Statusleiste"));
}

nas::NasOptionen FormAlkis::OptionenLesen() const {
    try {
        return nas::NasOptionen::AusText(Benutzereinstellungen(m_benutzerordner)
                                             .Lesen(nas::NasOptionenAnwendung,
                                                    nas::NasOptionenAbschnitt,
                                                    nas::NasOptionenSchlüssel));
    } catch (const Fehler&) {
        return {}; // settings that can't be read: the defaults
    }
}

void FormAlkis::Sperren(bool gesperrt) {
    m_beschaeftigt = gesperrt;
    m_werkzeugleiste->setEnabled(!gesperrt);
    // The window itself stays enabled: Escape must reach the poll of the running work.
    m_mitte->setEnabled(!gesperrt);
}

void FormAlkis::DatenbestandZeigen() {
    const bool daten = m_bereich->HatDaten();
    {
        const QSignalBlocker stumm(m_tabellen);
        m_tabellen->clear();
        for (const std::string& tabelle : m_bereich->Tabellen())
            m_tabellen->addItem(QText(tabelle));
        m_tabellen->setCurrentIndex(m_tabellen->findText(QText(m_gezeigt), Qt::MatchFixedString));
    }
    m_nachFlurix->setEnabled(daten && m_bereich->HatAlkis());
    const auto& antrag = m_bereich->Stand().antrag;
    m_antrag->setText(daten ? QText(m_bereich->Datei().filename().string() + "   " +
                                    antrag.AntragsText() + "   " + antrag.SystemText())
                            : QString());
}

void FormAlkis::Starten(const nas::NasLaufauftrag& auftrag) {
    if (!auftrag.still)
        show();
    // Timer1: the work starts from the event loop, once the window is painted.
    QTimer::singleShot(0, this, [this, auftrag] { Laufen(auftrag); });
}

Ergebnis FormAlkis::Laufen(const nas::NasLaufauftrag& auftrag) {
    if (m_beschaeftigt)
        return Ergebnis::Abbruch();
    Sperren(true);
    m_bereich->optionen = OptionenLesen();
    m_bereich->interaktiv = !auftrag.still;
    SpaltenbreitenSichern();
    const std::filesystem::path vorher = m_bereich->Datenbankpfad();
    const std::string gezeigt = m_gezeigt;
    // The open replaces the database the grid reads: the grid lets go of it first.
    GridLeeren();
    statusBar()->showMessage(QStringLiteral("Datenbank wird geladen, bitte warten..."));
    nas::NasLaufbericht bericht;
    Ergebnis ergebnis;
    try {
        ergebnis = nas::NasLauf(*m_bereich, auftrag, m_tabelle, bericht);
    } catch (const std::exception& fehler) {
        m_ui.Meldung(fehler.what(), Titel, Stil::Fehler);
        ergebnis = Ergebnis::Fehlschlag(fehler.what());
    }
    statusBar()->clearMessage();
    Sperren(false);
    const bool neu = m_bereich->Datenbankpfad() != vorher;
    DatenbestandZeigen();
    // A failed open keeps the data set: its table comes back as it was, without a second warning.
    if (!neu && !gezeigt.empty())
        TabelleZeigen(gezeigt, false);
    else if (neu && auftrag.direktImport && m_bereich->HatAlkis())
        TabelleZeigen("Alkis");
    if (neu && ergebnis && m_bereich->optionen.sqlAbfrage && !auftrag.still)
        SqlAbfrageDialog();
    return ergebnis;
}

void FormAlkis::DbOeffnen() {
    if (m_beschaeftigt)
        return;
    const QString datei = QFileDialog::getOpenFileName(
        this, QStringLiteral("NAS-Datei öffnen"), QText(m_zustand.dialogStartordner), ÖffnenFilter);
    if (datei.isEmpty())
        return;
    nas::NasOptionen optionen;
    NasStart wahl = NasStart::Abbruch;
    try {
        wahl =
            FormNasDarstellung::Bearbeiten(Benutzereinstellungen(m_benutzerordner), optionen, this);
    } catch (const Fehler& fehler) {
        m_ui.Meldung(fehler.what(), Titel, Stil::Fehler);
        return;
    }
    if (wahl == NasStart::Abbruch)
        return;
    nas::NasLaufauftrag auftrag;
    auftrag.datei = PfadAus(datei);
    auftrag.direktImport = wahl == NasStart::Direkt;
    Laufen(auftrag);
}

void FormAlkis::GridLeeren() {
    SpaltenbreitenSichern();
    m_modell->AbfrageSetzen(nullptr);
    m_gezeigt.clear();
    m_filterzeile->SpaltenAnlegen();
}

void FormAlkis::NachÄnderung() {
    DatenbestandZeigen();
    if (!m_gezeigt.empty() && m_bereich->HatDaten() &&
        m_bereich->Db().TabelleVorhanden(m_gezeigt)) {
        try {
            m_modell->Verwerfen();
            return;
        } catch (const Fehler&) {
            // read it anew below
        }
    }
    if (!m_gezeigt.empty())
        GridLeeren();
}

Ergebnis FormAlkis::Arbeiten(bool alkisNeu, const std::function<Ergebnis()>& arbeit) {
    if (m_beschaeftigt || !m_bereich->HatDaten())
        return Ergebnis::Abbruch();
    Sperren(true);
    m_bereich->optionen = OptionenLesen();
    // The compilation makes Alkis anew: a grid that shows it lets go of it.
    if (alkisNeu && m_gezeigt == "Alkis")
        GridLeeren();
    Ergebnis ergebnis;
    try {
        ergebnis = arbeit();
    } catch (const std::exception& fehler) {
        m_ui.Meldung(fehler.what(), Titel, Stil::Fehler);
        ergebnis = Ergebnis::Fehlschlag(fehler.what());
    }
    Sperren(false);
    if (alkisNeu)
        NachÄnderung();
    return ergebnis;
}

Ergebnis FormAlkis::Zuordnung() {
    nas::Zusammenstellungsbericht bericht;
    const Ergebnis ergebnis = Arbeiten(true, [&] { return m_bereich->Zusammenstellen(bericht); });
    if (m_bereich->HatAlkis() && !m_beschaeftigt)
        TabelleZeigen("Alkis");
    return ergebnis;
}

Ergebnis FormAlkis::DirektNachFlurix() {
    nas::NasDirektBericht bericht;
    return Arbeiten(true, [&] {
        return m_tabelle(
            [&](Kataster& kataster) { return m_bereich->DirektNachFlurix(kataster, bericht); });
    });
}

Ergebnis FormAlkis::NachFlurix() {
    nas::NachFlurixBericht bericht;
    return Arbeiten(false, [&] {
        return m_tabelle(
            [&](Kataster& kataster) { return m_bereich->NachFlurix(kataster, bericht); });
    });
}

void FormAlkis::Ausblenden() {
    SpaltenbreitenSichern();
    hide();
    emit ausgeblendet();
}

bool FormAlkis::Beenden() { return close(); }

void FormAlkis::closeEvent(QCloseEvent* ereignis) {
    Fragestellung frage;
    frage.text = "Wollen Sie den Flurix-NAS jetzt wirklich beenden?\n"
                 "Die ALKIS-Datenbank wird dann geschlossen und kann nicht im MAP-Viewer weiter "
                 "verwendet werden!   ";
    frage.titel = Titel;
    if (m_beschaeftigt || m_ui.Frage(frage) != Antwort::Ja) {
        ereignis->ignore();
        return;
    }
    GridLeeren();
    // The database closes and its work file goes; a new session stands ready for the next file.
    m_bereich = std::make_unique<nas::NasArbeitsbereich>(m_zustand, m_ui);
    DatenbestandZeigen();
    ereignis->accept();
    emit beendet();
}

} // namespace flurix::gui
