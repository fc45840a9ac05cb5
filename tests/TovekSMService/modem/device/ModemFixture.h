#pragma once

#include "TovekSMService/host/PinRule.h"
#include "TovekSMService/modem/at/FakeModemLine.h"
#include "TovekSMService/modem/device/AtModem.h"
#include "support/TurnedTime.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <memory>

namespace norvane {

using namespace Qt::StringLiterals;

/// Keeps what a gate has to keep, in memory, and the order of what was asked.
class FakePinGate : public PinGate
{
public:
    Decision mayTry(const SimIdentity &sim, const QString &pin,
                    std::optional<int> triesLeft) override
    {
        lastTriesLeft = triesLeft;
        lastSim = sim;
        ++asked;
        if (!recording)
            return Decision::NotRecorded;
        const QString key = sim.name() + u'/' + pin;
        const Decision decision =
            decidePinAttempt(history.value(key, PinHistory::NeverTried), triesLeft);
        if (decision == Decision::Try && history.value(key) != PinHistory::Accepted)
            history.insert(key, PinHistory::Tried);
        return decision;
    }
    void accepted(const SimIdentity &sim, const QString &pin) override
    {
        history.insert(sim.name() + u'/' + pin, PinHistory::Accepted);
    }
    void refused(const SimIdentity &sim, const QString &pin) override
    {
        history.insert(sim.name() + u'/' + pin, PinHistory::Refused);
    }

    QHash<QString, PinHistory> history;
    std::optional<int> lastTriesLeft;
    SimIdentity lastSim;
    int asked = 0;
    bool recording = true;
};

/// A modem at a fake line, on a clock that the test turns, and spies on everything that it says.
class ModemFixture : public testing::Test
{
protected:
    static ModemTimings shortTimings()
    {
        ModemTimings timings;
        timings.commandMs = 60;
        timings.slowCommandMs = 60;
        timings.probeMs = 40;
        timings.probeTries = 2;
        timings.quietMs = 3;
        timings.drainMs = 40;
        timings.promptMs = 60;
        timings.sendMs = 60;
        timings.simPollMs = 3;
        timings.simReadyMs = 200;
        timings.initialisationMs = 3000;
        return timings;
    }

    ModemFixture() : ModemFixture(shortTimings()) {}

    explicit ModemFixture(const ModemTimings &timings)
    {
        auto line = std::make_unique<FakeModemLine>();
        m_line = line.get();
        makeOrdinary(*m_line);
        m_modem = std::make_unique<AtModem>(
            std::move(line), m_gate, timings, nullptr, [this] { return m_ports; }, m_time);
        m_ready = std::make_unique<QSignalSpy>(m_modem.get(), &Modem::ready);
        m_changed = std::make_unique<QSignalSpy>(m_modem.get(), &Modem::detailsChanged);
        m_accepted = std::make_unique<QSignalSpy>(m_modem.get(), &Modem::partAccepted);
        m_partFailed = std::make_unique<QSignalSpy>(m_modem.get(), &Modem::partFailed);
        m_failed = std::make_unique<QSignalSpy>(m_modem.get(), &Modem::failed);
        m_tested = std::make_unique<QSignalSpy>(m_modem.get(), &Modem::tested);
        m_unsolicited = std::make_unique<QSignalSpy>(m_modem.get(), &Modem::unsolicited);
    }

    /// Opens and waits until that has come to an end.
    void open(const QString &pin = {}, Modem::OpenMode mode = Modem::OpenMode::Plain)
    {
        const qsizetype before = m_ready->count() + m_failed->count();
        m_modem->open(PortParameter{u"/dev/fake"_s, 9600}, pin, mode);
        EXPECT_TRUE(until([&] { return m_ready->count() + m_failed->count() > before; }));
    }

    void openReady(const QString &pin = {})
    {
        open(pin);
        ASSERT_EQ(m_modem->state(), Modem::State::Ready);
    }

    static SubmitPart part() { return {"0001000B914306101122F2000000", 13, 1, 1}; }

    /// Sends and waits for the answer.
    void send()
    {
        const qsizetype before = m_accepted->count() + m_partFailed->count();
        m_modem->send(part());
        EXPECT_TRUE(until([&] { return m_accepted->count() + m_partFailed->count() > before; }));
    }

    /// Turns the clock until `condition` holds.
    bool until(const std::function<bool()> &condition) { return m_time.until(condition); }

    ModemFailure failure() const
    {
        return m_failed->isEmpty() ? ModemFailure{0, {}, false}
                                   : m_failed->last().first().value<ModemFailure>();
    }

    SendFailure sendFailure() const
    {
        EXPECT_FALSE(m_partFailed->isEmpty());
        return m_partFailed->isEmpty() ? SendFailure()
                                       : m_partFailed->last().first().value<SendFailure>();
    }

    TurnedTime m_time;
    /// What a search finds.
    QStringList m_ports;
    FakePinGate m_gate;
    FakeModemLine *m_line = nullptr;
    std::unique_ptr<AtModem> m_modem;
    std::unique_ptr<QSignalSpy> m_ready;
    std::unique_ptr<QSignalSpy> m_changed;
    std::unique_ptr<QSignalSpy> m_accepted;
    std::unique_ptr<QSignalSpy> m_partFailed;
    std::unique_ptr<QSignalSpy> m_failed;
    std::unique_ptr<QSignalSpy> m_tested;
    std::unique_ptr<QSignalSpy> m_unsolicited;
};

} // namespace norvane
