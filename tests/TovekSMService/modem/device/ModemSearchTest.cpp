#include "TovekSMService/modem/device/ModemFixture.h"

#include "TovekSMService/modem/at/PtyModem.h"
#include "TovekSMService/modem/at/QtSerialPortLine.h"
#include "support/WaitUntil.h"

#include <QProcess>

#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

const QString knownImei = u"490154203237518"_s;
const QString configured = u"/dev/fake"_s;

/// The configured device is gone.
class SearchingModem : public ModemFixture
{
protected:
    SearchingModem()
    {
        m_line->openErrors.insert(configured, LineError::NoSuchDevice);
        m_line->onCommand = [this](const QByteArray &command) -> std::optional<QByteArray> {
            if (m_imeis.contains(m_line->openedDevice) &&
                (command == "AT+CGSN" || command == "AT+GSN"))
                return m_imeis.value(m_line->openedDevice);
            return std::nullopt;
        };
    }

    void search(const QString &pin = {}, const QString &imei = knownImei)
    {
        const qsizetype before = m_ready->count() + m_failed->count();
        m_modem->open(PortParameter{configured, 9600}, pin, Modem::OpenMode::Plain, imei);
        EXPECT_TRUE(until([&] { return m_ready->count() + m_failed->count() > before; }));
    }

    /// What each port says to the question for its IMEI.
    QHash<QString, QByteArray> m_imeis;
};

TEST_F(SearchingModem, findsTheDeviceUnderAnotherName)
{
    m_ports = {u"/dev/a"_s, u"/dev/b"_s, u"/dev/c"_s};
    m_imeis.insert(m_ports.at(0), FakeModemLine::info("490154203237519"));
    search();
    ASSERT_EQ(m_modem->state(), Modem::State::Ready);
    EXPECT_EQ(m_line->openedDevices, QStringList({configured, m_ports.at(0), m_ports.at(1)}));
    EXPECT_EQ(m_line->openedBaud, 9600);
    send();
    EXPECT_EQ(m_accepted->count(), 1);
}

TEST_F(SearchingModem, findsADeviceWhoseNameAnotherPortHasTaken)
{
    m_ports = {configured, u"/dev/b"_s};
    m_line->openErrors.clear();
    m_line->onCommand = [this](const QByteArray &) -> std::optional<QByteArray> {
        return m_line->openedDevice == configured ? std::optional(QByteArray()) : std::nullopt;
    };
    search();
    ASSERT_EQ(m_modem->state(), Modem::State::Ready);
    EXPECT_EQ(m_line->openedDevices.constLast(), m_ports.at(1));
    EXPECT_TRUE(m_failed->isEmpty());

    // Where it is nowhere, the trouble of the configured name is told, after one search.
    m_ports = {u"/dev/c"_s};
    m_imeis.insert(m_ports.at(0), FakeModemLine::answer("ERROR"));
    m_line->silent = true;
    const int before = m_line->openings;
    search();
    EXPECT_EQ(failure().code, -39);
    EXPECT_EQ(m_line->openings, before + 2);
}

TEST_F(SearchingModem, doesNotSearchWithoutAnImeiOrForAnotherTrouble)
{
    m_ports = {u"/dev/a"_s};
    search({}, QString());
    EXPECT_EQ(failure().code, -2);
    EXPECT_EQ(failure().text, configured);
    m_line->openErrors.insert(configured, LineError::HeldByAnother);
    search();
    EXPECT_EQ(failure().code, -4);
    EXPECT_EQ(m_line->openedDevices, QStringList({configured, configured}));
}

TEST_F(SearchingModem, sendsNothingButTheQuestionForTheImeiToAnotherDevice)
{
    m_ports = {u"/dev/a"_s};
    m_line->answers.insert("AT+CPIN?", FakeModemLine::info("+CPIN: SIM PIN"));
    m_imeis.insert(m_ports.at(0), FakeModemLine::answer("ERROR"));
    search(u"1234"_s);
    EXPECT_EQ(failure().code, -2);
    EXPECT_EQ(failure().text, configured);
    EXPECT_EQ(m_line->commands, (QList<QByteArray>{"AT", "AT+CGSN", "AT+GSN"}));
    EXPECT_EQ(m_gate.asked, 0);
    EXPECT_FALSE(m_line->isOpen());
}

TEST_F(SearchingModem, asksInTheOtherWayToo)
{
    m_ports = {u"/dev/a"_s};
    m_line->answers.insert("AT+GSN", m_line->answers.take("AT+CGSN"));
    search();
    EXPECT_EQ(m_modem->state(), Modem::State::Ready);
}

TEST_F(SearchingModem, asksAnotherDeviceOnlyOnceAndASilentOneNotForEver)
{
    m_ports = {u"/dev/a"_s, u"/dev/b"_s};
    m_imeis.insert(m_ports.at(0), FakeModemLine::info("490154203237519"));
    m_imeis.insert(m_ports.at(1), FakeModemLine::answer("ERROR"));
    for (int times = 0; times < 12; ++times)
        search();
    EXPECT_EQ(m_line->openedDevices.count(m_ports.at(0)), 1);
    EXPECT_EQ(m_line->openedDevices.count(m_ports.at(1)), PortSearch::maxSilentTries);

    // Unplugged and back, it may be another one.
    const QStringList all = std::exchange(m_ports, QStringList());
    search();
    m_ports = all;
    m_imeis.clear();
    search();
    EXPECT_EQ(m_modem->state(), Modem::State::Ready);
}

