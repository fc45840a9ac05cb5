#include "TovekSMService/modem/at/AtChannel.h"

#include "TovekSMService/modem/at/FakeModemLine.h"
#include "support/TurnedTime.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class Channel : public testing::Test
{
protected:
    static ModemTimings shortTimings()
    {
        ModemTimings timings;
        timings.probeMs = 30;
        timings.quietMs = 3;
        timings.drainMs = 30;
        return timings;
    }

    Channel() { EXPECT_TRUE(m_line.open(u"/dev/fake"_s, 9600)); }

    bool until(const std::function<bool()> &condition) { return m_time.until(condition); }

    AtAnswer run(const QByteArray &command, int limitMs = 1000)
    {
        std::optional<AtAnswer> answer;
        m_channel.run({command, limitMs, {}}, [&](const AtAnswer &given) { answer = given; });
        EXPECT_FALSE(answer.has_value());
        EXPECT_FALSE(m_channel.isIdle());
        EXPECT_TRUE(until([&] { return answer.has_value(); }));
        return answer.value_or(AtAnswer());
    }

    SyncOutcome synchronise(int tries = 2)
    {
        std::optional<SyncOutcome> outcome;
        m_channel.synchronise(tries, [&](SyncOutcome given) { outcome = given; });
        EXPECT_TRUE(until([&] { return outcome.has_value(); }));
        return outcome.value_or(SyncOutcome::LineBroken);
    }

    TurnedTime m_time;
    FakeModemLine m_line;
    AtChannel m_channel{&m_line, shortTimings(), m_time};
};

TEST_F(Channel, collectsTheLinesOfAnAnswer)
{
    m_line.answers.insert("AT+X", "\r\none\r\n+X: two\r\n\r\nOK\r\n");
    const AtAnswer answer = run("AT+X");
    EXPECT_TRUE(answer.isOk());
    EXPECT_EQ(answer.lines, (QList<QByteArray>{"one", "+X: two"}));
    EXPECT_TRUE(m_channel.isIdle());
    const AtAnswer next = run("AT+Y");
    EXPECT_FALSE(next.isOk());
    EXPECT_TRUE(next.lines.isEmpty());
    EXPECT_EQ(static_cast<int>(next.result.kind), static_cast<int>(AtResult::Kind::Error));
}

TEST_F(Channel, keepsABoundedNumberOfLines)
{
    m_line.answers.insert("AT+X", QByteArray("line\r\n").repeated(10000) + "OK\r\n");
    EXPECT_EQ(run("AT+X").lines.size(), AtChannel::maxLines);
}

TEST_F(Channel, endsACommandAtItsTimeLimitHoweverMuchTheDeviceTalks)
{
    m_line.answers.insert("AT+X", "chatter\r\n");
    const auto more = QObject::connect(&m_line, &SerialLine::received, &m_line,
                                       [this] { m_line.say("chatter\r\n"); });
    const AtAnswer answer = run("AT+X", 30);
    QObject::disconnect(more);
    EXPECT_EQ(static_cast<int>(answer.end), static_cast<int>(AtAnswer::End::TimedOut));
}

TEST_F(Channel, answersACommandWhenTheLineBreaksAndThenTellsTheBreak)
{
    QList<QByteArray> order;
    m_line.answers.insert("AT+X", "");
    QObject::connect(&m_channel, &AtChannel::broken, &m_channel, [&](const LineFailure &failure) {
        EXPECT_EQ(failure.error, LineError::ReadFailed);
        order.append("broken");
    });
    m_channel.run({"AT+X", 1000, {}}, [&](const AtAnswer &answer) {
        EXPECT_EQ(static_cast<int>(answer.end), static_cast<int>(AtAnswer::End::LineBroken));
        EXPECT_EQ(answer.lineFailure.error, LineError::ReadFailed);
        order.append("answered");
    });
    m_line.breakOff(LineError::ReadFailed);
    ASSERT_TRUE(until([&] { return order.size() == 2; }));
    EXPECT_EQ(order, (QList<QByteArray>{"answered", "broken"}));
}

