#pragma once

#include "TovekSMService/store/EngineRegister.h"
#include "TovekSMService/store/EngineSettingsStore.h"
#include "TovekSMService/store/KeptSettlements.h"
#include "TovekSMService/store/MessageQueue.h"
#include "TovekSMService/store/OptOutList.h"
#include "TovekSMService/store/Outcomes.h"
#include "TovekSMService/store/PartCounter.h"
#include "TovekSMService/store/PinRecord.h"
#include "TovekSMService/store/ReceivedMessages.h"
#include "TovekSMService/store/SentParts.h"
#include "TovekSMService/store/SqliteDatabase.h"

#include <functional>
#include <memory>

namespace norvane {

class PostgresDatabase;
class SharedQueue;
class TimeSource;

/// A queue that an engine shares with others.
struct SharedStore
{
    QString conninfo; ///< of the database, as libpq takes it
    EngineRegister::Identity engine;
    int sameSenderSeconds = 0; ///< see SharedQueue
    /// The wall clock so many seconds from now, "yyyy-MM-ddTHH:mm:ss".
    MessageQueue::Now now;
    QString refusal = {}; ///< why nobody may connect to it; empty if one may
};

/// Everything that the engine keeps. Each operation of its parts is one transaction, unless it is
/// one of several that are carried out together.
///
/// What is the engine's own, its settings, PINs and counts, lies in its own file. The queue and
/// what belongs to its messages lies there too, or in a database that other engines use as well.
class Store
{
public:
    /// It is not open yet.
    /// @param now  see MessageQueue
    explicit Store(const QString &file, const MessageQueue::Now &now = systemNow());
    Store(const QString &file, const SharedStore &shared, TimeSource &time);
    ~Store();

    /// Opens the engine's own file anew, and all parts with it, see SqliteDatabase::open(). A
    /// database that is shared is opened by itself.
    [[nodiscard]] StoreResult<> open();
    void close();

    SqliteDatabase &file() { return m_file; }
    const SqliteDatabase &file() const { return m_file; }
    /// Where the queue is.
    StoreDatabase &database() { return m_database; }
    const StoreDatabase &database() const { return m_database; }
    /// Of the database that is shared, as libpq takes it; empty for none, and for one that is
    /// refused.
    QString conninfo() const { return m_conninfo; }
    /// Why nobody may connect to the database that is shared; empty if one may.
    QString refusal() const { return m_refusal; }
    bool isShared() const { return m_shared != nullptr; }
    /// Of a queue that is shared; null for one that isn't.
    PostgresDatabase *sharedDatabase() { return m_shared.get(); }
    SharedQueue *sharedQueue() { return m_sharedQueue; }
    EngineRegister *engines() { return m_engines.get(); }
    /// The wall clock, "yyyy-MM-ddTHH:mm:ss".
    QString now() const { return m_now(0); }
    KeptSettlements *keptSettlements() { return isShared() ? &m_keptSettlements : nullptr; }

    MessageQueue &queue() { return *m_queue; }
    const MessageQueue &queue() const { return *m_queue; }
    Outcomes &outcomes() { return m_outcomes; }
    const Outcomes &outcomes() const { return m_outcomes; }
    EngineSettingsStore &settings() { return m_settings; }
    const EngineSettingsStore &settings() const { return m_settings; }
    PartCounter &parts() { return m_parts; }
    PinRecord &pins() { return m_pins; }
    SentParts &sentParts() { return m_sentParts; }
    ReceivedMessages &received() { return m_received; }
    const ReceivedMessages &received() const { return m_received; }
    OptOutList &optOuts() { return m_optOuts; }

private:
    Store(const QString &file, std::unique_ptr<PostgresDatabase> shared,
          const MessageQueue::Now &now);
    static MessageQueue::Now systemNow();

    SqliteDatabase m_file;
    QString m_conninfo;
    QString m_refusal;
    std::unique_ptr<PostgresDatabase> m_shared;
    StoreDatabase &m_database;
    Outcomes m_outcomes{m_database};
    EngineSettingsStore m_settings{m_file};
    PartCounter m_parts{m_file};
    PinRecord m_pins{m_file};
    KeptSettlements m_keptSettlements{m_file};
    SentParts m_sentParts{m_database};
    ReceivedMessages m_received{m_database};
    OptOutList m_optOuts{m_database};
    std::unique_ptr<EngineRegister> m_engines;
    const MessageQueue::Now m_now;
    SharedQueue *m_sharedQueue = nullptr; ///< m_queue, if that is shared
    std::unique_ptr<MessageQueue> m_queue;
};

} // namespace norvane
