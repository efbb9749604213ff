#include "gui/nas_tabellenmodell.hpp"

#include "core/fehler.hpp"
#include "gui/kataster_modell.hpp"
#include "gui/qt_text.hpp"

#include <algorithm>
#include <limits>

namespace flurix::gui {

NasTabellenModell::NasTabellenModell(QObject* eltern) : QAbstractTableModel(eltern) {}

NasTabellenModell::~NasTabellenModell() = default;

template <typename Änderung> void NasTabellenModell::Umbauen(Änderung&& änderung) {
    beginResetModel();
    try {
        änderung();
        Zählen();
    } catch (...) {
        endResetModel();
        throw;
    }
    endResetModel();
}

void NasTabellenModell::Zählen() {
    m_zeilen = 0;
    m_fehler.clear();
    if (!m_abfrage)
        return;
    try {
        // Rows as Qt counts them: beyond the range of int the first rows are shown.
        m_zeilen = static_cast<int>(
            std::min<std::int64_t>(m_abfrage->Zeilenzahl(), std::numeric_limits<int>::max()));
    } catch (const Fehler& fehler) {
        m_fehler = QText(fehler.what());
        throw;
    }
}

void NasTabellenModell::AbfrageSetzen(std::unique_ptr<nas::Seitenabfrage> abfrage) {
    try {
        Umbauen([&] { m_abfrage = std::move(abfrage); });
    } catch (const Fehler&) {
        beginResetModel();
        m_abfrage.reset();
        m_zeilen = 0;
        endResetModel();
        throw;
    }
}

void NasTabellenModell::Filtern(const std::string& jetBedingung) {
    if (m_abfrage)
        Umbauen([&] { m_abfrage->Filtern(jetBedingung); });
}

void NasTabellenModell::Verwerfen() {
    if (m_abfrage)
        Umbauen([&] { m_abfrage->Verwerfen(); });
}

void NasTabellenModell::sort(int spalte, Qt::SortOrder folge) {
    if (!m_abfrage || spalte >= columnCount())
        return;
    try {
        Umbauen([&] { m_abfrage->Sortieren(spalte, folge == Qt::DescendingOrder); });
    } catch (const Fehler& fehler) {
        // A header click has no one to report to: the window reads Fehlertext().
        m_fehler = QText(fehler.what());
    }
}

int NasTabellenModell::rowCount(const QModelIndex& eltern) const {
    return eltern.isValid() ? 0 : m_zeilen;
}

int NasTabellenModell::columnCount(const QModelIndex& eltern) const {
    return eltern.isValid() || !m_abfrage ? 0 : static_cast<int>(m_abfrage->Spalten().size());
}

QVariant NasTabellenModell::data(const QModelIndex& index, int rolle) const {
    if (!m_abfrage || !index.isValid() || index.row() >= m_zeilen ||
        index.column() >= columnCount())
        return {};
    const auto spalte = static_cast<std::size_t>(index.column());
    switch (rolle) {
    case Qt::DisplayRole:
    case Qt::EditRole:
    case Qt::ToolTipRole:
        try {
            const std::string_view zelle = m_abfrage->Zeile(index.row())[spalte];
            return rolle == Qt::DisplayRole ? Anzeigetext(zelle) : QText(zelle);
        } catch (const Fehler& fehler) {
            m_fehler = QText(fehler.what());
            return {};
        }
    case Qt::TextAlignmentRole:
        return m_abfrage->Spalten()[spalte].zahl
                   ? Qt::Alignment(Qt::AlignRight | Qt::AlignVCenter).toInt()
                   : Qt::Alignment(Qt::AlignLeft | Qt::AlignVCenter).toInt();
    default:
        return {};
    }
}

QVariant NasTabellenModell::headerData(int abschnitt, Qt::Orientation richtung, int rolle) const {
    if (richtung == Qt::Vertical)
        return rolle == Qt::DisplayRole ? QVariant(abschnitt + 1) : QVariant();
    if (!m_abfrage || abschnitt < 0 || abschnitt >= columnCount())
        return {};
    const auto& spalte = m_abfrage->Spalten()[static_cast<std::size_t>(abschnitt)];
    if (rolle == Qt::DisplayRole)
        return QText(spalte.name);
    if (rolle == Qt::ToolTipRole)
        return QText(spalte.name) +
               (spalte.typ.empty() ? QString() : QStringLiteral(" (") + QText(spalte.typ) + u')');
    return {};
}

} // namespace flurix::gui
