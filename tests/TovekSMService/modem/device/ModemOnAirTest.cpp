#include "TovekSMService/modem/device/ModemFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using State = Modem::State;

constexpr int anHourMs = 3'600'000;
const QByteArray switchOn = "AT+CFUN=1";
const QByteArray keepLink = "AT+CMMS=1";

/// A device that another program has left in flight mode, and whose network comes after some looks.
class ModemInFlight : public ModemFixture
{
protected:
    static ModemTimings timings(int networkReadyMs = anHourMs)
    {
        ModemTimings timings = shortTimings();
        timings.commandMs = timings.slowCommandMs = 2000;
        timings.initialisationMs = anHourMs;
        timings.networkPollMs = 1;
        timings.networkReadyMs = networkReadyMs;
        return timings;
    }

    explicit ModemInFlight(const ModemTimings &limits = timings()) : ModemFixture(limits)
    {
        functionality("4");
        m_line->answers.insert(switchOn, FakeModemLine::answer("OK"));
        m_line->onCommand = [this](const QByteArray &command) -> std::optional<QByteArray> {
            if (command == switchOn)
                m_isOn = true;
            if (command == "AT+CREG?")
                return FakeModemLine::info(m_isOn && m_looksNeeded-- <= 0 ? "+CREG: 0,1"
                                                                          : "+CREG: 0,2");
            return std::nullopt;
        };
    }

    void functionality(const QByteArray &level)
    {
        m_line->answers.insert("AT+CFUN?", FakeModemLine::info("+CFUN: " + level));
    }
    qsizetype count(const QByteArray &command) const { return m_line->commands.count(command); }

    bool m_isOn = false;
    int m_looksNeeded = 5;
};

TEST_F(ModemInFlight, isSwitchedOnAndItsNetworkAwaited)
{
    for (const char *level : {"0", "4", "4,0"}) {
        functionality(level);
        m_isOn = false;
        m_looksNeeded = 5;
        m_line->commands.clear();
        openReady();
        EXPECT_EQ(count(switchOn), 1) << level;
        EXPECT_LT(m_line->commands.indexOf(switchOn), m_line->commands.indexOf("AT+CPIN?"));
        EXPECT_EQ(m_modem->details().networkInfo, u"Norvane Mobile (home)"_s);
    }
}

TEST_F(ModemInFlight, withAnyOtherFunctionalityItIsLeftAsItIs)
{
    m_looksNeeded = anHourMs;
    for (const char *level : {"1", "2", "5", "x"}) {
        functionality(level);
        openReady();
        EXPECT_EQ(count(switchOn), 0) << level;
    }
    m_line->answers.remove("AT+CFUN?");
    openReady();
    EXPECT_EQ(count(switchOn), 0);
    EXPECT_EQ(count("AT+CREG?"), 5) << "once for the details of each opening";
}

TEST_F(ModemInFlight, aRegistrationWithThePacketNetworkCounts)
{
    m_looksNeeded = anHourMs;
    m_line->answers.insert("AT+CEREG?", FakeModemLine::info("+CEREG: 0,5"));
    openReady();
    EXPECT_EQ(m_modem->details().networkInfo, u"Norvane Mobile (roaming)"_s);
}

TEST_F(ModemInFlight, aDeviceThatRefusesToBeSwitchedOnIsNotWaitedFor)
{
    m_line->answers.insert(switchOn, FakeModemLine::answer("+CME ERROR: 3"));
    m_looksNeeded = anHourMs;
    openReady();
    EXPECT_EQ(count("AT+CREG?"), 1);
}

TEST_F(ModemInFlight, aSimThatIsReadLateIsAwaited)
{
    int looks = 0;
    const auto network = m_line->onCommand;
    m_line->onCommand = [&, network](const QByteArray &command) -> std::optional<QByteArray> {
        if (command == "AT+CPIN?" && ++looks < 4)
            return FakeModemLine::answer("+CME ERROR: 10");
        return network(command);
    };
    openReady();
    EXPECT_EQ(looks, 4);
}

TEST_F(ModemInFlight, aPinIsOnRecordBeforeItLeavesAndLeavesOnce)
{
    const QByteArray pin = "AT+CPIN=\"4711\"";
    functionality("0");
    m_line->answers.insert("AT+CPIN?", FakeModemLine::info("+CPIN: SIM PIN"));
    const auto network = m_line->onCommand;
    m_line->onCommand = [&, network](const QByteArray &command) -> std::optional<QByteArray> {
        if (command != pin)
            return network(command);
        EXPECT_TRUE(m_isOn);
        EXPECT_EQ(m_gate.history.value(u"8934071100275844103/4711"_s), PinHistory::Tried);
        m_line->answers.insert("AT+CPIN?", FakeModemLine::info("+CPIN: READY"));
        return FakeModemLine::answer("OK");
    };
    openReady(u"4711"_s);
    EXPECT_EQ(count(pin), 1);
}

TEST_F(ModemInFlight, closedWhileItsNetworkIsAwaitedItSaysNothingMore)
{
    m_looksNeeded = anHourMs;
    m_modem->open(PortParameter{u"/dev/fake"_s, 9600}, {});
    ASSERT_TRUE(until([this] { return count("AT+CREG?") == 3; }));
    m_modem->close();
    m_looksNeeded = 0;
    openReady();
    EXPECT_EQ(m_ready->count(), 1);
    EXPECT_TRUE(m_failed->isEmpty());
}

