#pragma once

#include "TovekSMService/store/PostgresExchange.h"
#include "TovekSMService/store/StoreFailure.h"
#include "TovekSMService/time/Deadline.h"
#include "TovekSMService/time/TimeSource.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

struct pg_conn;
struct pg_result;

namespace norvane {

/// A connection to a PostgreSQL server. Statements are sent one behind the other and carried out in
/// their order; only sync() waits for the server, and no longer than its time limit without a word
/// of it: a connection on which that passes is lost.
class PostgresConnection
{
public:
    /// For how long the server may be silent while it is waited for, in milliseconds.
    static constexpr int statementMs = 5000;

    using Take = PostgresExchange::Take;
    using Answer = PostgresExchange::Answer;
    /// Is given what became of statements that nobody waited for.
    using Done = std::function<void(const StoreResult<> &)>;

    /// Connects, and waits for it: DNS, the server and its authentication.
    /// @param conninfo  as libpq takes it: "host=... dbname=..."
    /// @param time      must outlive the connection
    [[nodiscard]] static StoreResult<std::unique_ptr<PostgresConnection>>
    open(const QString &conninfo, TimeSource &time = TimeSource::system());

    PostgresConnection(const PostgresConnection &) = delete;
    PostgresConnection &operator=(const PostgresConnection &) = delete;
    ~PostgresConnection();

    void setTimeout(int ms) { m_timeoutMs = ms; }
    /// From now on, until it is set anew, so much is waited for at most in all, however much the
    /// server has to say.
    void setTimeLeft(int ms) { m_end.emplace(m_time).setRemainingTime(ms); }

    /// Sends a statement with values in the places of its question marks. What becomes of it shows
    /// in sync().
    /// @param take  gets the rows of its answer in sync(); may be empty
    void send(const QByteArray &text, const QVariantList &values = {}, const Take &take = {});
    /// Waits until everything that was sent is carried out. Behind a statement that failed, none
    /// is.
    /// @return the answer to the last statement, or the first failure
    [[nodiscard]] StoreResult<Answer> sync();
    /// Parts what was sent from what is sent next, as sync() does, without waiting: it is carried
    /// out, or fails, for itself.
    /// @param done  is among the takeFinished() when the server has answered, or the connection is
    ///              lost
    void post(const Done &done);
    /// Runs commands without values, parted by semicolons, and waits.
    [[nodiscard]] StoreResult<> execute(const QByteArray &commands);

    /// The payloads of the notifications of other sessions that came meanwhile, in their order.
    bool hasNotifications() const { return !m_notifications.isEmpty(); }
    QStringList takeNotifications() { return std::exchange(m_notifications, {}); }
    /// Calls what waited for an answer that is there. They may use the connection.
    bool hasFinished() const { return !m_finished.isEmpty(); }
    QList<std::function<void()>> takeFinished() { return std::exchange(m_finished, {}); }
    /// Takes in what the server has sent, without waiting.
    void read();

    bool isLost() const { return m_isLost; }
    /// Of the server's side, to be waited for; -1 if the connection is lost.
    int socket() const;

private:
    /// What the server was asked without waiting.
    struct Posted
    {
        PostgresExchange exchange;
        Done done;
    };

    PostgresConnection(pg_conn *connection, TimeSource &time)
        : m_connection(connection), m_time(time)
    {}

    QByteArray prepared(const QByteArray &text);
    bool wait(bool forWriting, Deadline &deadline);
    pg_result *nextResult(Deadline &deadline);
    void await(PostgresExchange &exchange, Deadline &deadline);
    void finishPosted();
    void forgetUnprepared(const PostgresExchange &exchange);
    void collectNotifications();
    StoreFailure lost(const QString &reason);

    pg_conn *m_connection = nullptr;
    TimeSource &m_time;
    int m_timeoutMs = statementMs;
    std::optional<Deadline> m_end; ///< of all that is waited for
    bool m_isLost = false;
    QHash<QByteArray, QByteArray> m_names; ///< of the statements that the server has prepared
    int m_lastName = 0;
    PostgresExchange m_sent; ///< behind the last sync() or post()
    QList<Posted> m_posted;  ///< of which the answers aren't whole
    QList<std::function<void()>> m_finished;
    QStringList m_notifications;
};

} // namespace norvane
