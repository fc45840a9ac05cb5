#include "TovekSMService/host/EngineHost.h"

#include "TovekSMService/admin/ExitCodes.h"
#include "TovekSMService/bus/EngineService.h"
#include "TovekSMService/dispatch/Dispatcher.h"
#include "TovekSMService/dispatch/StoreMaker.h"
#include "TovekSMService/host/HookRunner.h"
#include "TovekSMService/host/StoredPinGate.h"
#include "TovekSMService/log/Categories.h"
#include "TovekSMService/modem/at/SerialLine.h"
#include "TovekSMService/modem/device/AtModem.h"
#include "TovekSMService/modem/device/ManagedModem.h"
#include "TovekSMService/modem/device/SelectedModem.h"
#include "TovekSMService/platform/FileLock.h"
#include "TovekSMService/store/DamagedStore.h"
#include "TovekSMService/store/PostgresDatabase.h"
#include "TovekSMService/store/QueueMove.h"
#include "TovekSMService/store/Store.h"
#include "contract/BusTypes.h"
#include "contract/ErrorCodes.h"
#include "messagesbusadaptor.h"
#include "smsmanagerbusadaptor.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QThread>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A connection that is made anew where an earlier one has ended, as the shared one isn't.
QDBusConnection connectToSystemBus()
{
    const QString name = u"modem manager"_s;
    QDBusConnection::disconnectFromBus(name);
    return QDBusConnection::connectToBus(QDBusConnection::SystemBus, name);
}

} // namespace

EngineHost::EngineHost(const EngineName &name, const Clock &clock, std::unique_ptr<SerialLine> line,
                       const EngineLimits &limits, QObject *parent)
    : QObject(parent), m_name(name), m_folder(name), m_limits(limits), m_clock(clock),
      m_line(std::move(line)), m_openAgain(clock.time()), m_reopenAgain(clock.time()),
      m_endLimit(clock.time())
{
    connect(&m_endLimit, &Timer::timeout, qApp, [] {
        qCWarning(logHost) << "the part in progress did not end within its time and is left";
        QCoreApplication::quit();
    });
    connect(&m_openAgain, &Timer::timeout, this, [this] {
        if (openStore())
            resume();
        else
            QCoreApplication::exit(ExitCode::storeTooNew);
    });
    connect(&m_reopenAgain, &Timer::timeout, this,
            [this] { reopenStore(std::exchange(m_reopenAsDamaged, false)); });
}

EngineHost::~EngineHost() = default;

EngineHost::Start EngineHost::start()
{
    Bus::registerTypes();
    if (!m_folder.make()) {
        qCCritical(logHost) << "the folder of the engine's data can't be made";
        return Start::Failed;
    }
    if (const Start locked = lockStore(); locked != Start::Running)
        return locked;
    makeParts();
    if (!openStore())
        return Start::StoreTooNew;
    if (!enterBus())
        return Start::Failed;
    resume();
    openShared();
    return Start::Running;
}

/// The database comes when it does: the engine is up without it.
void EngineHost::openShared()
{
    if (!m_store->isShared())
        return;
    warnOfLeftQueue();
    if (const QString refusal = m_store->refusal(); !refusal.isEmpty())
        m_store->sharedDatabase()->refuse(StoreFailure(StoreFailure::Kind::Other, refusal));
    else
        m_store->sharedDatabase()->keepOpen();
}

/// What waits in the file is not sent from there any more.
void EngineHost::warnOfLeftQueue()
{
    const int left = QueueMove::left(*m_store).value_or(0);
    if (left > 0)
        m_dispatcher->warn(ErrorCode::fail,
                           u"%1 messages wait in the engine's own file; --move-queue database "
                           "carries them into the database"_s.arg(left));
}

