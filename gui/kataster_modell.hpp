#pragma once
// The cadastre table in the main window's grid: a table model over the one Kataster, which it
// reads cell by cell as the view asks, never copying rows. The class name stays ASCII for moc.

#include "core/oberflaeche.hpp"

#include <QAbstractTableModel>
#include <QString>

#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace flurix {
class Kataster;
class Stempelnummerierung;
} // namespace flurix

namespace flurix::gui {

/// The grid's model. Rows are the table's rows in table order; columns are the visible columns in
/// their shown order (Kataster::Anzeigereihenfolge), hidden ones left out, so that the view never
/// holds sections it doesn't show. The model keeps only that mapping and the row count it last
/// told the view; every cell is read from the table when asked.
///
/// The table may be changed by the core at any time between two notifications: the model answers
/// from the table as it stands, within the rows and columns it has told the view of. After a
/// change the caller notifies the model: Umbau around work that replaces, reorders or re-columns
/// the table (a reset), ZeilenAngefügt after appends, ZellenGeändert after cell work.
///
/// Roles: DisplayRole the cell text (through Anzeigeform for columns of format "0"; line breaks
/// and tabs shown as blanks; very long texts cut); EditRole the cell text as it stands;
/// CheckStateRole the mark of a check box column; TextAlignmentRole centred for centred columns;
/// BackgroundRole the shade of shaded columns (Flurstück). Header: the caption, its hint text as
/// tooltip; the row number on the vertical header.
class KatasterModell : public QAbstractTableModel {
    Q_OBJECT

public:
    /// The three references must outlive the model. `nummerierung` numbers `ID_GG` on clicks,
    /// `ui` asks the edit question.
    KatasterModell(Kataster& kataster, Stempelnummerierung& nummerierung, Oberfläche& ui,
                   QObject* eltern = nullptr);
    ~KatasterModell() override;
    KatasterModell(const KatasterModell&) = delete;
    KatasterModell& operator=(const KatasterModell&) = delete;
    KatasterModell(KatasterModell&&) = delete;
    KatasterModell& operator=(KatasterModell&&) = delete;

    int rowCount(const QModelIndex& eltern = QModelIndex()) const override;
    int columnCount(const QModelIndex& eltern = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int rolle = Qt::DisplayRole) const override;
    QVariant headerData(int abschnitt, Qt::Orientation richtung,
                        int rolle = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    /// CheckStateRole on a check box column: a click on the mark. When the column `ID_GG` is
    /// shown, the click rule of the marks numbers it (MarkierungGeklickt); otherwise only the mark
    /// flips. EditRole: the new cell text, only while the grid is unlocked and never on a check box
    /// column; false when refused. The edit question is the delegate's: see ÄnderungErfragen.
    bool setData(const QModelIndex& index, const QVariant& wert, int rolle = Qt::EditRole) override;

    Kataster& Tabelle() const { return m_kataster; }
    /// The table's column shown in section `abschnitt`; nothing outside the shown columns.
    std::optional<std::size_t> Spalte(int abschnitt) const;
    /// The section that shows the table's column `spalte`; -1 when it isn't shown.
    int Abschnitt(std::size_t spalte) const;

    /// btnEntsperren: the grid may be edited. Locked (false) after a load.
    void EntsperrtSetzen(bool entsperrt);
    bool Entsperrt() const { return m_entsperrt; }
    /// btnÄnderungNachfragen: a finished edit asks before it is taken.
    void NachfragenSetzen(bool nachfragen) { m_nachfragen = nachfragen; }
    bool Nachfragen() const { return m_nachfragen; }
    /// The edit question: "Änderung \"" + text + "\" übernehmen?   ", title "Datenbank", Yes, No
    /// and Cancel. Ja keeps the edit, Nein reverts it, Abbrechen stays in the edit.
    Antwort ÄnderungErfragen(const QString& neu) const;

    /// Work on the table that replaces, reorders or re-columns it: the model is reset when the last
    /// Umbau of a nesting ends, and then reads the new row count and shown columns.
    class Umbau {
    public:
        explicit Umbau(KatasterModell& modell);
        ~Umbau();
        Umbau(const Umbau&) = delete;
        Umbau& operator=(const Umbau&) = delete;
        Umbau(Umbau&&) = delete;
        Umbau& operator=(Umbau&&) = delete;

    private:
        KatasterModell& m_modell;
    };

    /// Rows were appended to the table: the view is told of them as inserted rows. Any other change
    /// of the row count, or of the shown columns, resets the model.
    void ZeilenAngefügt();
    /// Cells may have changed anywhere (marks, numbers, formats): the view repaints what it shows.
    /// When rows or shown columns changed as well, the model is reset instead.
    void ZellenGeändert();

private:
    /// Reads the row count and the shown columns from the table.
    void Abbilden();
    std::vector<std::size_t> GezeigteSpalten() const;
    bool StrukturGeändert() const;
    /// The table's cell behind an index; nothing for an index outside the table as it stands.
    std::optional<std::pair<std::size_t, std::size_t>> Zelle(const QModelIndex& index) const;
    bool StempelspalteGezeigt() const;

    Kataster& m_kataster;
    Stempelnummerierung& m_nummerierung;
    Oberfläche& m_ui;
    std::vector<std::size_t> m_spalten; ///< the table's column of each section
    int m_zeilen = 0;                   ///< rows the view was told of
    int m_umbauTiefe = 0;
    bool m_entsperrt = false;
    bool m_nachfragen = false;
};

/// The text a cell shows: line breaks and tabs as blanks, a text beyond 1000 characters cut
/// there with "…" behind it (the edit shows it whole).
QString Anzeigetext(std::string_view text);

} // namespace flurix::gui
