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
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, &SteadyTableView::scrolled);
}

void SteadyTableView::setModel(QAbstractItemModel *model)
{
    QTableView::setModel(model);
    connect(
        model, &QAbstractItemModel::rowsInserted, this,
        [this](const QModelIndex &, int first, int last) { keepPlace(first, last - first + 1); });
    connect(
        model, &QAbstractItemModel::rowsRemoved, this,
        [this](const QModelIndex &, int first, int last) { keepPlace(first, first - last - 1); });
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
    QScrollBar *const bar = verticalScrollBar();
    const int top = bar->value();
    if (!isRead() || first > top)
        return;
    // Of rows that leave, those count that stood above.
    const int moved = rows < 0 ? -qMin(-rows, top - first) : rows;
    updateGeometries(); // the bar's range is that of the rows before
    bar->setValue(top + moved);
}

void SteadyTableView::rowsAboutToBeRemoved(const QModelIndex &parent, int first, int last)
{
    const QModelIndex current = currentIndex();
    if (current.isValid() && current.row() >= first && current.row() <= last)
        setCurrentIndex({});
    QTableView::rowsAboutToBeRemoved(parent, first, last);
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
