#include "TovekSMService/bus/EngineService.h"

#include "TovekSMService/dispatch/Dispatcher.h"
#include "TovekSMService/log/Categories.h"
#include "TovekSMService/store/Store.h"
#include "TovekSMService/store/StoredBatches.h"
#include "contract/ErrorCodes.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QUuid>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The output of a call that has none.
QVariantList noArguments()
{
    return {};
}

/// Of a call that adds messages: however often it is tried, they are added once.
QString newToken()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

} // namespace

EngineService::EngineService(const QDBusConnection &bus, Store &store, Dispatcher &dispatcher,
                             const Clock &clock, QObject *parent)
    : MessagesService(bus, store, dispatcher, clock, parent), m_pacer(clock.time())
{
    m_callers.setConnection(bus);
    m_callers.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    connect(&m_callers, &QDBusServiceWatcher::serviceUnregistered, this,
            &EngineService::listenerLeft);
    connect(&m_pacer, &QueueChangePacer::report, this,
            [this] { Q_EMIT SMSQueueChanged(m_store.queue().size()); });

    connect(&dispatcher, &Dispatcher::deviceInfo, this,
            [this](const DeviceDetails &details) { reportDevice(QString(), details); });
    connect(&dispatcher, &Dispatcher::statusChanged, this, &EngineService::EngineStatus);
    connect(&dispatcher, &Dispatcher::queueChanged, &m_pacer, &QueueChangePacer::queueChanged);
    connect(&dispatcher, &Dispatcher::queueOpened, this, &EngineService::reportAwaitedFailures);
    connect(&dispatcher, &Dispatcher::sent, this, &EngineService::SMSSent);
    connect(&dispatcher, &Dispatcher::sendingFailed, this, &EngineService::SMSSentFailed);
    connect(&dispatcher, &Dispatcher::warning, this, &EngineService::WarningError);
    connect(&dispatcher, &Dispatcher::reportRaised, this, &EngineService::onReportRaised);
    connect(&dispatcher, &Dispatcher::warned, this, [this](int code, const QString &text) {
        m_lastError = {code, text, m_clock.wallClockText()};
    });
}

void EngineService::StartEngine()
{
    carryOut([this] { return m_dispatcher.start().map(noArguments); });
}

void EngineService::StopEngine()
{
    carryOut([this] { return m_dispatcher.stop().map(noArguments); });
}

int EngineService::TestDevice()
{
    setDelayedReply(true);
    m_dispatcher.testDevice([bus = connection(), call = message()](qint32 result) {
        bus.send(call.createReply(result));
    });
    return {}; // not sent
}

int EngineService::GetEngineStatus() const
{
    return m_dispatcher.status();
}

void EngineService::AddSMS(const QString &phone, const QString &message,
                           const QString &deliveryDate)
{
    carryOut([this, token = newToken(), row = QueueRow{deliveryDate, phone, message, 0}] {
        return m_store.queue()
            .once(token, [&] { return m_store.queue().add(QList<QueueRow>{row}); })
            .map([this] {
                m_dispatcher.noticeQueueChange();
                return QVariantList();
            });
    });
}

void EngineService::AddSMSList(const BusSMSList &list, const QString &deliveryDate)
{
    carryOut([this, token = newToken(), list, deliveryDate] {
        return m_dispatcher.addList(token, list, deliveryDate).map(noArguments);
    });
}

uint EngineService::AddSMSBatch(const QString &batch, const BusQueueRows &messages)
{
    Deadline deadline(m_clock.time());
    deadline.setRemainingTime(StoreCalls::retryTime);
    carryOut([this, batch, messages, deadline]() -> StoreResult<QVariantList> {
        const StoreResult<> added = addBatch(batch, messages);
        if (!added && !deadline.hasExpired())
            return failed(added.error());
        return StoredBatches(m_store.queue()).stored(batch).map([](qsizetype stored) {
            return QVariantList{static_cast<uint>(stored)};
        });
    });
    return {}; // not sent
}

StoreResult<> EngineService::addBatch(const QString &batch, const BusQueueRows &messages)
{
    const qint32 before = m_store.queue().size();
    StoreResult<> added = StoredBatches(m_store.queue()).add(batch, messages);
    if (m_store.queue().size() != before) // also where the disk took a part of them
        m_dispatcher.noticeQueueChange();
    return added;
}

int EngineService::GetQueueSize() const
{
    return m_store.queue().size();
}

