#include "NorvaneSMS/engine/SMSManagerProxy.h"

#include "SMSManagerBusInterface.h"
#include "common/FailureNumbers.h"
#include "contract/BusTypes.h"
#include "foundation/FailureTexts.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusServiceWatcher>
#include <QEvent>
#include <QScopeGuard>
#include <QUuid>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

bool engineHadVanished(const QDBusError &error)
{
    return error.type() == QDBusError::ServiceUnknown ||
           error.name() == "org.freedesktop.DBus.Error.NameHasNoOwner"_L1;
}

/// Whether the engine may have carried out the call all the same.
bool answerWasLost(const QDBusError &error)
{
    return error.type() == QDBusError::NoReply || error.type() == QDBusError::Timeout ||
           error.type() == QDBusError::TimedOut;
}

[[noreturn]] void raiseCallFailed(const char *operation, const QDBusError &error)
{
    throw NumberedFailure(Failure::RemoteServerUnavailable,
                          u"SMSManager."_s + QLatin1String(operation),
                          FailureText::engineDoesNotAnswer(error.message()));
}

} // namespace

SMSManagerProxy::SMSManagerProxy(EngineLauncher &launcher, QObject *parent)
    : SMSManager(parent), m_launcher(launcher),
      m_connectionName(QUuid::createUuid().toString(QUuid::WithoutBraces)),
      m_callTimeout(Bus::callTimeout)
{
    Bus::registerTypes();
    m_launcher.ensureRunning();
    m_engine = std::make_unique<SMSManagerBusInterface>(
        QLatin1String(Bus::serviceName), QLatin1String(Bus::objectPath),
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_connectionName));

    connectEvents();

    auto *const owners =
        new QDBusServiceWatcher(QLatin1String(Bus::serviceName), m_engine->connection(),
                                QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(owners, &QDBusServiceWatcher::serviceOwnerChanged, this,
            &SMSManagerProxy::engineChanged);
    attachTo(engineOwner());
}

SMSManagerProxy::~SMSManagerProxy()
{
    m_engine.reset();
    QDBusConnection::disconnectFromBus(m_connectionName);
}

void SMSManagerProxy::connectEvents()
{
    SMSManagerBusInterface *const engine = m_engine.get();
    connect(engine, &SMSManagerBusInterface::DeviceInfo, this, &SMSManager::DeviceInfo);
    connect(engine, &SMSManagerBusInterface::EngineStatus, this, &SMSManager::EngineStatus);
    connect(engine, &SMSManagerBusInterface::SMSQueueChanged, this,
            [this](int currentSize) { deliver([&] { Q_EMIT SMSQueueChanged(currentSize); }); });
    connect(engine, &SMSManagerBusInterface::SMSSent, this,
            [this](const QString &phone, const QString &message, int queueCount) {
                deliver([&] { Q_EMIT SMSSent(phone, message, queueCount); });
            });
    connect(engine, &SMSManagerBusInterface::SMSSentFailed, this,
            [this](const QString &phone, const QString &message, int errorCode) {
                deliver([&] { Q_EMIT SMSSentFailed(phone, message, errorCode); });
            });
    connect(engine, &SMSManagerBusInterface::WarningError, this,
            [this](int errCode, const QString &extraInfo) {
                deliver([&] { Q_EMIT WarningError(errCode, extraInfo); });
            });
    // Comes behind both, so that their handlers have returned.
    connect(engine, &SMSManagerBusInterface::ReportRaised, this, &SMSManagerProxy::acknowledge);
}

/// An engine that has been started anew, by whatever program, doesn't know this listener. One that
/// has left the bus is not running; the next call starts it, and it runs again if it was meant to.
void SMSManagerProxy::engineChanged(const QString &, const QString &formerOwner,
                                    const QString &owner)
{
    if (formerOwner == m_attachedTo) { // and not where a call has attached to a newer one since
        m_attachedTo.clear();
        Q_EMIT EngineStatus(stopped);
    }
    attachTo(owner);
}

