#include "TovekSMService/store/LocalQueue.h"

#include "TovekSMService/store/Outcomes.h"
#include "TovekSMService/store/StoreDatabase.h"
#include "TovekSMService/store/StoreQueries.h"
#include "contract/ErrorCodes.h"

namespace norvane {

using namespace Qt::StringLiterals;

StoreResult<> LocalQueue::load()
{
    return m_database
        .row("SELECT COUNT(*) FROM message", {},
             [](const StoreRow &row) { return row.value(0).toInt(); })
        .map([this](std::optional<int> count) { setSize(count.value_or(0)); });
}

QString LocalQueue::batchesSetting() const
{
    return u"recent_batches"_s;
}

StoreResult<qint64> LocalQueue::refuse(const QueueRow &message, qint32 code, const QString &at)
{
    return m_database.together([&] {
        return insert({message}).and_then([&](const QList<qint64> &ids) {
            resize(1);
            return finish(ids.constFirst(), code, std::nullopt, at, false);
        });
    });
}

StoreResult<QList<qint64>> LocalQueue::insert(const QList<QueueRow> &messages)
{
    QList<qint64> ids;
    ids.reserve(messages.size());
    const QString now = m_now(0);
    QString given;
    QString due;
    for (const QueueRow &message : messages) {
        if (due.isNull() || message.deliveryDate != given) { // mostly the same for all of them
            given = message.deliveryDate;
            due = dueOf(given);
        }
        const StoreResult<qint64> id =
            m_database.insert("INSERT INTO message (delivery_date, original_date, due, phone, "
                              "text, queued_at) VALUES (?, ?, ?, ?, ?, ?)",
                              {given, given, due, message.phone, message.message, now});
        if (!id)
            return failed(id.error());
        ids.append(*id);
    }
    return ids;
}

StoreResult<QList<QueueRow>> LocalQueue::rows(const QList<qint64> &ids) const
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

StoreResult<> LocalQueue::clear()
{
    return m_database.writeAndCount("DELETE FROM message WHERE state = 0").map([this](int removed) {
        resize(-removed);
        noteAll();
    });
}

/// Gives whether it was in time, as remove() does.
StoreResult<bool> LocalQueue::change(const QueueRow &row)
{
    return m_database
        .write("UPDATE message SET parts_sent = 0, reference = NULL, attempts = 0 "
               "WHERE id = ? AND state = 0 AND (phone <> ? OR text <> ?)",
               {row.id, row.phone, row.message})
        .and_then([&] {
            return m_database.writeAndCount(
                "UPDATE message SET phone = ?, text = ? WHERE id = ? AND state = 0",
                {row.phone, row.message, row.id});
        })
        .map([](int rows) { return rows > 0; });
}

StoreResult<bool> LocalQueue::remove(qint64 id)
{
    return m_database.writeAndCount("DELETE FROM message WHERE id = ? AND state = 0", {id})
        .and_then([&](int removed) -> StoreResult<bool> {
            resize(-removed);
            if (removed > 0)
                return true;
            return isOrWasInProgress(id).map([](bool isTooLate) { return !isTooLate; });
        });
}

StoreResult<QList<StoredMessage>> LocalQueue::first(int max) const
{
    return m_database.rows(StoreQueries::first, {max}, messageOf);
}

StoreResult<std::optional<QString>> LocalQueue::firstDue() const
{
    return m_database.row(StoreQueries::firstDue, {},
                          [](const StoreRow &row) { return row.value(0).toString(); });
}

StoreResult<> LocalQueue::begin(const QList<BegunPart> &parts)
{
    StoreResult<> begun;
    for (auto part = parts.cbegin(); begun && part != parts.cend(); ++part)
        begun = m_database.write(
            StoreQueries::beginPart,
            {part->reference ? QVariant(*part->reference) : QVariant(), part->hash, part->message});
    return begun;
}

StoreResult<> LocalQueue::endPart(qint64 id, int partsSent)
{
    return m_database.write(StoreQueries::endPart, {partsSent, id});
}

StoreResult<> LocalQueue::cancel(const QList<qint64> &ids)
{
    StoreResult<> cancelled;
    for (auto id = ids.cbegin(); cancelled && id != ids.cend(); ++id)
        cancelled = m_database.write(StoreQueries::cancelPart, {*id});
    return cancelled;
}

StoreResult<> LocalQueue::releaseBetweenParts()
{
    return m_database.write(StoreQueries::releaseBetweenParts);
}

StoreResult<> LocalQueue::holdPartlySent()
{
    return m_database.write(StoreQueries::holdPartlySent);
}

StoreResult<> LocalQueue::postpone(qint64 id, int attempts, const QString &nextAttempt)
{
    return m_database.write(StoreQueries::postpone, {attempts, nextAttempt, nextAttempt, id})
        .map([&] { note({id}); });
}

StoreResult<> LocalQueue::makeWay(qint64 id, int attempts, const QString &until)
{
    return postpone(id, attempts, until);
}

StoreResult<qint64> LocalQueue::finish(qint64 id, qint32 code, std::optional<int> networkReference,
                                       const QString &at, bool reported)
{
    return m_database.together([&] {
        return m_outcomes.keep(id, code, networkReference, at, reported)
            .and_then([&](qint64 outcome) {
                return m_database.writeAndCount(StoreQueries::removeMessage, {id})
                    .map([&](int removed) {
                        resize(-removed);
                        note({id});
                        return outcome;
                    });
            });
    });
}

StoreResult<> LocalQueue::finishSent(const QList<SentMessage> &messages)
{
    for (const SentMessage &sent : messages) {
        const StoreResult<qint64> outcome =
            finish(sent.id, ErrorCode::ok, sent.networkReference, sent.at, true);
        if (!outcome)
            return failed(outcome.error());
    }
    return {};
}

StoreResult<QList<StoredMessage>> LocalQueue::interrupted() const
{
    return m_database.rows(StoreQueries::interrupted, {}, messageOf);
}

} // namespace norvane
