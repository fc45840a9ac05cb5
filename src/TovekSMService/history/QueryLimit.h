#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "TovekSMService/time/Deadline.h"

#include <atomic>

namespace norvane {

/// For how long a query may go on: until its time is over, or nobody wants its answer any more.
class QueryLimit
{
public:
    /// In milliseconds.
    static constexpr int maxMs = 5000;

    /// @param time         must outlive this object
    /// @param isCancelled  set from another thread; null for none. Must outlive this object
    explicit QueryLimit(const TimeSource &time, const std::atomic<bool> *isCancelled = nullptr);

    /// Fails with Busy once the query is to end.
    [[nodiscard]] StoreResult<> check() const;

private:
    Deadline m_deadline;
    const std::atomic<bool> *m_isCancelled;
};

} // namespace norvane
