#include "gui/kataster_delegate.hpp"

#include "gui/kataster_modell.hpp"

#include <QApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>

#include <optional>

namespace flurix::gui {
namespace {

/// The check state of a check box cell; nothing for other cells.
std::optional<Qt::CheckState> Kästchenzustand(const QModelIndex& index) {
    const QVariant wert = index.data(Qt::CheckStateRole);
    if (!wert.isValid())
        return std::nullopt;
    return static_cast<Qt::CheckState>(wert.toInt());
}

QStyle* StilVon(const QStyleOptionViewItem& option) {
    return option.widget ? option.widget->style() : QApplication::style();
}

/// True when the widget that has the focus now is the editor or lies in it.
bool FokusImEditor(const QWidget* editor) {
    for (const QWidget* w = QApplication::focusWidget(); w; w = w->parentWidget())
        if (w == editor)
            return true;
    return false;
}

} // namespace

KatasterDelegate::KatasterDelegate(KatasterModell& modell, QObject* eltern)
    : QStyledItemDelegate(eltern), m_modell(modell) {}

void KatasterDelegate::paint(QPainter* maler, const QStyleOptionViewItem& option,
                             const QModelIndex& index) const {
    const auto zustand = Kästchenzustand(index);
    if (!zustand) {
        QStyledItemDelegate::paint(maler, option, index);
        return;
    }
    // The cell (background, selection) without its box, then the box in the middle.
    QStyleOptionViewItem zelle(option);
    initStyleOption(&zelle, index);
    zelle.features &= ~QStyleOptionViewItem::HasCheckIndicator;
    zelle.text.clear();
    QStyle* stil = StilVon(zelle);
    stil->drawControl(QStyle::CE_ItemViewItem, &zelle, maler, zelle.widget);

    QStyleOptionViewItem kästchen(zelle);
    const QSize größe(stil->pixelMetric(QStyle::PM_IndicatorWidth, &zelle, zelle.widget),
                      stil->pixelMetric(QStyle::PM_IndicatorHeight, &zelle, zelle.widget));
    kästchen.rect = QStyle::alignedRect(zelle.direction, Qt::AlignCenter, größe, zelle.rect);
    kästchen.state &= ~QStyle::State_HasFocus;
    kästchen.state |= *zustand == Qt::Checked ? QStyle::State_On : QStyle::State_Off;
    stil->drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &kästchen, maler, zelle.widget);
}

QWidget* KatasterDelegate::createEditor(QWidget* eltern, const QStyleOptionViewItem& option,
                                        const QModelIndex& index) const {
    QWidget* editor = QStyledItemDelegate::createEditor(eltern, option, index);
    m_editor = editor;
    m_bearbeitet = index;
    return editor;
}

bool KatasterDelegate::editorEvent(QEvent* ereignis, QAbstractItemModel* modell,
                                   const QStyleOptionViewItem& option, const QModelIndex& index) {
    const auto zustand = Kästchenzustand(index);
    if (!zustand)
        return QStyledItemDelegate::editorEvent(ereignis, modell, option, index);
    const Qt::ItemFlags merkmale = modell->flags(index);
    if (!merkmale.testFlag(Qt::ItemIsUserCheckable) || !merkmale.testFlag(Qt::ItemIsEnabled))
        return false;
    switch (ereignis->type()) {
    case QEvent::MouseButtonRelease: {
        const auto* maus = static_cast<QMouseEvent*>(ereignis);
        if (maus->button() != Qt::LeftButton || !option.rect.contains(maus->position().toPoint()))
            return false;
        break;
    }
    case QEvent::MouseButtonDblClick:
        return true; // no editor on a double click: its second release flips the box back
    case QEvent::KeyPress: {
        const int taste = static_cast<QKeyEvent*>(ereignis)->key();
        if (taste != Qt::Key_Space && taste != Qt::Key_Select)
            return false;
        break;
    }
    default:
        return false;
    }
    const Qt::CheckState neu = *zustand == Qt::Checked ? Qt::Unchecked : Qt::Checked;
    return modell->setData(index, static_cast<int>(neu), Qt::CheckStateRole);
}

bool KatasterDelegate::eventFilter(QObject* objekt, QEvent* ereignis) {
    auto* editor = qobject_cast<QWidget*>(objekt);
    if (!editor || editor != m_editor || !m_modell.Nachfragen())
        return QStyledItemDelegate::eventFilter(objekt, ereignis);
    switch (ereignis->type()) {
    case QEvent::KeyPress: {
        if (m_fragt)
            return true;
        const int taste = static_cast<QKeyEvent*>(ereignis)->key();
        if (taste == Qt::Key_Return || taste == Qt::Key_Enter)
            return BearbeitungBeenden(editor, SubmitModelCache) ||
                   QStyledItemDelegate::eventFilter(objekt, ereignis);
        if (taste == Qt::Key_Tab)
            return BearbeitungBeenden(editor, EditNextItem) ||
                   QStyledItemDelegate::eventFilter(objekt, ereignis);
        if (taste == Qt::Key_Backtab)
            return BearbeitungBeenden(editor, EditPreviousItem) ||
                   QStyledItemDelegate::eventFilter(objekt, ereignis);
        break;
    }
    case QEvent::FocusOut: {
        if (m_fragt)
            return true; // the box of the question took the focus
        const Qt::FocusReason grund = static_cast<QFocusEvent*>(ereignis)->reason();
        // A context menu, or the user switching to another program, doesn't finish the edit:
        // it must not be taken without the question.
        if (grund == Qt::PopupFocusReason || grund == Qt::ActiveWindowFocusReason ||
            FokusImEditor(editor))
            return false;
        return BearbeitungBeenden(editor, NoHint) ||
               QStyledItemDelegate::eventFilter(objekt, ereignis);
    }
    default:
        break;
    }
    return QStyledItemDelegate::eventFilter(objekt, ereignis);
}

bool KatasterDelegate::BearbeitungBeenden(QWidget* editor,
                                          QAbstractItemDelegate::EndEditHint hinweis) {
    auto* zeile = qobject_cast<QLineEdit*>(editor);
    if (!zeile || !m_bearbeitet.isValid())
        return false;
    const QString neu = zeile->text();
    if (neu == m_bearbeitet.data(Qt::EditRole).toString())
        return false; // nothing changed: closed as always, without a question
    m_fragt = true;
    const QPointer<QWidget> offen(editor);
    const Antwort antwort = m_modell.ÄnderungErfragen(neu);
    m_fragt = false;
    if (!offen)
        return true;
    switch (antwort) {
    case Antwort::Ja:
        emit commitData(editor);
        emit closeEditor(editor, hinweis);
        break;
    case Antwort::Nein:
        emit closeEditor(editor, RevertModelCache);
        break;
    default:
        // Cancel: the edit stays open, with what was typed.
        editor->setFocus(Qt::OtherFocusReason);
        break;
    }
    return true;
}

} // namespace flurix::gui
