#pragma once
// How the grid draws and edits the cells of the cadastre table: the check box of `checkdruck`
// centred in its cell and flipped by a click anywhere in it, and the edit question of
// btnÄnderungNachfragen when an edit is finished. The class name stays ASCII for moc.

#include <QPersistentModelIndex>
#include <QPointer>
#include <QStyledItemDelegate>

namespace flurix::gui {

class KatasterModell;

/// The delegate of the grid over a KatasterModell (which must outlive it).
///
/// Check box cells (those that answer CheckStateRole) show the box alone, centred. A left click
/// anywhere in the cell, or Space on it, flips the mark through the model (setData with
/// CheckStateRole), so the click rule of the marks runs.
///
/// Other cells are edited in a line edit. While the model's Nachfragen is on, an edit that is
/// finished with a changed text (Return, Enter, Tab, or the focus leaving it) asks the model's
/// ÄnderungErfragen first: Yes takes the text, No closes the edit and leaves the cell as it was,
/// Cancel keeps the edit open with the typed text. An unchanged text and Escape close without a
/// question, as before.
class KatasterDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    explicit KatasterDelegate(KatasterModell& modell, QObject* eltern = nullptr);

    void paint(QPainter* maler, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QWidget* createEditor(QWidget* eltern, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;

protected:
    bool editorEvent(QEvent* ereignis, QAbstractItemModel* modell,
                     const QStyleOptionViewItem& option, const QModelIndex& index) override;
    bool eventFilter(QObject* objekt, QEvent* ereignis) override;

private:
    /// The question for a finished edit; true when the event is dealt with.
    bool BearbeitungBeenden(QWidget* editor, QAbstractItemDelegate::EndEditHint hinweis);

    KatasterModell& m_modell;
    mutable QPointer<QWidget> m_editor; ///< the open editor (a table edits one cell at a time)
    mutable QPersistentModelIndex m_bearbeitet; ///< its cell
    bool m_fragt = false;                       ///< the question is shown
};

} // namespace flurix::gui
