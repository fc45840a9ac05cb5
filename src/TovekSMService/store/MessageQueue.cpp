#include "TovekSMService/store/MessageQueue.h"

#include "TovekSMService/store/Outcomes.h"
#include "TovekSMService/store/Sql.h"
#include "TovekSMService/store/StoreDatabase.h"
#include "TovekSMService/store/StoreQueries.h"

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

StoreResult<> MessageQueue::load()
{
    return m_database
        .row("SELECT COUNT(*) FROM message", {},
             [](const Statement &row) { return row.value(0).toInt(); })
        .map([this](std::optional<int> count) { m_size = count.value_or(0); });
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

StoreResult<> MessageQueue::add(const QList<SMSList::Entry> &entries, const QString &deliveryDate)
{
    QList<QueueRow> messages;
    messages.reserve(entries.size());
    for (const SMSList::Entry &entry : entries)
        messages.append({deliveryDate, entry.phone, entry.message, 0});
    return add(messages);
}

StoreResult<> MessageQueue::add(const QList<QueueRow> &messages)
{
    return m_database.together([&] { return insert(messages); })
        .map([this](const QList<qint64> &ids) {
            resize(ids.size());
            m_journal.note(ids);
        });
}

StoreResult<qint64> MessageQueue::refuse(const QueueRow &message, qint32 code, const QString &at)
{
    return m_database.together([&] {
        return insert({message}).and_then([&](const QList<qint64> &ids) {
            resize(1);
            return finish(ids.constFirst(), code, std::nullopt, at, false);
        });
    });
}

/// Gives the ids of the messages.
StoreResult<QList<qint64>> MessageQueue::insert(const QList<QueueRow> &messages)
{
    QList<qint64> ids;
    ids.reserve(messages.size());
    QString given;
    QString due;
    for (const QueueRow &message : messages) {
        if (due.isNull() || message.deliveryDate != given) { // mostly the same for all of them
            given = notNull(message.deliveryDate);
            due = dueOf(given);
        }
        const StoreResult<qint64> id = m_database.insert(
            "INSERT INTO message (delivery_date, original_date, due, phone, "
            "text) VALUES (?, ?, ?, ?, ?)",
            {given, given, due, notNull(message.phone), notNull(message.message)});
        if (!id)
            return failed(id.error());
        ids.append(*id);
    }
    return ids;
}

StoreResult<QList<QueueRow>> MessageQueue::rows() const
{
    return m_database.rows("SELECT delivery_date, phone, text, id FROM message ORDER BY due, id",
                           {}, rowOf);
}

StoreResult<QList<QueueRow>> MessageQueue::rows(const QList<qint64> &ids) const
{
    QList<QueueRow> rows;
    for (const qint64 id : ids) {
        const auto row = m_database.row(
            "SELECT delivery_date, phone, text, id FROM message WHERE id = ?", {id}, rowOf);
        if (!row)
            return failed(row.error());
        if (*row)
            rows.append(**row);
    }
    return rows;
}

StoreResult<> MessageQueue::clear()
{
    return m_database.writeAndCount("DELETE FROM message WHERE state = 0").map([this](int removed) {
        resize(-removed);
        m_journal.noteAll();
    });
}

StoreResult<bool> MessageQueue::update(const QList<QueueRow> &changed, const QList<qint64> &deleted)
{
    QList<qint64> touched = deleted;
    for (const QueueRow &row : changed)
        touched.append(row.id);
    return m_database
        .together([&]() -> StoreResult<bool> {
            bool isAllInTime = true;
            for (const QueueRow &row : changed) {
                const StoreResult<bool> inTime = change(row);
                if (!inTime)
                    return inTime;
                isAllInTime = isAllInTime && *inTime;
            }
            for (const qint64 id : deleted) {
                const StoreResult<bool> inTime = remove(id);
                if (!inTime)
                    return inTime;
                isAllInTime = isAllInTime && *inTime;
            }
            return isAllInTime;
        })
        .map([&](bool isAllInTime) {
            m_journal.note(touched);
            return isAllInTime;
        });
}

/// Gives whether it was in time, as remove() does.
StoreResult<bool> MessageQueue::change(const QueueRow &row)
{
    const QString phone = notNull(row.phone);
    const QString text = notNull(row.message);
    return m_database
        .write("UPDATE message SET parts_sent = 0, reference = NULL, attempts = 0 "
               "WHERE id = ? AND state = 0 AND (phone <> ? OR text <> ?)",
               {row.id, phone, text})
        .and_then([&] {
            return m_database.writeAndCount(
                "UPDATE message SET phone = ?, text = ? WHERE id = ? AND state = 0",
                {phone, text, row.id});
        })
        .map([](int rows) { return rows > 0; });
}

StoreResult<bool> MessageQueue::remove(qint64 id)
{
    return m_database.writeAndCount("DELETE FROM message WHERE id = ? AND state = 0", {id})
        .and_then([&](int removed) -> StoreResult<bool> {
            resize(-removed);
            if (removed > 0)
                return true;
            return isOrWasInProgress(id).map([](bool isTooLate) { return !isTooLate; });
        });
}

StoreResult<bool> MessageQueue::isOrWasInProgress(qint64 id) const
{
    return m_database
        .row("SELECT 1 FROM message WHERE id = ? "
             "UNION ALL SELECT 1 FROM outcome WHERE message_id = ?",
             {id, id}, [](const Statement &) { return true; })
        .map([](std::optional<bool> found) { return found.has_value(); });
}

StoreResult<QString> MessageQueue::recentBatches() const
{
    return m_settings.value(batchesSetting());
}

StoreResult<> MessageQueue::addBatch(const QList<QueueRow> &messages, const QString &recentBatches)
{
    return m_database.together([&] {
        return add(messages).and_then(
            [&] { return m_settings.write(batchesSetting(), recentBatches); });
    });
}

StoreResult<std::optional<StoredMessage>> MessageQueue::first() const
{
    return m_database.row(StoreQueries::first, {1}, messageOf);
}

StoreResult<QList<StoredMessage>> MessageQueue::first(int max) const
{
    return m_database.rows(StoreQueries::first, {max}, messageOf);
}

StoreResult<std::optional<QString>> MessageQueue::firstDue() const
{
    return m_database.row(StoreQueries::firstDue, {},
                          [](const Statement &row) { return row.value(0).toString(); });
}

StoreResult<> MessageQueue::beginPart(qint64 id, std::optional<quint16> reference,
                                      const QByteArray &partHash)
{
    return m_database.write(StoreQueries::beginPart,
                            {reference ? QVariant(*reference) : QVariant(), partHash, id});
}

StoreResult<> MessageQueue::endPart(qint64 id, int partsSent)
{
    return m_database.write(StoreQueries::endPart, {partsSent, id});
}

StoreResult<> MessageQueue::cancelPart(qint64 id)
{
    return m_database.write(StoreQueries::cancelPart, {id});
}

StoreResult<> MessageQueue::releaseBetweenParts()
{
    return m_database.write(StoreQueries::releaseBetweenParts);
}

StoreResult<> MessageQueue::holdPartlySent()
{
    return m_database.write(StoreQueries::holdPartlySent);
}

StoreResult<> MessageQueue::postpone(qint64 id, int attempts, const QString &nextAttempt)
{
    return m_database.write(StoreQueries::postpone, {attempts, nextAttempt, nextAttempt, id})
        .map([&] { m_journal.note({id}); });
}

StoreResult<qint64> MessageQueue::finish(qint64 id, qint32 code,
                                         std::optional<int> networkReference, const QString &at,
                                         bool reported)
{
    return m_database.together([&] {
        return m_outcomes.keep(id, code, networkReference, at, reported)
            .and_then([&](qint64 outcome) {
                return m_database.writeAndCount(StoreQueries::removeMessage, {id})
                    .map([&](int removed) {
                        resize(-removed);
                        m_journal.note({id});
                        return outcome;
                    });
            });
    });
}

StoreResult<QList<StoredMessage>> MessageQueue::interrupted() const
{
    return m_database.rows(StoreQueries::interrupted, {}, messageOf);
}

} // namespace norvane
