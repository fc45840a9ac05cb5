#include "TovekSMService/bus/MessagesService.h"

#include "TovekSMService/dispatch/Dispatcher.h"
#include "TovekSMService/history/HistoryPages.h"
#include "TovekSMService/history/HistorySteps.h"
#include "TovekSMService/history/HistorySummary.h"
#include "TovekSMService/history/InboxPages.h"
#include "TovekSMService/history/QueryLimit.h"
#include "TovekSMService/reports/OptOuts.h"
#include "TovekSMService/store/Store.h"

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

qint64 pageLength(uint limit)
{
    return limit == 0 ? Bus::maxPageRows : std::min(limit, Bus::maxPageRows);
}

/// Nobody types more of a message to find it.
constexpr qsizetype maxSearchedText = 200;
constexpr qsizetype maxMoment = 19; ///< "yyyy-MM-ddTHH:mm:ss"
constexpr qsizetype maxPhone = 100;

/// What a call looks for, as one text; no value on the bus holds NUL.
QString keyOf(const QStringList &values)
{
    return values.join(QChar(QChar::Null));
}

/// The output of a call that has one argument.
template <typename Value>
QVariantList output(const Value &value)
{
    return {QVariant::fromValue(value)};
}

} // namespace

MessagesService::MessagesService(const QDBusConnection &bus, Store &store, Dispatcher &dispatcher,
                                 const Clock &clock, QObject *parent)
    : QObject(parent), m_bus(bus), m_store(store), m_dispatcher(dispatcher), m_clock(clock),
      m_calls(bus, dispatcher, clock), m_historyPacer(clock.time()),
      m_history(bus, {store.file().file(), store.conninfo(), store.refusal()}, TimeSource::system(),
                [this](const StoreFailure &failure) {
                    // What opening the file anew may find.
                    if (failure.kind() == StoreFailure::Kind::Corrupt)
                        m_dispatcher.noticeStoreFailure(failure);
                })
{
    connect(&m_historyPacer, &HistoryChangePacer::report, this, &MessagesService::HistoryChanged);
    connect(&dispatcher, &Dispatcher::historyChanged, &m_historyPacer,
            &HistoryChangePacer::historyChanged);
    connect(&dispatcher, &Dispatcher::deliveryChanged, this, [this](const DeliveryChange &change) {
        Q_EMIT DeliveryChanged(change.message, QString::fromLatin1(nameOf(change.state)),
                               change.at);
    });
    connect(&dispatcher, &Dispatcher::received, this, [this](const ReceivedMessage &message) {
        Q_EMIT Received(message.id, Bus::withoutNul(message.phone), Bus::withoutNul(message.text),
                        message.at);
    });
}

BusOutcomeRows MessagesService::GetOutcomes(const QString &from, const QString &to,
                                            const QString &text, uint offset, uint limit)
{
    if (!isSearchable(from, to, text))
        return {};
    carryOut([this, filter = MessageFilter{from, to, text}, offset, limit] {
        return m_store.outcomes()
            .list(filter, offset, pageLength(limit))
            .map(output<BusOutcomeRows>);
    });
    return {}; // not sent
}

BusReceivedMessages MessagesService::GetReceived(const QString &from, const QString &to,
                                                 const QString &text, uint offset, uint limit)
{
    if (!isSearchable(from, to, text))
        return {};
    carryOut([this, filter = MessageFilter{from, to, text}, offset, limit] {
        return m_store.received()
            .list(filter, offset, pageLength(limit))
            .map(output<BusReceivedMessages>);
    });
    return {}; // not sent
}

bool MessagesService::isSearchable(const QString &from, const QString &to,
                                   const QString &text) const
{
    return accepts(from.size() <= maxMoment && to.size() <= maxMoment,
                   u"a bound of the range is too long"_s) &&
           accepts(text.size() <= maxSearchedText, u"the text to look for is too long"_s);
}

void MessagesService::MarkRead(const QList<qlonglong> &ids)
{
    if (!isUnderstood(ids.size() <= qsizetype{Bus::maxPageRows}))
        return;
    carryOut([this, ids] {
        return m_store.received().markRead(ids).map([this] {
            m_dispatcher.noticeHistoryChange();
            return QVariantList();
        });
    });
}

BusOptOuts MessagesService::GetOptOuts()
{
    carryOut([this] { return m_dispatcher.optOuts().all().map(output<BusOptOuts>); });
    return {}; // not sent
}

bool MessagesService::AddOptOut(const QString &phone)
{
    if (!accepts(!phone.trimmed().isEmpty(), u"no phone"_s) ||
        !accepts(phone.size() <= maxPhone, u"the phone is too long"_s))
        return {};
    carryOut([this, phone] {
        return m_dispatcher.optOuts().add(phone, m_clock.wallClockText()).map([this](bool added) {
            return changed(added);
        });
    });
    return {}; // not sent
}

/// The output of a call by which the history may have changed.
QVariantList MessagesService::changed(bool hasChanged)
{
    if (hasChanged)
        m_dispatcher.noticeHistoryChange();
    return {hasChanged};
}

