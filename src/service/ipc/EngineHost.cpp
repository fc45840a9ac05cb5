#include "service/ipc/EngineHost.h"

#include "engine/contract/BusTypes.h"
#include "service/dispatch/Dispatcher.h"
#include "service/ipc/EngineFolder.h"
#include "service/ipc/EngineService.h"
#include "service/modem/QtSerialPortLine.h"
#include "service/platform/FileLock.h"
#include "service/store/Store.h"
#include "service/store/StoredPinGate.h"
#include "smsmanagerbusadaptor.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDebug>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QThread>

namespace {

constexpr int lockInterval = 100; // ms between two tries for the lock
constexpr int lockLimit = 10'000; // ms for which an engine that is ending is waited for
constexpr int endLimit = 20'000;  // ms for the part in progress when the engine is to end

bool otherEngineIsOnBus()
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    return bus.isConnected() &&
           bus.interface()->isServiceRegistered(QLatin1String(Bus::ServiceName));
}

} // namespace

EngineHost::EngineHost(QObject *parent) : QObject(parent)
{
    m_endLimit.setSingleShot(true);
    connect(&m_endLimit, &QTimer::timeout, qApp, &QCoreApplication::quit);
}

EngineHost::~EngineHost() = default;

EngineHost::Start EngineHost::start()
{
    Bus::registerTypes();
    const QString folder = EngineFolder::make();
    if (folder.isEmpty()) {
        qCritical() << "the folder of the engine's data can't be made";
        return Start::Failed;
    }
    if (!lockStore(folder))
        return Start::AlreadyThere;
    try {
        makeParts(EngineFolder::storeFile(folder));
        if (!enterBus())
            return Start::Failed;
        m_dispatcher->resume();
    } catch (const StoreFailure &failure) {
        qCritical().noquote() << "the store can't be used:" << failure.text();
        return Start::Failed;
    }
    return Start::Running;
}

bool EngineHost::lockStore(const QString &folder)
{
    m_lock = std::make_unique<FileLock>(EngineFolder::lockFile(folder));
    QElapsedTimer waited;
    waited.start();
    // An engine that has the lock and no name on the bus is on its way out, or on its way up.
    while (!m_lock->tryLock()) {
        if (otherEngineIsOnBus() || waited.hasExpired(lockLimit))
            return false;
        QThread::msleep(lockInterval);
    }
    return true;
}

void EngineHost::makeParts(const QString &storeFile)
{
    m_store = std::make_unique<Store>(storeFile);
    m_pinGate =
        std::make_unique<StoredPinGate>(*m_store, [this] { return m_clock.wallClockText(); });
    m_modem = std::make_unique<Modem>(std::make_unique<QtSerialPortLine>(), *m_pinGate);
    const RetryPolicy retries([] { return QRandomGenerator::global()->generateDouble(); });
    m_dispatcher = std::make_unique<Dispatcher>(*m_store, *m_modem, m_clock, retries);
    m_service =
        std::make_unique<EngineService>(QDBusConnection::sessionBus(), *m_store, *m_dispatcher);
    connect(m_dispatcher.get(), &Dispatcher::finished, qApp, &QCoreApplication::quit,
            Qt::QueuedConnection);
    new SMSManagerBusAdaptor(m_service.get());
}

bool EngineHost::enterBus()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        qCritical().noquote() << "no session bus:" << bus.lastError().message();
        return false;
    }
    bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                SLOT(busLost()));
    // The object stands before the name is there, so that the first call finds it.
    if (!bus.registerObject(QLatin1String(Bus::ObjectPath), m_service.get()) ||
        !bus.registerService(QLatin1String(Bus::ServiceName))) {
        qCritical().noquote() << "the name on the bus can't be had:" << bus.lastError().message();
        return false;
    }
    return true;
}

void EngineHost::busLost()
{
    // The part in progress takes what its answer takes: nobody presses for the end.
    qWarning() << "the session bus is gone";
    m_dispatcher->finish();
}

void EngineHost::end()
{
    if (m_endLimit.isActive())
        return;
    m_endLimit.start(endLimit);
    m_dispatcher->finish();
}
