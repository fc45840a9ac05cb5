#include "TovekSMService/store/QueueMove.h"

#include "TovekSMService/store/PostgresDatabase.h"
#include "TovekSMService/store/SettingTable.h"
#include "TovekSMService/store/SharedQueue.h"
#include "TovekSMService/store/Store.h"
#include "contract/ErrorCodes.h"

#include <QHash>
#include <QStringList>
#include <QUuid>

#include <array>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int stateLeaving = 1;

/// The attempts of a message of `table` as one text, with the function that joins texts.
#define NORVANE_FAILURES(join, table)                                                              \
    "coalesce((SELECT " join "(at || ' ' || code || ' ' || part, ',') FROM attempt "               \
    "WHERE message_id = " table ".id), '')"

/// Keeps the attempts of such a text.
StoreResult<> keepAttempts(StoreDatabase &database, qint64 message, const QString &failures)
{
    StoreResult<> kept;
    const QStringList attempts = failures.split(u',', Qt::SkipEmptyParts);
    for (auto each = attempts.cbegin(); kept && each != attempts.cend(); ++each) {
        const QStringList fields = each->split(u' ');
        if (fields.size() == 3)
            kept = MessageQueue::keepAttempt(
                database, message, {fields.at(0), fields.at(2).toInt(), fields.at(1).toInt()});
    }
    return kept;
}

QVariantList valuesOf(const StoreRow &row)
{
    QVariantList values;
    for (int column = 0; column < row.columns(); ++column) {
        const QVariant value = row.value(column);
        // An empty text is a value, and a null of whatever type none.
        values.append(value.isNull() ? QVariant() : value);
    }
    return values;
}

// Messages on their way, by which what belongs to them is found.
#define NORVANE_INTO_DATABASE "(SELECT id FROM outgoing)"
#define NORVANE_INTO_FILE "(SELECT id FROM moved_out WHERE token = ?)"

#define NORVANE_PARTS(messages)                                                                    \
    "SELECT message_id, number, total, reference, phone, sim, at, state, final, status, "          \
    "reported_at FROM sent_part WHERE message_id IN " messages " ORDER BY id"

/// The parts that were sent of each message.
using Parts = QHash<qint64, QList<QVariantList>>;

StoreResult<Parts> partsOf(const StoreDatabase &database, const char *query,
                           const QVariantList &values)
{
    return database.rows(query, values, valuesOf).map([](const QList<QVariantList> &rows) {
        Parts parts;
        for (const QVariantList &row : rows)
            parts[row.constFirst().toLongLong()].append(row.sliced(1));
        return parts;
    });
}

StoreResult<> keepParts(StoreDatabase &database, qint64 message, const QList<QVariantList> &parts)
{
    StoreResult<> kept;
    for (auto part = parts.cbegin(); kept && part != parts.cend(); ++part)
        kept = database.write(
            "INSERT INTO sent_part (message_id, number, total, reference, phone, sim, at, state, "
            "final, status, reported_at) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?) "
            "ON CONFLICT DO NOTHING",
            QVariantList{message} + *part);
    return kept;
}

/// Statements that rid a queue of messages that the other one has.
using Removal = std::array<const char *, 3>;
constexpr Removal removalFromFile = {
    "DELETE FROM sent_part WHERE message_id IN " NORVANE_INTO_DATABASE,
    "DELETE FROM attempt WHERE message_id IN " NORVANE_INTO_DATABASE, "DELETE FROM outgoing"};
constexpr Removal removalFromDatabase = {
    "DELETE FROM sent_part WHERE message_id IN " NORVANE_INTO_FILE,
    "DELETE FROM attempt WHERE message_id IN " NORVANE_INTO_FILE,
    "DELETE FROM moved_out WHERE token = ?"};

StoreResult<> remove(StoreDatabase &database, const Removal &removal,
                     const QVariantList &values = {})
{
    return database.together([&] {
        StoreResult<> removed;
        for (auto statement = removal.cbegin(); removed && statement != removal.cend(); ++statement)
            removed = database.write(*statement, values);
        return removed;
    });
}

QString tokenSetting()
{
    return u"outgoing_token"_s;
}

QString newToken()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

int numberOf(const StoreRow &row)
{
    return row.value(0).toInt();
}

} // namespace

StoreResult<int> QueueMove::left(const Store &store)
{
    return store.file()
        .row("SELECT (SELECT COUNT(*) FROM message) + (SELECT COUNT(*) FROM outgoing)", {},
             numberOf)
        .map([](std::optional<int> count) { return count.value_or(0); });
}

