#include "TovekSMService/store/Store.h"

#include "TovekSMService/store/LocalQueue.h"
#include "TovekSMService/store/PostgresDatabase.h"
#include "TovekSMService/store/SharedQueue.h"
#include "TovekSMService/time/Clock.h"

#include <utility>

namespace norvane {

namespace {

StoreDatabase &eitherOf(SqliteDatabase &file, PostgresDatabase *shared)
{
    if (shared != nullptr)
        return *shared;
    return file;
}

} // namespace

Store::Store(const QString &file, std::unique_ptr<PostgresDatabase> shared,
             const MessageQueue::Now &now)
    : m_file(file), m_shared(std::move(shared)), m_database(eitherOf(m_file, m_shared.get())),
      m_now(now)
{}

MessageQueue::Now Store::systemNow()
{
    return [](qint64 seconds) {
        static const SystemClock clock;
        return clock.wallClockText(seconds);
    };
}

Store::Store(const QString &file, const MessageQueue::Now &now) : Store(file, nullptr, now)
{
    m_queue = std::make_unique<LocalQueue>(m_database, m_outcomes, now);
}

Store::Store(const QString &file, const SharedStore &shared, TimeSource &time)
    : Store(file, std::make_unique<PostgresDatabase>(shared.conninfo, time), shared.now)
{
    m_refusal = shared.refusal;
    if (m_refusal.isEmpty())
        m_conninfo = shared.conninfo;
    m_engines = std::make_unique<EngineRegister>(m_database, shared.engine);
    auto queue =
        std::make_unique<SharedQueue>(*m_shared, *m_engines, shared.now, shared.sameSenderSeconds);
    m_sharedQueue = queue.get();
    m_queue = std::move(queue);
    m_outcomes.setReporter([this] { return m_engines->id(); });
}

Store::~Store() = default;

StoreResult<> Store::open()
{
    close();
    StoreResult<> opened = m_file.open();
    if (m_file.access() == StoreDatabase::Access::None || isShared())
        return opened;
    if (const StoreResult<> loaded = m_queue->load(); !loaded) {
        close();
        return opened ? loaded : opened;
    }
    return opened;
}

void Store::close()
{
    if (!isShared())
        m_queue->forget();
    m_file.close();
}

} // namespace norvane
