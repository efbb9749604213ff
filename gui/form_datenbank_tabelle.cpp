// The grid of the main window: the cadastre table through its model, column views and widths,
// the sort by header clicks, the selection, the edit lock and deletion.

#include "gui/form_datenbank.hpp"

#include "core/benutzereinstellungen.hpp"
#include "core/einstellungen.hpp"
#include "core/katalog.hpp"
#include "core/konfig_sicherung.hpp"
#include "core/spaltenansicht.hpp"
#include "gui/form_alb_ansicht.hpp"
#include "gui/kataster_delegate.hpp"
#include "gui/kataster_modell.hpp"
#include "gui/qt_oberflaeche.hpp"
#include "gui/qt_text.hpp"
#include "gui/spaltenbreiten.hpp"

#include <QAction>
#include <QComboBox>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStyle>
#include <QSignalBlocker>
#include <QTableView>

#include <algorithm>
#include <functional>
#include <queue>
#include <utility>

namespace flurix::gui {
namespace {

/// Narrowest and widest column the grid shows, in pixels, whatever the table says: a column fitted
/// to a cell of thousands of characters would push every other one out of sight.
constexpr int BreiteMindestens = 12;
constexpr int BreiteHöchstens = 900;

/// Texts of a column measured when its width is fitted: its longest ones.
constexpr std::size_t GemesseneTexte = 20;
/// Pixels beside the text of a cell or header.
constexpr int Textrand = 8;

/// Settings path of the column widths.
constexpr std::string_view EinstellungAnwendung = "MyApplication";
constexpr std::string_view EinstellungAbschnitt = "GridFlurix";
constexpr std::string_view EinstellungSchlüssel = "ColWidths";

} // namespace

void FormDatenbank::TabelleAnlegen() {
    m_tabelle = new QTableView(this);
    m_tabelle->setObjectName(QStringLiteral("GridFlurix"));
    m_tabelle->setModel(m_modell);
    m_tabelle->setItemDelegate(new KatasterDelegate(*m_modell, m_tabelle));
    m_tabelle->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_tabelle->setSelectionMode(QAbstractItemView::ExtendedSelection);
    // The model's flags decide: only an unlocked grid has editable cells.
    m_tabelle->setEditTriggers(QAbstractItemView::DoubleClicked |
                               QAbstractItemView::EditKeyPressed |
                               QAbstractItemView::AnyKeyPressed);
    m_tabelle->setWordWrap(false);
    m_tabelle->setTextElideMode(Qt::ElideRight);

    // One fixed height for every row: the view then places half a million rows by arithmetic and
    // never asks the model for the size of a row.
    QHeaderView* zeilen = m_tabelle->verticalHeader();
    zeilen->setSectionResizeMode(QHeaderView::Fixed);
    zeilen->setDefaultSectionSize(m_tabelle->fontMetrics().height() + 6);

    QHeaderView* kopf = m_tabelle->horizontalHeader();
    kopf->setHighlightSections(false);
    kopf->setSectionsClickable(true);
    kopf->setSectionResizeMode(QHeaderView::Interactive);
    kopf->setStretchLastSection(false);
    kopf->setContextMenuPolicy(Qt::CustomContextMenu);

    connect(kopf, &QHeaderView::sectionClicked, this,
            [this](int abschnitt) { KopfKlick(abschnitt); });
    connect(kopf, &QHeaderView::customContextMenuRequested, this,
            [this](const QPoint&) { KopfRechtsKlick(); });
    connect(kopf, &QHeaderView::sectionResized, this, [this](int abschnitt, int, int breite) {
        if (m_breitenSetzen)
            return;
        if (const auto spalte = m_modell->Spalte(abschnitt))
            m_kataster.Spalte(*spalte).breite = PixelZuTwips(breite, PixelJeTwip());
    });
    connect(m_tabelle->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this](const QItemSelection& neu, const QItemSelection& alt) {
                AuswahlÜbernehmen(neu, alt);
            });
    connect(m_modell, &QAbstractItemModel::modelReset, this, [this] { NachUmbau(); });
    m_tabelle->installEventFilter(this);
    setCentralWidget(m_tabelle);
    BreitenAnwenden();
}

// --- model notifications -------------------------------------------------------------------------

void FormDatenbank::Umbauen(const std::function<void()>& arbeit) {
    // The work may sort the table its own way: the header's sort mark would tell a wrong order.
    m_einzelsortierung.clear();
    const int oben = m_tabelle->verticalScrollBar()->value();
    const bool spiegeln = std::exchange(m_auswahlSpiegeln, false);
    {
        KatasterModell::Umbau umbau(*m_modell);
        arbeit();
    }
    m_tabelle->verticalScrollBar()->setValue(oben);
    m_auswahlSpiegeln = spiegeln;
}