EngineHost::Start EngineHost::lockStore()
{
    auto lock = FileLock::open(m_folder.lockFile());
    if (!lock) {
        qCCritical(logHost).noquote() << "the lock in" << m_folder.path() << "can't be made";
        return Start::Failed;
    }
    m_lock = *std::move(lock);
    QElapsedTimer waited;
    waited.start();
    // An engine that has the lock and no name on this bus is on its way out, or on its way up. The
    // one of a session that has ended may be sending still.
    while (!m_lock->tryLock()) {
        if (isOnBus() || waited.hasExpired(m_limits.lockMs))
            return Start::AlreadyThere;
        QThread::msleep(static_cast<unsigned long>(m_limits.lockIntervalMs));
    }
    return Start::Running;
}

/// True while an engine of this name is there, which before enterBus() is another one.
bool EngineHost::isOnBus() const
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    return bus.isConnected() && bus.interface()->isServiceRegistered(m_name.busName());
}

void EngineHost::makeParts()
{
    const EngineSettings settings = EngineSettings::load(m_name);
    m_store = makeStore(settings, m_name, m_folder, m_clock);
    m_pinGate = std::make_unique<StoredPinGate>(
        m_store->pins(), [this] { return m_clock.wallClockText(); }, m_clock.time());
    m_modem = std::make_unique<SelectedModem>(
        std::make_unique<AtModem>(
            std::move(m_line), *m_pinGate, settings.modemTimings(), nullptr,
            [] { return SerialDevices::serialPorts(); }, m_clock.time()),
        std::make_unique<ManagedModem>(connectToSystemBus, *m_pinGate, settings.modemTimings(),
                                       m_clock.time()));
    const RetryPolicy retries([] { return QRandomGenerator::global()->generateDouble(); },
                              settings.retryTimes());
    m_dispatcher = std::make_unique<Dispatcher>(*m_store, *m_modem, m_clock, retries,
                                                DispatcherTimings{}, settings);
    m_service = std::make_unique<EngineService>(QDBusConnection::sessionBus(), *m_store,
                                                *m_dispatcher, m_clock);
    runHooks(settings);
    connect(m_dispatcher.get(), &Dispatcher::finished, this, &EngineHost::leaveBus,
            Qt::QueuedConnection);
    connect(m_dispatcher.get(), &Dispatcher::warningHandled, this,
            [this](int, const QString &text) {
                if (text == m_reportedDamage)
                    DamagedStore::markAcknowledged(m_folder.path());
            });
    connect(m_dispatcher.get(), &Dispatcher::storeLost, this, &EngineHost::reopenStore,
            Qt::QueuedConnection);
    new SMSManagerBusAdaptor(m_service.get());
    new MessagesBusAdaptor(m_service.get());
}

/// Lets an administrator's own commands follow what the network says.
void EngineHost::runHooks(const EngineSettings &settings)
{
    m_hooks = std::make_unique<HookRunner>(m_clock.time());
    connect(m_dispatcher.get(), &Dispatcher::received, m_hooks.get(),
            [this, command = settings.onReceived](const ReceivedMessage &message) {
                m_hooks->run(command, {{u"NORVANE_EVENT"_s, u"received"_s},
                                       {u"NORVANE_ID"_s, QString::number(message.id)},
                                       {u"NORVANE_PHONE"_s, message.phone},
                                       {u"NORVANE_TEXT"_s, message.text},
                                       {u"NORVANE_AT"_s, message.at},
                                       {u"NORVANE_SENT_AT"_s, message.sentAt}});
            });
    connect(m_dispatcher.get(), &Dispatcher::deliveryChanged, m_hooks.get(),
            [this, command = settings.onDelivery](const DeliveryChange &change) {
                m_hooks->run(command, {{u"NORVANE_EVENT"_s, u"delivery"_s},
                                       {u"NORVANE_ID"_s, QString::number(change.message)},
                                       {u"NORVANE_STATE"_s, QLatin1String(nameOf(change.state))},
                                       {u"NORVANE_AT"_s, change.at}});
            });
}

bool EngineHost::enterBus()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        qCCritical(logBus).noquote() << "no session bus:" << bus.lastError().message();
        return false;
    }
    bus.connect(QString(), u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s,
                u"Disconnected"_s, this, SLOT(busLost()));
    // The object stands before the name is there, so that the first call finds it.
    if (!bus.registerObject(QLatin1String(Bus::objectPath), m_service.get()) ||
        !bus.registerService(m_name.busName())) {
        qCCritical(logBus).noquote()
            << "the name on the bus can't be had:" << bus.lastError().message();
        return false;
    }
    return true;
}

