#include "TovekSMService/store/PostgresDatabase.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/platform/LeftThreads.h"
#include "TovekSMService/store/PostgresSchema.h"

#include <QSocketNotifier>
#include <QThread>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int reconnectMs = 1000;
constexpr int attemptEndMs = 100; ///< for which the end of an attempt to connect is waited for

/// What every session is set to. A server that was told to answer before its disk has the commit is
/// told otherwise. An engine that stands still, or that the network has cut off, lets go of its
/// locks: in the middle of a statement that shows by keepalives alone, and before it no other
/// engine can take over.
constexpr char sessionSettings[] =
    "SELECT set_config('synchronous_commit', 'on', false) "
    "WHERE current_setting('synchronous_commit') = 'off'; "
    "SET idle_in_transaction_session_timeout = '10s'; SET lock_timeout = '3s'; "
    "SET tcp_keepalives_idle = 10; SET tcp_keepalives_interval = 5; SET tcp_keepalives_count = 3; "
    "SET client_min_messages = error; SET standard_conforming_strings = on; "
    // A queue grows and shrinks faster than the server's statistics: every statement goes by an
    // index, whatever they say.
    "SET enable_seqscan = off; SET enable_hashjoin = off; SET enable_mergejoin = off; "
    "SET plan_cache_mode = force_generic_plan; SET jit = off; "
    "LISTEN norvane_queue";

StoreResult<std::unique_ptr<PostgresConnection>> connected(const QString &conninfo,
                                                           TimeSource &time)
{
    StoreResult<std::unique_ptr<PostgresConnection>> connection =
        PostgresConnection::open(conninfo, time);
    if (!connection)
        return connection;
    const StoreResult<> prepared =
        (*connection)
            ->execute("SET client_min_messages = error")
            .and_then([&] { return PostgresSchema::migrate(**connection); })
            .and_then([&] { return (*connection)->execute(sessionSettings); });
    if (!prepared)
        return failed(prepared.error());
    return connection;
}

} // namespace

struct PostgresDatabase::Attempt
{
    StoreResult<std::unique_ptr<PostgresConnection>> result =
        failed(StoreFailure(StoreFailure::Kind::Away, QString()));
};

PostgresDatabase::PostgresDatabase(const QString &conninfo, TimeSource &time)
    : m_conninfo(conninfo), m_time(time), m_again(time), m_lookSoon(time)
{
    QObject::connect(&m_again, &Timer::timeout, &m_context, [this] { connectInThread(); });
    QObject::connect(&m_lookSoon, &Timer::timeout, &m_context, [this] { look(); });
}

PostgresDatabase::~PostgresDatabase()
{
    endThread();
}

StoreResult<> PostgresDatabase::open()
{
    if (m_isRefused)
        return failed(*m_openFailure);
    close();
    return take(connected(m_conninfo, m_time));
}

void PostgresDatabase::keepOpen()
{
    m_isKeptOpen = !m_isRefused;
    if (m_isKeptOpen && !m_connection && !m_thread)
        connectInThread();
}

void PostgresDatabase::close()
{
    endThread();
    m_isKeptOpen = false;
    m_again.stop();
    m_notifier.reset();
    m_connection.reset();
}

void PostgresDatabase::refuse(const StoreFailure &reason)
{
    close();
    m_isRefused = true;
    m_openFailure = reason;
}

void PostgresDatabase::connectInThread()
{
    endThread();
    m_attempt = std::make_shared<Attempt>();
    m_thread.reset(QThread::create([conninfo = m_conninfo, attempt = m_attempt, &time = m_time] {
        attempt->result = connected(conninfo, time);
    }));
    QObject::connect(m_thread.get(), &QThread::finished, &m_context, [this] { takeAttempt(); });
    m_thread->start();
}

void PostgresDatabase::endThread()
{
    if (!m_thread)
        return;
    QObject::disconnect(m_thread.get(), nullptr, &m_context, nullptr);
    // It has what it needs, and nobody waits for a server that doesn't answer.
    LeftThreads::endOrLeave(std::move(m_thread), attemptEndMs);
}

void PostgresDatabase::takeAttempt()
{
    m_thread.release()->deleteLater();
    const std::shared_ptr<Attempt> attempt = std::exchange(m_attempt, nullptr);
    const StoreResult<> taken = take(std::move(attempt->result));
    if (taken)
        return;
    if (std::exchange(m_loggedFailure, taken.error().text()) != taken.error().text())
        qCWarning(logStore).noquote() << taken.error().text();
    m_again.start(reconnectMs);
}

