#include "TovekSMService/store/MessageQueue.h"

#include "TovekSMService/store/SettingTable.h"
#include "TovekSMService/store/StoreDatabase.h"

#include <QDateTime>

namespace norvane {

using namespace Qt::StringLiterals;

QString MessageQueue::dueOf(const QString &deliveryDate)
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

QueueRow MessageQueue::rowOf(const StoreRow &row)
{
    return {row.value(0).toString(), row.value(1).toString(), row.value(2).toString(),
            row.value(3).toLongLong()};
}

StoredMessage MessageQueue::messageOf(const StoreRow &row)
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

void MessageQueue::note(const QList<qint64> &ids)
{
    m_journal.note(ids);
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
    return m_database
        .together([&] {
            return insert(messages).map([this](const QList<qint64> &ids) {
                announce(ids);
                return ids;
            });
        })
        .map([this](const QList<qint64> &ids) {
            resize(ids.size());
            note(ids);
        });
}

StoreResult<QList<QueueRow>> MessageQueue::rows() const
{
    return m_database.rows("SELECT delivery_date, phone, text, id FROM message ORDER BY due, id",
                           {}, rowOf);
}

StoreResult<bool> MessageQueue::update(const QList<QueueRow> &changed, const QList<qint64> &deleted)
{
    QList<qint64> touched = deleted;
    for (const QueueRow &row : changed)
        touched.append(row.id);
    return m_database
        .together([&] {
            return changeAll(changed).and_then([&](bool isChangedInTime) {
                return removeAll(deleted).map([&](bool isRemovedInTime) {
                    announce(touched);
                    return isChangedInTime && isRemovedInTime;
                });
            });
        })
        .map([&](bool isAllInTime) {
            note(touched);
            return isAllInTime;
        });
}

StoreResult<bool> MessageQueue::changeAll(const QList<QueueRow> &rows)
{
    bool isAllInTime = true;
    for (const QueueRow &row : rows) {
        const StoreResult<bool> inTime = change(row);
        if (!inTime)
            return inTime;
        isAllInTime = isAllInTime && *inTime;
    }
    return isAllInTime;
}

StoreResult<bool> MessageQueue::removeAll(const QList<qint64> &ids)
{
    bool isAllInTime = true;
    for (const qint64 id : ids) {
        const StoreResult<bool> inTime = remove(id);
        if (!inTime)
            return inTime;
        isAllInTime = isAllInTime && *inTime;
    }
    return isAllInTime;
}

StoreResult<bool> MessageQueue::isOrWasInProgress(qint64 id) const
{
    return m_database
        .row("SELECT 1 FROM message WHERE id = ? "
             "UNION ALL SELECT 1 FROM outcome WHERE message_id = ?",
             {id, id}, [](const StoreRow &) { return true; })
        .map([](std::optional<bool> found) { return found.has_value(); });
}

StoreResult<QString> MessageQueue::recentBatches() const
{
    return SettingTable(m_database).value(batchesSetting());
}

StoreResult<> MessageQueue::addBatch(const QList<QueueRow> &messages, const QString &recentBatches)
{
    return once(u"batches "_s + recentBatches, [&] {
        return m_database.together([&] {
            return add(messages).and_then(
                [&] { return SettingTable(m_database).write(batchesSetting(), recentBatches); });
        });
    });
}

StoreResult<> MessageQueue::keepAttempt(StoreDatabase &database, qint64 id,
                                        const FailedAttempt &attempt)
{
    return database.write("INSERT INTO attempt (message_id, at, part, code) VALUES (?, ?, ?, ?) "
                          "ON CONFLICT DO NOTHING",
                          {id, attempt.at, attempt.part, attempt.code});
}

StoreResult<int> MessageQueue::pruneAttempts(const QString &before, int max)
{
    return m_database.writeAndCount(
        "DELETE FROM attempt WHERE (message_id, at, part) IN (SELECT message_id, at, part "
        "FROM attempt WHERE at < ? AND NOT EXISTS (SELECT 1 FROM outcome "
        "WHERE outcome.message_id = attempt.message_id) AND NOT EXISTS (SELECT 1 FROM message "
        "WHERE message.id = attempt.message_id) LIMIT ?)",
        {before, max});
}

StoreResult<std::optional<StoredMessage>> MessageQueue::first() const
{
    return first(1).map([](const QList<StoredMessage> &messages) {
        return messages.isEmpty() ? std::nullopt : std::optional(messages.constFirst());
    });
}

} // namespace norvane