bool EngineHost::openStore()
{
    DamagedStore::finishMove(m_store->file().file());
    const StoreResult<> opened = m_store->open();
    if (opened) {
        storeIsBack();
        return true;
    }
    const StoreFailure &failure = opened.error();
    if (failure.kind() == StoreFailure::Kind::TooNew) {
        qCCritical(logStore).noquote() << "the store is left as it is:" << failure.text();
        return false;
    }
    if (failure.kind() != StoreFailure::Kind::Corrupt || !beginAnew(failure.text()))
        waitForStore(failure);
    return true;
}

/// @param damaged  a page of it could not be understood; opening it finds most damage, and what it
///                 doesn't find shows by being met again
void EngineHost::reopenStore(bool damaged)
{
    if (m_dispatcher->isSending()) {
        m_reopenAsDamaged |= damaged;
        m_reopenAgain.start(m_limits.partIntervalMs);
        return;
    }
    qCWarning(logStore) << "the store is opened anew";
    if (damaged && std::exchange(m_damageMet, true)) {
        m_store->close();
        if (!beginAnew(u"damage was met again and again"_s))
            m_openAgain.start(m_limits.openAgainMs);
    } else if (!openStore()) {
        QCoreApplication::exit(ExitCode::storeTooNew);
    }
}

bool EngineHost::beginAnew(const QString &reason)
{
    qCCritical(logStore).noquote() << "the store is damaged and is set aside:" << reason;
    // A file that is open goes on being written to under its new name.
    m_service->suspendHistory();
    const auto goOn = qScopeGuard([this] { m_service->resumeHistory(); });
    if (!DamagedStore::setAside(m_store->file().file(), m_clock.wallClock(), reason))
        return false;
    m_damageMet = false;
    reportDamage();
    const StoreResult<> begun = m_store->open().and_then([this] {
        // Beyond every id that a console may still know of the old one.
        return m_store->file().beginIdsAt(m_clock.wallClock().toMSecsSinceEpoch());
    });
    if (!begun) {
        qCCritical(logStore).noquote() << "no new store can be begun:" << begun.error().text();
        return false;
    }
    if (m_resumed)
        m_dispatcher->storeReplaced();
    storeIsBack();
    return true;
}

void EngineHost::waitForStore(const StoreFailure &failure)
{
    m_openAgain.start(m_limits.openAgainMs);
    if (!std::exchange(m_storeMissed, true))
        m_dispatcher->warnOfStore(failure.text());
}

void EngineHost::storeIsBack()
{
    reportDamage();
    if (!std::exchange(m_storeMissed, false))
        return;
    qCInfo(logStore) << "the store can be used again";
    m_dispatcher->clearStoreFault();
    resume();
    m_dispatcher->noticeQueueChange();
}

void EngineHost::reportDamage()
{
    const std::optional<QString> damage = DamagedStore::unacknowledged(m_folder.path());
    if (!damage || *damage == m_reportedDamage)
        return;
    m_reportedDamage = *damage;
    m_dispatcher->warn(ErrorCode::mapFile, *damage);
}

void EngineHost::resume()
{
    if (m_resumed || m_store->file().access() == StoreDatabase::Access::None)
        return;
    const StoreResult<> resumed = m_dispatcher->resume();
    m_resumed = resumed.has_value();
    if (!resumed)
        waitForStore(resumed.error());
}

void EngineHost::busLost()
{
    qCWarning(logBus) << "the session bus is gone";
    end();
}

/// Calls that came before the name was given back are answered. Those behind it start the next
/// engine.
void EngineHost::leaveBus()
{
    QDBusConnection::sessionBus().unregisterService(m_name.busName());
    QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
}

void EngineHost::end()
{
    if (m_endLimit.isActive())
        return;
    m_endLimit.start(m_limits.endMs);
    m_dispatcher->finish();
}

} // namespace norvane
