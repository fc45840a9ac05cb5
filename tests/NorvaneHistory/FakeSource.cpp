#include "NorvaneHistory/FakeSource.h"

#include <QDateTime>
#include <QPointer>

#include <algorithm>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString momentOf(qint64 minutes)
{
    return QDateTime(QDate(2026, 1, 1), QTime(0, 0))
        .addSecs(minutes * 60)
        .toString(u"yyyy-MM-ddTHH:mm:ss"_s);
}

bool contains(const QString &text, const QString &phone, const QString &part)
{
    return phone.contains(part, Qt::CaseInsensitive) || text.contains(part, Qt::CaseInsensitive);
}

/// Where a row stands, which a change of its moment moves.
struct Place
{
    QString at;
    qint64 id = 0;

    static Place of(const QString &cursor)
    {
        return {cursor.section(u' ', 0, 0), cursor.section(u' ', 1).toLongLong()};
    }
    QString cursor() const { return u"%1 %2"_s.arg(at).arg(id); }
    /// Whether a row comes later in the list.
    template <typename Row>
    bool isBefore(const Row &row) const
    {
        return row.at != at ? row.at < at : row.id < id;
    }
};

/// The part of a list that lies between two cursors, each the place of the row that ended a page.
template <typename Row>
Page<Row> pageOf(const QList<Row> &rows, const PageRequest &request)
{
    Page<Row> page;
    const auto behind = [&rows](const QString &cursor) {
        return std::find_if(
            rows.cbegin(), rows.cend(),
            [place = Place::of(cursor)](const Row &row) { return place.isBefore(row); });
    };
    auto at = request.after.isEmpty() ? rows.cbegin() : behind(request.after);
    const auto end = request.until.isEmpty() ? rows.cend() : behind(request.until);
    for (; at != end && page.rows.size() < request.limit; ++at)
        page.rows.append(*at);
    if (at != end)
        page.next = Place{page.rows.constLast().at, page.rows.constLast().id}.cursor();
    return page;
}

} // namespace

void FakeSource::addRows(int count)
{
    for (int id = count; id >= 1; --id)
        rows.append({id,
                     momentOf(id),
                     momentOf(id),
                     u"6%1"_s.arg(id, 8, 10, QChar(u'0')),
                     u"text %1"_s.arg(id),
                     MessageState::Sent,
                     1,
                     {}});
}

HistoryRow FakeSource::addRow(MessageState state, const QString &phone, const QString &text)
{
    const qint64 id = rows.isEmpty() ? 1 : rows.constFirst().id + 1;
    const qint32 code = state == MessageState::Failed    ? -22
                        : state == MessageState::InDoubt ? -39
                        : state == MessageState::Waiting ? 0
                                                         : 1;
    const HistoryRow row{id, momentOf(id), momentOf(id), phone, text, state, code, {}};
    rows.prepend(row);
    return row;
}

template <typename Value>
void FakeSource::answerLater(QObject *context, const SourceAnswer<Value> &answer,
                             const Value &value)
{
    const SourceResult<Value> result =
        isAway ? SourceResult<Value>(norvane::failed(
                     SourceFailure{SourceFailure::Kind::NoEngine, u"the engine is away"_s}))
               : SourceResult<Value>(value);
    const auto give = [guard = QPointer<QObject>(context), answer, result] {
        if (guard)
            answer(result);
    };
    if (m_isHolding)
        m_held.append(give);
    else
        QMetaObject::invokeMethod(this, give, Qt::QueuedConnection);
}

void FakeSource::release()
{
    m_isHolding = false;
    for (const auto &give : std::exchange(m_held, {}))
        give();
}

void FakeSource::connectToEngine()
{
    calls << u"connect"_s;
    if (isConnecting)
        Q_EMIT connected();
    else
        Q_EMIT failed({SourceFailure::Kind::NoEngine, u"no engine <b>here</b>"_s});
}

void FakeSource::fetchHistory(QObject *context, const HistoryFilter &filter,
                              const PageRequest &request,
                              const SourceAnswer<Page<HistoryRow>> &answer)
{
    calls << u"history"_s;
    requests << request;
    answerLater(context, answer, historyPage(filter, request));
}