StoreResult<int> QueueMove::intoDatabase()
{
    int moved = 0;
    if (const StoreResult<> copied = copyOptOuts(m_store.file(), m_store.database()); !copied)
        return failed(copied.error());
    for (;;) {
        // What an earlier move left on its way goes first.
        const StoreResult<int> put = putIn();
        if (!put)
            return put;
        moved += *put;
        const StoreResult<int> taken = takeOut();
        if (!taken || *taken == 0)
            return taken.map([moved](int) { return moved; });
    }
}

/// Out of the file's queue.
StoreResult<int> QueueMove::takeOut()
{
#define NORVANE_BATCH "(SELECT id FROM message ORDER BY id LIMIT ?)"
    return m_store.file().together([&] {
        return m_store.file()
            .writeAndCount(
                "INSERT INTO outgoing SELECT id, delivery_date, original_date, due, "
                "phone, text, state, attempts, reference, parts_sent, queued_at, " NORVANE_FAILURES(
                    "group_concat", "message") " FROM message "
                                               "WHERE id IN " NORVANE_BATCH,
                {batchRows})
            .and_then([&](int rows) {
                return m_store.file()
                    .write("DELETE FROM message WHERE id IN " NORVANE_BATCH, {batchRows})
                    .and_then([&] {
                        return SettingTable(m_store.file()).write(tokenSetting(), newToken());
                    })
                    .map([rows] { return rows; });
            });
    });
#undef NORVANE_BATCH
}

/// Into the database, and out of the place between. The rows there have a token, and stay the same
/// until the database is known to have them.
StoreResult<int> QueueMove::putIn()
{
    const auto rows = m_store.file().rows(
        "SELECT delivery_date, original_date, due, phone, text, attempts, reference, parts_sent, "
        "state, id, queued_at, failures FROM outgoing ORDER BY id",
        {}, valuesOf);
    if (!rows || rows->isEmpty())
        return rows.map([](const auto &) { return 0; });
    const StoreResult<Parts> parts =
        partsOf(m_store.file(), NORVANE_PARTS(NORVANE_INTO_DATABASE), {});
    if (!parts)
        return failed(parts.error());
    const StoreResult<QString> token = SettingTable(m_store.file()).value(tokenSetting());
    if (!token)
        return failed(token.error());
    return m_store.queue()
        .once(u"move "_s + *token,
              [&] {
                  StoreResult<> put;
                  for (auto row = rows->cbegin(); put && row != rows->cend(); ++row)
                      put = insert(*row, parts->value(row->at(9).toLongLong()));
                  return put;
              })
        .and_then([&] { return remove(m_store.file(), removalFromFile); })
        .map([&] { return static_cast<int>(rows->size()); });
}

StoreResult<> QueueMove::insert(const QVariantList &row, const QList<QVariantList> &parts)
{
    EngineRegister &engines = *m_store.engines();
    const bool isInDoubt = row.at(8).toInt() == stateLeaving;
    const bool isPartlySent = row.at(7).toInt() > 0;
    const StoreResult<qint64> id = m_store.database().insert(
        "INSERT INTO message (delivery_date, original_date, due, phone, text, attempts, "
        "reference, parts_sent, engine, epoch, state, queued_at) "
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
        row.mid(0, 8) + QVariantList{isPartlySent ? QVariant(engines.id()) : QVariant(),
                                     isPartlySent ? QVariant(engines.epoch()) : QVariant(),
                                     isPartlySent ? 2 : 0, row.at(10)});
    if (!id)
        return failed(id.error());
    return keepAttempts(m_store.database(), *id, row.at(11).toString())
        .and_then([&] { return keepParts(m_store.database(), *id, parts); })
        .and_then(
            [&] { return isInDoubt ? failInDoubt(*id) : m_store.sharedQueue()->countMoved(1); });
}

/// Out of the database's queue again, with what is known of the message.
StoreResult<> QueueMove::failInDoubt(qint64 id)
{
    const int engine = m_store.engines()->id();
    return m_store.database()
        .write("INSERT INTO outcome (message_id, delivery_date, phone, text, code, at, reported, "
               "engine, epoch, reporter, queued_at) SELECT id, original_date, phone, text, ?, ?, "
               "0, ?, 0, ?, queued_at FROM message WHERE id = ?",
               {ErrorCode::noRespond, m_store.now(), engine, engine, id})
        .and_then(
            [&] { return m_store.database().write("DELETE FROM message WHERE id = ?", {id}); });
}

StoreResult<int> QueueMove::intoFile()
{
    int moved = 0;
    if (const StoreResult<> copied = copyOptOuts(m_store.database(), m_store.file()); !copied)
        return failed(copied.error());
    if (const StoreResult<> finished = finishInterrupted(); !finished)
        return failed(finished.error());
    for (;;) {
        const StoreResult<QString> pending = pendingToken();
        if (!pending)
            return failed(pending.error());
        if (pending->isEmpty()) {
            const StoreResult<int> taken = takeFromDatabase();
            if (!taken || *taken == 0)
                return taken.map([moved](int) { return moved; });
            continue;
        }
        const StoreResult<int> put = putIntoFile(*pending);
        if (!put)
            return put;
        moved += *put;
    }
}

