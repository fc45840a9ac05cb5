#include "TovekSMService/store/SharedQueue.h"

#include "TovekSMService/store/EngineRegister.h"
#include "TovekSMService/store/PostgresDatabase.h"
#include "TovekSMService/store/PostgresText.h"
#include "TovekSMService/store/QueueNews.h"
#include "TovekSMService/store/SharedQueries.h"

#include <QSet>

#include <algorithm>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype maxRows = 5000; ///< that one statement inserts
constexpr char sizeOfAll[] = "SELECT coalesce(sum(queued), 0) FROM engine";
constexpr char notify[] = "SELECT pg_notify('norvane_queue', ?)";
constexpr int maxRemovedRows = 50'000; ///< that one statement removes

qint64 idOf(const StoreRow &row)
{
    return row.value(0).toLongLong();
}

} // namespace

SharedQueue::SharedQueue(PostgresDatabase &database, EngineRegister &engines, const Now &now,
                         int sameSenderSeconds)
    : MessageQueue(database, now), m_shared(database), m_engines(engines),
      m_claims(database, engines, now, sameSenderSeconds)
{}

StoreResult<> SharedQueue::load()
{
    m_claims.requireRecovery();
    m_hasAllChanged = true; // what an earlier run of the program could not tell
    noteAll();
    return m_claims.enroll().and_then([this] { return refreshSize(); });
}

StoreResult<> SharedQueue::look()
{
    return m_engines.lookUp().and_then([this] { return refreshSize(); });
}

StoreResult<> SharedQueue::once(const QString &token,
                                const std::function<StoreResult<>()> &operations)
{
    const StoreResult<> done = m_shared.together([&] {
        return m_shared
            .write("INSERT INTO done_once (token) VALUES (?)", {m_engines.name() + u' ' + token})
            .and_then(operations);
    });
    const bool wasDone = !done && done.error().kind() == StoreFailure::Kind::Exists;
    return wasDone ? StoreResult<>() : done;
}

StoreResult<> SharedQueue::noteTakenOver(const QList<qint64> &ids)
{
    noteToAll(ids);
    return refreshSize();
}

StoreResult<> SharedQueue::refreshSize()
{
    ++m_sizeLooks;
    return m_shared.row(sizeOfAll, {}, idOf).map([this](std::optional<qint64> size) {
        setSize(static_cast<qint32>(size.value_or(0)));
    });
}

/// The server answers as of when it is asked: what changed here since then comes on top.
void SharedQueue::refreshSize(const Done &done)
{
    const auto answered = std::make_shared<qint64>(0);
    m_shared.post(
        sizeOfAll, {},
        [answered](const StoreRow &row) {
            *answered = idOf(row);
            return false;
        },
        [this, answered, done, known = exactSize(),
         look = ++m_sizeLooks](const StoreResult<> &looked) {
            if (looked && look == m_sizeLooks)
                setSize(static_cast<qint32>(*answered) + exactSize() - known);
            done(looked);
        });
}

StoreResult<> SharedQueue::count(qint64 change)
{
    if (change == 0)
        return {};
    m_isQuiet = false;
    resize(change);
    return m_shared.write("UPDATE engine SET queued = queued + ? WHERE id = ?",
                          {change, m_engines.id()});
}

StoreResult<> SharedQueue::countMoved(qint64 change)
{
    m_hasAllChanged = true;
    return count(change);
}

QString SharedQueue::batchesSetting() const
{
    return u"recent_batches "_s + m_engines.name();
}

StoreResult<QList<qint64>> SharedQueue::insert(const QList<QueueRow> &messages)
{
    QList<qint64> ids;
    ids.reserve(messages.size());
    for (qsizetype at = 0; at < messages.size(); at += maxRows) {
        const StoreResult<QList<qint64>> some =
            insertSome(messages.mid(at, std::min(maxRows, messages.size() - at)));
        if (!some)
            return some;
        ids += *some;
    }
    // The size in memory is the caller's to change.
    return m_shared
        .write("UPDATE engine SET queued = queued + ? WHERE id = ?", {ids.size(), m_engines.id()})
        .map([&] { return ids; });
}

