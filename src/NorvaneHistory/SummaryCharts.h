#pragma once

#include "NorvaneHistory/HistorySource.h"

#include <QPalette>
#include <QStringList>

#include <memory>

class QChart;

namespace norvane {

/// The numbers of a range of days, as pictures and as tables.
namespace SummaryCharts {

/// A picture's numbers, row by row.
struct Table
{
    QString title;
    QStringList captions;
    QList<QStringList> rows;
};

/// `days` with those on which nothing left the queue, from `first` to `last`.
QList<HistoryDay> everyDay(const QList<HistoryDay> &days, const QDate &first, const QDate &last);

Table daysTable(const QList<HistoryDay> &days);
Table delaysTable(const QList<DeliveryDelay> &delays);
Table reasonsTable(const QList<FailureReason> &reasons);

/// Messages a day, a bar for each, in the colours and patterns of what became of them.
std::unique_ptr<QChart> daysChart(const QList<HistoryDay> &days, const QPalette &palette);
std::unique_ptr<QChart> delaysChart(const QList<DeliveryDelay> &delays, const QPalette &palette);
/// The most frequent ones.
std::unique_ptr<QChart> reasonsChart(const QList<FailureReason> &reasons, const QPalette &palette);

} // namespace SummaryCharts

} // namespace norvane
