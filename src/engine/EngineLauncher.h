#pragma once

#include <QDBusConnection>
#include <QString>

/// Sees to it that the engine process is on the bus.
class EngineLauncher
{
public:
    EngineLauncher() = default;
    EngineLauncher(const EngineLauncher &) = delete;
    EngineLauncher &operator=(const EngineLauncher &) = delete;
    virtual ~EngineLauncher() = default;

    /// Starts the engine unless its name has an owner, and waits until it has one. Blocks without
    /// an event loop.
    /// @throws NumberedFailure 429 when there is no bus, no program or no answer within the limit
    virtual void ensureRunning() = 0;
};

/// Starts the engine by the bus where an activation file is installed, else the program at a path:
/// detached, in a session of its own, its error output going to a file beside its store.
class ProcessEngineLauncher : public EngineLauncher
{
public:
    /// @param program    full path of the engine's executable
    /// @param timeLimit  how long the start may take, in milliseconds
    ProcessEngineLauncher(const QDBusConnection &bus, const QString &program, int timeLimit);

    void ensureRunning() override;

private:
    bool startByBus();
    void startProgram();

    QDBusConnection m_bus;
    QString m_program;
    int m_timeLimit;
};
