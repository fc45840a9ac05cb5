#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "TovekSMService/time/Timer.h"

#include <QObject>

namespace norvane {

class Clock;
class Store;

/// Forgets what is older than it is to be kept, a few rows at a time, so that nothing else waits
/// for it: outcomes with their parts and reports, and received messages that are read.
class OutcomePruner : public QObject
{
    Q_OBJECT

public:
    struct Pace
    {
        int rows = 200;         ///< of each kind in one step
        int stepMs = 1000;      ///< between two steps while there is more to forget
        int restMs = 3'600'000; ///< until it looks again
        int againMs = 60'000;   ///< behind a failure
    };

    /// @param store, clock  must outlive this object
    OutcomePruner(Store &store, const Clock &clock, int keepDays, const Pace &pace);

Q_SIGNALS:
    /// A step has forgotten something.
    void forgotten();

private:
    void step();
    StoreResult<int> forget(const QString &before);

    Store &m_store;
    const Clock &m_clock;
    const qint64 m_keepSeconds;
    const Pace m_pace;
    Timer m_timer;
};

} // namespace norvane
