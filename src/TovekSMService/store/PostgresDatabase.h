#pragma once

#include "TovekSMService/store/PostgresConnection.h"
#include "TovekSMService/store/StoreDatabase.h"
#include "TovekSMService/time/Timer.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

class QSocketNotifier;
class QThread;

namespace norvane {

/// A PostgreSQL database that several engines share. What was written is durable on the server when
/// the call returns. No statement is waited for through more than five seconds of silence: a
/// connection on which one takes longer is given up, and everything fails at once until another one
/// stands. Connections are made in a thread of their own.
class PostgresDatabase : public StoreDatabase
{
public:
    /// The channel of the notifications of what became different.
    static constexpr char channel[] = "norvane_queue";

    /// @param conninfo  as libpq takes it
    /// @param time      must outlive this object
    explicit PostgresDatabase(const QString &conninfo, TimeSource &time = TimeSource::system());
    ~PostgresDatabase() override;

    /// Is called whenever a connection stands. Where it fails, the connection is given up.
    void onOpened(const std::function<StoreResult<>()> &opened) { m_onOpened = opened; }
    /// Is called with the notifications of other sessions, from the event loop.
    void onNotified(const std::function<void(const QStringList &payloads)> &notified)
    {
        m_onNotified = notified;
    }

    /// For how long a transaction, or a query, is waited for in all, in milliseconds; a connection
    /// on which one takes longer is given up. Without that, for as long as the server goes on
    /// answering.
    void limitCalls(int ms) { m_callMs = ms; }

    /// Connects, and waits for it.
    [[nodiscard]] StoreResult<> open();
    /// Connects without waiting, now and whenever the connection is lost.
    void keepOpen();
    void close();
    /// Gives up the connection for good: nothing connects any more.
    void refuse(const StoreFailure &reason);
    /// Whether mayDoChores() may say so: not where the clock can't be trusted.
    void allowChores(bool areAllowed) { m_areChoresAllowed = areAllowed; }
    /// Why there is no connection.
    const std::optional<StoreFailure> &openFailure() const { return m_openFailure; }

    /// Within a transaction: a statement that is sent with the next one that is waited for, and
    /// answered before that.
    void ask(const char *text, const QVariantList &values, const PostgresConnection::Take &take);

    /// Outside of a transaction: a statement that nobody waits for. `done` is called from the event
    /// loop when it is carried out or has failed, unless the database is closed before.
    void post(const char *text, const QVariantList &values, const PostgresConnection::Take &take,
              const PostgresConnection::Done &done);

    Kind kind() const override { return Kind::Server; }
    Access access() const override { return m_connection ? Access::Whole : Access::None; }
    Reopening reopening() const override { return Reopening::ByItself; }
    StoreResult<> probe() override;
    StoreResult<bool> mayDoChores() override;

private:
    /// What a thread that connects gives.
    struct Attempt;

    StoreResult<> begin() override { return begin("BEGIN"); }
    StoreResult<> beginLook() override
    {
        return begin("BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY");
    }
    StoreResult<> begin(const char *statement);
    StoreResult<> commit() override;
    void rollBack() override;
    StoreResult<> carryOut(const char *text, const QVariantList &values) override;
    StoreResult<int> carryOutAndCount(const char *text, const QVariantList &values) override;
    StoreResult<qint64> carryOutInsert(const char *text, const QVariantList &values) override;
    StoreResult<> query(const char *text, const QVariantList &values,
                        const Take &take) const override;

    StoreFailure notOpen() const;
    void startCall() const;
    StoreResult<PostgresConnection::Answer> sync() const;
    StoreResult<> take(StoreResult<std::unique_ptr<PostgresConnection>> connection);
    void connectInThread();
    void endThread();
    void takeAttempt();
    void look();
    void lose();

    const QString m_conninfo;
    TimeSource &m_time;
    QObject m_context; ///< of what is called from the event loop
    mutable std::unique_ptr<PostgresConnection> m_connection;
    std::optional<StoreFailure> m_openFailure;
    QString m_loggedFailure;
    mutable bool m_isFailed = false; ///< the transaction that is open can't be committed
    int m_callMs = 0;                ///< without a limit
    bool m_isKeptOpen = false;
    bool m_isRefused = false;
    bool m_areChoresAllowed = true;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::unique_ptr<QThread> m_thread;
    std::shared_ptr<Attempt> m_attempt;
    Timer m_again;
    mutable Timer m_lookSoon;
    std::function<StoreResult<>()> m_onOpened;
    std::function<void(const QStringList &)> m_onNotified;
};

} // namespace norvane
