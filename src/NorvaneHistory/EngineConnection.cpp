#include "NorvaneHistory/EngineConnection.h"

#include "MessagesBusInterface.h"
#include "common/NumberedFailure.h"
#include "contract/BusTypes.h"
#include "foundation/EngineLauncher.h"
#include "foundation/FailureTexts.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QDBusConnectionInterface>
#include <QDBusServiceWatcher>
#include <QUuid>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QDBusConnection connectAs(const QString &name)
{
    return QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
}

} // namespace

EngineConnection::EngineConnection(const QDBusConnection &bus, EngineLauncher &launcher,
                                   QObject *parent)
    : QObject(parent), m_launcher(launcher),
      m_name(QUuid::createUuid().toString(QUuid::WithoutBraces)),
      m_buses{bus, connectAs(m_name + u" answers"_s), connectAs(m_name + u" walk"_s)},
      m_absence{SourceFailure::Kind::NoEngine, GS(TextId::EngineNotThere)}
{
    Bus::registerTypes();
    auto *const owners = new QDBusServiceWatcher(QLatin1String(Bus::serviceName), bus,
                                                 QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(owners, &QDBusServiceWatcher::serviceOwnerChanged, this,
            &EngineConnection::followOwner);
}

EngineConnection::~EngineConnection()
{
    m_messages = {};
    for (const Caller caller : {Answers, Walk})
        QDBusConnection::disconnectFromBus(m_buses.at(caller).name());
}

SourceResult<bool> EngineConnection::ensureRunning()
{
    try {
        m_launcher.ensureRunning();
    } catch (const NumberedFailure &failure) {
        m_absence.text = failure.description();
        return norvane::failed(m_absence);
    }
    const QString owner = ownerOnBus();
    if (owner.isEmpty()) {
        m_absence.text = FailureText::engineNotStarted(FailureText::engineEnded());
        return norvane::failed(m_absence);
    }
    adopt(owner);
    return true;
}

QString EngineConnection::ownerOnBus() const
{
    return m_buses.at(List).interface()->serviceOwner(QLatin1String(Bus::serviceName));
}

/// What the bus tells may be behind: of a start of our own too, which ensureRunning() knows before.
void EngineConnection::followOwner()
{
    const QString present = ownerOnBus();
    if (present == m_owner)
        return;
    if (!present.isEmpty()) {
        adopt(present);
        Q_EMIT appeared();
        return;
    }
    m_owner.clear();
    m_messages = {};
    m_absence.text = GS(TextId::EngineNotThere);
    Q_EMIT gone();
}

void EngineConnection::adopt(const QString &owner)
{
    if (owner == m_owner)
        return;
    m_owner = owner;
    for (std::size_t caller = 0; caller < m_messages.size(); ++caller) {
        auto &messages = m_messages.at(caller);
        messages = std::make_unique<MessagesBusInterface>(owner, QLatin1String(Bus::objectPath),
                                                          m_buses.at(caller));
        messages->setTimeout(Bus::callTimeout);
    }
    connect(messages(List), &MessagesBusInterface::HistoryChanged, this,
            &EngineConnection::historyChanged);
}

QDBusPendingCall EngineConnection::callManager(const QString &operation,
                                               const QVariantList &arguments)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        m_owner, QLatin1String(Bus::objectPath), QLatin1String(Bus::interfaceName), operation);
    call.setArguments(arguments);
    return m_buses.at(List).asyncCall(call, Bus::callTimeout);
}

} // namespace norvane