void FormDatenbank::Zellenarbeit(const std::function<void()>& arbeit) {
    arbeit();
    m_modell->ZellenGeändert();
    AuswahlZeigen();
}

void FormDatenbank::NachUmbau() {
    BreitenAnwenden();
    AuswahlZeigen();
    SortierungZeigen();
}

double FormDatenbank::PixelJeTwip() const {
    return gui::PixelJeTwip(m_tabelle->logicalDpiX(),
                            m_tabelle->fontMetrics().horizontalAdvance(u'0'));
}

void FormDatenbank::BreitenAnwenden() {
    const bool vorher = std::exchange(m_breitenSetzen, true);
    const double maß = PixelJeTwip();
    for (int abschnitt = 0; abschnitt < m_modell->columnCount(); ++abschnitt)
        if (const auto spalte = m_modell->Spalte(abschnitt))
            m_tabelle->setColumnWidth(
                abschnitt, std::clamp(TwipsZuPixel(m_kataster.Spalte(*spalte).breite, maß),
                                      BreiteMindestens, BreiteHöchstens));
    m_breitenSetzen = vorher;
}

// --- selection -----------------------------------------------------------------------------------

void FormDatenbank::AuswahlZeigen() {
    const bool vorher = std::exchange(m_auswahlSpiegeln, false);
    QItemSelection auswahl;
    const int zeilen = std::min(m_modell->rowCount(), static_cast<int>(m_kataster.Zeilenzahl()));
    const int spalten = m_modell->columnCount();
    if (spalten > 0) {
        // One range for each run of selected rows.
        int anfang = -1;
        for (int z = 0; z <= zeilen; ++z) {
            const bool gewählt = z < zeilen && m_kataster.Ausgewählt(static_cast<std::size_t>(z));
            if (gewählt && anfang < 0) {
                anfang = z;
            } else if (!gewählt && anfang >= 0) {
                auswahl.select(m_modell->index(anfang, 0), m_modell->index(z - 1, spalten - 1));
                anfang = -1;
            }
        }
    }
    m_tabelle->selectionModel()->select(auswahl, QItemSelectionModel::ClearAndSelect);
    m_auswahlSpiegeln = vorher;
}

void FormDatenbank::AuswahlÜbernehmen(const QItemSelection& neu, const QItemSelection& alt) {
    if (!m_auswahlSpiegeln)
        return;
    const auto übernehmen = [this](const QItemSelection& bereiche, bool an) {
        for (const QItemSelectionRange& bereich : bereiche)
            for (int z = bereich.top(); z <= bereich.bottom(); ++z)
                if (static_cast<std::size_t>(z) < m_kataster.Zeilenzahl())
                    m_kataster.Auswählen(static_cast<std::size_t>(z), an);
    };
    übernehmen(alt, false);
    übernehmen(neu, true);
    m_ui.Status(1, std::to_string(m_kataster.AnzahlAusgewählt()) + " Zeile(n) selektiert  ");
}

void FormDatenbank::ZurErstenAuswahl() {
    for (std::size_t z = 0;
         z < m_kataster.Zeilenzahl() && static_cast<int>(z) < m_modell->rowCount(); ++z) {
        if (!m_kataster.Ausgewählt(z))
            continue;
        const QModelIndex erste = m_modell->index(static_cast<int>(z), 0);
        m_tabelle->selectionModel()->setCurrentIndex(erste, QItemSelectionModel::NoUpdate);
        m_tabelle->scrollTo(erste, QAbstractItemView::PositionAtTop);
        return;
    }
}

// --- sort by header clicks -----------------------------------------------------------------------

void FormDatenbank::KopfKlick(int abschnitt) {
    const auto spalte = m_modell->Spalte(abschnitt);
    if (!spalte || m_beschaeftigt)
        return;
    const std::string schlüssel = m_kataster.Spalte(*spalte).schlüssel;
    if (m_mehrfachsortierung->isChecked()) {
        if (m_sortierliste.Hinzufügen(schlüssel))
            Umbauen([this] { m_kataster.Sortieren(m_sortierliste.Text()); });
    } else {
        m_absteigend = m_einzelsortierung == schlüssel && !m_absteigend;
        Umbauen([&] { m_kataster.Sortieren(schlüssel, m_absteigend); });
        m_einzelsortierung = schlüssel;
    }
    SortierungZeigen();
    // A new order is read from its start.
    m_tabelle->scrollToTop();
}

