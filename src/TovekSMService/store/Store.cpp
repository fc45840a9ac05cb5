#include "TovekSMService/store/Store.h"

#include "TovekSMService/store/Transaction.h"

#include <QDateTime>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString dueOf(const QString &deliveryDate)
{
    // Date and time apart: together they would be held against the rules of a zone.
    const QDate date = QDate::fromString(deliveryDate.left(10), Qt::ISODate);
    const QTime time = QTime::fromString(deliveryDate.mid(11), Qt::ISODate);
    // Only what is written back letter for letter sorts as text like it does as a moment.
    const bool isDate =
        date.isValid() && time.isValid() &&
        deliveryDate == date.toString(u"yyyy-MM-ddT"_s) + time.toString(u"HH:mm:ss"_s);
    return isDate ? deliveryDate : u""_s;
}

QueueRow rowOf(const Statement &query)
{
    return {query.value(0).toString(), query.value(1).toString(), query.value(2).toString(),
            query.value(3).toLongLong()};
}

} // namespace

void Store::together(const std::function<void()> &operations)
{
    Q_ASSERT(!m_together);
    const qint32 size = m_size;
    try {
        Transaction transaction(m_database);
        m_together = true;
        operations();
        transaction.commit();
        m_together = false;
    } catch (...) {
        m_together = false;
        m_size = size;
        throw;
    }
}

void Store::add(const QList<SMSList::Entry> &entries, const QString &deliveryDate)
{
    QList<QueueRow> messages;
    messages.reserve(entries.size());
    for (const SMSList::Entry &entry : entries)
        messages.append({deliveryDate, entry.phone, entry.message, 0});
    add(messages);
}

void Store::add(const QList<QueueRow> &messages)
{
    Transaction transaction(m_database, transactionKind());
    Statement insert(m_statements, "INSERT INTO message (delivery_date, original_date, due, phone, "
                                   "text) VALUES (?, ?, ?, ?, ?)");
    QString given;
    QString due;
    for (const QueueRow &message : messages) {
        if (due.isNull() || message.deliveryDate != given) { // mostly the same for all of them
            given = notNull(message.deliveryDate);
            due = dueOf(given);
        }
        insert.run({given, given, due, notNull(message.phone), notNull(message.message)});
    }
    const QList<qint64> ids = lastIds(messages.size());
    transaction.commit();
    m_size += static_cast<qint32>(messages.size());
    m_journal.note(ids);
}

QList<qint64> Store::lastIds(qsizetype count) const
{
    Statement query(m_statements, "SELECT last_insert_rowid()");
    query.run();
    const qint64 last = query.next() ? query.value(0).toLongLong() : 0;
    QList<qint64> ids;
    ids.reserve(count);
    for (qsizetype i = 0; i < count; ++i)
        ids.append(last - i); // ids are given one after the other
    return ids;
}

QList<QueueRow> Store::rows() const
{
    Statement query(m_statements,
                    "SELECT delivery_date, phone, text, id FROM message ORDER BY due, id");
    query.run();
    QList<QueueRow> rows;
    rows.reserve(m_size);
    while (query.next())
        rows.append(rowOf(query));
    return rows;
}

QList<QueueRow> Store::rows(const QList<qint64> &ids) const
{
    Statement query(m_statements,
                    "SELECT delivery_date, phone, text, id FROM message WHERE id = ?");
    QList<QueueRow> rows;
    for (const qint64 id : ids) {
        query.run({id});
        if (query.next())
            rows.append(rowOf(query));
    }
    return rows;
}

void Store::clear()
{
    Transaction transaction(m_database, transactionKind());
    Statement remove(m_statements, "DELETE FROM message WHERE state = 0");
    remove.run();
    const int removed = remove.changedRows();
    transaction.commit();
    m_size -= removed;
    m_journal.noteAll();
}

bool Store::update(const QList<QueueRow> &changed, const QList<qint64> &deleted)
{
    Transaction transaction(m_database, transactionKind());
    bool inTime = true;
    for (const QueueRow &row : changed)
        inTime = change(row) && inTime;
    int removed = 0;
    Statement remove(m_statements, "DELETE FROM message WHERE id = ? AND state = 0");
    for (const qint64 id : deleted) {
        remove.run({id});
        const int rows = remove.changedRows();
        removed += rows;
        inTime = inTime && (rows > 0 || !isOrWasInProgress(id));
    }
    transaction.commit();
    m_size -= removed;
    QList<qint64> touched = deleted;
    for (const QueueRow &row : changed)
        touched.append(row.id);
    m_journal.note(touched);
    return inTime;
}

bool Store::change(const QueueRow &row)
{
    const QString phone = notNull(row.phone);
    const QString text = notNull(row.message);
    Statement(m_statements, "UPDATE message SET parts_sent = 0, reference = NULL, attempts = 0 "
                            "WHERE id = ? AND state = 0 AND (phone <> ? OR text <> ?)")
        .run({row.id, phone, text});
    Statement write(m_statements,
                    "UPDATE message SET phone = ?, text = ? WHERE id = ? AND state = 0");
    write.run({phone, text, row.id});
    return write.changedRows() > 0;
}

bool Store::isOrWasInProgress(qint64 id) const
{
    Statement query(m_statements, "SELECT 1 FROM message WHERE id = ? "
                                  "UNION ALL SELECT 1 FROM outcome WHERE message_id = ?");
    query.run({id, id});
    return query.next();
}

} // namespace norvane
