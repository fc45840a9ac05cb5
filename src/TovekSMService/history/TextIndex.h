#pragma once

#include "TovekSMService/history/HistoryTable.h"
#include "TovekSMService/store/StoreFailure.h"
#include "TovekSMService/time/Stopwatch.h"

#include <QString>

namespace norvane {

class StoreDatabase;

/// Fills the index in which the rows of a table are looked for by their texts, a few rows at a time
/// and never with the messages themselves.
class TextIndex
{
public:
    /// How long a row is left alone that others may still commit one before, in milliseconds.
    static constexpr int settleMs = 60'000;

    /// @param database, time  must outlive this object
    TextIndex(StoreDatabase &database, HistoryTable table, TimeSource &time)
        : m_database(database), m_table(table), m_sinceLook(time)
    {}

    /// Makes what is missing of the index. Where that can't be, messages are looked for without it.
    [[nodiscard]] StoreResult<> prepare();
    bool isUsable() const { return m_isUsable; }

    /// Takes in the next rows, and lets go of those that were forgotten.
    /// @param maxRows  of each
    /// @return how many of either, whichever were more
    [[nodiscard]] StoreResult<int> step(int maxRows);

private:
    StoreResult<> prepareFile();
    StoreResult<bool> isMine();
    StoreResult<bool> isOfThisFolding();
    StoreResult<qint64> settledId();
    StoreResult<int> indexNext(qint64 mark, int maxRows);
    StoreResult<int> removeForgotten(qint64 mark, int maxRows);
    StoreResult<> add(qint64 id, const QString &text);
    StoreResult<> remove(qint64 id, const QString &text);

    StoreDatabase &m_database;
    const HistoryTable m_table;
    Stopwatch m_sinceLook;
    qint64 m_seen = 0;    ///< the last row when that was looked for
    qint64 m_settled = 0; ///< up to which every row that will ever be is there
    bool m_isUsable = false;
};

} // namespace norvane
