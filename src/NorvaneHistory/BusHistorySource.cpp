#include "NorvaneHistory/BusHistorySource.h"

#include "MessagesBusInterface.h"
#include "common/NumberedFailure.h"
#include "contract/BusTypes.h"
#include "contract/SMSManager.h"
#include "foundation/EngineLauncher.h"
#include "foundation/FailureTexts.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDateTime>
#include <QPointer>
#include <QUuid>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

SourceFailure failureOf(const QDBusError &error)
{
    if (error.name() == QLatin1String(Bus::supersededError))
        return {SourceFailure::Kind::Superseded, {}};
    const bool isAway =
        error.type() == QDBusError::ServiceUnknown || error.type() == QDBusError::NoReply ||
        error.type() == QDBusError::Disconnected || error.type() == QDBusError::UnknownMethod;
    return {isAway ? SourceFailure::Kind::NoEngine : SourceFailure::Kind::Refused,
            FailureText::engineDoesNotAnswer(error.message())};
}

using InboxReply = QDBusPendingReply<BusReceivedMessages, QString>;

InboxReply askInbox(MessagesBusInterface &messages, const InboxFilter &filter,
                    const PageRequest &request)
{
    return messages.GetInbox(Bus::withoutNul(filter.from), Bus::withoutNul(filter.to),
                             Bus::withoutNul(filter.text), filter.unreadOnly, request.after,
                             request.until, request.limit);
}

Page<ReceivedMessage> inboxPage(const InboxReply &reply)
{
    return {reply.argumentAt<0>(), reply.argumentAt<1>()};
}

} // namespace

BusHistorySource::BusHistorySource(const QDBusConnection &bus, EngineLauncher &launcher,
                                   QObject *parent)
    : HistorySource(parent), m_bus(bus), m_launcher(launcher),
      m_besideName(QUuid::createUuid().toString(QUuid::WithoutBraces))
{
    Bus::registerTypes();
    auto *const owners = new QDBusServiceWatcher(QLatin1String(Bus::serviceName), m_bus,
                                                 QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(
        owners, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString &, const QString &, const QString &owner) { engineChanged(owner); });
}

BusHistorySource::~BusHistorySource()
{
    m_beside.reset();
    QDBusConnection::disconnectFromBus(m_besideName);
}

SourceResult<bool> BusHistorySource::ensureRunning()
{
    try {
        m_launcher.ensureRunning();
    } catch (const NumberedFailure &failure) {
        return norvane::failed(SourceFailure{SourceFailure::Kind::NoEngine, failure.description()});
    }
    if (!m_messages) {
        m_messages = std::make_unique<MessagesBusInterface>(QLatin1String(Bus::serviceName),
                                                            QLatin1String(Bus::objectPath), m_bus);
        m_messages->setTimeout(Bus::callTimeout);
        m_beside = std::make_unique<MessagesBusInterface>(
            QLatin1String(Bus::serviceName), QLatin1String(Bus::objectPath),
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_besideName));
        m_beside->setTimeout(Bus::callTimeout);
        connect(m_messages.get(), &MessagesBusInterface::HistoryChanged, this,
                &HistorySource::changed);
    }
    return true;
}

void BusHistorySource::connectToEngine()
{
    if (const auto isRunning = ensureRunning(); !isRunning)
        Q_EMIT failed(isRunning.error());
    else
        Q_EMIT connected();
}

/// One that has gone is not called back by itself: the operator may have wanted its end.
void BusHistorySource::engineChanged(const QString &owner)
{
    if (!owner.isEmpty() && m_messages)
        Q_EMIT connected();
}

template <typename Value, typename Read>
void BusHistorySource::await(const QDBusPendingCall &call, QObject *context,
                             const SourceAnswer<Value> &answer, Read read)
{
    auto *const watcher = new QDBusPendingCallWatcher(call, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [guard = QPointer<QObject>(context), answer, read](QDBusPendingCallWatcher *finished) {
                finished->deleteLater();
                if (!guard)
                    return;
                if (finished->isError())
                    answer(norvane::failed(failureOf(finished->error())));
                else
                    answer(read(*finished));
            });
}

template <typename Value, typename Start, typename Read>
void BusHistorySource::ask(QObject *context, const SourceAnswer<Value> &answer, Start start,
                           Read read)
{
    const auto isRunning = ensureRunning();
    if (isRunning) {
        await(start(), context, answer, read);
        return;
    }
    Q_EMIT failed(isRunning.error());
    QMetaObject::invokeMethod(
        context, [answer, failure = isRunning.error()] { answer(norvane::failed(failure)); },
        Qt::QueuedConnection);
}

