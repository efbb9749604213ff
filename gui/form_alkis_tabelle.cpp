// The table part of the NAS work window: the table list, the grid with its hidden columns, sort and
// filter row, the column widths kept for the user, and the data view of one row.

#include "gui/form_alkis.hpp"

#include "core/programm.hpp"
#include "nas/nas_abfrage.hpp"
#include "nas/nas_arbeitsbereich.hpp"

#include "core/benutzereinstellungen.hpp"
#include "core/datenbank.hpp"
#include "core/text.hpp"
#include "gui/nas_filterzeile.hpp"
#include "gui/nas_tabellenmodell.hpp"
#include "gui/qt_oberflaeche.hpp"
#include "gui/qt_text.hpp"
#include "gui/spaltenbreiten.hpp"

#include <QComboBox>
#include <QDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStatusBar>
#include <QTableView>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <map>

namespace flurix::gui {
namespace {

constexpr char Titel[] = "Flurix-NAS";

/// Where the grid's column widths are kept: "Name:Breite;..." in twips, one list for the columns
/// of all tables (most names stand for the same kind of value in every table).
constexpr char BreitenAnwendung[] = "MyApplication";
constexpr char BreitenAbschnitt[] = "GridDAO";
constexpr char BreitenSchlüssel[] = "ColWidths";

using Breiten = std::map<std::string, int, std::less<>>;

/// Pixels a column takes at least and at most when it has no kept width.
constexpr int MindestBreite = 40;
constexpr int HöchstBreite = 240;
/// Rows measured for that width: one page, read anyway for the first screen.
constexpr int SeitenZeilenFürBreite = static_cast<int>(nas::SeitenGröße);

Breiten BreitenLesen(std::string_view text) {
    Breiten breiten;
    for (std::string_view teil : Teilen(text, ';')) {
        // A column name may hold ":" (gml:id): the width follows the last one.
        const auto doppelpunkt = teil.rfind(':');
        if (doppelpunkt == std::string_view::npos)
            continue;
        const double breite = ZahlLesen(teil.substr(doppelpunkt + 1));
        if (breite >= 1 && breite < 1e6)
            breiten[std::string(teil.substr(0, doppelpunkt))] = static_cast<int>(breite);
    }
    return breiten;
}

std::string BreitenText(const Breiten& breiten) {
    std::string text;
    for (const auto& [name, breite] : breiten)
        // ";" would split the entry: such a name keeps no width.
        if (name.find(';') == std::string::npos)
            text += (text.empty() ? "" : ";") + name + ":" + std::to_string(breite);
    return text;
}

} // namespace

QWidget* FormAlkis::TabellenbereichAnlegen() {
    auto* bereich = new QWidget(this);
    m_tabellen = new QComboBox(bereich);
    m_tabellen->setObjectName(QStringLiteral("ComboTbl"));
    m_tabellen->setPlaceholderText(QStringLiteral("(Tabelle wählen)"));
    m_tabellen->setMinimumContentsLength(30);
    m_tabellen->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    connect(m_tabellen, &QComboBox::textActivated, this,
            [this](const QString& tabelle) { TabelleZeigen(Utf8(tabelle)); });
    m_antrag = new QLabel(bereich);
    m_antrag->setObjectName(QStringLiteral("lblAntrag"));
    auto* kopf = new QHBoxLayout;
    kopf->addWidget(new QLabel(QStringLiteral("Tabelle:"), bereich));
    kopf->addWidget(m_tabellen);
    kopf->addSpacing(20);
    kopf->addWidget(m_antrag, 1);

    m_label = new QLabel(QString::fromUtf8(nas::SuchLabel), bereich);
    m_label->setObjectName(QStringLiteral("Label1"));

    m_grid = new QTableView(bereich);
    m_grid->setObjectName(QStringLiteral("GridDAO"));
    m_modell = new NasTabellenModell(this);
    m_grid->setModel(m_modell);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setWordWrap(false);
    m_grid->setAlternatingRowColors(true);
    // Fixed row heights: the view never asks a row for its size, so rows are read only when shown.
    m_grid->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_grid->verticalHeader()->setDefaultSectionSize(m_grid->fontMetrics().height() + 6);
    QHeaderView* spaltenkopf = m_grid->horizontalHeader();
    spaltenkopf->setSectionsClickable(true);
    spaltenkopf->setSectionsMovable(true);
    connect(spaltenkopf, &QHeaderView::sectionClicked, this, [this, spaltenkopf](int spalte) {
        const nas::Seitenabfrage* abfrage = m_modell->Abfrage();
        if (!abfrage || m_beschaeftigt)
            return;
        // A second click on the same column turns the order round.
        const bool absteigend = abfrage->Sortierspalte() == spalte && !abfrage->Absteigend();
        const Qt::SortOrder folge = absteigend ? Qt::DescendingOrder : Qt::AscendingOrder;
        m_modell->sort(spalte, folge);
        spaltenkopf->setSortIndicatorShown(true);
        spaltenkopf->setSortIndicator(spalte, folge);
        if (!m_modell->Fehlertext().isEmpty())
            m_ui.Meldung(Utf8(m_modell->Fehlertext()), Titel, Stil::Fehler);
    });

    m_filterzeile = new NasFilterzeile(*m_grid, bereich);
    connect(m_filterzeile, &NasFilterzeile::filterAngefordert, this, [this] { FilterAnwenden(); });
    connect(m_filterzeile, &NasFilterzeile::bearbeitungBegonnen, this,
            [this] { m_label->setText(QString::fromUtf8(nas::FiltersucheLabel)); });

    auto* layout = new QVBoxLayout(bereich);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addLayout(kopf);
    layout->addWidget(m_label);
    layout->addWidget(m_filterzeile);
    layout->addWidget(m_grid, 1);
    return bereich;
}

bool FormAlkis::TabelleZeigen(const std::string& tabelle, bool warnen) {
    if (!m_bereich->HatDaten())
        return false;
    SpaltenbreitenSichern();
    std::unique_ptr<nas::Seitenabfrage> abfrage;
    std::int64_t zeilen = 0;
    try {
        abfrage = std::make_unique<nas::Seitenabfrage>(
            nas::Seitenabfrage::ÜberTabelle(m_bereich->Db(), tabelle));
        zeilen = abfrage->Zeilenzahl();
    } catch (const Fehler& fehler) {
        m_ui.Meldung(fehler.what(), Titel, Stil::Fehler);
        return false;
    }
    if (warnen && zeilen > nas::VisualisierungWarnenAb &&
        m_ui.Frage(nas::VisualisierungAbbrechenFrage(tabelle)) == Antwort::Ja) {
        GridLeeren();
        m_tabellen->setCurrentIndex(-1);
        return false;
    }
    m_modell->AbfrageSetzen(std::move(abfrage));
    m_gezeigt = tabelle;
    {
        const QSignalBlocker stumm(m_tabellen);
        m_tabellen->setCurrentIndex(m_tabellen->findText(QText(tabelle), Qt::MatchFixedString));
    }
    m_label->setText(QString::fromUtf8(nas::SuchLabel));
    SpaltenEinrichten();
    return true;
}

void FormAlkis::SpaltenEinrichten() {
    QHeaderView* kopf = m_grid->horizontalHeader();
    kopf->setSortIndicatorShown(false);
    kopf->setSortIndicator(-1, Qt::AscendingOrder);
    const nas::Seitenabfrage* abfrage = m_modell->Abfrage();
    Breiten breiten;
    try {
        breiten = BreitenLesen(Benutzereinstellungen(m_benutzerordner)
                                   .Lesen(BreitenAnwendung, BreitenAbschnitt, BreitenSchlüssel));
    } catch (const Fehler&) {
        // Without kept widths the grid takes its own.
    }
    const double maß =
        PixelJeTwip(m_grid->logicalDpiX(), m_grid->fontMetrics().horizontalAdvance(u'0'));
    // A column without a kept width gets its caption's and first rows' width, within limits: NAS
    // names are long ("flurstuecksnummer/AX_Flurstuecksnummer/zaehler"), and so are rings.
    kopf->setResizeContentsPrecision(SeitenZeilenFürBreite);
    for (int s = 0; abfrage && s < m_modell->columnCount(); ++s) {
        const std::string& name = abfrage->Spalten()[static_cast<std::size_t>(s)].name;
        const bool verborgen = nas::SpalteVerborgen(abfrage->Tabelle(), name);
        m_grid->setColumnHidden(s, verborgen);
        if (const auto breite = breiten.find(name); breite != breiten.end())
            m_grid->setColumnWidth(s, TwipsZuPixel(breite->second, maß));
        else if (!verborgen) {
            m_grid->resizeColumnToContents(s);
            m_grid->setColumnWidth(s,
                                   std::clamp(m_grid->columnWidth(s), MindestBreite, HöchstBreite));
        }
    }
    m_filterzeile->SpaltenAnlegen();
}

void FormAlkis::SpaltenbreitenSichern() const {
    const nas::Seitenabfrage* abfrage = m_modell ? m_modell->Abfrage() : nullptr;
    if (!abfrage || m_benutzerordner.empty())
        return;
    try {
        const Benutzereinstellungen einstellungen(m_benutzerordner);
        Breiten breiten =
            BreitenLesen(einstellungen.Lesen(BreitenAnwendung, BreitenAbschnitt, BreitenSchlüssel));
        const double maß =
            PixelJeTwip(m_grid->logicalDpiX(), m_grid->fontMetrics().horizontalAdvance(u'0'));
        for (int s = 0; s < m_modell->columnCount(); ++s)
            if (!m_grid->isColumnHidden(s))
                breiten[abfrage->Spalten()[static_cast<std::size_t>(s)].name] =
                    PixelZuTwips(m_grid->columnWidth(s), maß);
        einstellungen.Schreiben(BreitenAnwendung, BreitenAbschnitt, BreitenSchlüssel,
                                BreitenText(breiten));
    } catch (const Fehler&) {
        // Column widths are a convenience: the work goes on without them.
    }
}

bool FormAlkis::FilterAnwenden() {
    const nas::Seitenabfrage* abfrage = m_modell->Abfrage();
    if (!abfrage || m_beschaeftigt)
        return false;
    try {
        m_modell->Filtern(nas::Filterbedingung(abfrage->Spalten(), m_filterzeile->Texte()));
    } catch (const Fehler& fehler) {
        m_ui.Meldung(fehler.what(), Titel, Stil::Warnung);
        return false;
    }
    statusBar()->showMessage(QStringLiteral("%1 Datenzeilen").arg(m_modell->rowCount()));
    return true;
}

void FormAlkis::Datenansicht() {
    const nas::Seitenabfrage* abfrage = m_modell->Abfrage();
    const QModelIndex aktuell = m_grid->currentIndex();
    if (!abfrage || !aktuell.isValid())
        return;
    QDialog dialog(this);
    dialog.setObjectName(QStringLiteral("Datenansicht"));
    dialog.setWindowTitle(QStringLiteral("Datenansicht - Zeile %1").arg(aktuell.row() + 1));
    auto* liste = new QTableWidget(m_modell->columnCount(), 2, &dialog);
    liste->setObjectName(QStringLiteral("lstDatenansicht"));
    liste->setHorizontalHeaderLabels({QStringLiteral("Feld"), QStringLiteral("Wert")});
    liste->setEditTriggers(QAbstractItemView::NoEditTriggers);
    liste->verticalHeader()->hide();
    for (int s = 0; s < m_modell->columnCount(); ++s) {
        liste->setItem(
            s, 0,
            new QTableWidgetItem(QText(abfrage->Spalten()[static_cast<std::size_t>(s)].name)));
        liste->setItem(
            s, 1,
            new QTableWidgetItem(m_modell->index(aktuell.row(), s).data(Qt::EditRole).toString()));
    }
    liste->resizeColumnToContents(0);
    liste->horizontalHeader()->setStretchLastSection(true);
    auto* schließen = new QPushButton(QStringLiteral("Schließen"), &dialog);
    connect(schließen, &QPushButton::clicked, &dialog, &QDialog::accept);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(liste);
    layout->addWidget(schließen, 0, Qt::AlignRight);
    dialog.resize(600, 500);
    dialog.exec();
}

} // namespace flurix::gui