void EngineService::ClearQueue()
{
    carryOut([this] {
        return m_store.queue().clear().map([this] {
            m_dispatcher.noticeQueueChange();
            return QVariantList();
        });
    });
}

StoreResult<QVariantList> EngineService::queuePage(const QString &caller, quint64 snapshot,
                                                   quint32 first)
{
    QueueSnapshots::Page page = m_snapshots.page(caller, snapshot, first);
    if (page.snapshot == 0) {
        const StoreResult<QList<QueueRow>> rows = m_store.queue().rows();
        if (!rows)
            return failed(rows.error());
        page = m_snapshots.page(caller, m_snapshots.begin(caller, *rows), 0);
    }
    if (page.isLast)
        m_pacer.listenerFetched(caller);
    return QVariantList{QVariant(page.snapshot), QVariant(page.total),
                        QVariant::fromValue(page.rows)};
}

qulonglong EngineService::GetQueue(qulonglong snapshot, uint first, uint & /*total*/,
                                   BusQueueRows & /*rows*/)
{
    const QString caller = message().service();
    watch(caller);
    carryOut([this, caller, snapshot, first] { return queuePage(caller, snapshot, first); });
    return {}; // not sent
}

StoreResult<QVariantList> EngineService::queueChanges(const QString &caller, quint64 revision)
{
    const quint64 now = m_store.queue().journal().revision();
    const auto ids = m_store.queue().journal().since(revision);
    if (!ids)
        return QVariantList{QVariant(now), true, QVariant::fromValue(BusQueueRows()),
                            QVariant::fromValue(QList<qlonglong>())};
    return m_store.queue().rows(*ids).map([&](const BusQueueRows &present) {
        QSet<qint64> gone(ids->cbegin(), ids->cend());
        for (const QueueRow &row : present)
            gone.remove(row.id);
        m_pacer.listenerFetched(caller);
        return QVariantList{QVariant(now), false, QVariant::fromValue(present),
                            QVariant::fromValue(QList<qlonglong>(gone.cbegin(), gone.cend()))};
    });
}

qulonglong EngineService::GetQueueChanges(qulonglong revision, bool & /*whole*/,
                                          BusQueueRows & /*present*/, QList<qlonglong> & /*gone*/)
{
    const QString caller = message().service();
    carryOut([this, caller, revision] { return queueChanges(caller, revision); });
    return {}; // not sent
}

void EngineService::UpdateQueue(const BusQueueRows &changed, const QList<qlonglong> &deleted)
{
    carryOut([this, changed, deleted] {
        return m_store.queue().update(changed, deleted).map([this](bool inTime) {
            m_dispatcher.noticeQueueChange();
            if (!inTime)
                m_dispatcher.warnTooLate();
            return QVariantList();
        });
    });
}

void EngineService::ApplySettings()
{
    carryOut([this] { return m_dispatcher.applySettings().map(noArguments); });
}

DeviceSettings EngineService::GetDeviceSettings()
{
    carryOut([this] {
        return m_store.settings().deviceSettings().map([](const DeviceSettings &settings) {
            return QVariantList{QVariant::fromValue(settings)};
        });
    });
    return {}; // not sent
}

bool EngineService::SetDeviceSettings(const DeviceSettings &settings)
{
    carryOut(
        [this, settings] {
            return m_store.settings().setDeviceSettings(settings).map(
                [] { return QVariantList{true}; });
        },
        QVariantList{false});
    return {}; // not sent
}

void EngineService::ReportState()
{
    const QString listener = message().service();
    watch(listener);
    m_acknowledgements.addListener(listener);
    m_listeners.insert(listener);
    m_pacer.listenerCame(listener);
    m_dispatcher.setHasListeners(true);

    reportTo(listener, u"EngineStatus"_s, {m_dispatcher.status()});
    reportTo(listener, u"SMSQueueChanged"_s, {m_store.queue().size()});
    if (const auto &details = m_dispatcher.knownDevice())
        reportDevice(listener, *details);
    reportFailures(listener);
    reportWarnings(listener);
}

void EngineService::AcknowledgeReports(const QList<qlonglong> &reports)
{
    const QString caller = message().service();
    watch(caller);
    m_acknowledgements.addAcknowledger(caller);
    for (const qlonglong report : reports) {
        if (m_acknowledgements.acknowledge(caller, report))
            m_dispatcher.noteHandled(report);
    }
}

QVariantMap EngineService::GetState() const
{
    QVariantMap state = EngineState::ofRunning(m_store, m_dispatcher, m_lastError);
    state.insert(u"listeners"_s, m_acknowledgements.listeners());
    return state;
}

