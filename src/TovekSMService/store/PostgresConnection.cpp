#include "TovekSMService/store/PostgresConnection.h"

#include "TovekSMService/platform/SocketWait.h"
#include "TovekSMService/store/PostgresExchange.h"
#include "TovekSMService/store/PostgresText.h"

#include <libpq-fe.h>

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

struct ResultDeleter
{
    void operator()(PGresult *result) const { PQclear(result); }
};
using ResultPointer = std::unique_ptr<PGresult, ResultDeleter>;

void ignoreNotice(void * /*context*/, const PGresult * /*result*/) {}

/// A statement's values in the form that the server is given them in.
class Parameters
{
public:
    explicit Parameters(const QVariantList &values)
    {
        for (const QVariant &value : values) {
            const bool isBytes = value.typeId() == QMetaType::QByteArray;
            m_texts.append(isBytes ? value.toByteArray() : PostgresText::of(value));
            const bool isNull = !value.isValid();
            m_values.append(isNull ? nullptr : m_texts.constLast().constData());
            m_lengths.append(static_cast<int>(m_texts.constLast().size()));
            m_formats.append(isBytes ? 1 : 0);
        }
    }

    int count() const { return static_cast<int>(m_values.size()); }
    const char *const *values() const { return m_values.constData(); }
    const int *lengths() const { return m_lengths.constData(); }
    const int *formats() const { return m_formats.constData(); }

private:
    QList<QByteArray> m_texts;
    QList<const char *> m_values;
    QList<int> m_lengths;
    QList<int> m_formats;
};

} // namespace

StoreResult<std::unique_ptr<PostgresConnection>> PostgresConnection::open(const QString &conninfo,
                                                                          TimeSource &time)
{
    // Those of the string win, as it is read last. A server that is gone shows by keepalives where
    // no word was owed.
    const char *const names[] = {"connect_timeout",
                                 "keepalives_idle",
                                 "keepalives_interval",
                                 "keepalives_count",
                                 "application_name",
                                 "client_encoding",
                                 "dbname",
                                 nullptr};
    const QByteArray info = conninfo.toUtf8();
    const char *const values[] = {
        "5", "10", "5", "3", "TovekSMService", "UTF8", info.constData(), nullptr};
    PGconn *const connection = PQconnectdbParams(names, values, 1);
    std::unique_ptr<PostgresConnection> opened(new PostgresConnection(connection, time));
    if (PQstatus(connection) != CONNECTION_OK)
        return failed(opened->lost(u"the database can't be reached"_s));
    PQsetNoticeReceiver(connection, ignoreNotice, nullptr);
    PQsetnonblocking(connection, 1);
    if (PQenterPipelineMode(connection) == 0)
        return failed(opened->lost(u"no pipeline"_s));
    return opened;
}

PostgresConnection::~PostgresConnection()
{
    PQfinish(m_connection);
}

StoreFailure PostgresConnection::lost(const QString &reason)
{
    m_isLost = true;
    m_sent = {};
    const QString words = QString::fromUtf8(PQerrorMessage(m_connection)).simplified();
    const StoreFailure failure(StoreFailure::Kind::Away,
                               words.isEmpty() ? reason : reason + u": "_s + words);
    for (const Posted &posted : std::exchange(m_posted, {}))
        m_finished.append([done = posted.done, failure] { done(failed(failure)); });
    return failure;
}

/// The name under which the server knows the statement.
QByteArray PostgresConnection::prepared(const QByteArray &text)
{
    QByteArray &name = m_names[text];
    if (!name.isEmpty())
        return name;
    name = "s" + QByteArray::number(++m_lastName);
    const QByteArray numbered = PostgresText::withNumberedPlaces(text);
    PQsendPrepare(m_connection, name.constData(), numbered.constData(), 0, nullptr);
    m_sent.addPreparation(text);
    return name;
}

void PostgresConnection::send(const QByteArray &text, const QVariantList &values, const Take &take)
{
    const QByteArray name = prepared(text);
    const Parameters parameters(values);
    PQsendQueryPrepared(m_connection, name.constData(), parameters.count(), parameters.values(),
                        parameters.lengths(), parameters.formats(), 0);
    m_sent.addStatement(take);
}

