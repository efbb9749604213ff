#pragma once
// The filter row of the NAS grid: one line edit above each column, kept in place as the columns
// are resized, moved, hidden or scrolled. The class name, its signals and slots stay ASCII for moc.

#include <QWidget>

#include <string>
#include <vector>

class QHeaderView;
class QLineEdit;
class QTableView;

namespace flurix::gui {

/// Line edits over the columns of `grid`; Return in any of them asks for the filter
/// (filterAngefordert), the first key typed since the last filter tells that editing began
/// (bearbeitungBegonnen). The edits follow the grid's horizontal header.
class NasFilterzeile : public QWidget {
    Q_OBJECT

public:
    explicit NasFilterzeile(QTableView& grid, QWidget* eltern = nullptr);

    /// One empty edit per column of the grid's model, named "Filter_<n>".
    void SpaltenAnlegen();
    /// The texts in column order (UTF-8).
    std::vector<std::string> Texte() const;
    /// Empties every edit.
    void Leeren();
    /// The edit over column `spalte`; nullptr when there is none.
    QLineEdit* Feld(int spalte) const;

signals:
    void filterAngefordert();
    void bearbeitungBegonnen();

protected:
    void resizeEvent(QResizeEvent* ereignis) override;

private:
    /// Puts each edit over its column.
    void Anordnen();

    QTableView& m_grid;
    QWidget* m_innen; ///< holds the edits, over the grid's viewport
    std::vector<QLineEdit*> m_felder;
    bool m_bearbeitet = false;
};

} // namespace flurix::gui
