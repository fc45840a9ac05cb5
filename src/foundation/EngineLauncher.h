#pragma once

#include <QDBusConnection>
#include <QString>

#include <functional>

namespace norvane {

class EngineWait;

/// Makes sure that the engine process is on the bus.
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
    /// @param wait       is notified while it takes; may be null, else must outlive this object
    ProcessEngineLauncher(const QDBusConnection &bus, const QString &program, int timeLimit,
                          EngineWait *wait = nullptr);

    void ensureRunning() override;

private:
    bool isActivatable() const;
    void startByBus();
    /// @return the number of its process
    qint64 startProgram();
    void waitUntil(const std::function<bool()> &condition) const;

    QDBusConnection m_bus;
    QString m_program;
    int m_timeLimit;
    EngineWait *m_wait;
};

} // namespace norvane
