#include "TovekSMService/store/MessageQueue.h"

#include "TovekSMService/store/Outcomes.h"
#include "TovekSMService/store/StoreDatabase.h"
#include "TovekSMService/store/StoreQueries.h"
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

QString batchesSetting()
{
    return u"recent_batches"_s;
}

QueueRow rowOf(const Statement &row)
{
    return {row.value(0).toString(), row.value(1).toString(), row.value(2).toString(),
            row.value(3).toLongLong()};
}

StoredMessage messageOf(const Statement &row)
{
    StoredMessage message;
    message.id = row.value(0).toLongLong();
    message.deliveryDate = row.value(1).toString();
    message.dateIsOdd = row.value(2).toString().isEmpty();
    message.phone = row.value(3).toString();
    message.text = row.value(4).toString();
    message.attempts = row.value(5).toInt();
    message.partsSent = row.value(6).toInt();
    if (!row.value(7).isNull())
        message.reference = static_cast<quint16>(row.value(7).toUInt());
    message.originalDate = row.value(8).toString();
    return message;
}

} // namespace

MessageQueue::MessageQueue(StoreDatabase &database, Outcomes &outcomes)
    : m_database(database), m_outcomes(outcomes), m_settings(database)
{}

void MessageQueue::load()
{
    m_size = m_database
                 .row("SELECT COUNT(*) FROM message", {},
                      [](const Statement &row) { return row.value(0).toInt(); })
                 .value_or(0);
}

void MessageQueue::forget()
{
    m_size = 0;
    m_journal.noteAll();
}

void MessageQueue::resize(qsizetype change)
{
    m_size += static_cast<qint32>(change);
    m_database.onRollback([this, change] { m_size -= static_cast<qint32>(change); });
}

void MessageQueue::add(const QList<SMSList::Entry> &entries, const QString &deliveryDate)
{
    QList<QueueRow> messages;
    messages.reserve(entries.size());
    for (const SMSList::Entry &entry : entries)
        messages.append({deliveryDate, entry.phone, entry.message, 0});
    add(messages);
}

void MessageQueue::add(const QList<QueueRow> &messages)
{
    QList<qint64> ids;
    ids.reserve(messages.size());
    m_database.together([&] {
        QString given;
        QString due;
        for (const QueueRow &message : messages) {
            if (due.isNull() || message.deliveryDate != given) { // mostly the same for all of them
                given = notNull(message.deliveryDate);
                due = dueOf(given);
            }
            Statement insert =
                m_database.statement("INSERT INTO message (delivery_date, original_date, due, "
                                     "phone, text) VALUES (?, ?, ?, ?, ?)");
            insert.run({given, given, due, notNull(message.phone), notNull(message.message)});
            ids.append(insert.lastId());
        }
    });
    resize(messages.size());
    m_journal.note(ids);
}

QList<QueueRow> MessageQueue::rows() const
{
    return m_database.rows("SELECT delivery_date, phone, text, id FROM message ORDER BY due, id",
                           {}, rowOf);
}

QList<QueueRow> MessageQueue::rows(const QList<qint64> &ids) const
{
    QList<QueueRow> rows;
    for (const qint64 id : ids) {
        if (const std::optional<QueueRow> row = m_database.row(
                "SELECT delivery_date, phone, text, id FROM message WHERE id = ?", {id}, rowOf))
            rows.append(*row);
    }
    return rows;
}

void MessageQueue::clear()
{
    resize(-m_database.write("DELETE FROM message WHERE state = 0"));
    m_journal.noteAll();
}

bool MessageQueue::update(const QList<QueueRow> &changed, const QList<qint64> &deleted)
{
    bool inTime = true;
    int removed = 0;
    m_database.together([&] {
        for (const QueueRow &row : changed)
            inTime = change(row) && inTime;
        for (const qint64 id : deleted) {
            const int rows =
                m_database.write("DELETE FROM message WHERE id = ? AND state = 0", {id});
            removed += rows;
            inTime = inTime && (rows > 0 || !isOrWasInProgress(id));
        }
    });
    resize(-removed);
    QList<qint64> touched = deleted;
    for (const QueueRow &row : changed)
        touched.append(row.id);
    m_journal.note(touched);
    return inTime;
}

bool MessageQueue::change(const QueueRow &row)
{
    const QString phone = notNull(row.phone);
    const QString text = notNull(row.message);
    m_database.write("UPDATE message SET parts_sent = 0, reference = NULL, attempts = 0 "
                     "WHERE id = ? AND state = 0 AND (phone <> ? OR text <> ?)",
                     {row.id, phone, text});
    return m_database.write("UPDATE message SET phone = ?, text = ? WHERE id = ? AND state = 0",
                            {phone, text, row.id}) > 0;
}

bool MessageQueue::isOrWasInProgress(qint64 id) const
{
    return m_database
        .row("SELECT 1 FROM message WHERE id = ? "
             "UNION ALL SELECT 1 FROM outcome WHERE message_id = ?",
             {id, id}, [](const Statement &) { return true; })
        .has_value();
}

QString MessageQueue::recentBatches() const
{
    return m_settings.value(batchesSetting());
}

void MessageQueue::addBatch(const QList<QueueRow> &messages, const QString &recentBatches)
{
    m_database.together([&] {
        add(messages);
        m_settings.write(batchesSetting(), recentBatches);
    });
}

std::optional<StoredMessage> MessageQueue::first() const
{
    return m_database.row(StoreQueries::first, {1}, messageOf);
}

QList<StoredMessage> MessageQueue::first(int max) const
{
    return m_database.rows(StoreQueries::first, {max}, messageOf);
}

std::optional<QString> MessageQueue::firstDue() const
{
    return m_database.row(StoreQueries::firstDue, {},
                          [](const Statement &row) { return row.value(0).toString(); });
}

void MessageQueue::beginPart(qint64 id, std::optional<quint16> reference,
                             const QByteArray &partHash)
{
    m_database.write(StoreQueries::beginPart,
                     {reference ? QVariant(*reference) : QVariant(), partHash, id});
}

void MessageQueue::endPart(qint64 id, int partsSent)
{
    m_database.write(StoreQueries::endPart, {partsSent, id});
}

void MessageQueue::cancelPart(qint64 id)
{
    m_database.write(StoreQueries::cancelPart, {id});
}

void MessageQueue::releaseBetweenParts()
{
    m_database.write(StoreQueries::releaseBetweenParts);
}

void MessageQueue::holdPartlySent()
{
    m_database.write(StoreQueries::holdPartlySent);
}

void MessageQueue::postpone(qint64 id, int attempts, const QString &nextAttempt)
{
    m_database.write(StoreQueries::postpone, {attempts, nextAttempt, nextAttempt, id});
    m_journal.note({id});
}

qint64 MessageQueue::finish(qint64 id, qint32 code, std::optional<int> networkReference,
                            const QString &at, bool reported)
{
    qint64 outcome = 0;
    int removed = 0;
    m_database.together([&] {
        outcome = m_outcomes.keep(id, code, networkReference, at, reported);
        removed = m_database.write(StoreQueries::removeMessage, {id});
    });
    resize(-removed);
    m_journal.note({id});
    return outcome;
}

QList<StoredMessage> MessageQueue::interrupted() const
{
    return m_database.rows(StoreQueries::interrupted, {}, messageOf);
}

} // namespace norvane
