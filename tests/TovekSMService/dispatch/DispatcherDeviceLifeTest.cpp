#include "TovekSMService/dispatch/DispatcherFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

const QByteArray pinCommand = "AT+CPIN=\"4711\"";

class DispatcherDeviceLife : public DispatcherFixture
{
protected:
    using DispatcherFixture::DispatcherFixture;

    void test()
    {
        m_dispatcher->testDevice([this](qint32 result) { m_events << u"tested %1"_s.arg(result); });
    }
};

TEST_F(DispatcherDeviceLife, aDeviceThatComesBackUnderAnotherNameIsFoundByItsImei)
{
    configure(u"/dev/fake, 9600"_s);
    m_ports = {u"/dev/other"_s, u"/dev/back"_s};
    m_line->onCommand = [this](const QByteArray &command) -> std::optional<QByteArray> {
        const bool isOther = m_line->openedDevice == m_ports.at(0);
        return isOther && command == "AT+CGSN"
                   ? std::optional(FakeModemLine::info("490154203237519"))
                   : std::nullopt;
    };
    startReady();
    EXPECT_EQ(given(m_store->settings().deviceImei(u"/dev/fake, 9600"_s)), u"490154203237518"_s);

    // In mid-message, before the payload, and after a restart of the engine too.
    m_line->openErrors.insert(u"/dev/fake"_s, LineError::NoSuchDevice);
    m_line->breakAfterHeard = 4;
    add(u"600"_s);
    ASSERT_TRUE(until([this] { return has(u"sent 600 text 0"_s); }));
    EXPECT_EQ(m_line->openedDevice, m_ports.at(1));
    EXPECT_EQ(m_line->payloads.size(), 1);
    EXPECT_EQ(m_events.filter(u"warning"_s), QStringList({u"warning -5"_s}));
    makeDispatcher();
    m_events.clear();
    done(m_dispatcher->resume());
    ASSERT_TRUE(until([this] { return has(u"info Model 7"_s); }));
    EXPECT_EQ(m_line->openedDevice, m_ports.at(1));
}

TEST_F(DispatcherDeviceLife, withOtherSettingsTheOldDeviceIsNotLookedFor)
{
    configure(u"/dev/fake, 9600"_s);
    startReady();
    m_ports = {u"/dev/back"_s};
    m_line->openErrors.insert(u"/dev/new"_s, LineError::NoSuchDevice);
    configure(u"/dev/new, 9600"_s);
    done(m_dispatcher->applySettings());
    ASSERT_TRUE(until([this] { return has(u"warning -2"_s); }));
    EXPECT_FALSE(m_line->openedDevices.contains(m_ports.at(0)));
}

TEST_F(DispatcherDeviceLife, theSignalIsAskedForAgainNowAndThenWithoutAnEvent)
{
    m_timings.conditionMs = 20;
    makeDispatcher();
    startReady();
    m_line->answers.insert("AT+CSQ", FakeModemLine::info("+CSQ: 31,0"));
    ASSERT_TRUE(until([this] { return m_dispatcher->knownDevice()->signal == 100; }));
    m_line->answers.insert("AT+CSQ", FakeModemLine::info("+CSQ: 0,0"));
    ASSERT_TRUE(until([this] { return m_dispatcher->knownDevice()->signal == 0; }));
    add(u"600"_s);
    ASSERT_TRUE(until([this] { return has(u"sent 600 text 0"_s); }));
    EXPECT_EQ(count(u"info Model 7"_s), 1);

    done(m_dispatcher->stop());
    ASSERT_TRUE(until([this] { return m_modem->state() == Modem::State::Closed; }));
    m_line->commands.clear();
    m_time.pass(10 * m_timings.conditionMs);
    EXPECT_TRUE(m_line->commands.isEmpty());
}

/// Closing in the middle of a PIN attempt would leave that PIN unusable for ever.
class DispatcherPin : public DispatcherDeviceLife
{
protected:
    DispatcherPin()
    {
        done(m_store->settings().setDeviceSettings({0, u"4711"_s, 1, 1, u"/dev/fake, 9600"_s}));
        m_line->answers.insert("AT+CPIN?", FakeModemLine::info("+CPIN: SIM PIN"));
        m_line->answers.insert(pinCommand, QByteArray());
    }

    void startUntilThePinHasLeft()
    {
        done(m_dispatcher->start());
        ASSERT_TRUE(until([this] { return m_line->commands.contains(pinCommand); }));
        EXPECT_TRUE(m_modem->awaitsPinOutcome());
    }

    PinHistory history() const { return m_gate.history.value(u"8934071100275844103/4711"_s); }

    void answer(const QByteArray &answer)
    {
        takeTurns();
        EXPECT_TRUE(m_line->isOpen());
        EXPECT_EQ(static_cast<int>(history()), static_cast<int>(PinHistory::Tried));
        if (answer == "OK")
            m_line->answers.insert("AT+CPIN?", FakeModemLine::info("+CPIN: READY"));
        m_line->say(FakeModemLine::answer(answer));
        ASSERT_TRUE(until([this] { return !m_line->isOpen(); }));
        EXPECT_FALSE(m_modem->awaitsPinOutcome());
    }
};

