#include "NorvaneSMS/console/QueueCellDelegate.h"

#include "NorvaneSMS/console/QueueGridModel.h"
#include "foundation/ui/PhoneEdit.h"

#include <QKeyEvent>

#include <limits>

namespace norvane {

void QueueCellDelegate::keepEditor()
{
    m_editor->removeEventFilter(this);
    m_use = Use::Kept;
}

void QueueCellDelegate::reuseEditor()
{
    m_use = Use::Reused;
}

void QueueCellDelegate::dropEditor()
{
    m_use = Use::Own;
    if (m_editor)
        m_editor->deleteLater();
    m_editor.clear();
}

QWidget *QueueCellDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                         const QModelIndex &index) const
{
    m_cell = index;
    if (m_use == Use::Reused && m_editor)
        return m_editor;
    m_editor =
        index.column() == QueueGridModel::Phone ? new PhoneEdit(parent) : new QLineEdit(parent);
    m_editor->setMaxLength(std::numeric_limits<int>::max());
    m_editor->setFrame(false);
    m_editor->setAutoFillBackground(true);
    return m_editor;
}

void QueueCellDelegate::destroyEditor(QWidget *editor, const QModelIndex &index) const
{
    if (m_use == Use::Kept && editor == m_editor)
        return;
    m_editor.clear();
    QStyledItemDelegate::destroyEditor(editor, index);
}

void QueueCellDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    if (m_use == Use::Reused)
        m_use = Use::Own; // it holds what was typed, and goes on as any other
    else
        static_cast<QLineEdit *>(editor)->setText(index.data(Qt::EditRole).toString());
}

void QueueCellDelegate::updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                                             const QModelIndex &index) const
{
    QRect place = option.rect;
    // A message is longer than its column: its editor takes what room there is behind it.
    if (index.column() == QueueGridModel::Message)
        place.setRight(qMax(place.right(), editor->parentWidget()->rect().right()));
    editor->setGeometry(place);
}

bool QueueCellDelegate::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress && watched == m_editor) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            // At once: left for later, as is the toolkit's way, the end of the edit could come
            // behind a rebuild of the grid.
            QLineEdit *const editor = m_editor;
            Q_EMIT commitData(editor);
            Q_EMIT closeEditor(editor, NoHint);
            return true;
        }
    }
    return QStyledItemDelegate::eventFilter(watched, event);
}

} // namespace norvane
