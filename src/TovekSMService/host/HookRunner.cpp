#include "TovekSMService/host/HookRunner.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/platform/ProcessGroup.h"

#include <QProcessEnvironment>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// An environment's value ends with its first NUL.
QString withoutNul(QString text)
{
    return text.replace(QChar(u'\0'), QChar(u' '));
}

} // namespace

HookRunner::HookRunner(TimeSource &time, QObject *parent) : QObject(parent), m_limit(time)
{
    m_process.setStandardInputFile(QProcess::nullDevice());
    m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.setStandardErrorFile(QProcess::nullDevice());
    // What the command starts is ended with it.
    m_process.setChildProcessModifier(ProcessGroup::lead);
    connect(&m_process, &QProcess::finished, this, &HookRunner::onFinished);
    connect(&m_process, &QProcess::errorOccurred, this, &HookRunner::onErrorOccurred);
    connect(&m_limit, &Timer::timeout, this, [this] {
        m_isOverdue = true;
        killAll();
    });
}

HookRunner::~HookRunner()
{
    m_process.disconnect(this);
    killAll();
    m_process.waitForFinished(1000);
}

/// Ends the command and whatever it started.
void HookRunner::killAll()
{
    ProcessGroup::kill(m_process.processId());
    m_process.kill();
}

void HookRunner::run(const QString &command, const Facts &facts)
{
    if (command.isEmpty())
        return;
    if (m_waiting.size() >= maxWaiting) {
        qCWarning(logHost).noquote() << "too many commands wait; left out:" << command;
        return;
    }
    m_waiting.enqueue({command, facts});
    if (!m_isRunning)
        startNext();
}

void HookRunner::startNext()
{
    const Call call = m_waiting.dequeue();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto &[name, value] : call.facts)
        environment.insert(name, withoutNul(value));
    m_process.setProcessEnvironment(environment);
    m_process.setProgram(call.command);
    m_isRunning = true;
    m_isOverdue = false;
    m_limit.start(limitMs);
    m_process.start();
}

void HookRunner::onFinished(int exitCode, QProcess::ExitStatus status)
{
    if (m_isOverdue)
        end(u"was killed after %1 s"_s.arg(limitMs / 1000));
    else if (status == QProcess::CrashExit)
        end(u"crashed"_s);
    else if (exitCode != 0)
        end(u"ended with %1"_s.arg(exitCode));
    else
        end({});
}

void HookRunner::onErrorOccurred(QProcess::ProcessError error)
{
    if (error == QProcess::FailedToStart) // nothing else follows
        end(u"can't be started: "_s + m_process.errorString());
}

void HookRunner::end(const QString &fault)
{
    m_limit.stop();
    m_isRunning = false;
    if (!fault.isEmpty())
        qCWarning(logHost).noquote() << "the command" << m_process.program() << fault;
    if (m_waiting.isEmpty())
        Q_EMIT idle();
    else
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (!m_isRunning && !m_waiting.isEmpty())
                    startNext();
            },
            Qt::QueuedConnection);
}

} // namespace norvane