void FormDatenbank::KopfRechtsKlick() {
    if (!m_mehrfachsortierung->isChecked() || m_beschaeftigt)
        return;
    m_sortierliste.LetzteEntfernen();
    if (!m_sortierliste.Leer()) {
        Umbauen([this] { m_kataster.Sortieren(m_sortierliste.Text()); });
        m_tabelle->scrollToTop();
    }
    SortierungZeigen();
}

void FormDatenbank::SortierungZeigen() {
    QHeaderView* kopf = m_tabelle->horizontalHeader();
    int abschnitt = -1;
    if (!m_mehrfachsortierung->isChecked() && !m_einzelsortierung.empty())
        if (const auto spalte = m_kataster.SpaltenIndex(m_einzelsortierung))
            abschnitt = m_modell->Abschnitt(*spalte);
    kopf->setSortIndicatorShown(abschnitt >= 0);
    if (abschnitt >= 0)
        kopf->setSortIndicator(abschnitt, m_absteigend ? Qt::DescendingOrder : Qt::AscendingOrder);
    kopf->setToolTip(m_mehrfachsortierung->isChecked()
                         ? QStringLiteral("Sortierung: ") + QText(m_sortierliste.Text())
                         : QString());
}

// --- edit lock, deletion, number format ----------------------------------------------------------

bool FormDatenbank::eventFilter(QObject* objekt, QEvent* ereignis) {
    if (objekt == m_tabelle && ereignis->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(ereignis)->key() == Qt::Key_Delete) {
        ZeilenLöschen();
        return true;
    }
    return QMainWindow::eventFilter(objekt, ereignis);
}

void FormDatenbank::ZeilenLöschen() {
    if (!m_modell->Entsperrt() || m_beschaeftigt)
        return;
    std::vector<std::size_t> zeilen = m_kataster.AusgewählteZeilen();
    if (zeilen.empty() && m_tabelle->currentIndex().isValid())
        zeilen.push_back(static_cast<std::size_t>(m_tabelle->currentIndex().row()));
    if (zeilen.empty())
        return;
    Umbauen([&] { ZeilenLöschenMitFrage(m_kataster, std::move(zeilen), m_ui); });
}

void FormDatenbank::StempelPlus() {
    if (m_beschaeftigt)
        return;
    Zellenarbeit([this] { FlurstückZahlenformat(m_kataster, m_ui); });
}

// --- column views --------------------------------------------------------------------------------

std::string FormDatenbank::Spaltenansicht() const { return Utf8(m_spaltenansicht->currentText()); }

void FormDatenbank::AnsichtsboxSetzen(const std::string& ansicht) {
    const QSignalBlocker sperre(m_spaltenansicht);
    const int stelle = static_cast<int>(m_spaltenansicht->findText(QText(ansicht)));
    if (stelle >= 0)
        m_spaltenansicht->setCurrentIndex(stelle);
}

bool FormDatenbank::SpaltenansichtAnwenden(const std::string& ansicht) {
    bool angewandt = false;
    Umbauen([&] {
        angewandt = ComboColVis(m_kataster, ansicht, m_zustand.installation.Spaltenansichten());
    });
    SuchspaltenFüllen();
    SpaltenbreitenSichern();
    return angewandt;
}

