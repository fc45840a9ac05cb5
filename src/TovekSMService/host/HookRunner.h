#pragma once

#include "TovekSMService/time/Timer.h"

#include <QObject>
#include <QProcess>
#include <QQueue>
#include <QString>

#include <optional>
#include <utility>

namespace norvane {

/// Runs the commands of an administrator's own when something has happened: an executable without
/// arguments and without a shell, which finds what happened in its environment. One at a time, in
/// the order of what happened; one that takes too long is killed. What it prints goes nowhere, and
/// its failure to the log.
class HookRunner : public QObject
{
    Q_OBJECT

public:
    /// Names of the environment and their values.
    using Facts = QList<std::pair<QString, QString>>;

    static constexpr int limitMs = 30'000; ///< for which a command may run
    static constexpr int maxWaiting = 1000;

    explicit HookRunner(TimeSource &time, QObject *parent = nullptr);
    ~HookRunner() override;

    /// Runs it once those before it have ended. Beyond maxWaiting it is left out.
    /// @param command  path of an executable; nothing happens where it is empty
    void run(const QString &command, const Facts &facts);

Q_SIGNALS:
    /// A command has ended, well or not, and none is waiting.
    void idle();

private:
    struct Call
    {
        QString command;
        Facts facts;
    };

    void startNext();
    void killAll();
    void onFinished(int exitCode, QProcess::ExitStatus status);
    void onErrorOccurred(QProcess::ProcessError error);
    void end(const QString &fault);

    QQueue<Call> m_waiting;
    QProcess m_process;
    bool m_isRunning = false;
    bool m_isOverdue = false;
    Timer m_limit;
};

} // namespace norvane