/// Whatever comes, or can be sent, puts the deadline off.
bool PostgresConnection::wait(bool forWriting, Deadline &deadline)
{
    const qint64 left = m_end ? std::min(deadline.remainingTime(), m_end->remainingTime())
                              : deadline.remainingTime();
    if (left <= 0 || !waitForSocket(PQsocket(m_connection), forWriting, static_cast<int>(left)))
        return false;
    deadline.setRemainingTime(m_timeoutMs);
    return true;
}

/// The next result; null for the end of one statement's, and with a connection that is lost.
PGresult *PostgresConnection::nextResult(Deadline &deadline)
{
    for (;;) {
        const int unsent = PQflush(m_connection);
        if (unsent == 0 && PQisBusy(m_connection) == 0)
            return PQgetResult(m_connection);
        if (unsent < 0 || !wait(unsent != 0, deadline) || PQconsumeInput(m_connection) == 0) {
            m_isLost = true;
            return nullptr;
        }
    }
}

void PostgresConnection::await(PostgresExchange &exchange, Deadline &deadline)
{
    while (!m_isLost && !exchange.isWhole()) {
        const ResultPointer result{nextResult(deadline)};
        if (!m_isLost)
            exchange.take(result.get());
    }
}

StoreResult<PostgresConnection::Answer> PostgresConnection::sync()
{
    if (m_isLost)
        return failed(lost(u"the database can't be reached"_s));
    Deadline deadline(m_time);
    deadline.setRemainingTime(m_timeoutMs);
    PQpipelineSync(m_connection);
    PostgresExchange exchange = std::exchange(m_sent, {});
    for (Posted &posted : m_posted)
        await(posted.exchange, deadline);
    finishPosted();
    await(exchange, deadline);
    collectNotifications();
    if (PQstatus(m_connection) == CONNECTION_BAD)
        m_isLost = true;
    if (m_isLost)
        return failed(lost(u"the database doesn't answer"_s));
    forgetUnprepared(exchange);
    return exchange.result();
}

void PostgresConnection::post(const Done &done)
{
    PQpipelineSync(m_connection);
    m_posted.append({std::exchange(m_sent, {}), done});
    // What can't be sent at once leaves with what is waited for next.
    m_isLost = m_isLost || PQflush(m_connection) < 0;
    if (m_isLost)
        lost(u"the database can't be reached"_s);
}

/// The others stay known: a server keeps them as long as the connection lasts, however often what
/// they do fails.
void PostgresConnection::forgetUnprepared(const PostgresExchange &exchange)
{
    for (const QByteArray &text : exchange.unprepared())
        m_names.remove(text);
}

void PostgresConnection::finishPosted()
{
    while (!m_posted.isEmpty() && m_posted.constFirst().exchange.isWhole()) {
        const Posted posted = m_posted.takeFirst();
        forgetUnprepared(posted.exchange);
        const StoreResult<Answer> result = posted.exchange.result();
        m_finished.append([done = posted.done, result] { done(result.map([](Answer) {})); });
    }
}

StoreResult<> PostgresConnection::execute(const QByteArray &commands)
{
    const QList<QByteArray> each = commands.split(';');
    for (const QByteArray &command : each) {
        if (command.trimmed().isEmpty())
            continue;
        send(command);
    }
    return sync().map([](const Answer &) {});
}

void PostgresConnection::read()
{
    if (m_isLost)
        return;
    if (PQconsumeInput(m_connection) == 0)
        m_isLost = true;
    while (!m_isLost && !m_posted.isEmpty() && PQisBusy(m_connection) == 0) {
        const ResultPointer result(PQgetResult(m_connection));
        m_posted.first().exchange.take(result.get());
        finishPosted();
    }
    collectNotifications();
    if (m_isLost || PQstatus(m_connection) == CONNECTION_BAD)
        lost(u"the connection to the database is lost"_s);
}

void PostgresConnection::collectNotifications()
{
    while (PGnotify *const notification = PQnotifies(m_connection)) {
        if (notification->be_pid != PQbackendPID(m_connection))
            m_notifications.append(QString::fromUtf8(notification->extra));
        PQfreemem(notification);
    }
}

int PostgresConnection::socket() const
{
    return m_isLost ? -1 : PQsocket(m_connection);
}

} // namespace norvane
