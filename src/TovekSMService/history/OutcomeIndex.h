#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "TovekSMService/time/Stopwatch.h"

#include <QString>

namespace norvane {

class StoreDatabase;

/// Fills the index in which outcomes are looked for by their texts, a few rows at a time and never
/// with the messages themselves.
class OutcomeIndex
{
public:
    /// How long an outcome is left alone that others may still commit one before, in milliseconds.
    static constexpr int settleMs = 60'000;

    /// @param database, time  must outlive this object
    OutcomeIndex(StoreDatabase &database, TimeSource &time)
        : m_database(database), m_sinceLook(time)
    {}

    /// Makes what is missing of the index. Where that can't be, messages are looked for without it.
    [[nodiscard]] StoreResult<> prepare();
    bool isUsable() const { return m_isUsable; }

    /// Takes in the next outcomes, and lets go of those that were forgotten.
    /// @param maxRows  of each
    /// @return how many of either, whichever were more
    [[nodiscard]] StoreResult<int> step(int maxRows);

private:
    StoreResult<> prepareFile();
    StoreResult<> prepareServer();
    StoreResult<bool> isMine();
    StoreResult<qint64> settledId();
    StoreResult<int> takeIn(qint64 mark, int maxRows);
    StoreResult<int> letGo(qint64 mark, int maxRows);
    StoreResult<> add(qint64 id, const QString &folded);
    StoreResult<> remove(qint64 id, const QString &folded);

    StoreDatabase &m_database;
    Stopwatch m_sinceLook;
    qint64 m_seen = 0;    ///< the last outcome when that was looked for
    qint64 m_settled = 0; ///< up to which every outcome that will ever be is there
    bool m_isUsable = false;
};

} // namespace norvane
