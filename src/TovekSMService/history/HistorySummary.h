#pragma once

#include "TovekSMService/history/NewestFirst.h"
#include "TovekSMService/store/StoreFailure.h"
#include "contract/History.h"

#include <QHash>
#include <QList>
#include <QPair>
#include <QString>

namespace norvane {

class QueryLimit;

/// Numbers of the messages that left the queue.
struct HistoryNumbers
{
    QList<HistoryDay> days; ///< those on which some did, in their order
    QList<DeliveryDelay> delays;
    QList<FailureReason> reasons; ///< the most frequent first
};

/// Counts the messages that left the queue.
class HistorySummary
{
public:
    /// @param database, limit  must outlive this object
    HistorySummary(StoreDatabase &database, const QueryLimit &limit)
        : m_database(database), m_limit(limit)
    {}

    /// Of those from `from` on and before `to`.
    [[nodiscard]] StoreResult<HistoryNumbers> of(const QString &from, const QString &to) const;

private:
    struct Counts
    {
        QList<HistoryDay> days;
        QList<DeliveryDelay> delays;
        QHash<QPair<quint32, qint32>, quint32> reasons; ///< by state and code
    };

    StoreResult<> countDays(const QString &from, const QString &to, Counts &counts) const;
    StoreResult<QString> countDay(const QString &begin, const QString &next, const QString &to,
                                  Counts &counts) const;
    StoreResult<> countReasons(NewestFirst::Range range, const QString &from, const QString &to,
                               Counts &counts) const;
    static void addDay(const QString &name, const StoreRow &row, Counts &counts);
    static HistoryNumbers numbersOf(const Counts &counts);

    StoreDatabase &m_database;
    const QueryLimit &m_limit;
};

} // namespace norvane
