#pragma once

#include "harness/Ledger.h"
#include "support/PrivateBus.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDeadlineTimer>
#include <QObject>
#include <QProcess>
#include <QTemporaryDir>

#include <functional>

namespace norvane {

using namespace Qt::StringLiterals;

/// Waits until `condition` holds, with the event loop running.
bool eventually(const std::function<bool()> &condition, int limitMs);

/// Hears of failures as a console does.
class FailureListener : public QObject
{
    Q_OBJECT

public:
    explicit FailureListener(const QDBusConnection &bus);

    QList<MessageOutcome> heard;

private Q_SLOTS:
    void hear(const QString &phone, const QString &text, int code);
};

/// An engine's world: folders, a session bus, and the engine in a process of its own.
class Sandbox
{
public:
    Sandbox();
    ~Sandbox();
    Sandbox(const Sandbox &) = delete;
    Sandbox &operator=(const Sandbox &) = delete;

    QString path(const QString &name) const { return m_folder.filePath(name); }
    QString storeFolder() const;
    QString storeFile() const;
    QString logFile() const { return path(u"engine.log"_s); }
    /// Sets a variable for the engines to come.
    void setVariable(const QString &name, const QString &value);

    /// Writes the engine's settings file.
    bool writeSettings(const QByteArray &text) const;
    /// Stores where the device is, with the engine's own command line.
    bool storeDevice(const QString &parameter);
    /// Starts the engine, without waiting for anything but its process.
    void start();
    bool waitForBus(int limitMs = 1'200'000);
    bool isUp() const { return m_engine.state() != QProcess::NotRunning; }
    bool isOnBus() const;
    qint64 pid() const { return m_engine.processId(); }
    /// Waits for an engine that was killed.
    bool waitForEnd(int limitMs = 1'200'000) { return m_engine.waitForFinished(limitMs); }
    void kill();
    /// Ends the engine as the system does.
    bool stop(int limitMs = 1'200'000);

    QDBusMessage call(const char *operation, const QVariantList &arguments = {}) const;
    /// As call(), without waiting for the answer, which may take any time.
    QDBusPendingCall send(const char *operation, const QVariantList &arguments = {}) const;
    /// As call(), from another connection to the same bus.
    static QDBusMessage callFrom(const QDBusConnection &bus, const char *operation,
                                 const QVariantList &arguments = {});
    /// -1 when the engine doesn't answer.
    int queueSize() const;
    QDBusConnection bus() const { return m_bus.connection(); }
    QString busAddress() const { return m_bus.address(); }

private:
    QTemporaryDir m_folder;
    PrivateBus m_bus;
    QProcess m_engine;
};

} // namespace norvane