void EngineService::reportFailures(const QString &listener)
{
    const StoreResult<QList<Outcome>> failures = m_store.outcomes().unreportedFailures();
    if (!failures) {
        // They are kept, and told when they can be read, or to the next one who asks.
        qCWarning(logBus) << "failures could not be reported:" << failures.error().text();
        m_awaitingFailures.insert(listener);
        return;
    }
    for (const Outcome &outcome : *failures) {
        if (m_dispatcher.acknowledgedOutcomes().contains(outcome.id) ||
            m_acknowledgements.isPending(listener, outcome.id))
            continue;
        reportTo(listener, u"SMSSentFailed"_s, {outcome.phone, outcome.text, outcome.code});
        if (outcome.code == ErrorCode::noRespond)
            reportTo(listener, u"WarningError"_s,
                     {outcome.code, Dispatcher::doubtOf(outcome.phone)});
        numberReport(listener, outcome.id);
    }
}

void EngineService::reportAwaitedFailures()
{
    // Failures may have come to this engine from one that was given up.
    const QSet<QString> listeners = std::exchange(m_awaitingFailures, {}) | m_listeners;
    for (const QString &listener : listeners)
        reportFailures(listener);
}

/// Those that nobody has handled yet, and those of a fault that is still active, whoever handled
/// them.
void EngineService::reportWarnings(const QString &listener)
{
    QList<Dispatcher::Warning> standing = m_dispatcher.activeFaults();
    // A copy, as a listener that never acknowledges takes them out of the list.
    const QList<UnacknowledgedWarnings::Entry> entries =
        m_dispatcher.unacknowledgedWarnings().entries();
    for (const UnacknowledgedWarnings::Entry &entry : entries) {
        standing.removeAll(entry.warning);
        if (m_acknowledgements.isPending(listener, entry.report))
            continue;
        reportWarning(listener, entry.warning);
        numberReport(listener, entry.report);
    }
    for (const Dispatcher::Warning &fault : standing)
        reportWarning(listener, fault);
}

void EngineService::reportWarning(const QString &listener, const Dispatcher::Warning &warning)
{
    reportTo(listener, u"WarningError"_s, {warning.code, warning.text});
}

void EngineService::numberReport(const QString &listener, qint64 report)
{
    reportTo(listener, u"ReportRaised"_s, {QVariant(report)});
    if (m_acknowledgements.raisedTo(listener, report))
        m_dispatcher.noteHandled(report);
}

void EngineService::onReportRaised(qint64 report)
{
    Q_EMIT ReportRaised(report);
    if (m_acknowledgements.raisedToAll(report))
        m_dispatcher.noteHandled(report);
}

void EngineService::watch(const QString &caller)
{
    if (m_callers.watchedServices().contains(caller))
        return;
    m_callers.addWatchedService(caller);
    // One that left before it was watched leaves no word behind.
    QDBusMessage question =
        QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                       u"org.freedesktop.DBus"_s, u"NameHasOwner"_s);
    question.setArguments({caller});
    auto *const answer = new QDBusPendingCallWatcher(m_bus.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, caller] {
        answer->deleteLater();
        const QDBusPendingReply<bool> isThere = *answer;
        if (isThere.isValid() && !isThere.value())
            listenerLeft(caller);
    });
}

void EngineService::listenerLeft(const QString &listener)
{
    m_awaitingFailures.remove(listener);
    m_listeners.remove(listener);
    m_callers.removeWatchedService(listener);
    m_acknowledgements.removeCaller(listener);
    m_pacer.listenerLeft(listener);
    m_snapshots.drop(listener);
    m_dispatcher.setHasListeners(m_acknowledgements.listeners() > 0);
}

void EngineService::reportDevice(const QString &listener, const DeviceDetails &details)
{
    reportTo(listener, u"DeviceInfo"_s,
             {details.manufacturer, details.model, details.imei, details.networkInfo,
              details.battery, details.signal, details.firmware, details.time, details.smsc,
              details.hardware});
}

void EngineService::reportTo(const QString &listener, const QString &event,
                             const QVariantList &arguments)
{
    QDBusMessage report = QDBusMessage::createTargetedSignal(
        listener, QLatin1String(Bus::objectPath), QLatin1String(Bus::interfaceName), event);
    report.setArguments(arguments);
    m_bus.send(report);
}

} // namespace norvane