StoreResult<QList<qint64>> SharedQueue::insertSome(const QList<QueueRow> &messages)
{
    QStringList dates;
    QStringList dues;
    QStringList phones;
    QStringList texts;
    for (const QueueRow &message : messages) {
        dates.append(message.deliveryDate);
        dues.append(dueOf(message.deliveryDate));
        phones.append(message.phone);
        texts.append(message.message);
    }
    using PostgresText::array;
    return m_shared.rows(SharedQueries::insert,
                         {m_now(0), array(dates), array(dues), array(phones), array(texts)}, idOf);
}

StoreResult<qint64> SharedQueue::refuse(const QueueRow &message, qint32 code, const QString &at)
{
    return m_shared.together([&] {
        return insert({message}).and_then([&](const QList<qint64> &ids) {
            resize(1);
            return finish(ids.constFirst(), code, std::nullopt, at, false);
        });
    });
}

StoreResult<QList<QueueRow>> SharedQueue::rows(const QList<qint64> &ids) const
{
    return m_shared.rows("SELECT delivery_date, phone, text, id FROM message "
                         "WHERE id = ANY (?::bigint[])",
                         {PostgresText::array(ids)}, rowOf);
}

StoreResult<> SharedQueue::clear()
{
    return m_shared.together([this] {
        return removeWaiting()
            .and_then([this](qint64 removed) { return count(-removed); })
            .and_then([this] { return m_shared.write(notify, {QueueNews::ofAll()}); })
            .map([this] { noteAll(); });
    });
}

/// By statements each of which is short, however long the queue is.
StoreResult<qint64> SharedQueue::removeWaiting()
{
    struct Batch
    {
        qint64 last = 0; ///< 0 behind the last row
        int removed = 0;
    };
    qint64 removed = 0;
    for (qint64 last = 0;;) {
        const auto batch = m_shared.row(
            SharedQueries::removeSome, {last, maxRemovedRows}, [](const StoreRow &row) {
                return Batch{row.value(0).toLongLong(), row.value(1).toInt()};
            });
        if (!batch)
            return failed(batch.error());
        removed += batch->value_or(Batch()).removed;
        last = batch->value_or(Batch()).last;
        if (last == 0)
            return removed;
    }
}

/// Gives whether it was in time, as remove() does.
StoreResult<bool> SharedQueue::change(const QueueRow &row)
{
    return m_shared
        .row(SharedQueries::change, {row.id, row.phone, row.message},
             [](const StoreRow &) { return true; })
        .map([](std::optional<bool> inTime) { return inTime.has_value(); });
}

/// All of them are on their way before the last one is waited for.
StoreResult<bool> SharedQueue::changeAll(const QList<QueueRow> &rows)
{
    if (rows.isEmpty())
        return true;
    qsizetype inTime = 0;
    for (const QueueRow &row : rows.first(rows.size() - 1))
        m_shared.ask(SharedQueries::change, {row.id, row.phone, row.message},
                     [&inTime](const StoreRow &) {
                         ++inTime;
                         return false;
                     });
    return change(rows.constLast()).map([&](bool isLastInTime) {
        return isLastInTime && inTime == rows.size() - 1;
    });
}

StoreResult<bool> SharedQueue::remove(qint64 id)
{
    return removeAll({id});
}

/// However many they are, by two statements.
StoreResult<bool> SharedQueue::removeAll(const QList<qint64> &ids)
{
    if (ids.isEmpty())
        return true;
    const StoreResult<QList<qint64>> removed =
        m_shared.rows("DELETE FROM message WHERE id = ANY (?::bigint[]) AND state = 0 RETURNING id",
                      {PostgresText::array(ids)}, idOf);
    if (!removed)
        return failed(removed.error());
    return count(-removed->size()).and_then([&] {
        QSet<qint64> others(ids.cbegin(), ids.cend());
        for (const qint64 id : *removed)
            others.remove(id);
        const QString rest = PostgresText::array(others.values());
        return m_shared
            .row("SELECT 1 FROM message WHERE id = ANY (?::bigint[]) UNION ALL "
                 "SELECT 1 FROM outcome WHERE message_id = ANY (?::bigint[]) LIMIT 1",
                 {rest, rest}, [](const StoreRow &) { return true; })
            .map([](std::optional<bool> tooLate) { return !tooLate; });
    });
}

StoreResult<std::optional<QString>> SharedQueue::firstDue() const
{
    return m_shared.row(SharedQueries::firstDue, {},
                        [](const StoreRow &row) { return row.value(0).toString(); });
}

