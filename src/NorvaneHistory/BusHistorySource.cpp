#include "NorvaneHistory/BusHistorySource.h"

#include "MessagesBusInterface.h"
#include "contract/BusTypes.h"
#include "contract/SMSManager.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDateTime>
#include <QLoggingCategory>
#include <QPointer>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

Q_LOGGING_CATEGORY(logSource, "history.source", QtInfoMsg)

bool isGone(const QDBusError &error)
{
    return error.type() == QDBusError::ServiceUnknown || error.type() == QDBusError::Disconnected ||
           error.name() == "org.freedesktop.DBus.Error.NameHasNoOwner"_L1;
}

bool isSilent(const QDBusError &error)
{
    return error.type() == QDBusError::NoReply || error.type() == QDBusError::Timeout ||
           error.type() == QDBusError::TimedOut || error.type() == QDBusError::UnknownMethod;
}

/// The reason goes to the log: it isn't in the operator's language.
SourceFailure failureOf(const QDBusError &error)
{
    using Kind = SourceFailure::Kind;
    if (error.name() == QLatin1String(Bus::supersededError))
        return {Kind::Superseded, {}};
    qCWarning(logSource, "%s: %s", qPrintable(error.name()), qPrintable(error.message()));
    if (isGone(error))
        return {Kind::NoEngine, GS(TextId::EngineNotThere)};
    if (isSilent(error))
        return {Kind::NoEngine, GS(TextId::EngineSilent)};
    const bool isBusy = error.name() == QLatin1String(Bus::busyError);
    return {Kind::Refused, GS(isBusy ? TextId::QueryTooLong : TextId::RequestRefused)};
}

template <typename Value>
void failLater(QObject *context, const SourceAnswer<Value> &answer, const SourceFailure &failure)
{
    QMetaObject::invokeMethod(
        context, [answer, failure] { answer(norvane::failed(failure)); }, Qt::QueuedConnection);
}

bool isAnswered(const QDBusPendingReply<> & /*reply*/)
{
    return true;
}

} // namespace

BusHistorySource::BusHistorySource(const QDBusConnection &bus, EngineLauncher &launcher,
                                   QObject *parent)
    : HistorySource(parent), m_engine(bus, launcher)
{
    connect(&m_engine, &EngineConnection::appeared, this, &HistorySource::returned);
    connect(&m_engine, &EngineConnection::gone, this,
            [this] { Q_EMIT failed(m_engine.absence()); });
    connect(&m_engine, &EngineConnection::historyChanged, this, &HistorySource::changed);
}

void BusHistorySource::connectToEngine()
{
    if (const auto isRunning = m_engine.ensureRunning(); !isRunning)
        Q_EMIT failed(isRunning.error());
    else
        Q_EMIT connected();
}

