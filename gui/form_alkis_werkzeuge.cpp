// The NAS work window's commands that leave the grid: "Speichern unter", the SQL query box and the
// menu of XML tools.

#include "gui/form_alkis.hpp"

#include "core/programm.hpp"
#include "nas/nas_abfrage.hpp"
#include "nas/nas_arbeitsbereich.hpp"

#include "core/datenbank.hpp"
#include "gui/dateifilter.hpp"
#include "gui/nas_tabellenmodell.hpp"
#include "gui/qt_oberflaeche.hpp"
#include "gui/qt_text.hpp"
#include "nas/nas_speichern.hpp"
#include "nas/xml_werkzeuge.hpp"

#include <QComboBox>
#include <QCoreApplication>
#include <QDialog>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

namespace flurix::gui {
namespace {

constexpr char Titel[] = "Flurix-NAS";

/// The XML tools in the order of their menu.
enum Werkzeug { Zusammenfügen, IdPrüfung, Ausdünnen, NachAnsi, GgOut };
constexpr std::array<const char*, 5> Werkzeugnamen = {
    "ALKIS-XML-Merge", "ALKIS-ID-Prüfung", "ALKIS-XML-Ausdünnen", "UTF8 nach ANSI", "GG-Out Batch"};

const QString XmlFilter = QStringLiteral("NAS (*.xml)");

} // namespace

// --- Speichern unter -------------------------------------------------------------------------

void FormAlkis::SpeichernUnterDialog() {
    if (m_beschaeftigt)
        return;
    const QStringList filter = QtDateifilterListe(nas::NasSpeicherFilter);
    QString gewählt = filter.value(0);
    const QString datei = QFileDialog::getSaveFileName(this, QStringLiteral("Speichern unter"),
                                                       QPfad(m_bereich->Datei().parent_path()),
                                                       filter.join(QStringLiteral(";;")), &gewählt);
    if (datei.isEmpty())
        return;
    const int nummer = FilterNummer(filter, gewählt);
    if (nummer < 1)
        return;
    SpeichernUnter(PfadAus(datei), static_cast<nas::NasZiel>(nummer));
}

Ergebnis FormAlkis::SpeichernUnter(const std::filesystem::path& datei, nas::NasZiel format) {
    if (m_beschaeftigt)
        return Ergebnis::Abbruch();
    nas::NasSpeicherauftrag auftrag;
    auftrag.ziel = datei;
    auftrag.format = format;
    auftrag.tabelle = m_gezeigt;
    if (const nas::Seitenabfrage* abfrage = m_modell->Abfrage()) {
        auftrag.abfrage = abfrage->Sql();
        // The visible columns in the order the grid shows them.
        const QHeaderView* kopf = m_grid->horizontalHeader();
        for (int sichtbar = 0; sichtbar < kopf->count(); ++sichtbar) {
            const int spalte = kopf->logicalIndex(sichtbar);
            if (!kopf->isSectionHidden(spalte))
                auftrag.spalten.push_back(
                    abfrage->Spalten()[static_cast<std::size_t>(spalte)].name);
        }
        for (const QModelIndex& zeile : m_grid->selectionModel()->selectedRows())
            auftrag.zeilen.push_back(zeile.row());
        std::sort(auftrag.zeilen.begin(), auftrag.zeilen.end());
    }
    Sperren(true);
    Ergebnis ergebnis;
    try {
        ergebnis = nas::ALKISspeichernUnter(*m_bereich, auftrag, m_ui);
    } catch (const std::exception& fehler) {
        m_ui.Meldung(fehler.what(), Titel, Stil::Fehler);
        ergebnis = Ergebnis::Fehlschlag(fehler.what());
    }
    Sperren(false);
    return ergebnis;
}

// --- the SQL query box -----------------------------------------------------------------------

void FormAlkis::SqlAbfrageDialog() {
    if (m_beschaeftigt || !m_bereich->HatDaten())
        return;
    QDialog dialog(this);
    dialog.setObjectName(QStringLiteral("SQLAbfrage"));
    dialog.setWindowTitle(QStringLiteral("SQL-Abfrage"));
    auto* text = new QPlainTextEdit(&dialog);
    text->setObjectName(QStringLiteral("txtSQL"));
    text->setPlaceholderText(QStringLiteral("Eine SQL-Anweisung, z.B.: SELECT * FROM Alkis WHERE "
                                            "Gemarkung LIKE \"Muster*\""));
    auto* ausführen = new QPushButton(QStringLiteral("Ausführen"), &dialog);
    ausführen->setObjectName(QStringLiteral("cmdAusfuehren"));
    ausführen->setDefault(true);
    auto* schließen = new QPushButton(QStringLiteral("Schließen"), &dialog);
    schließen->setObjectName(QStringLiteral("cmdSchliessen"));
    connect(ausführen, &QPushButton::clicked, &dialog,
            [this, text] { SqlAbfrage(Utf8(text->toPlainText())); });
    connect(schließen, &QPushButton::clicked, &dialog, &QDialog::accept);
    auto* knöpfe = new QHBoxLayout;
    knöpfe->addStretch(1);
    knöpfe->addWidget(ausführen);
    knöpfe->addWidget(schließen);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(text);
    layout->addLayout(knöpfe);
    dialog.resize(640, 260);
    dialog.exec();
}

nas::SqlAbfrageErgebnis FormAlkis::SqlAbfrage(const std::string& anweisung) {
    using Art = nas::SqlAbfrageErgebnis::Art;
    if (!m_bereich->HatDaten())
        return {Art::Fehler, {}, 0, "Keine NAS-Datenbank geöffnet!"};
    nas::SqlAbfrageErgebnis ergebnis = nas::SqlAbfrageAusführen(m_bereich->Db(), anweisung);
    switch (ergebnis.art) {
    case Art::Auswahl:
        try {
            SpaltenbreitenSichern();
            m_modell->AbfrageSetzen(std::make_unique<nas::Seitenabfrage>(
                nas::Seitenabfrage::ÜberAbfrage(m_bereich->Db(), ergebnis.auswahl)));
            m_gezeigt.clear();
            m_tabellen->setCurrentIndex(-1);
            m_label->setText(QString::fromUtf8(nas::SuchLabel));
            SpaltenEinrichten();
        } catch (const Fehler& fehler) {
            // Prepared once already; what fails now is the count.
            ergebnis = {Art::Fehler, {}, 0, fehler.what()};
            m_ui.Meldung(ergebnis.meldung, Titel, Stil::Fehler);
        }
        break;
    case Art::Änderung:
        NachÄnderung();
        m_ui.Meldung("SQL-Anweisung ausgeführt, geänderte Datensätze: " +
                         std::to_string(ergebnis.geändert) + "   ",
                     Titel, Stil::Information);
        break;
    case Art::Fehler:
        m_ui.Meldung(ergebnis.meldung, Titel, Stil::Fehler);
        break;
    }
    return ergebnis;
}

// --- the XML tools ---------------------------------------------------------------------------

QMenu* FormAlkis::XmlWerkzeugeAnlegen() {
    auto* menü = new QMenu(this);
    menü->setObjectName(QStringLiteral("mnuXMLTools"));
    for (std::size_t i = 0; i < Werkzeugnamen.size(); ++i) {
        QAction* eintrag = menü->addAction(QString::fromUtf8(Werkzeugnamen[i]));
        eintrag->setObjectName(QStringLiteral("mnuXMLTool_%1").arg(i));
        connect(eintrag, &QAction::triggered, this,
                [this, i] { XmlWerkzeug(static_cast<int>(i)); });
    }
    return menü;
}

void FormAlkis::XmlWerkzeug(int werkzeug) {
    if (m_beschaeftigt)
        return;
    const QString start = QText(m_zustand.dialogStartordner);
    const QString titel = QString::fromUtf8(Werkzeugnamen[static_cast<std::size_t>(werkzeug)]);
    std::vector<std::filesystem::path> dateien;
    std::filesystem::path ordner;
    if (werkzeug == Zusammenfügen) {
        for (const QString& datei : QFileDialog::getOpenFileNames(this, titel, start, XmlFilter))
            dateien.push_back(PfadAus(datei));
    } else if (werkzeug == GgOut) {
        const QString gewählt = QFileDialog::getExistingDirectory(this, titel, start);
        if (gewählt.isEmpty())
            return;
        ordner = PfadAus(gewählt);
        dateien = nas::XmlDateienImOrdner(ordner);
    } else {
        const QString datei = QFileDialog::getOpenFileName(this, titel, start, XmlFilter);
        if (!datei.isEmpty())
            dateien.push_back(PfadAus(datei));
    }
    if (dateien.empty() && werkzeug != GgOut)
        return;

    // The tools tell their results and failures themselves.
    Sperren(true);
    nas::XmlBericht bericht;
    try {
        switch (werkzeug) {
        case Zusammenfügen:
            nas::XmlZusammenfügen(dateien, {}, m_ui, bericht);
            break;
        case IdPrüfung:
            nas::XmlIdPrüfung(dateien.front(), m_ui, bericht);
            break;
        case Ausdünnen:
            nas::XmlAusdünnen(dateien.front(),
                              nas::ObjektreduzierungLesen(m_zustand.installation.Konfig() /
                                                          "ALKIS_Objektreduzierung.dat"),
                              m_ui, bericht);
            break;
        case NachAnsi:
            nas::XmlNachAnsi(dateien.front(), m_ui, bericht);
            break;
        case GgOut: {
            // The batch lines run the command-line program, which lies beside this one.
            const QString kommandozeile =
                QCoreApplication::applicationDirPath() + QStringLiteral("/flurix");
            const QString programm = QFileInfo::exists(kommandozeile)
                                         ? kommandozeile
                                         : QCoreApplication::applicationFilePath();
            nas::GgOutBatch(dateien, PfadAus(programm), ordner, false, m_ui, bericht);
            break;
        }
        default:
            break;
        }
    } catch (const std::exception& fehler) {
        m_ui.Meldung(fehler.what(), Titel, Stil::Fehler);
    }
    Sperren(false);
}

} // namespace flurix::gui