class ModemWithoutNetwork : public ModemInFlight
{
protected:
    ModemWithoutNetwork() : ModemInFlight(timings(20)) {}
};

TEST_F(ModemWithoutNetwork, isReadyAllTheSameWhenItHasBeenWaitedForInVain)
{
    m_looksNeeded = anHourMs;
    openReady();
    EXPECT_GT(count("AT+CREG?"), 1);
    EXPECT_EQ(m_modem->details().networkInfo, u"Norvane Mobile (searching)"_s);
}

TEST_F(ModemFixture, aDeviceThatRefusesABareAtAndTakesACommandIsOneThatAnswers)
{
    m_line->answers.insert("AT", FakeModemLine::answer("ERROR"));
    openReady();
    m_modem->test();
    ASSERT_TRUE(until([this] { return !m_tested->isEmpty(); }));
    EXPECT_TRUE(m_tested->first().at(0).toBool());
}

/// A device that knows how to keep its link to the network between messages.
class ModemLink : public ModemFixture
{
protected:
    static ModemTimings timings(int linkPauseMs = anHourMs)
    {
        ModemTimings timings = shortTimings();
        timings.linkPauseMs = linkPauseMs;
        return timings;
    }

    explicit ModemLink(const ModemTimings &limits = timings()) : ModemFixture(limits)
    {
        m_line->answers.insert(keepLink, FakeModemLine::answer("OK"));
    }

    void sendFollowed()
    {
        const qsizetype before = m_accepted->count() + m_partFailed->count();
        m_modem->send(part(), Modem::Followers::Some);
        EXPECT_TRUE(until([&] { return m_accepted->count() + m_partFailed->count() > before; }));
    }
    qsizetype asked() const { return m_line->commands.count(keepLink); }
};

TEST_F(ModemLink, isAskedForOnceBeforeTheFirstOfARowOfParts)
{
    openReady();
    m_line->commands.clear();
    sendFollowed();
    sendFollowed();
    send();
    EXPECT_EQ(m_line->commands,
              (QList<QByteArray>{keepLink, "AT+CMGS=13", "AT+CMGS=13", "AT+CMGS=13"}));
    EXPECT_EQ(m_accepted->count(), 3);
}

TEST_F(ModemLink, isNotAskedForWithoutFollowers)
{
    openReady();
    send();
    send();
    EXPECT_EQ(asked(), 0);
}

TEST_F(ModemLink, isNotAskedForAgainWhereItIsNotKnown)
{
    m_line->answers.remove(keepLink);
    openReady();
    sendFollowed();
    sendFollowed();
    EXPECT_EQ(asked(), 1);
    EXPECT_EQ(m_accepted->count(), 2);
    openReady();
    sendFollowed();
    EXPECT_EQ(asked(), 2) << "another device may be there";
}

TEST_F(ModemLink, isAskedForAgainBehindAPartThatWasRefused)
{
    openReady();
    sendFollowed();
    m_line->submitAnswer = FakeModemLine::answer("+CMS ERROR: 38");
    sendFollowed();
    sendFollowed();
    EXPECT_EQ(asked(), 2);
}

TEST_F(ModemLink, holdsNothingUpWhereTheQuestionStaysUnanswered)
{
    m_line->answers.insert(keepLink, QByteArray());
    openReady();
    sendFollowed();
    sendFollowed();
    EXPECT_EQ(m_accepted->count(), 2);
    EXPECT_EQ(asked(), 1);
}

TEST_F(ModemLink, lostInTheQuestionThePartHasNotLeft)
{
    openReady();
    m_line->onCommand = [this](const QByteArray &command) -> std::optional<QByteArray> {
        if (command == keepLink)
            m_line->breakOff();
        return std::nullopt;
    };
    sendFollowed();
    ASSERT_TRUE(until([this] { return m_failed->count() == 1; }));
    EXPECT_EQ(m_partFailed->count(), 1);
    EXPECT_EQ(sendFailure().problem, SendProblem::LineBrokenBefore);
    EXPECT_FALSE(sendFailure().mayBeDelivered);
    EXPECT_TRUE(m_line->payloads.isEmpty());

    m_line->onCommand = nullptr;
    openReady();
    m_modem->send(part(), Modem::Followers::Some);
    m_modem->close();
    EXPECT_EQ(m_partFailed->count(), 2);
    EXPECT_EQ(m_failed->count(), 1);
}

TEST_F(ModemLink, aDeviceThatFallsSilentInTheQuestionIsLost)
{
    openReady();
    m_line->silent = true;
    sendFollowed();
    ASSERT_TRUE(until([this] { return m_failed->count() == 1; }));
    EXPECT_EQ(m_partFailed->count(), 1);
    EXPECT_FALSE(sendFailure().mayBeDelivered);
    EXPECT_EQ(failure().code, -39);
}

class ModemBehindPauses : public ModemLink
{
protected:
    ModemBehindPauses() : ModemLink(timings(0)) {}
};

TEST_F(ModemBehindPauses, asksForTheLinkAgain)
{
    openReady();
    sendFollowed();
    sendFollowed();
    EXPECT_EQ(asked(), 2);
}

} // namespace

} // namespace norvane