Page<HistoryRow> FakeSource::historyPage(const HistoryFilter &filter,
                                         const PageRequest &request) const
{
    QList<HistoryRow> found = rows;
    found.removeIf([&](const HistoryRow &row) {
        return !filter.states.testFlag(row.state) || row.at < filter.from ||
               (!filter.to.isEmpty() && row.at >= filter.to) ||
               !contains(row.text, row.phone, filter.text);
    });
    return pageOf(found, request);
}

void FakeSource::fetchRows(QObject *context, const QList<qint64> &ids,
                           const SourceAnswer<QList<HistoryRow>> &answer)
{
    calls << u"rows"_s;
    QList<HistoryRow> found = rows;
    found.removeIf([&](const HistoryRow &row) { return !ids.contains(row.id); });
    answerLater(context, answer, found);
}

void FakeSource::fetchSteps(QObject *context, qint64 message,
                            const SourceAnswer<QList<HistoryEvent>> &answer)
{
    calls << u"steps"_s;
    answerLater(context, answer, steps.value(message));
}

void FakeSource::fetchSummary(QObject *context, const QString &from, const QString & /*to*/,
                              const SourceAnswer<Summary> &answer)
{
    calls << u"summary "_s + from;
    answerLater(context, answer, summary);
}

void FakeSource::fetchInbox(QObject *context, const InboxFilter &filter, const PageRequest &request,
                            const SourceAnswer<Page<ReceivedMessage>> &answer)
{
    calls << u"inbox"_s;
    answerLater(context, answer, inboxPage(filter, request));
}

Page<ReceivedMessage> FakeSource::inboxPage(const InboxFilter &filter,
                                            const PageRequest &request) const
{
    QList<ReceivedMessage> found = inbox;
    found.removeIf([&](const ReceivedMessage &row) {
        return (filter.unreadOnly && row.isRead) || row.at < filter.from ||
               (!filter.to.isEmpty() && row.at >= filter.to) ||
               !contains(row.text, row.phone, filter.text);
    });
    return pageOf(found, request);
}

void FakeSource::walkHistory(QObject *context, const HistoryFilter &filter,
                             const PageRequest &request,
                             const SourceAnswer<Page<HistoryRow>> &answer)
{
    calls << u"walk"_s;
    if (supersededPages > 0) {
        --supersededPages;
        QMetaObject::invokeMethod(
            context,
            [answer] {
                answer(norvane::failed(SourceFailure{SourceFailure::Kind::Superseded, {}}));
            },
            Qt::QueuedConnection);
        return;
    }
    answerLater(context, answer, historyPage(filter, request));
}

void FakeSource::walkInbox(QObject *context, const InboxFilter &filter, const PageRequest &request,
                           const SourceAnswer<Page<ReceivedMessage>> &answer)
{
    calls << u"walk"_s;
    answerLater(context, answer, inboxPage(filter, request));
}

void FakeSource::markRead(QObject *context, const QList<qint64> &ids,
                          const SourceAnswer<bool> &answer)
{
    if (!isAway) {
        markedRead += ids;
        for (ReceivedMessage &message : inbox)
            message.isRead = message.isRead || ids.contains(message.id);
    }
    answerLater(context, answer, true);
}

void FakeSource::fetchOptedOut(QObject *context, const QString &phone,
                               const SourceAnswer<bool> &answer)
{
    calls << u"opted out"_s;
    answerLater(context, answer, optOuts.contains(phone));
}

void FakeSource::setOptedOut(QObject *context, const QString &phone, bool isOptedOut,
                             const SourceAnswer<bool> &answer)
{
    const bool was = optOuts.contains(phone);
    if (!isAway && isOptedOut)
        optOuts.insert(phone);
    else if (!isAway)
        optOuts.remove(phone);
    answerLater(context, answer, was != isOptedOut);
}

void FakeSource::send(QObject *context, const QString &phone, const QString &text,
                      const SourceAnswer<Sending> &answer)
{
    if (!isAway)
        sent.append({phone, text});
    answerLater(context, answer, sending);
}

} // namespace norvane