StoreResult<> PostgresDatabase::take(StoreResult<std::unique_ptr<PostgresConnection>> connection)
{
    if (!connection) {
        m_openFailure = connection.error();
        return failed(connection.error());
    }
    m_openFailure.reset();
    m_connection = std::move(*connection);
    m_notifier = std::make_unique<QSocketNotifier>(m_connection->socket(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, &m_context, [this] { look(); });
    const StoreResult<> begun = m_onOpened ? m_onOpened() : StoreResult<>();
    if (begun)
        return begun;
    m_openFailure = begun.error();
    m_notifier.reset();
    m_connection.reset();
    return begun;
}

/// Takes in what the server sent without being waited for.
void PostgresDatabase::look()
{
    if (!m_connection || isTogether())
        return;
    m_connection->read();
    const QStringList payloads = m_connection->takeNotifications();
    const QList<std::function<void()>> finished = m_connection->takeFinished();
    if (m_connection->isLost())
        lose();
    if (!payloads.isEmpty() && m_onNotified)
        m_onNotified(payloads);
    for (const std::function<void()> &finish : finished)
        finish();
}

void PostgresDatabase::lose()
{
    m_openFailure =
        StoreFailure(StoreFailure::Kind::Away, u"the connection to the database is lost"_s);
    qCWarning(logStore).noquote() << m_openFailure->text();
    m_notifier.reset();
    m_connection.reset();
    if (m_isKeptOpen)
        m_again.start(reconnectMs);
}

StoreFailure PostgresDatabase::notOpen() const
{
    return m_openFailure.value_or(
        StoreFailure(StoreFailure::Kind::Away, u"the database is not open"_s));
}

StoreResult<PostgresConnection::Answer> PostgresDatabase::sync() const
{
    StoreResult<PostgresConnection::Answer> answer = m_connection->sync();
    m_isFailed = m_isFailed || !answer;
    // What came on the way is looked at from the event loop, and a lost connection given up there.
    if (m_connection->isLost())
        m_notifier->setEnabled(false); // its socket is closed already
    if (m_connection->isLost() || m_connection->hasNotifications() || m_connection->hasFinished())
        m_lookSoon.start(0);
    return answer;
}

void PostgresDatabase::startCall() const
{
    if (m_callMs > 0)
        m_connection->setTimeLeft(m_callMs);
}

StoreResult<> PostgresDatabase::begin(const char *statement)
{
    if (!m_connection || m_connection->isLost())
        return failed(notOpen());
    m_isFailed = false;
    startCall();
    m_connection->send(statement);
    return {};
}

StoreResult<> PostgresDatabase::commit()
{
    if (m_isFailed)
        return failed(StoreFailure(StoreFailure::Kind::Other, u"a statement failed before"_s));
    m_connection->send("COMMIT");
    return sync().map([](const auto &) {});
}

void PostgresDatabase::rollBack()
{
    if (m_connection->isLost())
        return;
    m_connection->send("ROLLBACK");
    static_cast<void>(sync());
}

StoreResult<> PostgresDatabase::carryOut(const char *text, const QVariantList &values)
{
    m_connection->send(text, values);
    return {};
}

void PostgresDatabase::ask(const char *text, const QVariantList &values,
                           const PostgresConnection::Take &take)
{
    m_connection->send(text, values, take);
}

void PostgresDatabase::post(const char *text, const QVariantList &values,
                            const PostgresConnection::Take &take,
                            const PostgresConnection::Done &done)
{
    Q_ASSERT(!isTogether());
    if (!m_connection || m_connection->isLost()) {
        QMetaObject::invokeMethod(
            &m_context, [done, failure = notOpen()] { done(failed(failure)); },
            Qt::QueuedConnection);
        return;
    }
    m_connection->send(text, values, take);
    m_connection->post(done);
    if (m_connection->isLost())
        m_lookSoon.start(0);
}

StoreResult<int> PostgresDatabase::carryOutAndCount(const char *text, const QVariantList &values)
{
    m_connection->send(text, values);
    return sync().map([](const PostgresConnection::Answer &answer) { return answer.changedRows; });
}

StoreResult<qint64> PostgresDatabase::carryOutInsert(const char *text, const QVariantList &values)
{
    qint64 id = 0;
    m_connection->send(QByteArray(text) + " RETURNING id", values, [&id](const StoreRow &row) {
        id = row.value(0).toLongLong();
        return false;
    });
    return sync().map([&id](const auto &) { return id; });
}

StoreResult<> PostgresDatabase::query(const char *text, const QVariantList &values,
                                      const Take &take) const
{
    if (!m_connection || m_connection->isLost())
        return failed(notOpen());
    if (!isTogether())
        startCall();
    m_connection->send(text, values, take);
    return sync().map([](const auto &) {});
}

StoreResult<> PostgresDatabase::probe()
{
    return row("SELECT pg_is_in_recovery()", {},
               [](const StoreRow &row) { return row.value(0).toBool(); })
        .and_then([](std::optional<bool> isStandby) -> StoreResult<> {
            if (isStandby.value_or(false))
                return failed(StoreFailure(StoreFailure::Kind::ReadOnly,
                                           u"the database server is a standby"_s));
            return {};
        });
}

/// Of those who ask at a time, one has them: the key is "chores" in ASCII.
StoreResult<bool> PostgresDatabase::mayDoChores()
{
    if (!m_areChoresAllowed)
        return false;
    return row("SELECT pg_try_advisory_xact_lock(109270229214579)", {},
               [](const StoreRow &row) { return row.value(0).toBool(); })
        .map([](std::optional<bool> isMine) { return isMine.value_or(false); });
}

} // namespace norvane