/// What was leaving when this engine ended may have left.
StoreResult<> QueueMove::finishInterrupted()
{
    return m_store.queue().interrupted().and_then([&](const QList<StoredMessage> &messages) {
        StoreResult<> finished;
        for (auto each = messages.cbegin(); finished && each != messages.cend(); ++each)
            finished =
                m_store.queue()
                    .finish(each->id, ErrorCode::noRespond, std::nullopt, m_store.now(), false)
                    .map([](qint64) {});
        return finished;
    });
}

StoreResult<QString> QueueMove::pendingToken() const
{
    return m_store.database()
        .row("SELECT token FROM moved_out WHERE engine = ? LIMIT 1", {m_store.engines()->id()},
             [](const StoreRow &row) { return row.value(0).toString(); })
        .map([](const std::optional<QString> &token) { return token.value_or(QString()); });
}

/// Out of the database's queue.
StoreResult<int> QueueMove::takeFromDatabase()
{
    return m_store.database().together([&] {
        return m_store.database()
            .writeAndCount(
                "WITH gone AS (DELETE FROM message WHERE id IN (SELECT id FROM message WHERE "
                "state <> 1 AND (engine IS NULL OR engine = ?) ORDER BY id LIMIT ? FOR UPDATE SKIP "
                "LOCKED) "
                "RETURNING *) INSERT INTO moved_out SELECT ?::text, ?::int, id, delivery_date, "
                "original_date, due, phone, text, attempts, reference, parts_sent, "
                "queued_at, " NORVANE_FAILURES("string_agg", "gone") " FROM gone",
                {m_store.engines()->id(), batchRows, newToken(), m_store.engines()->id()})
            .and_then([&](int rows) {
                return m_store.sharedQueue()->countMoved(-rows).map([rows] { return rows; });
            });
    });
}

/// Into the file, once, and out of the place between.
StoreResult<int> QueueMove::putIntoFile(const QString &token)
{
    const auto rows = m_store.database().rows(
        "SELECT delivery_date, original_date, due, phone, text, attempts, reference, parts_sent, "
        "queued_at, failures, id FROM moved_out WHERE token = ? ORDER BY id",
        {token}, valuesOf);
    if (!rows)
        return failed(rows.error());
    const StoreResult<Parts> parts =
        partsOf(m_store.database(), NORVANE_PARTS(NORVANE_INTO_FILE), {token});
    if (!parts)
        return failed(parts.error());
    const StoreResult<> put = m_store.file().together([&]() -> StoreResult<> {
        const StoreResult<int> isNew = m_store.file().writeAndCount(
            "INSERT INTO done_move (token) VALUES (?) ON CONFLICT DO NOTHING", {token});
        if (!isNew || *isNew == 0)
            return isNew.map([](int) {});
        StoreResult<> inserted;
        for (auto row = rows->cbegin(); inserted && row != rows->cend(); ++row)
            inserted = insertIntoFile(*row, parts->value(row->at(10).toLongLong()));
        return inserted;
    });
    return put.and_then([&] { return remove(m_store.database(), removalFromDatabase, {token}); })
        .map([&] { return static_cast<int>(rows->size()); });
}

StoreResult<> QueueMove::insertIntoFile(const QVariantList &row, const QList<QVariantList> &parts)
{
    const StoreResult<qint64> id = m_store.file().insert(
        "INSERT INTO message (delivery_date, original_date, due, phone, text, attempts, "
        "reference, parts_sent, queued_at) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)",
        row.mid(0, 9));
    if (!id)
        return failed(id.error());
    return keepAttempts(m_store.file(), *id, row.at(9).toString()).and_then([&] {
        return keepParts(m_store.file(), *id, parts);
    });
}

StoreResult<> QueueMove::copyOptOuts(const StoreDatabase &from, StoreDatabase &to)
{
    const auto optOuts = from.rows("SELECT phone, at FROM opt_out ORDER BY id", {}, valuesOf);
    if (!optOuts)
        return failed(optOuts.error());
    return to.together([&] {
        StoreResult<> copied;
        for (auto each = optOuts->cbegin(); copied && each != optOuts->cend(); ++each)
            copied = to.write(
                "INSERT INTO opt_out (phone, at) VALUES (?, ?) ON CONFLICT DO NOTHING", *each);
        return copied;
    });
}

#undef NORVANE_PARTS
#undef NORVANE_INTO_FILE
#undef NORVANE_INTO_DATABASE
#undef NORVANE_FAILURES

} // namespace norvane