QString SMSManagerProxy::engineOwner() const
{
    return m_engine->connection().interface()->serviceOwner(QLatin1String(Bus::serviceName));
}

void SMSManagerProxy::attachTo(const QString &owner)
{
    if (!owner.isEmpty() && std::exchange(m_attachedTo, owner) != owner)
        attach();
}

void SMSManagerProxy::attach()
{
    m_engine->setTimeout(m_callTimeout);
    // An engine that is older than this console knows no acknowledgements: what it raises counts as
    // handled.
    m_engine->AcknowledgeReports({});
    m_engine->ReportState();
}

template <typename Raise>
void SMSManagerProxy::deliver(Raise &&raise)
{
    ++m_handlersRunning;
    const auto leave = qScopeGuard([this] { --m_handlersRunning; });
    raise();
}

/// An event loop inside a handler, such as that of the fatal report, delivers this as well. The
/// report that is being handled at that moment may never be handled to its end, so it isn't
/// acknowledged and the engine repeats it.
void SMSManagerProxy::acknowledge(qlonglong report)
{
    if (m_handlersRunning == 0)
        m_engine->AcknowledgeReports({report});
}

template <typename Call>
auto SMSManagerProxy::ask(int timeLimit, Call &&start)
{
    m_engine->setTimeout(timeLimit);
    auto reply = start();
    reply.waitForFinished();
    if (reply.isError() && engineHadVanished(reply.error())) {
        m_launcher.ensureRunning();
        // Before the call, so that this object gets the events that the call raises.
        attachTo(engineOwner());
        m_engine->setTimeout(timeLimit);
        reply = start();
        reply.waitForFinished();
    }
    return reply;
}

template <typename Call>
auto SMSManagerProxy::call(const char *operation, int timeLimit, Call &&start)
{
    auto reply = ask(timeLimit, std::forward<Call>(start));
    if (reply.isError())
        raiseCallFailed(operation, reply.error());
    return reply;
}

template <typename Call>
auto SMSManagerProxy::call(const char *operation, Call &&start)
{
    return call(operation, m_callTimeout, std::forward<Call>(start));
}

void SMSManagerProxy::StartEngine()
{
    call("StartEngine", [this] { return m_engine->StartEngine(); });
}

void SMSManagerProxy::StopEngine()
{
    call("StopEngine", [this] { return m_engine->StopEngine(); });
}

qint32 SMSManagerProxy::TestDevice()
{
    attachTo(engineOwner()); // the bus may have brought the engine back in an earlier call
    return call("TestDevice", Bus::testDeviceTimeout, [this] { return m_engine->TestDevice(); })
        .value();
}

qint32 SMSManagerProxy::GetEngineStatus()
{
    return call("GetEngineStatus", [this] { return m_engine->GetEngineStatus(); }).value();
}

void SMSManagerProxy::AddSMS(const QString &phone, const QString &message,
                             const QDateTime &deliveryDate)
{
    const QueueRow row{Bus::dateText(deliveryDate), Bus::withoutNul(phone),
                       Bus::withoutNul(message), 0};
    if (m_batch)
        m_batch->append(row);
    else
        addNow(row);
}

void SMSManagerProxy::addNow(const QueueRow &message)
{
    call("AddSMS",
         [&] { return m_engine->AddSMS(message.phone, message.message, message.deliveryDate); });
}

void SMSManagerProxy::BeginBatch()
{
    m_batch.emplace();
}

qsizetype SMSManagerProxy::CommitBatch()
{
    const BusQueueRows messages = std::exchange(m_batch, std::nullopt).value_or(BusQueueRows());
    if (messages.isEmpty())
        return 0;
    const QString batch = QUuid::createUuid().toString(QUuid::WithoutBraces);
    const auto add = [&] { return m_engine->AddSMSBatch(batch, messages); };
    auto stored = ask(m_callTimeout, add);
    if (stored.isError() && stored.error().type() == QDBusError::UnknownMethod)
        return addOneByOne(messages);
    // The engine knows by the batch's name what it has taken of it, also one that comes up anew.
    if (stored.isError() && answerWasLost(stored.error()))
        stored = ask(m_callTimeout, add);
    if (stored.isError())
        raiseCallFailed("AddSMS", stored.error());
    return stored.value();
}