void BusHistorySource::fetchHistory(QObject *context, const HistoryFilter &filter,
                                    const PageRequest &request,
                                    const SourceAnswer<Page<HistoryRow>> &answer)
{
    using Reply = QDBusPendingReply<BusHistoryRows, QString>;
    ask(
        context, answer,
        [&] {
            return m_messages->GetHistory(Bus::withoutNul(filter.from), Bus::withoutNul(filter.to),
                                          Bus::withoutNul(filter.text), filter.states.toInt(),
                                          request.after, request.until, request.limit);
        },
        [](const Reply &reply) {
            return Page<HistoryRow>{reply.argumentAt<0>(), reply.argumentAt<1>()};
        });
}

void BusHistorySource::fetchRows(QObject *context, const QList<qint64> &ids,
                                 const SourceAnswer<QList<HistoryRow>> &answer)
{
    ask(
        context, answer,
        [&] { return m_messages->GetHistoryOf(QList<qlonglong>(ids.cbegin(), ids.cend())); },
        [](const QDBusPendingReply<BusHistoryRows> &reply) { return reply.value(); });
}

void BusHistorySource::fetchSteps(QObject *context, qint64 message,
                                  const SourceAnswer<QList<HistoryEvent>> &answer)
{
    ask(
        context, answer, [&] { return m_messages->GetSteps(message); },
        [](const QDBusPendingReply<BusHistoryEvents> &reply) { return reply.value(); });
}

void BusHistorySource::fetchSummary(QObject *context, const QString &from, const QString &to,
                                    const SourceAnswer<Summary> &answer)
{
    using Reply = QDBusPendingReply<BusHistoryDays, BusDeliveryDelays, BusFailureReasons>;
    ask(
        context, answer, [&] { return m_messages->GetSummary(from, to); },
        [](const Reply &reply) {
            return Summary{reply.argumentAt<0>(), reply.argumentAt<1>(), reply.argumentAt<2>()};
        });
}

void BusHistorySource::fetchInbox(QObject *context, const InboxFilter &filter,
                                  const PageRequest &request,
                                  const SourceAnswer<Page<ReceivedMessage>> &answer)
{
    ask(
        context, answer, [&] { return askInbox(*m_messages, filter, request); }, inboxPage);
}

void BusHistorySource::fetchAnswers(QObject *context, const InboxFilter &filter, quint32 limit,
                                    const SourceAnswer<Page<ReceivedMessage>> &answer)
{
    ask(
        context, answer,
        [&] {
            return askInbox(*m_beside, filter, {{}, {}, limit});
        },
        inboxPage);
}

void BusHistorySource::markRead(const QList<qint64> &ids)
{
    if (ensureRunning())
        m_messages->MarkRead(QList<qlonglong>(ids.cbegin(), ids.cend()));
}

void BusHistorySource::fetchOptedOut(QObject *context, const QString &phone,
                                     const SourceAnswer<bool> &answer)
{
    ask(
        context, answer, [&] { return m_messages->IsOptedOut(Bus::withoutNul(phone)); },
        [](const QDBusPendingReply<bool> &reply) { return reply.value(); });
}

void BusHistorySource::setOptedOut(QObject *context, const QString &phone, bool isOptedOut,
                                   const SourceAnswer<bool> &answer)
{
    const QString number = Bus::withoutNul(phone);
    ask(
        context, answer,
        [&] {
            return isOptedOut ? m_messages->AddOptOut(number) : m_messages->RemoveOptOut(number);
        },
        [](const QDBusPendingReply<bool> &reply) { return reply.value(); });
}

void BusHistorySource::send(QObject *context, const QString &phone, const QString &text,
                            const SourceAnswer<bool> &answer)
{
    ask(
        context, answer,
        [&] {
            return callManager(u"AddSMS"_s, {Bus::withoutNul(phone), Bus::withoutNul(text),
                                             Bus::dateText(QDateTime::currentDateTime())});
        },
        [this](const QDBusPendingReply<> &) {
            startIfStopped();
            return true;
        });
}

QDBusPendingCall BusHistorySource::callManager(const QString &operation,
                                               const QVariantList &arguments)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QLatin1String(Bus::serviceName), QLatin1String(Bus::objectPath),
        QLatin1String(Bus::interfaceName), operation);
    call.setArguments(arguments);
    return m_bus.asyncCall(call, Bus::callTimeout);
}

void BusHistorySource::startIfStopped()
{
    await(callManager(u"GetEngineStatus"_s), this,
          SourceAnswer<qint32>([this](const SourceResult<qint32> &status) {
              if (status && *status == SMSManager::stopped)
                  callManager(u"StartEngine"_s);
          }),
          [](const QDBusPendingReply<qint32> &reply) { return reply.value(); });
}

} // namespace norvane