bool MessagesService::IsOptedOut(const QString &phone)
{
    // The list may be long, and is read where nothing else waits for it.
    askHistory({}, [phone, prefix = m_dispatcher.optOuts().countryPrefix()](
                       StoreDatabase &database, const QueryLimit & /*limit*/) {
        OptOutList list(database);
        return OptOuts(list, prefix).contains(phone).map(output<bool>);
    });
    return {}; // not sent
}

bool MessagesService::RemoveOptOut(const QString &phone)
{
    carryOut([this, phone] {
        return m_dispatcher.optOuts().remove(phone).map(
            [this](bool removed) { return changed(removed); });
    });
    return {}; // not sent
}

BusHistoryRows MessagesService::GetHistory(const QString &from, const QString &to,
                                           const QString &text, uint states, const QString &after,
                                           const QString &until, uint limit, QString & /*next*/)
{
    const auto begin = HistoryCursor::of(after);
    const auto end = HistoryCursor::of(until);
    if (!isSearchable(from, to, text) ||
        !isUnderstood((states & ~allMessageStates) == 0 && begin && end))
        return {};
    askHistory(keyOf({from, to, text, QString::number(states)}),
               [filter = HistoryFilter{from, to, text, MessageStates::fromInt(states)}, begin,
                end = until.isEmpty() ? std::nullopt : end,
                limit](StoreDatabase &database, const QueryLimit &queryLimit) {
                   return HistoryPages(database, queryLimit)
                       .page(filter, *begin, end, static_cast<int>(pageLength(limit)))
                       .map([](const HistoryPage &page) {
                           return QVariantList{QVariant::fromValue(page.rows),
                                               page.next ? page.next->text() : QString()};
                       });
               });
    return {}; // not sent
}

BusHistoryRows MessagesService::GetHistoryOf(const QList<qlonglong> &ids)
{
    if (!isUnderstood(ids.size() <= qsizetype{Bus::maxPageRows}))
        return {};
    askHistory({}, [ids](StoreDatabase &database, const QueryLimit &queryLimit) {
        return HistoryPages(database, queryLimit).of(ids).map(output<BusHistoryRows>);
    });
    return {}; // not sent
}

BusHistoryEvents MessagesService::GetSteps(qlonglong id)
{
    askHistory({}, [id](StoreDatabase &database, const QueryLimit & /*limit*/) {
        return HistorySteps(database).of(id).map(output<BusHistoryEvents>);
    });
    return {}; // not sent
}

BusHistoryDays MessagesService::GetSummary(const QString &from, const QString &to,
                                           BusDeliveryDelays & /*delays*/,
                                           BusFailureReasons & /*reasons*/)
{
    if (!isSearchable(from, to, {}))
        return {};
    askHistory({}, [from, to](StoreDatabase &database, const QueryLimit &queryLimit) {
        return HistorySummary(database, queryLimit)
            .of(from, to)
            .map([](const HistoryNumbers &numbers) {
                return QVariantList{QVariant::fromValue(numbers.days),
                                    QVariant::fromValue(numbers.delays),
                                    QVariant::fromValue(numbers.reasons)};
            });
    });
    return {}; // not sent
}

BusReceivedMessages MessagesService::GetInbox(const QString &from, const QString &to,
                                              const QString &text, bool unreadOnly,
                                              const QString &after, const QString &until,
                                              uint limit, QString & /*next*/)
{
    const auto begin = InboxCursor::of(after);
    const auto end = InboxCursor::of(until);
    if (!isSearchable(from, to, text) || !isUnderstood(begin && end))
        return {};
    askHistory(keyOf({from, to, text, QString::number(unreadOnly)}),
               [filter = InboxFilter{from, to, text, unreadOnly}, begin,
                end = until.isEmpty() ? std::nullopt : end,
                limit](StoreDatabase &database, const QueryLimit &queryLimit) {
                   return InboxPages(database, queryLimit)
                       .page(filter, *begin, end, static_cast<int>(pageLength(limit)))
                       .map([](const InboxPage &page) {
                           return QVariantList{QVariant::fromValue(page.rows),
                                               page.next ? page.next->text() : QString()};
                       });
               });
    return {}; // not sent
}

void MessagesService::askHistory(const QString &filter, const HistoryThread::Query &query)
{
    setDelayedReply(true);
    m_history.carryOut(message(), filter, query);
}

bool MessagesService::isUnderstood(bool isValid) const
{
    return accepts(isValid, u"invalid state, cursor or number of ids"_s);
}

/// A call that isn't accepted has its answer.
bool MessagesService::accepts(bool isValid, const QString &reason) const
{
    if (!isValid)
        sendErrorReply(QDBusError::InvalidArgs, reason);
    return isValid;
}

void MessagesService::carryOut(const StoreCalls::Step &step, const StoreCalls::Refusal &refusal)
{
    setDelayedReply(true);
    m_calls.carryOut(message(), step, refusal);
}

} // namespace norvane
