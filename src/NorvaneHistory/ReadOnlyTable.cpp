#include "NorvaneHistory/ReadOnlyTable.h"

#include <QHeaderView>

#include <algorithm>

namespace norvane {

ReadOnlyTable::ReadOnlyTable(QWidget *parent) : QTableWidget(parent)
{
    setEditTriggers(NoEditTriggers);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setTabKeyNavigation(false);
    setShowGrid(false);
    setWordWrap(false);
    setHorizontalScrollMode(ScrollPerPixel);
    verticalHeader()->hide();
    verticalHeader()->setMinimumSectionSize(0);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
}

void ReadOnlyTable::showRows(const QStringList &captions, const QList<QStringList> &rows)
{
    constexpr int columnMargin = 8; // pixels between two columns
    constexpr int rowMargin = 4;    // pixels above and below a text together
    setColumnCount(static_cast<int>(captions.size()));
    setHorizontalHeaderLabels(captions);
    setRowCount(static_cast<int>(rows.size()));
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + rowMargin);
    for (int row = 0; row < rowCount(); ++row) {
        for (int column = 0; column < columnCount(); ++column)
            setItem(row, column, new QTableWidgetItem(rows.at(row).at(column)));
    }
    resizeColumnsToContents();
    for (int column = 0; column < columnCount() - 1; ++column)
        setColumnWidth(column, columnWidth(column) + columnMargin);
    m_lastWidth = columnCount() > 0 ? columnWidth(columnCount() - 1) : 0;
    stretchLastColumn();
}

void ReadOnlyTable::resizeEvent(QResizeEvent *event)
{
    QTableWidget::resizeEvent(event);
    stretchLastColumn();
}

void ReadOnlyTable::stretchLastColumn()
{
    const int last = columnCount() - 1;
    if (last < 0)
        return;
    const int room = viewport()->width() - horizontalHeader()->sectionPosition(last);
    setColumnWidth(last, std::max(m_lastWidth, room));
}

} // namespace norvane