TEST_F(DispatcherPin, aStopWaitsForTheWordOfTheSim)
{
    startUntilThePinHasLeft();
    done(m_dispatcher->stop());
    EXPECT_EQ(m_dispatcher->status(), 0);
    answer("OK");
    EXPECT_EQ(static_cast<int>(history()), static_cast<int>(PinHistory::Accepted));
    EXPECT_FALSE(has(u"info Model 7"_s));
}

TEST_F(DispatcherPin, aRefusalThatComesAfterTheStopIsOnRecordToo)
{
    startUntilThePinHasLeft();
    done(m_dispatcher->stop());
    answer("+CME ERROR: 16");
    EXPECT_EQ(static_cast<int>(history()), static_cast<int>(PinHistory::Refused));
}

TEST_F(DispatcherPin, theEndOfTheEngineWaitsForTheWordOfTheSim)
{
    startUntilThePinHasLeft();
    m_dispatcher->finish();
    takeTurns();
    EXPECT_FALSE(has(u"finished"_s));
    answer("OK");
    EXPECT_EQ(static_cast<int>(history()), static_cast<int>(PinHistory::Accepted));
    EXPECT_TRUE(until([this] { return has(u"finished"_s); }));
}

TEST_F(DispatcherPin, newSettingsWaitForTheWordOfTheSim)
{
    startUntilThePinHasLeft();
    configure(u"/dev/next, 9600"_s);
    done(m_dispatcher->applySettings());
    takeTurns();
    EXPECT_EQ(m_line->openings, 1);
    m_line->answers.insert("AT+CPIN?", FakeModemLine::info("+CPIN: READY"));
    m_line->say(FakeModemLine::answer("OK"));
    ASSERT_TRUE(until([this] { return m_line->openedDevice == u"/dev/next"_s; }));
    EXPECT_EQ(static_cast<int>(history()), static_cast<int>(PinHistory::Accepted));
}

/// A device that leaves questions unanswered, with the limits of the real engine.
class DispatcherHalfDeaf : public DispatcherDeviceLife, public testing::WithParamInterface<int>
{
protected:
    DispatcherHalfDeaf() : DispatcherDeviceLife(ModemTimings{})
    {
        makeDispatcher();
        m_line->onCommand = [this](const QByteArray &) -> std::optional<QByteArray> {
            return m_deaf && ++m_asked % GetParam() == 0 ? std::optional(QByteArray())
                                                         : std::nullopt;
        };
    }

    /// @return after how many milliseconds there was an answer
    qint64 testTakes()
    {
        m_events.clear();
        const qint64 before = m_time.elapsed();
        test();
        EXPECT_TRUE(until([this] { return !m_events.filter(u"tested"_s).isEmpty(); }));
        return m_time.elapsed() - before;
    }

    bool m_deaf = true;
    int m_asked = 0;
};

TEST_P(DispatcherHalfDeaf, isTestedWithinTheLimit)
{
    EXPECT_LE(testTakes(), Bus::testDeviceAnswer);

    m_deaf = false;
    startReady();
    m_deaf = true;
    EXPECT_LE(testTakes(), Bus::testDeviceAnswer);
}

INSTANTIATE_TEST_SUITE_P(EveryNth, DispatcherHalfDeaf, testing::Values(1, 2, 3, 5));

struct Fault
{
    const char *name;
    void (*make)(FakeModemLine &line);
};

class DispatcherIdling : public DispatcherDeviceLife, public testing::WithParamInterface<Fault>
{
protected:
    DispatcherIdling() : DispatcherDeviceLife(shortTimings()) {}
};

/// What the engine does on its own, it does at an alarm: few of them are few things done.
TEST_P(DispatcherIdling, withADeviceInTroubleDoesLittleBetweenItsTries)
{
    m_retryTimes.minReopenMs = 50;
    m_retryTimes.maxReopenMs = 400;
    makeDispatcher();
    m_ports = {u"/dev/a"_s, u"/dev/b"_s};
    add(u"600"_s);
    GetParam().make(*m_line);
    NotedLog log;
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_line->openings >= 5; }));
    EXPECT_LE(m_time.rung(), 5 * 20);
    EXPECT_LE(m_line->commands.size(), 5 * 40);
    EXPECT_EQ(m_store->queue().size(), 1);
    EXPECT_TRUE(m_line->payloads.isEmpty());
    EXPECT_EQ(m_events.filter(u"warning"_s).size(), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Troubles, DispatcherIdling,
    testing::Values(
        Fault{"absent", [](FakeModemLine &line) { line.openError = LineError::NoSuchDevice; }},
        Fault{"held", [](FakeModemLine &line) { line.openError = LineError::HeldByAnother; }},
        Fault{"silent", [](FakeModemLine &line) { line.silent = true; }},
        Fault{"garbage",
              [](FakeModemLine &line) {
                  line.onCommand = [](const QByteArray &) {
                      return std::optional(QByteArray("\xF0\x0F\r\n\x81 xyz\r\n"));
                  };
              }},
        Fault{"promptless", [](FakeModemLine &line) { line.prompt.clear(); }}),
    [](const auto &fault) { return std::string(fault.param.name); });

} // namespace

} // namespace norvane
