#include "TovekSMService/host/DeviceProcess.h"

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

void DeviceProcess::startHeard()
{
    start();
    m_listener = std::make_unique<Listener>(QDBusConnection::sessionBus());
    call("ReportState");
}

void DeviceProcess::restart()
{
    kill();
    ASSERT_TRUE(until([] { return !isOnBus(); }));
    startHeard();
}

void DeviceProcess::plugIn(const QStringList &options)
{
    m_device.reset();
    m_device = std::make_unique<RunningSimulator>(options);
    ASSERT_TRUE(m_device->isReady());
}

void DeviceProcess::use(const QString &device, const QString &pin)
{
    m_listener->heard.clear();
    EXPECT_TRUE(setSettings({0, pin, 1, 1, device + u", 115200"_s}));
    call("ApplySettings");
}

bool DeviceProcess::hears(const QString &event)
{
    return until([&] { return m_listener->has(event); });
}

qsizetype DeviceProcess::count(const QString &event) const
{
    return std::count_if(m_listener->heard.cbegin(), m_listener->heard.cend(),
                         [&](const QString &heard) { return heard.startsWith(event); });
}

int DeviceProcess::triesLeft()
{
    PortClient client(m_device->link());
    // The first answers may be those to an engine that ended before it had read them.
    QByteArray answer;
    until([&] {
        answer = client.ask("AT+CPINR=\"SIM PIN\"");
        return answer.contains("SIM PIN,") || answer.contains("ERROR");
    });
    const qsizetype at = answer.indexOf("SIM PIN,");
    return at < 0 ? -1 : answer.mid(at + 8, 1).toInt();
}

} // namespace norvane
