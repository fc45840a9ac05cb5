#include "NorvaneHistory/SteadyTableView.h"

#include <QHeaderView>
#include <QScopedValueRollback>
#include <QScrollBar>

namespace norvane {

SteadyTableView::SteadyTableView(const QString &name, QWidget *parent) : QTableView(parent)
{
    constexpr int rowMargin = 8; // pixels above and below a row's text together
    setAccessibleName(name);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setTabKeyNavigation(false);
    setShowGrid(false);
    setAlternatingRowColors(true);
    setWordWrap(false);
    setTextElideMode(Qt::ElideRight);
    setVerticalScrollMode(ScrollPerItem);
    setHorizontalScrollMode(ScrollPerPixel);
    setCornerButtonEnabled(false);
    verticalHeader()->hide();
    // One height for all, so that a million rows needn't be measured.
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setMinimumSectionSize(0);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + rowMargin);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, &SteadyTableView::fetchAhead);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, &SteadyTableView::scrolled);
}

void SteadyTableView::setModel(QAbstractItemModel *model)
{
    QTableView::setModel(model);
    connect(model, &QAbstractItemModel::rowsInserted, this,
            [this](const QModelIndex &, int first, int last) {
                keepPlace(first, last - first + 1);
                fetchAhead();
            });
    connect(
        model, &QAbstractItemModel::rowsRemoved, this,
        [this](const QModelIndex &, int first, int last) { keepPlace(first, first - last - 1); });
    connect(model, &QAbstractItemModel::rowsMoved, this,
            [this](const QModelIndex &, int first, int last, const QModelIndex &, int to) {
                keepPlaceOfMoved(first, last, to);
            });
}

int SteadyTableView::firstVisibleRow() const
{
    return rowAt(0);
}

int SteadyTableView::lastVisibleRow() const
{
    const int last = rowAt(viewport()->height() - 1);
    return last >= 0 ? last : (model() ? model()->rowCount() - 1 : -1);
}

bool SteadyTableView::isRead() const
{
    return verticalScrollBar()->value() > 0 || currentIndex().isValid();
}

/// Moves on by the rows that came (or left) above what is seen first.
void SteadyTableView::keepPlace(int first, int rows)
{
    const int top = verticalScrollBar()->value();
    // Of rows that leave, those count that stood above.
    if (first <= top)
        moveOn(rows < 0 ? -qMin(-rows, top - first) : rows);
}

/// @param to  before which row they went
void SteadyTableView::keepPlaceOfMoved(int first, int last, int to)
{
    const int top = verticalScrollBar()->value();
    if (first > top && to <= top)
        moveOn(last - first + 1);
    else if (last < top && to > top)
        moveOn(first - last - 1);
}

void SteadyTableView::moveOn(int rows)
{
    if (!isRead())
        return;
    QScrollBar *const bar = verticalScrollBar();
    const int top = bar->value();
    updateGeometries(); // the bar's range is that of the rows before
    bar->setValue(top + rows);
}

/// Who scrolls down meets rows that are there already.
void SteadyTableView::fetchAhead()
{
    constexpr int rowsAhead = 250; // below the last one that is seen; a page of a long list
    if (!model() || verticalScrollBar()->value() == 0)
        return;
    if (lastVisibleRow() + rowsAhead >= model()->rowCount() && model()->canFetchMore({}))
        model()->fetchMore({});
}

void SteadyTableView::rowsAboutToBeRemoved(const QModelIndex &parent, int first, int last)
{
    const QModelIndex current = currentIndex();
    if (current.isValid() && current.row() >= first && current.row() <= last)
        setCurrentIndex({});
    QTableView::rowsAboutToBeRemoved(parent, first, last);
}

void SteadyTableView::dataChanged(const QModelIndex &topLeft, const QModelIndex &bottomRight,
                                  const QList<int> &roles)
{
    QTableView::dataChanged(topLeft, bottomRight, roles);
    const QModelIndex current = currentIndex();
    if (current.isValid() && current.row() >= topLeft.row() && current.row() <= bottomRight.row())
        Q_EMIT rowChosen(current.row());
}

void SteadyTableView::currentChanged(const QModelIndex &current, const QModelIndex &previous)
{
    QTableView::currentChanged(current, previous);
    Q_EMIT rowChosen(current.isValid() ? current.row() : -1);
}

void SteadyTableView::focusInEvent(QFocusEvent *event)
{
    const QScopedValueRollback<bool> entered(m_isEntered, true);
    QTableView::focusInEvent(event);
}

QModelIndex SteadyTableView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    if (m_isEntered)
        return {};
    // The first and last column are of no use where whole rows are chosen.
    switch (action) {
    case MoveHome:
        return QTableView::moveCursor(MoveHome, modifiers | Qt::ControlModifier);
    case MoveEnd:
        return QTableView::moveCursor(MoveEnd, modifiers | Qt::ControlModifier);
    default:
        return QTableView::moveCursor(action, modifiers);
    }
}

} // namespace norvane
