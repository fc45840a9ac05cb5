#pragma once

#include <QSet>
#include <QTableView>

#include <functional>
#include <optional>

namespace norvane {

class QueueCellDelegate;

/// The grid of the messages that wait, over a QueueGridModel. Row numbers count from 1; the header
/// is row 0.
class QueueGrid : public QTableView
{
    Q_OBJECT

public:
    explicit QueueGrid(QWidget *parent = nullptr);

    /// The current row; 0 when there is none.
    int currentRow() const { return currentIndex().row() + 1; }
    int rows() const { return model()->rowCount(); }
    /// The selected rows, from the first to the last.
    QList<int> selectedRows() const;
    /// Makes `row` the current one, the one selected, and scrolls to it.
    void setCurrentRow(int row);

    /// Runs `bind`, which resets the grid's model. The current row stays the same number, if the
    /// grid then has so many rows; several selected rows stay selected by their messages. An edit
    /// in progress goes on, on the same message, if that is still there; else it is dropped and
    /// nothing is written.
    void rebuild(const std::function<void()> &bind);

Q_SIGNALS:
    /// A cell is about to enter editing, which `cancel` prevents.
    void beforeEdit(int row, int column, bool &cancel);
    /// What was typed into a cell stands in the model.
    void afterEdit();
    void deletePressed();

protected:
    bool edit(const QModelIndex &index, EditTrigger trigger, QEvent *event) override;
    void commitData(QWidget *editor) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void reset() override;

private:
    struct Edit
    {
        qint64 id = 0; ///< of the message
        int column = 0;
        int caret = 0;
        int selectionStart = -1;
        int selectionLength = 0;
    };

    struct Cell
    {
        qint64 id = 0; ///< of the message
        int column = 0;

        bool operator==(const Cell &) const = default;
    };

    std::optional<Cell> cellAt(const QMouseEvent &event) const;
    bool entersEditing(const QModelIndex &index, EditTrigger trigger) const;
    QSet<qint64> selectedIds() const;
    void selectIds(const QSet<qint64> &ids);
    qint64 idOf(int row) const;
    std::optional<Edit> suspendEdit();
    void resumeEdit(const Edit &edit);

    QueueCellDelegate *m_delegate;
    bool m_committing = false;
    /// What the mouse was pressed on last, and whether the model was reset since.
    std::optional<Cell> m_pressed;
    bool m_resetSincePress = false;
};

} // namespace norvane
