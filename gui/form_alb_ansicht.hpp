#pragma once
// FormALBAnsicht (ALBDatenAnsichtManuell): the user ticks by hand which columns of the cadastre
// table the grid shows. The class name stays ASCII for moc.

#include <QDialog>

#include <vector>

class QListWidget;

namespace flurix {
class Kataster;
}

namespace flurix::gui {

/// A check list of all columns of the table, in their shown order, each ticked when it is visible
/// now; "Alle" and "Keine" tick or clear all. The dialog reads the table when it is made and
/// changes nothing until Übernehmen.
class FormALBAnsicht : public QDialog {
    Q_OBJECT

public:
    explicit FormALBAnsicht(const Kataster& kataster, QWidget* eltern = nullptr);

    /// The table's column indices in the order of the list, and whether each is ticked.
    std::vector<std::size_t> Spalten() const;
    std::vector<bool> Angehakt() const;
    /// Ticks or clears the entry of the table's column `spalte`; false when the list hasn't it.
    bool Anhaken(std::size_t spalte, bool an);
    /// Gives every column of the list the visibility its tick says; the shown order stays.
    /// Columns the table has gained since the dialog was made are left alone.
    void Übernehmen(Kataster& kataster) const;

private:
    void AlleSetzen(bool an);

    QListWidget* m_liste = nullptr;
};

} // namespace flurix::gui
