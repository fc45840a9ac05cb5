#include "TovekSMService/store/PostgresConnection.h"

#include "TovekSMService/platform/SocketWait.h"
#include "TovekSMService/store/PostgresText.h"
#include "TovekSMService/time/Deadline.h"

#include <libpq-fe.h>

#include <optional>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

// pg_type.dat
constexpr Oid boolType = 16;
constexpr Oid byteaType = 17;
constexpr Oid int8Type = 20;
constexpr Oid int2Type = 21;
constexpr Oid int4Type = 23;

struct ResultDeleter
{
    void operator()(PGresult *result) const { PQclear(result); }
};
using ResultPointer = std::unique_ptr<PGresult, ResultDeleter>;

/// A row of a result in text format.
class ResultRow : public StoreRow
{
public:
    ResultRow(const PGresult *result, int row) : m_result(result), m_row(row) {}

    int columns() const override { return PQnfields(m_result); }

    QVariant value(int column) const override
    {
        if (PQgetisnull(m_result, m_row, column) != 0)
            return {};
        const char *const text = PQgetvalue(m_result, m_row, column);
        const int length = PQgetlength(m_result, m_row, column);
        switch (PQftype(m_result, column)) {
        case boolType:
            return *text == 't';
        case int2Type:
        case int4Type:
        case int8Type:
            return QByteArray::fromRawData(text, length).toLongLong();
        case byteaType: // "\x..."
            return QByteArray::fromHex(QByteArray::fromRawData(text + 2, length - 2));
        default:
            return QString::fromUtf8(text, length);
        }
    }

private:
    const PGresult *m_result;
    const int m_row;
};

StoreFailure::Kind kindOf(const QByteArray &sqlState)
{
    if (sqlState.startsWith("53")) // insufficient resources
        return StoreFailure::Kind::Full;
    if (sqlState.startsWith("40") || sqlState.startsWith("55") || sqlState == "57014")
        return StoreFailure::Kind::Busy; // serialization, lock not available, query canceled
    if (sqlState == "23505")             // unique violation
        return StoreFailure::Kind::Exists;
    if (sqlState == "25006") // read-only transaction
        return StoreFailure::Kind::ReadOnly;
    if (sqlState.startsWith("57P") || sqlState.startsWith("08"))
        return StoreFailure::Kind::Away; // shut down, connection
    return StoreFailure::Kind::Other;
}

StoreFailure failureOf(const PGresult *result)
{
    const char *const state = PQresultErrorField(result, PG_DIAG_SQLSTATE);
    const char *const text = PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY);
    return {kindOf(state), text ? QString::fromUtf8(text)
                                : QString::fromUtf8(PQresultErrorMessage(result)).trimmed()};
}

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
    // Those of the string win. A server that is gone shows by keepalives where no word was owed.
    const char *const names[] = {
        "dbname",           "connect_timeout",  "keepalives_idle", "keepalives_interval",
        "keepalives_count", "application_name", "client_encoding", nullptr};
    const QByteArray info = conninfo.toUtf8();
    const char *const values[] = {info.constData(), "5",    "10",   "5", "3",
                                  "TovekSMService", "UTF8", nullptr};
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
    m_sent.clear();
    m_isPreparation.clear();
    const QString words = QString::fromUtf8(PQerrorMessage(m_connection)).simplified();
    return {StoreFailure::Kind::Away, words.isEmpty() ? reason : reason + u": "_s + words};
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
    m_sent.append(Take());
    m_isPreparation.append(true);
    return name;
}

void PostgresConnection::send(const QByteArray &text, const QVariantList &values, const Take &take)
{
    const QByteArray name = prepared(text);
    const Parameters parameters(values);
    PQsendQueryPrepared(m_connection, name.constData(), parameters.count(), parameters.values(),
                        parameters.lengths(), parameters.formats(), 0);
    m_sent.append(take);
    m_isPreparation.append(false);
}

/// Whatever comes, or can be sent, puts the deadline off.
bool PostgresConnection::wait(bool forWriting, Deadline &deadline)
{
    const qint64 left = deadline.remainingTime();
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
        if (unsent < 0 || PQconsumeInput(m_connection) == 0) {
            m_isLost = true;
            return nullptr;
        }
        if (unsent == 0 && PQisBusy(m_connection) == 0)
            return PQgetResult(m_connection);
        if (!wait(unsent != 0, deadline)) {
            m_isLost = true;
            return nullptr;
        }
    }
}

StoreResult<PostgresConnection::Answer> PostgresConnection::sync()
{
    if (m_isLost)
        return failed(lost(u"the database can't be reached"_s));
    Deadline deadline(m_time);
    deadline.setRemainingTime(m_timeoutMs);
    PQpipelineSync(m_connection);
    const QList<Take> sent = std::exchange(m_sent, {});
    const QList<bool> isPreparation = std::exchange(m_isPreparation, {});
    Answer answer;
    std::optional<StoreFailure> failure;
    for (qsizetype at = 0; at < sent.size() && !m_isLost; ++at) {
        while (const ResultPointer result{nextResult(deadline)}) {
            const ExecStatusType status = PQresultStatus(result.get());
            if (status == PGRES_FATAL_ERROR && !failure)
                failure = failureOf(result.get());
            if (status == PGRES_FATAL_ERROR || status == PGRES_PIPELINE_ABORTED)
                continue;
            const Take &take = sent.at(at);
            for (int row = 0; take && row < PQntuples(result.get()); ++row) {
                if (!take(ResultRow(result.get(), row)))
                    break;
            }
            if (!isPreparation.at(at))
                answer.changedRows = QByteArray(PQcmdTuples(result.get())).toInt();
        }
    }
    if (!m_isLost)
        ResultPointer(nextResult(deadline)); // that of the synchronization
    collectNotifications();
    if (PQstatus(m_connection) == CONNECTION_BAD)
        m_isLost = true;
    if (m_isLost)
        return failed(lost(u"the database doesn't answer"_s));
    if (failure) {
        m_names.clear(); // a statement behind the failure may not have been prepared
        return failed(*failure);
    }
    return answer;
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
    if (PQconsumeInput(m_connection) == 0 || PQstatus(m_connection) == CONNECTION_BAD)
        m_isLost = true;
    collectNotifications();
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