StoreResult<> SharedQueue::cancel(const QList<qint64> &ids)
{
    if (ids.isEmpty())
        return {};
    return m_claims.cancel(ids).map([&] { noteToAll(ids); }); // others may take them
}

StoreResult<> SharedQueue::postpone(qint64 id, int attempts, const QString &nextAttempt)
{
    return m_claims.postpone(id, attempts, nextAttempt).map([&] { noteToAll({id}); });
}

/// Other engines may send it at once.
StoreResult<> SharedQueue::makeWay(qint64 id, int /*attempts*/, const QString &until)
{
    return m_claims.makeWay(id, until).map([&] { noteToAll({id}); });
}

StoreResult<qint64> SharedQueue::finish(qint64 id, qint32 code, std::optional<int> networkReference,
                                        const QString &at, bool reported)
{
    return m_shared.together([&] {
        return m_claims.finish(id, code, networkReference, at, reported)
            .map([&](const SharedClaims::Finished &finished) {
                if (finished.wasInQueue)
                    resize(-1);
                noteToAll({id});
                return finished.outcome;
            });
    });
}

StoreResult<> SharedQueue::finishSent(const QList<SentMessage> &messages)
{
    if (messages.isEmpty())
        return {};
    QList<qint64> ids;
    for (const SentMessage &sent : messages)
        ids.append(sent.id);
    return m_shared.together([&] {
        return m_claims.finishSent(messages).map([&] {
            resize(-ids.size());
            noteToAll(ids);
        });
    });
}

/// A call is repeated for seconds, a move for as long as an administrator likes, and a recipient
/// comes back for months.
StoreResult<> SharedQueue::prune(int max)
{
    return m_shared
        .write("DELETE FROM done_once WHERE token IN (SELECT token FROM done_once "
               "WHERE at < clock_timestamp() - interval '1 day' AND "
               "position(' move ' IN token) = 0 LIMIT ?)",
               {max})
        .and_then([&] {
            return m_shared.write("DELETE FROM recipient WHERE phone IN (SELECT phone FROM "
                                  "recipient WHERE at < clock_timestamp() - interval '90 days' "
                                  "LIMIT ?)",
                                  {max});
        });
}

/// In the transaction that changes it: a console of another engine misses nothing, whatever
/// becomes of this one.
void SharedQueue::announce(const QList<qint64> &ids)
{
    static_cast<void>(m_shared.write(notify, {QueueNews::of(ids)}));
}

/// What was sent is told now and then, not with each commit: those who notify commit one behind
/// the other.
void SharedQueue::noteToAll(const QList<qint64> &ids)
{
    note(ids);
    m_isQuiet = false;
    m_unannounced += ids;
}

QString SharedQueue::takeUnannounced()
{
    const QList<qint64> ids = std::exchange(m_unannounced, {});
    return std::exchange(m_hasAllChanged, false) ? QueueNews::ofAll() : QueueNews::of(ids);
}

StoreResult<> SharedQueue::announceNews()
{
    if (!hasNews())
        return {};
    StoreResult<> told = m_shared.write(notify, {takeUnannounced()});
    m_hasAllChanged = m_hasAllChanged || !told;
    return told;
}

void SharedQueue::announceNews(const Done &done)
{
    if (!hasNews())
        return;
    m_shared.post(notify, {takeUnannounced()}, {}, [this, done](const StoreResult<> &told) {
        m_hasAllChanged = m_hasAllChanged || !told;
        done(told);
    });
}

StoreResult<bool> SharedQueue::checkSize()
{
    const qint32 known = size();
    return refreshSize().map([this, known] {
        // What is on its way as news is told by them.
        const bool wasQuiet = std::exchange(m_isQuiet, true);
        if (size() == known || !wasQuiet)
            return false;
        noteAll();
        return true;
    });
}

StoreResult<> SharedQueue::announceAll()
{
    m_hasAllChanged = true;
    return announceNews();
}

void SharedQueue::announceHistory(const Done &done)
{
    m_shared.post(notify, {QueueNews::ofHistory()}, {}, done);
}

void SharedQueue::takeNews(const QStringList &news)
{
    m_isQuiet = false;
    for (const QString &each : news) {
        if (each == QueueNews::ofHistory())
            continue;
        if (const std::optional<QList<qint64>> ids = QueueNews::idsOf(each))
            note(*ids);
        else
            noteAll();
    }
}

} // namespace norvane
