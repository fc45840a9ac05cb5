#include "harness/SharingEngine.h"

#include <csignal>

namespace norvane {

SharingEngine::SharingEngine(QString name, const QString &serverSocket, Console console,
                             const QStringList &deviceOptions)
    : proxy(serverSocket), m_name(std::move(name)),
      m_device(QStringList{u"--latency"_s, QString::number(networkMs), u"--report"_s, u"never"_s} +
               deviceOptions)
{
    if (console == Console::Open)
        m_console = std::make_unique<EngineConsole>(sandbox.bus());
}

bool SharingEngine::begin(const QString &login)
{
    const QString settings =
        u"[Sending]\nFirstDelay=1\nLongestDelay=2\n[Queue]\nDatabase=%1 %2\nName=%3\n"_s.arg(
            proxy.address(), login, m_name);
    return m_device.isReady() && sandbox.writeSettings(settings.toUtf8()) &&
           sandbox.storeDevice(m_device.link() + u", 115200"_s) && start() &&
           sandbox.call("StartEngine").type() == QDBusMessage::ReplyMessage;
}

bool SharingEngine::start()
{
    sandbox.start();
    if (!sandbox.waitForBus(startLimit))
        return false;
    if (m_console)
        sandbox.send("ReportState");
    return true;
}

void SharingEngine::cutOff()
{
    proxy.setRefusing(true);
    proxy.cut();
}

void SharingEngine::setTrap(const PostgresTrap &trap)
{
    m_trapHolds = trap.act == PostgresTrap::Act::Hold;
    proxy.setTrap(trap);
}

void SharingEngine::freeze()
{
    if (!sandbox.isUp() || m_isFrozen)
        return;
    m_isFrozen = true;
    ::kill(static_cast<pid_t>(sandbox.pid()), SIGSTOP);
}

void SharingEngine::thaw()
{
    if (std::exchange(m_isFrozen, false) && sandbox.isUp())
        ::kill(static_cast<pid_t>(sandbox.pid()), SIGCONT);
}

const EngineConsole &SharingEngine::console()
{
    if (!m_console) {
        m_console = std::make_unique<EngineConsole>(sandbox.bus());
        sandbox.send("ReportState");
    }
    return *m_console;
}

} // namespace norvane
