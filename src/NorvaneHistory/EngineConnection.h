#pragma once

#include "NorvaneHistory/HistorySource.h"

#include <QDBusConnection>
#include <QDBusPendingCall>
#include <QVariantList>

#include <array>
#include <memory>

class MessagesBusInterface;

namespace norvane {

class EngineLauncher;

/// The way to the engine's process. Calls go to the process that is known, so that none of them
/// starts another one.
class EngineConnection : public QObject
{
    Q_OBJECT

public:
    /// As whom the engine is asked: of each caller it drops a question when the next one looks for
    /// something else.
    enum Caller { List, Answers, Walk, callers };

    /// @param launcher  must outlive this object
    EngineConnection(const QDBusConnection &bus, EngineLauncher &launcher,
                     QObject *parent = nullptr);
    ~EngineConnection() override;

    /// Starts the engine unless it is there, and blocks until it is.
    [[nodiscard]] SourceResult<bool> ensureRunning();

    /// The engine's name on the bus, empty while it is down.
    const QString &owner() const { return m_owner; }
    /// Null while the engine is down.
    MessagesBusInterface *messages(Caller caller) const { return m_messages.at(caller).get(); }
    /// Why the engine is down.
    const SourceFailure &absence() const { return m_absence; }

    QDBusPendingCall callManager(const QString &operation, const QVariantList &arguments = {});

Q_SIGNALS:
    /// The engine was started by somebody else.
    void appeared();
    void gone();
    void historyChanged();

private:
    QString ownerOnBus() const;
    void followOwner();
    void adopt(const QString &owner);

    EngineLauncher &m_launcher;
    const QString m_name; ///< of the connections that are this object's own
    std::array<QDBusConnection, callers> m_buses;
    std::array<std::unique_ptr<MessagesBusInterface>, callers> m_messages;
    QString m_owner;
    SourceFailure m_absence;
};

} // namespace norvane
