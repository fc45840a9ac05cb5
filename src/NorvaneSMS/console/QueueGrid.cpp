#include "NorvaneSMS/console/QueueGrid.h"

#include "NorvaneSMS/console/QueueCellDelegate.h"
#include "NorvaneSMS/console/QueueGridModel.h"

#include <QItemSelection>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QScopedValueRollback>

#include <algorithm>

namespace norvane {

QueueGrid::QueueGrid(QWidget *parent) : QTableView(parent), m_delegate(new QueueCellDelegate(this))
{
    setItemDelegate(m_delegate);
    setEditTriggers(DoubleClicked | EditKeyPressed | AnyKeyPressed);
}

QList<int> QueueGrid::selectedRows() const
{
    QList<int> rows;
    for (const QItemSelectionRange &range : selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row)
            rows.append(row + 1);
    }
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

void QueueGrid::setCurrentRow(int row)
{
    const QModelIndex index = model()->index(row - 1, qMax(0, currentIndex().column()));
    setCurrentIndex(index);
    scrollTo(index);
}

void QueueGrid::rebuild(const std::function<void()> &bind)
{
    const int row = currentRow();
    const int column = qMax(0, currentIndex().column());
    const QSet<qint64> selected =
        selectedRows() == QList<int>{row} ? QSet<qint64>() : selectedIds();
    const std::optional<Edit> edit = suspendEdit();

    bind();

    if (row > 0 && rows() >= row) {
        const QModelIndex index = model()->index(row - 1, column);
        setCurrentIndex(index);
        scrollTo(index);
    }
    // The row that is edited was chosen, whatever number it has now.
    if (!selected.isEmpty())
        selectIds(selected);
    else if (edit)
        selectIds({edit->id});
    if (edit)
        resumeEdit(*edit);
}

qint64 QueueGrid::idOf(int row) const
{
    return model()->index(row - 1, 0).data(QueueGridModel::idRole).toLongLong();
}

QSet<qint64> QueueGrid::selectedIds() const
{
    QSet<qint64> ids;
    for (const int row : selectedRows())
        ids.insert(idOf(row));
    return ids;
}

void QueueGrid::selectIds(const QSet<qint64> &ids)
{
    QItemSelection selection;
    const int last = rows();
    for (int row = 1; row <= last; ++row) {
        if (!ids.contains(idOf(row)))
            continue;
        const int first = row;
        while (row < last && ids.contains(idOf(row + 1)))
            ++row;
        selection.append(QItemSelectionRange(model()->index(first - 1, 0),
                                             model()->index(row - 1, model()->columnCount() - 1)));
    }
    if (!selection.isEmpty())
        selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
}

std::optional<QueueGrid::Edit> QueueGrid::suspendEdit()
{
    const QLineEdit *const editor = m_delegate->editor();
    if (!editor || state() != EditingState)
        return std::nullopt;
    const QModelIndex cell = m_delegate->cell();
    const Edit edit{idOf(cell.row() + 1), cell.column(), editor->cursorPosition(),
                    editor->selectionStart(), static_cast<int>(editor->selectedText().size())};
    const bool hadFocus = editor->hasFocus();
    m_delegate->keepEditor();
    if (hadFocus)
        setFocus(); // else it would pass to the next control while the editor is away
    return edit;
}

void QueueGrid::resumeEdit(const Edit &edit)
{
    const int row = static_cast<const QueueGridModel *>(model())->rowOf(edit.id);
    if (row < 0) {
        m_delegate->dropEditor();
        return;
    }
    const QModelIndex cell = model()->index(row, edit.column);
    selectionModel()->setCurrentIndex(cell, QItemSelectionModel::NoUpdate);
    scrollTo(cell);
    m_delegate->reuseEditor();
    if (!QTableView::edit(cell, AllEditTriggers, nullptr)) {
        m_delegate->dropEditor();
        return;
    }
    QLineEdit *const editor = m_delegate->editor();
    editor->setCursorPosition(edit.caret);
    if (edit.selectionStart >= 0) {
        const bool backwards = edit.caret == edit.selectionStart;
        editor->setSelection(backwards ? edit.selectionStart + edit.selectionLength
                                       : edit.selectionStart,
                             backwards ? -edit.selectionLength : edit.selectionLength);
    }
}

bool QueueGrid::entersEditing(const QModelIndex &index, EditTrigger trigger) const
{
    return index.isValid() && isEnabled() && state() != EditingState &&
           (trigger == AllEditTriggers || editTriggers().testFlag(trigger)) &&
           trigger != NoEditTriggers;
}

bool QueueGrid::edit(const QModelIndex &index, EditTrigger trigger, QEvent *event)
{
    if (entersEditing(index, trigger)) {
        bool cancel = false;
        Q_EMIT beforeEdit(index.row() + 1, index.column(), cancel);
        if (cancel)
            return true; // `index` may be gone: a box was open
    }
    return QTableView::edit(index, trigger, event);
}

void QueueGrid::commitData(QWidget *editor)
{
    if (editor != m_delegate->editor() || m_committing)
        return;
    const QScopedValueRollback committing(m_committing, true);
    QTableView::commitData(editor);
    Q_EMIT afterEdit();
}

void QueueGrid::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Delete && state() != EditingState) {
        event->accept();
        Q_EMIT deletePressed();
        return;
    }
    QTableView::keyPressEvent(event);
}

std::optional<QueueGrid::Cell> QueueGrid::cellAt(const QMouseEvent &event) const
{
    const QModelIndex index = indexAt(event.position().toPoint());
    return index.isValid() ? std::optional(Cell{idOf(index.row() + 1), index.column()})
                           : std::nullopt;
}

void QueueGrid::mousePressEvent(QMouseEvent *event)
{
    m_pressed = cellAt(*event);
    m_resetSincePress = false;
    QTableView::mousePressEvent(event);
}

/// A rebuild between its two presses lets the view forget the first one.
void QueueGrid::mouseDoubleClickEvent(QMouseEvent *event)
{
    const std::optional<Cell> cell = cellAt(*event);
    if (m_resetSincePress && event->button() == Qt::LeftButton && cell && cell == m_pressed)
        edit(indexAt(event->position().toPoint()), DoubleClicked, event);
    else
        QTableView::mouseDoubleClickEvent(event);
}

void QueueGrid::reset()
{
    m_resetSincePress = true;
    QTableView::reset();
}

} // namespace norvane
