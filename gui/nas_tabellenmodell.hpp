#pragma once
// The grid of the NAS work window: a table model over one Seitenabfrage of the NAS database, which
// reads the rows page by page as they scroll into view. The class name stays ASCII for moc.

#include "nas/nas_abfrage.hpp"

#include <QAbstractTableModel>
#include <QString>

#include <memory>
#include <string>

namespace flurix::gui {

/// Rows are the rows of the query in its order, columns all its columns (the window hides some in
/// the view). A header click sorts through the query (ORDER BY), never in memory. The count is
/// taken when a query is set, sorted or filtered; cells are read when the view asks.
///
/// A failure of the database while the view asks (a table dropped by the SQL query box) shows
/// empty cells; Fehlertext() then tells it, and Verwerfen or a new query read anew.
class NasTabellenModell : public QAbstractTableModel {
    Q_OBJECT

public:
    explicit NasTabellenModell(QObject* eltern = nullptr);
    ~NasTabellenModell() override;
    NasTabellenModell(const NasTabellenModell&) = delete;
    NasTabellenModell& operator=(const NasTabellenModell&) = delete;
    NasTabellenModell(NasTabellenModell&&) = delete;
    NasTabellenModell& operator=(NasTabellenModell&&) = delete;

    /// Shows `abfrage` (nullptr: nothing) and counts its rows. Throws Fehler when the count
    /// fails; the model is empty then.
    void AbfrageSetzen(std::unique_ptr<nas::Seitenabfrage> abfrage);
    /// The query shown; nullptr for none.
    nas::Seitenabfrage* Abfrage() const { return m_abfrage.get(); }

    /// The filter row's condition (Jet SQL, "" for none). Throws Fehler for a condition that
    /// doesn't translate, and the rows stay as they were.
    void Filtern(const std::string& jetBedingung);
    /// The data changed under the grid: count and pages read anew.
    void Verwerfen();
    /// The message of the last failure while reading; empty when none.
    const QString& Fehlertext() const { return m_fehler; }

    int rowCount(const QModelIndex& eltern = QModelIndex()) const override;
    int columnCount(const QModelIndex& eltern = QModelIndex()) const override;
    /// DisplayRole the cell (line breaks as blanks, very long texts cut), EditRole and ToolTipRole
    /// the cell as it stands; numbers of a numeric column right-aligned.
    QVariant data(const QModelIndex& index, int rolle = Qt::DisplayRole) const override;
    /// The column's name, its declared type as tooltip; row numbers from 1.
    QVariant headerData(int abschnitt, Qt::Orientation richtung,
                        int rolle = Qt::DisplayRole) const override;
    /// A header click: ORDER BY that column; a column of -1 the order the rows were stored in.
    void sort(int spalte, Qt::SortOrder folge = Qt::AscendingOrder) override;

private:
    /// Runs `änderung` on the query inside a model reset and counts anew.
    template <typename Änderung> void Umbauen(Änderung&& änderung);
    void Zählen();

    std::unique_ptr<nas::Seitenabfrage> m_abfrage;
    int m_zeilen = 0;
    mutable QString m_fehler;
};

} // namespace flurix::gui
