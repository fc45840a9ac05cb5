#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "TovekSMService/time/Timer.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

namespace norvane {

class Clock;
class DeviceKeeper;
class Outbox;
class Store;
struct DispatcherTimings;
struct RunState;
struct TakenOver;

/// This engine among those that share its queue: shows the others that it lives, reports in their
/// place what dead ones left in the middle, and passes on what became different in the queue, both
/// ways. Does nothing for a queue that isn't shared.
class EnginePresence : public QObject
{
    Q_OBJECT

public:
    /// How far the clocks of engine and database may differ, in seconds.
    static constexpr qint64 maxClockDifference = 5;

    /// @param store, clock, outbox, device, state  must outlive this object
    EnginePresence(Store &store, const Clock &clock, Outbox &outbox, const DeviceKeeper &device,
                   const RunState &state, const DispatcherTimings &timings);

    /// Whether nothing may begin: the clocks differ.
    bool isHeldBack() const { return !m_fault.isEmpty(); }
    /// What keeps the engine from its work; empty for nothing.
    const QString &fault() const { return m_fault; }
    /// Tells the others what became different here, soon.
    void passOnNews();
    /// The same of what isn't in the queue.
    void passOnHistoryChange();

Q_SIGNALS:
    /// The database can be used.
    void opened();
    /// The queue can be used, or was changed by other engines.
    void changed();
    /// Other engines changed what isn't in the queue.
    void historyChanged();

private:
    StoreResult<> onOpened();
    void showLife();
    StoreResult<> tryShowLife();
    StoreResult<> checkClock();
    StoreResult<> takeOver();
    void report(const QList<TakenOver> &taken);
    void announceNews();
    void announceAgain(const StoreFailure &failure);
    void takeNews(const QStringList &news);
    void passOnToConsoles();
    QString deviceState() const;

    Store &m_store;
    const Clock &m_clock;
    Outbox &m_outbox;
    const DeviceKeeper &m_device;
    const RunState &m_state;
    const int m_lifeMs;
    const int m_newsMs;
    QString m_fault;
    bool m_hasHistoryChanged = false; ///< and the others haven't been told
    /// What other engines told since the size of the queue was asked for.
    struct News
    {
        bool isSome = false;
        bool isOfAll = false;
    };
    News m_taken;
    bool m_isSizeAsked = false;
    Timer m_life;
    Timer m_news;
};

} // namespace norvane