TEST_F(Channel, abandonsACommandWithoutWaiting)
{
    bool answered = false;
    const QSignalSpy broken(&m_channel, &AtChannel::broken);
    m_line.answers.insert("AT+X", "");
    m_channel.run({"AT+X", 1000, {}}, [&](const AtAnswer &answer) {
        answered = true;
        EXPECT_EQ(answer.lineFailure.error, LineError::NotOpen);
    });
    m_channel.abandon(LineError::NotOpen);
    EXPECT_TRUE(answered);
    EXPECT_TRUE(m_channel.isIdle());
    EXPECT_TRUE(broken.isEmpty());
}

TEST_F(Channel, aLateFailureOfAWriteDoesNotHitALaterCommand)
{
    m_line.writable = false;
    m_channel.run({"AT+X", 1000, {}}, [](const AtAnswer &) {});
    m_channel.abandon(LineError::NotOpen);
    m_line.writable = true;
    m_line.answers.insert("AT", FakeModemLine::answer("OK"));
    EXPECT_TRUE(run("AT").isOk());
    EXPECT_TRUE(m_line.isOpen());
}

TEST_F(Channel, synchronisingTellsHowTheDeviceBehaves)
{
    const auto name = [](SyncOutcome outcome) { return static_cast<int>(outcome); };
    m_line.answers.insert("AT", FakeModemLine::answer("OK"));
    EXPECT_EQ(name(synchronise()), name(SyncOutcome::Answered));
    m_line.answers.insert("AT", FakeModemLine::answer("ERROR"));
    EXPECT_EQ(name(synchronise()), name(SyncOutcome::Refused));
    m_line.answers.insert("AT", "what?\r\n");
    EXPECT_EQ(name(synchronise()), name(SyncOutcome::Garbage));
    m_line.answers.insert("AT", "");
    EXPECT_EQ(name(synchronise()), name(SyncOutcome::Silent));
    m_line.onCommand = [this](const QByteArray &) -> std::optional<QByteArray> {
        m_line.breakOff();
        return std::nullopt;
    };
    EXPECT_EQ(name(synchronise()), name(SyncOutcome::LineBroken));
    EXPECT_TRUE(m_channel.isIdle());
}

TEST_F(Channel, aDeviceThatRefusesABareAttentionIsAskedWithACommand)
{
    m_line.answers.insert("AT", FakeModemLine::answer("ERROR"));
    m_line.answers.insert("ATE0", FakeModemLine::answer("OK"));
    EXPECT_EQ(static_cast<int>(synchronise(1)), static_cast<int>(SyncOutcome::Answered));
    EXPECT_EQ(m_line.commands, (QList<QByteArray>{"AT", "ATE0"}));
    EXPECT_EQ(static_cast<int>(run("AT+Y").result.kind), static_cast<int>(AtResult::Kind::Error));
}

TEST_F(Channel, synchronisingTakesTheFirstOfSeveralTries)
{
    int asked = 0;
    m_line.onCommand = [&asked](const QByteArray &) -> std::optional<QByteArray> {
        return ++asked < 3 ? QByteArray() : FakeModemLine::answer("OK");
    };
    EXPECT_EQ(static_cast<int>(synchronise(5)), static_cast<int>(SyncOutcome::Answered));
    EXPECT_EQ(asked, 3);
    EXPECT_EQ(m_line.escapes, 3);
}

TEST_F(Channel, aLateAnswerIsNotTakenForTheNextCommands)
{
    m_line.answers.insert("AT+X", "");
    EXPECT_EQ(static_cast<int>(run("AT+X", 20).end), static_cast<int>(AtAnswer::End::TimedOut));
    m_line.answers.insert("AT", FakeModemLine::answer("OK"));
    // The answer to the command that timed out arrives just before the one to the probe.
    m_line.answers.insert("AT", "\r\n+X: late\r\n\r\nOK\r\n\r\nOK\r\n");
    EXPECT_EQ(static_cast<int>(synchronise()), static_cast<int>(SyncOutcome::Answered));
    m_line.answers.insert("AT+Y", FakeModemLine::answer("ERROR"));
    const AtAnswer answer = run("AT+Y");
    EXPECT_FALSE(answer.isOk());
    EXPECT_TRUE(answer.lines.isEmpty());
}

