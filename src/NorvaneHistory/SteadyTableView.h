#pragma once

#include <QTableView>

namespace norvane {

/// A list of rows that stays where its reader is while rows come and go above. It stands at the top
/// as long as nobody has scrolled down or chosen a row.
class SteadyTableView : public QTableView
{
    Q_OBJECT

public:
    /// @param name  what a screen reader calls the list
    explicit SteadyTableView(const QString &name, QWidget *parent = nullptr);

    void setModel(QAbstractItemModel *model) override;

    /// The rows that can be seen; last is less than first when there are none.
    int firstVisibleRow() const;
    int lastVisibleRow() const;

Q_SIGNALS:
    /// Another row was chosen, or none (-1), or what is known of the chosen one has changed.
    void rowChosen(int row);
    /// Other rows can be seen.
    void scrolled();

protected:
    /// A chosen row that goes away is followed by none: nobody chose the next one.
    void rowsAboutToBeRemoved(const QModelIndex &parent, int first, int last) override;
    void dataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight,
                     const QList<int> &roles) override;
    void currentChanged(const QModelIndex &current, const QModelIndex &previous) override;
    /// To pass through the list is not to choose from it.
    void focusInEvent(QFocusEvent *event) override;
    /// Tab leaves the list, and the arrows go from row to row.
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;

private:
    void keepPlace(int first, int rows);
    void keepPlaceOfMoved(int first, int last, int to);
    void moveOn(int rows);
    void fetchAhead();
    bool isRead() const;

    bool m_isEntered = false; ///< the focus is just coming
};

} // namespace norvane
