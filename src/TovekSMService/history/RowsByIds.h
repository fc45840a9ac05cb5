#pragma once

#include "TovekSMService/history/PlacedRow.h"
#include "TovekSMService/store/StoreFailure.h"

#include <QList>

namespace norvane {

class QueryLimit;
class StoreDatabase;

/// Reads rows of the history by their ids, each kind of them in one statement, however many they
/// are.
class RowsByIds
{
public:
    /// @param database, limit  must outlive this object
    RowsByIds(const StoreDatabase &database, const QueryLimit &limit)
        : m_database(database), m_limit(limit)
    {}

    /// The messages that wait with these ids, the latest first.
    [[nodiscard]] StoreResult<QList<PlacedRow>> waiting(const QList<qint64> &ids) const;
    /// The outcomes with these ids of their own, the latest first.
    [[nodiscard]] StoreResult<QList<PlacedRow>> outcomes(const QList<qint64> &ids) const;
    /// What has one of these ids in the history: messages wherever they are, in no order.
    [[nodiscard]] StoreResult<QList<HistoryRow>> of(const QList<qint64> &ids) const;

private:
    struct Statements;

    StoreResult<QList<PlacedRow>> read(const Statements &statements,
                                       const QList<qint64> &ids) const;

    const StoreDatabase &m_database;
    const QueryLimit &m_limit;
};

} // namespace norvane