void FormDatenbank::AnsichtManuell() {
    FormALBAnsicht dialog(m_kataster, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    Umbauen([&] { dialog.Übernehmen(m_kataster); });
    SuchspaltenFüllen();
}

void FormDatenbank::AnsichtsdateiBearbeiten() {
    const std::filesystem::path datei = m_zustand.installation.Spaltenansichten();
    try {
        KonfigDateiSichern(datei, ZeitStempelText());
    } catch (const Fehler& fehler) {
        m_ui.Meldung(fehler.what(), ProduktTitel, Stil::Fehler);
        return;
    }
    if (m_dateiÖffnen)
        m_dateiÖffnen(QUrl::fromLocalFile(QPfad(datei)));
}

void FormDatenbank::AnsichtsboxFüllen() {
    const QSignalBlocker sperre(m_spaltenansicht);
    m_spaltenansicht->clear();
    m_spaltenansicht->addItem(QText(AnsichtAlles));
    for (const std::string& ansicht : m_zustand.spaltenansichten)
        if (ansicht != AnsichtAlles)
            m_spaltenansicht->addItem(QText(ansicht));
}

void FormDatenbank::AnsichtenNeuLesen() {
    const std::string gezeigt = Spaltenansicht();
    // The views of the file, as the start-up keeps them: "alles" is the box's own.
    m_zustand.spaltenansichten = AnsichtenNamen(m_zustand.installation.Spaltenansichten());
    m_zustand.spaltenansichten.erase(m_zustand.spaltenansichten.begin());
    AnsichtsboxFüllen();
    // The file may have changed the view shown: it is applied anew.
    const bool noch = m_spaltenansicht->findText(QText(gezeigt)) >= 0;
    const std::string ansicht = noch ? gezeigt : std::string(AnsichtAlles);
    AnsichtsboxSetzen(ansicht);
    SpaltenansichtAnwenden(ansicht);
}

// --- column widths -------------------------------------------------------------------------------

void FormDatenbank::BreitenSetzen(
    const std::function<int(const KatasterSpalte&, int abschnitt)>& breite) {
    if (m_beschaeftigt)
        return;
    for (int abschnitt = 0; abschnitt < m_modell->columnCount(); ++abschnitt)
        if (const auto spalte = m_modell->Spalte(abschnitt))
            m_kataster.Spalte(*spalte).breite = breite(m_kataster.Spalte(*spalte), abschnitt);
    BreitenAnwenden();
    SpaltenbreitenSichern();
}

void FormDatenbank::SpaltenbreitenAnpassen() {
    const QFontMetrics kopfSchrift = m_tabelle->horizontalHeader()->fontMetrics();
    const QFontMetrics zellSchrift = m_tabelle->fontMetrics();
    // Room beside the text: the header's sort mark, the cell's margins.
    const int rand = m_tabelle->style()->pixelMetric(QStyle::PM_HeaderMarkSize) +
                     2 * m_tabelle->style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + Textrand;
    BreitenSetzen([&](const KatasterSpalte& spalte, int abschnitt) {
        if (spalte.kontrollkästchen)
            return spalte.breite;
        // Only the longest texts are measured: measuring every cell of half a million rows would
        // keep the user waiting for pixels, and the widest text is among the longest.
        const std::size_t index = *m_modell->Spalte(abschnitt);
        using Länge = std::pair<std::size_t, std::size_t>; // bytes, row
        std::priority_queue<Länge, std::vector<Länge>, std::greater<>> längste;
        for (std::size_t z = 0; z < m_kataster.Zeilenzahl(); ++z) {
            längste.emplace(m_kataster.Zelle(z, index).size(), z);
            if (längste.size() > GemesseneTexte)
                längste.pop();
        }
        int pixel = kopfSchrift.horizontalAdvance(
            m_modell->headerData(abschnitt, Qt::Horizontal).toString());
        for (; !längste.empty(); längste.pop())
            pixel = std::max(pixel, zellSchrift.horizontalAdvance(
                                        m_modell->index(static_cast<int>(längste.top().second),
                                                        abschnitt)
                                            .data()
                                            .toString()));
        return PixelZuTwips(pixel + rand, PixelJeTwip());
    });
}

void FormDatenbank::SpaltenMinimieren() {
    if (const auto flurstück = m_kataster.SpaltenIndex("Flurstück"))
        m_kataster.Spalte(*flurstück).schattiert = true;
    const QFontMetrics kopfSchrift = m_tabelle->horizontalHeader()->fontMetrics();
    const int kästchen = m_tabelle->style()->pixelMetric(QStyle::PM_IndicatorWidth);
    BreitenSetzen([&](const KatasterSpalte& spalte, int abschnitt) {
        const int text = kopfSchrift.horizontalAdvance(
            m_modell->headerData(abschnitt, Qt::Horizontal).toString());
        return PixelZuTwips(std::max(text, spalte.kontrollkästchen ? kästchen : 0) + Textrand,
                            PixelJeTwip());
    });
    m_modell->ZellenGeändert();
}

std::string FormDatenbank::Spaltenbreiten() const { return SpaltenbreitenText(m_kataster); }

void FormDatenbank::SpaltenbreitenSichern() const {
    const std::string text = Spaltenbreiten();
    if (text.empty() || m_benutzerordner.empty())
        return;
    try {
        Benutzereinstellungen(m_benutzerordner)
            .Schreiben(EinstellungAnwendung, EinstellungAbschnitt, EinstellungSchlüssel, text);
    } catch (const Fehler&) {
        // Column widths are a convenience: the work goes on without them.
    }
}

void FormDatenbank::SpaltenbreitenWiederherstellen() {
    if (m_benutzerordner.empty())
        return;
    const std::string text =
        Benutzereinstellungen(m_benutzerordner)
            .Lesen(EinstellungAnwendung, EinstellungAbschnitt, EinstellungSchlüssel);
    if (SpaltenbreitenAnwenden(m_kataster, text) > 0)
        BreitenAnwenden();
}

} // namespace flurix::gui
