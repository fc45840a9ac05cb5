#include "TovekSMService/host/EngineProcess.h"
#include "gsm-simulator/RunningSimulator.h"

#include "TovekSMService/host/EngineLimits.h"
#include "TovekSMService/store/OtherConnection.h"
#include "contract/EngineStartLimits.h"
#include "foundation/EngineLauncher.h"
#include "foundation/EngineWait.h"

#include <QDBusConnectionInterface>
#include <QDBusReply>

#include <csignal>
#include <functional>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// An engine that is ended while a part is on its way.
class EngineEnd : public EngineProcess
{
protected:
    /// Starts the engine with a device, and waits until the one message's part has left.
    void startSending(const QStringList &simulatorOptions)
    {
        device = std::make_unique<RunningSimulator>(simulatorOptions);
        ASSERT_TRUE(device->isReady());
        ASSERT_EQ(run({u"--device"_s, device->link() + u", 115200"_s}).exitCode, 0);
        startEngine();
        send(u"600111222"_s);
        // On a slow machine the answer may come before anybody looks.
        ASSERT_TRUE(until([] {
            return numberOf("SELECT (SELECT COUNT(*) FROM message WHERE state = 1) + "
                            "(SELECT COUNT(*) FROM outcome)") == 1;
        }));
    }
    virtual void startEngine() { start(); }
    virtual void send(const QString &phone)
    {
        addSMS(phone, u"text"_s, u"2024-01-01T00:00:00"_s);
        call("StartEngine");
    }
    static int numberOf(const char *query)
    {
        return OtherConnection(storeFile()).value(QLatin1String(query)).toInt();
    }
    void expectItFinished() const
    {
        EXPECT_EQ(device->messages().size(), 1);
        EXPECT_EQ(numberOf("SELECT COUNT(*) FROM outcome WHERE code = 1"), 1);
        EXPECT_EQ(numberOf("SELECT COUNT(*) FROM message"), 0);
    }

    std::unique_ptr<RunningSimulator> device;
};

/// On a bus of its own that ends before the engine.
class EngineOnDyingBus : public EngineEnd
{
protected:
    EngineOnDyingBus()
    {
        m_daemon.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
        EXPECT_TRUE(m_daemon.waitForReadyRead(hangMs));
        m_address = QString::fromLatin1(m_daemon.readLine()).trimmed();
    }

    void startEngine() override
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, m_address);
        m_engine.setProcessEnvironment(environment);
        m_engine.start();
    }
    void send(const QString &phone) override
    {
        const QString name = u"dying"_s;
        {
            const QDBusConnection bus = QDBusConnection::connectToBus(m_address, name);
            ASSERT_TRUE(until([&] { return isOnBus(bus); }));
            call("AddSMS", {phone, u"text"_s, u"2024-01-01T00:00:00"_s}, bus);
            call("StartEngine", {}, bus);
        }
        QDBusConnection::disconnectFromBus(name);
    }

    QProcess m_daemon;
    QString m_address;
};

TEST_F(EngineOnDyingBus, thePartInProgressIsFinished)
{
    startSending({u"--latency"_s, u"2000"_s});
    m_daemon.kill();
    ASSERT_TRUE(m_daemon.waitForFinished(hangMs));
    ASSERT_TRUE(m_engine.waitForFinished(hangMs));
    EXPECT_EQ(m_engine.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(m_engine.exitCode(), 0);
    expectItFinished();
}

/// Notes a wait for the engine's start.
class NotedEngineWait : public EngineWait
{
public:
    explicit NotedEngineWait(std::function<void()> whenTold) : m_whenTold(std::move(whenTold)) {}

    void waiting(qint64) override
    {
        if (!std::exchange(wasTold, true))
            m_whenTold();
    }
    void ended() override { hasEnded = true; }

    bool wasTold = false;
    bool hasEnded = false;

private:
    std::function<void()> m_whenTold;
};

TEST_F(EngineOnDyingBus, aConsoleOfTheNextSessionWaitsForItAndWorks)
{
    startSending({u"--latency"_s, u"2000"_s});
    // The device says nothing until somebody waits for the next engine.
    const auto modem = static_cast<pid_t>(device->process().processId());
    ASSERT_EQ(::kill(modem, SIGSTOP), 0);
    m_daemon.kill();
    ASSERT_TRUE(m_daemon.waitForFinished(hangMs));

    NotedEngineWait wait([modem] { ::kill(modem, SIGCONT); });
    ProcessEngineLauncher launcher(QDBusConnection::sessionBus(), program(), Bus::engineStartLimit,
                                   &wait);
    launcher.ensureRunning();
    EXPECT_TRUE(wait.wasTold);
    EXPECT_TRUE(wait.hasEnded);
    ASSERT_TRUE(m_engine.waitForFinished(hangMs));
    expectItFinished();
    addSMS(u"600111333"_s, u"text"_s, u"2100-01-01T00:00:00"_s);
    EXPECT_EQ(callForNumber("GetQueueSize"), 1);

    const QDBusReply<uint> next =
        QDBusConnection::sessionBus().interface()->servicePid(QLatin1String(Bus::serviceName));
    ASSERT_GT(next.value(), 0U);
    ASSERT_EQ(::kill(static_cast<pid_t>(next.value()), SIGKILL), 0);
    EXPECT_TRUE(until([] { return !isOnBus(); }));
}

TEST(EngineLimitsTest, whoWaitsForAnotherWaitsLongerThanThatMayTake)
{
    const EngineLimits limits;
    EXPECT_EQ(limits.endMs, 20'000);
    EXPECT_GT(limits.lockMs, limits.endMs) << "the next engine, for the one that is ending";
    EXPECT_GT(Bus::engineStartLimit, limits.lockMs) << "the console, for the next engine";
}

} // namespace

} // namespace norvane