TEST_F(Channel, leavesAPromptThatComesAfterTheFirstEscape)
{
    m_line.onCommand = [this](const QByteArray &) -> std::optional<QByteArray> {
        m_line.atPrompt = true;
        return QByteArray("\r\n> ");
    };
    EXPECT_EQ(static_cast<int>(synchronise(1)), static_cast<int>(SyncOutcome::Answered));
    EXPECT_EQ(m_line.escapes, 2);
    EXPECT_FALSE(m_line.atPrompt);
    EXPECT_TRUE(m_line.payloads.isEmpty());
}

TEST_F(Channel, waitsForTheLastOfSeveralAnswersBeforeTheNextCommand)
{
    m_line.pieceSize = 6;
    m_line.answers.insert("AT", "\r\nOK\r\n\r\nOK\r\n");
    m_line.answers.insert("AT+Y", FakeModemLine::answer("ERROR"));
    std::optional<AtAnswer> answer;
    m_channel.synchronise(1, [&](SyncOutcome) {
        m_channel.run({"AT+Y", 1000, {}}, [&](const AtAnswer &given) { answer = given; });
    });
    ASSERT_TRUE(until([&] { return answer.has_value(); }));
    EXPECT_FALSE(answer->isOk());
}

TEST_F(Channel, theAnswersThatASlowDeviceStillOwesAreAwaited)
{
    m_line.answers.insert("AT+X", "");
    EXPECT_EQ(static_cast<int>(run("AT+X", 20).end), static_cast<int>(AtAnswer::End::TimedOut));
    // The device works off its buffer with pauses longer than any that means stillness.
    m_line.answers.insert("AT", FakeModemLine::answer("OK"));
    const auto late = m_time.makeAlarm([this] { m_line.say(FakeModemLine::answer("OK")); });
    late->set(4 * shortTimings().quietMs, Qt::PreciseTimer);
    ASSERT_LT(4 * shortTimings().quietMs, shortTimings().drainMs);
    EXPECT_EQ(static_cast<int>(synchronise(1)), static_cast<int>(SyncOutcome::Answered));
    m_line.answers.insert("AT+Y", FakeModemLine::answer("ERROR"));
    EXPECT_FALSE(run("AT+Y").isOk());
}

TEST_F(Channel, aDeviceThatAsksOnAndOnIsNotAnsweredOnAndOn)
{
    m_line.answers.insert("AT", "\r\n> ");
    const auto more =
        QObject::connect(&m_line, &SerialLine::received, &m_line, [this] { m_line.say("\r\n> "); });
    EXPECT_EQ(static_cast<int>(synchronise(2)), static_cast<int>(SyncOutcome::Garbage));
    QObject::disconnect(more);
    EXPECT_LE(m_line.escapes, 2 * 4);
}

TEST_F(Channel, thePayloadLeavesOnlyAtThePrompt)
{
    std::optional<AtAnswer> answer;
    m_line.promptHeldBack = true;
    m_channel.submit({"AT+CMGS=3", 20, {}}, "00AA", 1000,
                     [&](const AtAnswer &given) { answer = given; });
    ASSERT_TRUE(until([&] { return answer.has_value(); }));
    EXPECT_EQ(static_cast<int>(answer->end), static_cast<int>(AtAnswer::End::TimedOut));
    EXPECT_FALSE(answer->payloadLeft);
    // Too late: nobody waits for it.
    m_line.say("\r\n> ");
    m_time.settle();
    EXPECT_TRUE(m_line.payloads.isEmpty());
}

} // namespace

} // namespace norvane
