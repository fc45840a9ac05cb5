#pragma once

#include <QPersistentModelIndex>
#include <QPointer>
#include <QStyledItemDelegate>

class QLineEdit;

namespace norvane {

/// Makes the editors of grdQueue: phones take the keys that the phone box takes, messages any text
/// of any length. There is one editor at a time. It can be kept while the grid is rebuilt, with all
/// that was typed into it.
class QueueCellDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /// The editor that is open; null when there is none.
    QLineEdit *editor() const { return m_editor; }
    /// The cell that it stands in.
    QModelIndex cell() const { return m_cell; }

    /// Keeps the open editor when the grid releases it: whatever the grid does, the edit goes on.
    void keepEditor();
    /// The next cell that is edited gets the kept editor as it is.
    void reuseEditor();
    /// Drops the kept editor and what was typed into it.
    void dropEditor();

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void destroyEditor(QWidget *editor, const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    enum class Use { Own, Kept, Reused };

    mutable QPointer<QLineEdit> m_editor;
    mutable QPersistentModelIndex m_cell;
    mutable Use m_use = Use::Own;
};

} // namespace norvane
