#include "TovekSMService/bus/MessagesService.h"

#include "TovekSMService/dispatch/Dispatcher.h"
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
      m_calls(bus, dispatcher, clock)
{
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
    if (!isSearchable(text))
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
    if (!isSearchable(text))
        return {};
    carryOut([this, filter = MessageFilter{from, to, text}, offset, limit] {
        return m_store.received()
            .list(filter, offset, pageLength(limit))
            .map(output<BusReceivedMessages>);
    });
    return {}; // not sent
}

bool MessagesService::isSearchable(const QString &text) const
{
    if (text.size() <= maxSearchedText)
        return true;
    sendErrorReply(QDBusError::InvalidArgs, u"the text to look for is too long"_s);
    return false;
}

void MessagesService::MarkRead(const QList<qlonglong> &ids)
{
    carryOut([this, ids] {
        return m_store.received().markRead(ids).map([] { return QVariantList(); });
    });
}

BusOptOuts MessagesService::GetOptOuts()
{
    carryOut([this] { return m_dispatcher.optOuts().all().map(output<BusOptOuts>); });
    return {}; // not sent
}

bool MessagesService::AddOptOut(const QString &phone)
{
    if (phone.trimmed().isEmpty()) {
        sendErrorReply(QDBusError::InvalidArgs, u"no phone"_s);
        return {};
    }
    carryOut([this, phone] {
        return m_dispatcher.optOuts().add(phone, m_clock.wallClockText()).map(output<bool>);
    });
    return {}; // not sent
}

bool MessagesService::RemoveOptOut(const QString &phone)
{
    carryOut([this, phone] { return m_dispatcher.optOuts().remove(phone).map(output<bool>); });
    return {}; // not sent
}

void MessagesService::carryOut(const StoreCalls::Step &step, const StoreCalls::Refusal &refusal)
{
    setDelayedReply(true);
    m_calls.carryOut(message(), step, refusal);
}

} // namespace norvane
