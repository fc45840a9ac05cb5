#include "service/store/Store.h"

#include "service/store/StoreSchema.h"
#include "service/store/Transaction.h"

#include <QDateTime>
#include <QFile>
#include <QUuid>

namespace {

QString dueOf(const QString &deliveryDate)
{
    // Date and time apart: together they would be held against the rules of a zone.
    const QDate date = QDate::fromString(deliveryDate.left(10), Qt::ISODate);
    const QTime time = QTime::fromString(deliveryDate.mid(11), Qt::ISODate);
    // Only what is written back letter for letter sorts as text like it does as a moment.
    const bool isDate = date.isValid() && time.isValid() &&
                        deliveryDate == date.toString(QStringLiteral("yyyy-MM-ddT")) +
                                            time.toString(QStringLiteral("HH:mm:ss"));
    return isDate ? deliveryDate : QStringLiteral("");
}

/// Makes the file, before anything is written to it, with the rights of its owner alone.
void makeForOwner(const QString &file)
{
    // One that is there isn't opened: closing it would give up this process's locks on it, the
    // database library's too.
    QFile made(file);
    if (!made.exists() && !made.open(QIODevice::ReadWrite))
        throw StoreFailure(StoreFailure::Kind::ReadOnly,
                           file + QStringLiteral(": ") + made.errorString());
    made.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
}

} // namespace

Store::Store(const QString &file) : m_connection(QUuid::createUuid().toString(QUuid::WithoutBraces))
{
    try {
        open(file);
        StoreSchema::migrate(m_database);
        countRows();
    } catch (...) {
        m_database = QSqlDatabase();
        QSqlDatabase::removeDatabase(m_connection);
        throw;
    }
}

Store::~Store()
{
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connection);
}

void Store::open(const QString &file)
{
    makeForOwner(file);
    m_database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection);
    m_database.setDatabaseName(file);
    // A lock is waited for by the callers' timers, not here, where it would hold up everything.
    m_database.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=50"));
    if (!m_database.open())
        throw StoreFailure(m_database.lastError());
    StoreSchema::refuseLater(m_database);
    execute(m_database, QStringLiteral("PRAGMA journal_mode = WAL"));
    execute(m_database, QStringLiteral("PRAGMA synchronous = FULL"));
}

void Store::countRows()
{
    QSqlQuery query = prepared(m_database, QStringLiteral("SELECT COUNT(*) FROM message"));
    execute(query);
    m_size = query.next() ? query.value(0).toInt() : 0;
}

void Store::add(const QList<SMSList::Entry> &entries, const QString &deliveryDate)
{
    const QString due = dueOf(deliveryDate);
    Transaction transaction(m_database);
    QSqlQuery insert =
        prepared(m_database,
                 QStringLiteral(
                     "INSERT INTO message (delivery_date, due, phone, text) VALUES (?, ?, ?, ?)"));
    for (const SMSList::Entry &entry : entries) {
        insert.bindValue(0, notNull(deliveryDate));
        insert.bindValue(1, due);
        insert.bindValue(2, notNull(entry.phone));
        insert.bindValue(3, notNull(entry.message));
        execute(insert);
    }
    transaction.commit();
    m_size += static_cast<qint32>(entries.size());
}

QList<QueueRow> Store::rows() const
{
    QSqlQuery query =
        prepared(m_database, QStringLiteral("SELECT delivery_date, phone, text, id FROM message "
                                            "ORDER BY due, id"));
    execute(query);
    QList<QueueRow> rows;
    rows.reserve(m_size);
    while (query.next())
        rows.append({query.value(0).toString(), query.value(1).toString(),
                     query.value(2).toString(), query.value(3).toLongLong()});
    return rows;
}

void Store::clear()
{
    Transaction transaction(m_database);
    QSqlQuery remove = prepared(m_database, QStringLiteral("DELETE FROM message WHERE state = 0"));
    execute(remove);
    transaction.commit();
    m_size -= remove.numRowsAffected();
}

bool Store::update(const QList<QueueRow> &changed, const QList<qint64> &deleted)
{
    Transaction transaction(m_database);
    bool inTime = true;
    for (const QueueRow &row : changed)
        inTime = change(row) && inTime;
    int removed = 0;
    QSqlQuery remove =
        prepared(m_database, QStringLiteral("DELETE FROM message WHERE id = ? AND state = 0"));
    for (const qint64 id : deleted) {
        remove.bindValue(0, id);
        execute(remove);
        removed += remove.numRowsAffected();
        inTime = inTime && (remove.numRowsAffected() > 0 || !isOrWasInProgress(id));
    }
    transaction.commit();
    m_size -= removed;
    return inTime;
}

bool Store::change(const QueueRow &row)
{
    const QString phone = notNull(row.phone);
    const QString text = notNull(row.message);
    QSqlQuery beginAnew =
        prepared(m_database,
                 QStringLiteral("UPDATE message SET parts_sent = 0, reference = NULL, attempts = 0 "
                                "WHERE id = ? AND state = 0 AND (phone <> ? OR text <> ?)"));
    beginAnew.bindValue(0, row.id);
    beginAnew.bindValue(1, phone);
    beginAnew.bindValue(2, text);
    execute(beginAnew);
    QSqlQuery write = prepared(
        m_database,
        QStringLiteral("UPDATE message SET phone = ?, text = ? WHERE id = ? AND state = 0"));
    write.bindValue(0, phone);
    write.bindValue(1, text);
    write.bindValue(2, row.id);
    execute(write);
    return write.numRowsAffected() > 0;
}

bool Store::isOrWasInProgress(qint64 id) const
{
    QSqlQuery query = prepared(
        m_database, QStringLiteral("SELECT 1 FROM message WHERE id = ? "
                                   "UNION ALL SELECT 1 FROM outcome WHERE message_id = ?"));
    query.bindValue(0, id);
    query.bindValue(1, id);
    execute(query);
    return query.next();
}
