#include "gui/kataster_modell.hpp"

#include "core/katalog.hpp"
#include "core/kataster.hpp"
#include "core/markierung.hpp"
#include "core/spaltenansicht.hpp"
#include "gui/qt_text.hpp"

#include <QBrush>
#include <QColor>

#include <algorithm>
#include <limits>

namespace flurix::gui {
namespace {

/// Characters a cell shows at most; beyond them the text is cut (the view would lay out every
/// character of a megabyte cell on each paint).
constexpr qsizetype AnzeigeHöchstlänge = 1000;

/// The shade of shaded columns: red 216, green 228, blue 248.
const QColor Schattierung(216, 228, 248);

/// Rows as Qt counts them: a table beyond the range of int shows its first rows.
int AlsZeilenzahl(std::size_t zeilen) {
    return static_cast<int>(
        std::min<std::size_t>(zeilen, static_cast<std::size_t>(std::numeric_limits<int>::max())));
}

/// Where the text of a column stands in its cells and header.
int Ausrichtung(const KatasterSpalte& kopf) {
    return kopf.zentriert ? Qt::Alignment(Qt::AlignCenter).toInt()
                          : Qt::Alignment(Qt::AlignLeft | Qt::AlignVCenter).toInt();
}

} // namespace

QString Anzeigetext(std::string_view text) {
    // Four bytes per character at most: cut the bytes first, so that a huge cell isn't converted.
    const bool lang = text.size() > static_cast<std::size_t>(AnzeigeHöchstlänge);
    QString anzeige =
        QText(lang ? text.substr(0, static_cast<std::size_t>(4 * AnzeigeHöchstlänge)) : text);
    if (anzeige.size() > AnzeigeHöchstlänge) {
        anzeige.truncate(AnzeigeHöchstlänge);
        anzeige += QChar(0x2026);
    }
    if (text.find_first_of("\t\r\n") != std::string_view::npos) {
        for (QChar& zeichen : anzeige)
            if (zeichen == u'\t' || zeichen == u'\r' || zeichen == u'\n')
                zeichen = u' ';
    }
    return anzeige;
}

KatasterModell::KatasterModell(Kataster& kataster, Stempelnummerierung& nummerierung,
                               Oberfläche& ui, QObject* eltern)
    : QAbstractTableModel(eltern), m_kataster(kataster), m_nummerierung(nummerierung), m_ui(ui) {
    Abbilden();
}

KatasterModell::~KatasterModell() = default;

int KatasterModell::rowCount(const QModelIndex& eltern) const {
    return eltern.isValid() ? 0 : m_zeilen;
}

int KatasterModell::columnCount(const QModelIndex& eltern) const {
    return eltern.isValid() ? 0 : static_cast<int>(m_spalten.size());
}

std::optional<std::size_t> KatasterModell::Spalte(int abschnitt) const {
    if (abschnitt < 0 || static_cast<std::size_t>(abschnitt) >= m_spalten.size() ||
        m_spalten[static_cast<std::size_t>(abschnitt)] >= m_kataster.Spaltenzahl())
        return std::nullopt;
    return m_spalten[static_cast<std::size_t>(abschnitt)];
}

int KatasterModell::Abschnitt(std::size_t spalte) const {
    const auto it = std::find(m_spalten.begin(), m_spalten.end(), spalte);
    return it == m_spalten.end() ? -1 : static_cast<int>(it - m_spalten.begin());
}

std::optional<std::pair<std::size_t, std::size_t>>
KatasterModell::Zelle(const QModelIndex& index) const {
    if (!index.isValid() || index.row() >= m_zeilen ||
        static_cast<std::size_t>(index.row()) >= m_kataster.Zeilenzahl())
        return std::nullopt;
    const auto spalte = Spalte(index.column());
    if (!spalte)
        return std::nullopt;
    return std::make_pair(static_cast<std::size_t>(index.row()), *spalte);
}

QVariant KatasterModell::data(const QModelIndex& index, int rolle) const {
    const auto zelle = Zelle(index);
    if (!zelle)
        return {};
    const auto [zeile, spalte] = *zelle;
    const KatasterSpalte& kopf = m_kataster.Spalte(spalte);
    switch (rolle) {
    case Qt::DisplayRole:
        if (kopf.kontrollkästchen)
            return {}; // the box alone, not the "1" behind it
        if (!kopf.format.empty())
            return Anzeigetext(Anzeigeform(kopf, m_kataster.Zelle(zeile, spalte)));
        return Anzeigetext(m_kataster.Zelle(zeile, spalte));
    case Qt::EditRole:
        return QText(m_kataster.Zelle(zeile, spalte));
    case Qt::CheckStateRole:
        if (!kopf.kontrollkästchen)
            return {};
        return static_cast<int>(IstMarke(m_kataster.Zelle(zeile, spalte)) ? Qt::Checked
                                                                          : Qt::Unchecked);
    case Qt::TextAlignmentRole:
        return Ausrichtung(kopf);
    case Qt::BackgroundRole:
        if (kopf.schattiert)
            return QBrush(Schattierung);
        return {};
    default:
        return {};
    }
}

QVariant KatasterModell::headerData(int abschnitt, Qt::Orientation richtung, int rolle) const {
    if (richtung == Qt::Vertical) {
        if (rolle == Qt::DisplayRole && abschnitt >= 0 && abschnitt < m_zeilen)
            return abschnitt + 1;
        return {};
    }
    const auto spalte = Spalte(abschnitt);
    if (!spalte)
        return {};
    const KatasterSpalte& kopf = m_kataster.Spalte(*spalte);
    switch (rolle) {
    case Qt::DisplayRole:
        return QText(kopf.überschrift);
    case Qt::ToolTipRole:
        return QText(SpaltenHinweis(kopf.überschrift));
    case Qt::TextAlignmentRole:
        return Ausrichtung(kopf);
    default:
        return {};
    }
}

Qt::ItemFlags KatasterModell::flags(const QModelIndex& index) const {
    const auto zelle = Zelle(index);
    if (!zelle)
        return Qt::NoItemFlags;
    Qt::ItemFlags merkmale = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    if (m_kataster.Spalte(zelle->second).kontrollkästchen)
        merkmale |= Qt::ItemIsUserCheckable;
    else if (m_entsperrt)
        merkmale |= Qt::ItemIsEditable;
    return merkmale;
}

bool KatasterModell::StempelspalteGezeigt() const {
    const auto stempel = m_kataster.SpaltenIndex(SpalteStempel);
    return stempel && Abschnitt(*stempel) >= 0;
}

bool KatasterModell::setData(const QModelIndex& index, const QVariant& wert, int rolle) {
    const auto zelle = Zelle(index);
    if (!zelle)
        return false;
    const auto [zeile, spalte] = *zelle;
    const bool kästchen = m_kataster.Spalte(spalte).kontrollkästchen;
    if (rolle == Qt::CheckStateRole) {
        if (!kästchen)
            return false;
        const bool an = wert.toInt() == Qt::Checked;
        // Both columns are there when the numbering runs, so no column is added here.
        if (StempelspalteGezeigt())
            MarkierungGeklickt(m_kataster, zeile, an, m_nummerierung);
        else
            MarkeSetzen(m_kataster, zeile, an);
        emit dataChanged(this->index(index.row(), 0), this->index(index.row(), columnCount() - 1));
        return true;
    }
    if (rolle == Qt::EditRole) {
        if (!m_entsperrt || kästchen)
            return false;
        m_kataster.ZelleSetzen(zeile, spalte, Utf8(wert.toString()));
        emit dataChanged(index, index);
        return true;
    }
    return false;
}

void KatasterModell::EntsperrtSetzen(bool entsperrt) {
    if (m_entsperrt == entsperrt)
        return;
    m_entsperrt = entsperrt;
    // The flags changed everywhere; views ask for them anew on the next paint and click.
    if (m_zeilen > 0 && !m_spalten.empty())
        emit dataChanged(index(0, 0), index(m_zeilen - 1, columnCount() - 1));
}

Antwort KatasterModell::ÄnderungErfragen(const QString& neu) const {
    const Fragestellung frage{"Änderung \"" + Utf8(neu) + "\" übernehmen?   ", "Datenbank",
                              Knöpfe::JaNeinAbbrechen, Antwort::Ja, Antwort::Ja};
    return m_ui.Frage(frage);
}

std::vector<std::size_t> KatasterModell::GezeigteSpalten() const {
    std::vector<std::size_t> spalten;
    for (std::size_t spalte : m_kataster.Anzeigereihenfolge())
        if (spalte < m_kataster.Spaltenzahl() && m_kataster.Spalte(spalte).sichtbar)
            spalten.push_back(spalte);
    return spalten;
}

void KatasterModell::Abbilden() {
    m_spalten = GezeigteSpalten();
    m_zeilen = AlsZeilenzahl(m_kataster.Zeilenzahl());
}

bool KatasterModell::StrukturGeändert() const {
    return m_zeilen != AlsZeilenzahl(m_kataster.Zeilenzahl()) || m_spalten != GezeigteSpalten();
}

KatasterModell::Umbau::Umbau(KatasterModell& modell) : m_modell(modell) {
    if (m_modell.m_umbauTiefe++ == 0)
        m_modell.beginResetModel();
}

KatasterModell::Umbau::~Umbau() {
    if (--m_modell.m_umbauTiefe == 0) {
        m_modell.Abbilden();
        m_modell.endResetModel();
    }
}

void KatasterModell::ZeilenAngefügt() {
    if (m_umbauTiefe > 0)
        return; // the reset at the end of the Umbau reads them
    const int zeilen = AlsZeilenzahl(m_kataster.Zeilenzahl());
    if (zeilen > m_zeilen && m_spalten == GezeigteSpalten()) {
        beginInsertRows(QModelIndex(), m_zeilen, zeilen - 1);
        m_zeilen = zeilen;
        endInsertRows();
    } else if (StrukturGeändert()) {
        Umbau umbau(*this);
    }
}

void KatasterModell::ZellenGeändert() {
    if (m_umbauTiefe > 0)
        return;
    if (StrukturGeändert()) {
        Umbau umbau(*this);
        return;
    }
    if (m_zeilen > 0 && !m_spalten.empty())
        emit dataChanged(index(0, 0), index(m_zeilen - 1, columnCount() - 1));
}

} // namespace flurix::gui