template <typename Value>
bool BusHistorySource::ensureRunning(QObject *context, const SourceAnswer<Value> &answer)
{
    const QString before = m_engine.owner();
    const auto isRunning = m_engine.ensureRunning();
    if (!isRunning) {
        Q_EMIT failed(isRunning.error());
        failLater(context, answer, isRunning.error());
        return false;
    }
    if (before != m_engine.owner())
        Q_EMIT returned();
    return true;
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
void BusHistorySource::ask(EngineConnection::Caller caller, QObject *context,
                           const SourceAnswer<Value> &answer, Start start, Read read)
{
    if (MessagesBusInterface *const messages = m_engine.messages(caller))
        await(start(*messages), context, answer, read);
    else
        failLater(context, answer, m_engine.absence());
}

void BusHistorySource::askHistory(EngineConnection::Caller caller, QObject *context,
                                  const HistoryFilter &filter, const PageRequest &request,
                                  const SourceAnswer<Page<HistoryRow>> &answer)
{
    using Reply = QDBusPendingReply<BusHistoryRows, QString>;
    ask(
        caller, context, answer,
        [&](MessagesBusInterface &messages) {
            return messages.GetHistory(Bus::withoutNul(filter.from), Bus::withoutNul(filter.to),
                                       Bus::withoutNul(filter.text), filter.states.toInt(),
                                       request.after, request.until, request.limit);
        },
        [](const Reply &reply) {
            return Page<HistoryRow>{reply.argumentAt<0>(), reply.argumentAt<1>()};
        });
}

void BusHistorySource::askInbox(EngineConnection::Caller caller, QObject *context,
                                const InboxFilter &filter, const PageRequest &request,
                                const SourceAnswer<Page<ReceivedMessage>> &answer)
{
    using Reply = QDBusPendingReply<BusReceivedMessages, QString>;
    ask(
        caller, context, answer,
        [&](MessagesBusInterface &messages) {
            return messages.GetInbox(Bus::withoutNul(filter.from), Bus::withoutNul(filter.to),
                                     Bus::withoutNul(filter.text), filter.unreadOnly, request.after,
                                     request.until, request.limit);
        },
        [](const Reply &reply) {
            return Page<ReceivedMessage>{reply.argumentAt<0>(), reply.argumentAt<1>()};
        });
}

void BusHistorySource::fetchHistory(QObject *context, const HistoryFilter &filter,
                                    const PageRequest &request,
                                    const SourceAnswer<Page<HistoryRow>> &answer)
{
    askHistory(EngineConnection::List, context, filter, request, answer);
}

void BusHistorySource::walkHistory(QObject *context, const HistoryFilter &filter,
                                   const PageRequest &request,
                                   const SourceAnswer<Page<HistoryRow>> &answer)
{
    askHistory(EngineConnection::Walk, context, filter, request, answer);
}

void BusHistorySource::fetchRows(QObject *context, const QList<qint64> &ids,
                                 const SourceAnswer<QList<HistoryRow>> &answer)
{
    ask(
        EngineConnection::List, context, answer,
        [&](MessagesBusInterface &messages) {
            return messages.GetHistoryOf(QList<qlonglong>(ids.cbegin(), ids.cend()));
        },
        [](const QDBusPendingReply<BusHistoryRows> &reply) { return reply.value(); });
}

void BusHistorySource::fetchSteps(QObject *context, qint64 message,
                                  const SourceAnswer<QList<HistoryEvent>> &answer)
{
    ask(
        EngineConnection::List, context, answer,
        [&](MessagesBusInterface &messages) { return messages.GetSteps(message); },
        [](const QDBusPendingReply<BusHistoryEvents> &reply) { return reply.value(); });
}

void BusHistorySource::fetchSummary(QObject *context, const QString &from, const QString &to,
                                    const SourceAnswer<Summary> &answer)
{
    using Reply = QDBusPendingReply<BusHistoryDays, BusDeliveryDelays, BusFailureReasons>;
    ask(
        EngineConnection::List, context, answer,
        [&](MessagesBusInterface &messages) { return messages.GetSummary(from, to); },
        [](const Reply &reply) {
            return Summary{reply.argumentAt<0>(), reply.argumentAt<1>(), reply.argumentAt<2>()};
        });
}

void BusHistorySource::fetchInbox(QObject *context, const InboxFilter &filter,
                                  const PageRequest &request,
                                  const SourceAnswer<Page<ReceivedMessage>> &answer)
{
    askInbox(EngineConnection::List, context, filter, request, answer);
}

void BusHistorySource::fetchAnswers(QObject *context, const InboxFilter &filter, quint32 limit,
                                    const SourceAnswer<Page<ReceivedMessage>> &answer)
{
    askInbox(EngineConnection::Answers, context, filter, {{}, {}, limit}, answer);
}

void BusHistorySource::walkInbox(QObject *context, const InboxFilter &filter,
                                 const PageRequest &request,
                                 const SourceAnswer<Page<ReceivedMessage>> &answer)
{
    askInbox(EngineConnection::Walk, context, filter, request, answer);
}

void BusHistorySource::markRead(QObject *context, const QList<qint64> &ids,
                                const SourceAnswer<bool> &answer)
{
    ask(
        EngineConnection::List, context, answer,
        [&](MessagesBusInterface &messages) {
            return messages.MarkRead(QList<qlonglong>(ids.cbegin(), ids.cend()));
        },
        isAnswered);
}

void BusHistorySource::fetchOptedOut(QObject *context, const QString &phone,
                                     const SourceAnswer<bool> &answer)
{
    ask(
        EngineConnection::List, context, answer,
        [&](MessagesBusInterface &messages) { return messages.IsOptedOut(Bus::withoutNul(phone)); },
        [](const QDBusPendingReply<bool> &reply) { return reply.value(); });
}

void BusHistorySource::setOptedOut(QObject *context, const QString &phone, bool isOptedOut,
                                   const SourceAnswer<bool> &answer)
{
    if (!ensureRunning(context, answer))
        return;
    const QString number = Bus::withoutNul(phone);
    ask(
        EngineConnection::List, context, answer,
        [&](MessagesBusInterface &messages) {
            return isOptedOut ? messages.AddOptOut(number) : messages.RemoveOptOut(number);
        },
        [](const QDBusPendingReply<bool> &reply) { return reply.value(); });
}

void BusHistorySource::send(QObject *context, const QString &phone, const QString &text,
                            const SourceAnswer<Sending> &answer)
{
    if (!ensureRunning(context, answer))
        return;
    await(m_engine.callManager(u"AddSMS"_s, {Bus::withoutNul(phone), Bus::withoutNul(text),
                                             Bus::dateText(QDateTime::currentDateTime())}),
          context, SourceAnswer<bool>([this, context, answer](const SourceResult<bool> &isQueued) {
              if (isQueued)
                  startSending(context, answer);
              else
                  answer(norvane::failed(isQueued.error()));
          }),
          isAnswered);
}

void BusHistorySource::startSending(QObject *context, const SourceAnswer<Sending> &answer)
{
    const auto start = [this, context, answer] {
        await(m_engine.callManager(u"StartEngine"_s), context,
              SourceAnswer<bool>([answer](const SourceResult<bool> &isStarted) {
                  answer(isStarted ? Sending::Underway : Sending::NotStarted);
              }),
              isAnswered);
    };
    await(m_engine.callManager(u"GetEngineStatus"_s), context,
          SourceAnswer<qint32>([answer, start](const SourceResult<qint32> &status) {
              if (!status)
                  answer(Sending::NotStarted);
              else if (*status == SMSManager::stopped)
                  start();
              else
                  answer(Sending::Underway);
          }),
          [](const QDBusPendingReply<qint32> &reply) { return reply.value(); });
}

} // namespace norvane
