#include "harness/QueueDatabase.h"

#include <stdexcept>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr auto databaseName = "queue"_L1;

} // namespace

QueueDatabase::QueueDatabase(PostgresServer &server) : m_server(server)
{
    server.freshDatabase(databaseName);
}

QString QueueDatabase::login()
{
    return PostgresServer::login(databaseName);
}

std::optional<QueueDatabase::Rows> QueueDatabase::ask(const QString &statements)
{
    constexpr int attempts = 2; // the server may have been killed since the last look
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (!m_client || !m_client->isConnected())
            m_client = std::make_unique<PostgresClient>(
                m_server.connection(databaseName) +
                u" connect_timeout=10 options='-c statement_timeout=30s -c lock_timeout=10s'"_s);
        if (!m_client->isConnected())
            return std::nullopt;
        try {
            return m_client->query(statements);
        } catch (const std::runtime_error &) {
            m_client.reset();
        }
    }
    return std::nullopt;
}

int QueueDatabase::number(const QString &query)
{
    const auto rows = ask(query);
    return rows && !rows->isEmpty() ? rows->constFirst().constFirst().toInt() : -1;
}

/// At the commit: until then the epoch may still end.
bool QueueDatabase::watchEpochs()
{
    return ask(u"CREATE TABLE begun_late (phone text NOT NULL); "
               "CREATE FUNCTION note_begun_late() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN "
               "IF NEW.epoch <> (SELECT epoch FROM engine WHERE id = NEW.engine) THEN "
               "INSERT INTO begun_late VALUES (NEW.phone); END IF; RETURN NULL; END $$; "
               "CREATE CONSTRAINT TRIGGER begins AFTER UPDATE ON message "
               "DEFERRABLE INITIALLY DEFERRED FOR EACH ROW "
               "WHEN (NEW.state = 1 AND OLD.state <> 1) EXECUTE FUNCTION note_begun_late()"_s)
        .has_value();
}

std::optional<QStringList> QueueDatabase::begunLate()
{
    const auto rows = ask(u"SELECT phone FROM begun_late"_s);
    if (!rows)
        return std::nullopt;
    QStringList phones;
    for (const QStringList &row : *rows)
        phones.append(row.constFirst());
    return phones;
}

QString QueueDatabase::remains()
{
    QStringList words;
    const auto rows =
        ask(u"SELECT phone, message.state, name, message.epoch, engine.epoch FROM message "
            "LEFT JOIN engine ON engine.id = message.engine LIMIT 5"_s);
    if (!rows)
        return u"what can't be asked for"_s;
    for (const QStringList &row : *rows)
        words << u"%1 in state %2 of engine %3 in epoch %4 of %5"_s.arg(
            row.at(0), row.at(1), row.at(2), row.at(3), row.at(4));
    return words.join(u", "_s);
}

} // namespace norvane