TEST_F(SearchingModem, passesPortsThatCannotBeOpenedThatBreakAndThatStaySilent)
{
    m_ports = {u"/dev/held"_s, u"/dev/breaks"_s, u"/dev/silent"_s, u"/dev/right"_s};
    m_line->openErrors.insert(m_ports.at(0), LineError::HeldByAnother);
    m_line->onCommand = [this](const QByteArray &command) -> std::optional<QByteArray> {
        if (m_line->openedDevice == m_ports.at(1) && command == "AT+CGSN")
            m_line->breakOff();
        if (m_line->openedDevice == m_ports.at(2))
            return QByteArray();
        return std::nullopt;
    };
    search();
    EXPECT_EQ(m_modem->state(), Modem::State::Ready);
    EXPECT_EQ(m_line->openedDevices.mid(1), m_ports);
    EXPECT_TRUE(m_failed->isEmpty());
}

TEST_F(SearchingModem, closedWhileItSearchesSaysNothing)
{
    m_ports = {u"/dev/a"_s};
    m_line->silent = true;
    m_modem->open(PortParameter{configured, 9600}, {}, Modem::OpenMode::Plain, knownImei);
    ASSERT_TRUE(until([this] { return m_line->openings == 2; }));
    m_modem->close();
    EXPECT_FALSE(m_line->isOpen());
    m_line->silent = false;
    m_line->openErrors.clear();
    open();
    EXPECT_EQ(m_ready->count(), 1);
    EXPECT_TRUE(m_failed->isEmpty());
}

class HastySearch : public SearchingModem
{
protected:
    HastySearch()
    {
        ModemTimings timings = shortTimings();
        timings.searchPortMs = 20;
        timings.searchMs = 30;
        timings.probeTries = 100;
        timings.probeMs = 1000;
        auto line = std::make_unique<FakeModemLine>();
        m_line = line.get();
        m_line->openErrors.insert(configured, LineError::NoSuchDevice);
        m_line->silent = true;
        m_modem = std::make_unique<AtModem>(
            std::move(line), m_gate, timings, nullptr, [this] { return m_ports; }, m_time);
        m_ready = std::make_unique<QSignalSpy>(m_modem.get(), &Modem::ready);
        m_failed = std::make_unique<QSignalSpy>(m_modem.get(), &Modem::failed);
    }
};

TEST_F(HastySearch, isBoundedForEachPortAndAllInAll)
{
    for (int port = 0; port < 40; ++port)
        m_ports.append(u"/dev/silent%1"_s.arg(port));
    search();
    EXPECT_EQ(failure().code, -2);
    EXPECT_GE(m_line->openings, 2);
    EXPECT_LE(m_line->openings, 1 + 3);
    // The next search goes on with those that weren't asked yet.
    const QString first = m_line->openedDevices.at(1);
    search();
    EXPECT_EQ(m_line->openedDevices.count(first), 1);
}

/// For a device whose time passes by itself: no limit is met, however slow the machine is.
ModemTimings patientTimings()
{
    ModemTimings timings;
    for (int *const limit : {&timings.commandMs, &timings.probeMs, &timings.drainMs,
                             &timings.searchPortMs, &timings.searchMs})
        *limit = 24 * 3'600'000;
    timings.quietMs = 5;
    return timings;
}

TEST(PortSearching, leavesAPortAloneThatAnotherProgramHasOpen)
{
    PtyModem device;
    device.play({{"AT\r", "\r\nOK\r\n"}, {"AT+CGSN\r", "\r\n490154203237518\r\n\r\nOK\r\n"}});
    // Without this the far end would see a hang-up when the other program ends.
    const int own = DeviceClaim::openPlainly(device.path().toLocal8Bit()).value();
    QProcess other;
    other.setStandardInputFile(device.path());
    other.start(u"sleep"_s, {u"infinity"_s});
    ASSERT_TRUE(other.waitForStarted(hangMs));

    QtSerialPortLine line;
    const ModemTimings timings = patientTimings();
    AtChannel channel(&line, timings);
    PortSearch search(line, channel, timings, [&] { return QStringList{device.path()}; });
    std::optional<QString> found;
    const auto finished = [&](const QString &port) { found = port; };
    const auto isOver = [&] { return waitUntil([&] { return found.has_value(); }); };
    search.start(knownImei, 9600, finished);
    ASSERT_TRUE(isOver());
    EXPECT_EQ(*found, QString());
    EXPECT_TRUE(device.heard.isEmpty());

    other.kill();
    other.waitForFinished(hangMs);
    found.reset();
    search.start(knownImei, 9600, finished);
    ASSERT_TRUE(isOver());
    EXPECT_EQ(*found, device.path());
    EXPECT_TRUE(line.isOpen());
    ::close(own);
}

} // namespace

} // namespace norvane
