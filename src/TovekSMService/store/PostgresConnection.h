#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "TovekSMService/store/StoreRow.h"
#include "TovekSMService/time/TimeSource.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <memory>
#include <utility>

struct pg_conn;
struct pg_result;

namespace norvane {

class Deadline;

/// A connection to a PostgreSQL server. Statements are sent one behind the other and carried out in
/// their order; only sync() waits for the server, and no longer than its time limit without a word
/// of it: a connection on which that passes is lost.
class PostgresConnection
{
public:
    /// For how long the server may be silent while it is waited for, in milliseconds.
    static constexpr int statementMs = 5000;

    /// Takes a row, and gives whether it wants the next one.
    using Take = std::function<bool(const StoreRow &)>;

    /// The answer to a statement.
    struct Answer
    {
        int changedRows = 0;
    };

    /// Connects, and waits for it: DNS, the server and its authentication.
    /// @param conninfo  as libpq takes it: "host=... dbname=..."
    /// @param time      must outlive the connection
    [[nodiscard]] static StoreResult<std::unique_ptr<PostgresConnection>>
    open(const QString &conninfo, TimeSource &time = TimeSource::system());

    PostgresConnection(const PostgresConnection &) = delete;
    PostgresConnection &operator=(const PostgresConnection &) = delete;
    ~PostgresConnection();

    void setTimeout(int ms) { m_timeoutMs = ms; }

    /// Sends a statement with values in the places of its question marks. What becomes of it shows
    /// in sync().
    /// @param take  gets the rows of its answer in sync(); may be empty
    void send(const QByteArray &text, const QVariantList &values = {}, const Take &take = {});
    /// Waits until everything that was sent is carried out. Behind a statement that failed, none
    /// is.
    /// @return the answer to the last statement, or the first failure
    [[nodiscard]] StoreResult<Answer> sync();
    /// Runs commands without values, parted by semicolons, and waits.
    [[nodiscard]] StoreResult<> execute(const QByteArray &commands);

    /// The payloads of the notifications of other sessions that came meanwhile, in their order.
    bool hasNotifications() const { return !m_notifications.isEmpty(); }
    QStringList takeNotifications() { return std::exchange(m_notifications, {}); }
    /// Takes in what the server has sent on its own.
    void read();

    bool isLost() const { return m_isLost; }
    /// Of the server's side, to be waited for; -1 if the connection is lost.
    int socket() const;

private:
    PostgresConnection(pg_conn *connection, TimeSource &time)
        : m_connection(connection), m_time(time)
    {}

    QByteArray prepared(const QByteArray &text);
    bool wait(bool forWriting, Deadline &deadline);
    pg_result *nextResult(Deadline &deadline);
    void collectNotifications();
    StoreFailure lost(const QString &reason);

    pg_conn *m_connection = nullptr;
    TimeSource &m_time;
    int m_timeoutMs = statementMs;
    bool m_isLost = false;
    QHash<QByteArray, QByteArray> m_names; ///< of the statements that the server has prepared
    int m_lastName = 0;
    /// Of each statement that was sent and not waited for; nothing for one that only prepares.
    QList<Take> m_sent;
    QList<bool> m_isPreparation;
    QStringList m_notifications;
};

} // namespace norvane