qsizetype SMSManagerProxy::addOneByOne(const QList<QueueRow> &messages)
{
    qsizetype added = 0;
    try {
        for (const QueueRow &message : messages) {
            addNow(message);
            ++added;
        }
    } catch (const NumberedFailure &) { // the caller sees it by the number of those before it
    }
    return added;
}

void SMSManagerProxy::AddSMSList(const SMSList &list, const QDateTime &deliveryDate)
{
    BusSMSList entries = list.entries();
    for (SMSList::Entry &entry : entries)
        entry = {Bus::withoutNul(entry.phone), Bus::withoutNul(entry.message)};
    call("AddSMSList", [&] { return m_engine->AddSMSList(entries, Bus::dateText(deliveryDate)); });
}

qint32 SMSManagerProxy::GetQueueSize()
{
    return call("GetQueueSize", [this] { return m_engine->GetQueueSize(); }).value();
}

void SMSManagerProxy::ClearQueue()
{
    call("ClearQueue", [this] { return m_engine->ClearQueue(); });
}

QueueRecordSet SMSManagerProxy::GetQueue()
{
    auto changes =
        ask(m_callTimeout, [this] { return m_engine->GetQueueChanges(m_replica.revision()); });
    if (changes.isError() && changes.error().type() == QDBusError::UnknownMethod) {
        // An engine that is older than this console doesn't report changes.
        m_replica.reset(0, fetchQueue());
        return QueueRecordSet(m_replica.rows());
    }
    if (changes.isError())
        raiseCallFailed("GetQueue", changes.error());
    const quint64 revision = changes.argumentAt<0>();
    if (changes.argumentAt<1>())
        m_replica.reset(revision, fetchQueue());
    else
        m_replica.apply(revision, changes.argumentAt<2>(), changes.argumentAt<3>());
    return QueueRecordSet(m_replica.rows());
}

QList<QueueRow> SMSManagerProxy::fetchQueue()
{
    BusQueueRows rows;
    quint64 snapshot = 0;
    quint32 total = 0;
    do {
        const auto first = static_cast<quint32>(rows.size());
        auto page = call("GetQueue", [&] { return m_engine->GetQueue(snapshot, first); });
        const quint64 taken = page.argumentAt<0>();
        if (taken != snapshot) // a first page, or an engine that came up anew between two pages
            rows.clear();
        snapshot = taken;
        total = page.argumentAt<1>();
        const BusQueueRows received = page.argumentAt<2>();
        if (received.isEmpty())
            break;
        rows += received;
    } while (static_cast<quint32>(rows.size()) < total);
    return rows;
}

void SMSManagerProxy::UpdateQueue(const QueueRecordSet &records)
{
    BusQueueRows changed = records.changedRows();
    for (QueueRow &row : changed) {
        row.phone = Bus::withoutNul(row.phone);
        row.message = Bus::withoutNul(row.message);
    }
    call("UpdateQueue", [&] { return m_engine->UpdateQueue(changed, records.deletedIds()); });
}

void SMSManagerProxy::ApplySettings()
{
    call("ApplySettings", [this] { return m_engine->ApplySettings(); });
}

DeviceSettings SMSManagerProxy::GetDeviceSettings()
{
    return call("GetDeviceSettings", [this] { return m_engine->GetDeviceSettings(); }).value();
}

bool SMSManagerProxy::SetDeviceSettings(const DeviceSettings &settings)
{
    DeviceSettings clean = settings;
    clean.PINCode = Bus::withoutNul(settings.PINCode);
    clean.Parameter = Bus::withoutNul(settings.Parameter);
    return call("SetDeviceSettings", [&] { return m_engine->SetDeviceSettings(clean); }).value();
}

void SMSManagerProxy::DeliverPendingEvents()
{
    QCoreApplication::sendPostedEvents(m_engine.get(), QEvent::MetaCall);
}

} // namespace norvane
