#include "TovekSMService/dispatch/DispatcherFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

const QByteArray keepLink = "AT+CMMS=1";

/// Whether the device is told to keep its link to the network between messages.
class DispatcherLink : public DispatcherFixture
{
protected:
    static ModemTimings timings()
    {
        ModemTimings timings = patientTimings();
        timings.linkPauseMs = 3'600'000;
        return timings;
    }

    DispatcherLink() : DispatcherFixture(timings())
    {
        m_line->answers.insert(keepLink, FakeModemLine::answer("OK"));
    }

    void sendAll(int left = 0)
    {
        startReady();
        ASSERT_TRUE(
            until([&] { return m_store->queue().size() == left && !m_dispatcher->isSending(); }));
        EXPECT_TRUE(eventsButQueue().filter(u"failed"_s).isEmpty());
    }
    qsizetype asked() const { return m_line->commands.count(keepLink); }
};

TEST_F(DispatcherLink, isKeptWhileMoreThanOneMessageIsDue)
{
    for (int i = 0; i < 4; ++i)
        add(u"60%1"_s.arg(i));
    sendAll();
    EXPECT_EQ(m_line->payloads.size(), 4);
    EXPECT_EQ(asked(), 1);
    EXPECT_LT(m_line->commands.indexOf(keepLink),
              m_line->commands.size() - 4 /* the submissions */);
}

TEST_F(DispatcherLink, isNotKeptForOneMessageAlone)
{
    add(u"600"_s);
    sendAll();
    EXPECT_EQ(asked(), 0);
}

TEST_F(DispatcherLink, isNotKeptForAMessageThatIsDueLater)
{
    add(u"600"_s);
    add(u"601"_s, u"text"_s, u"2024-05-01T12:00:01"_s);
    sendAll(1);
    EXPECT_EQ(asked(), 0);
}

TEST_F(DispatcherLink, isKeptBetweenThePartsOfAMessage)
{
    add(u"600"_s, longText(3));
    sendAll();
    EXPECT_EQ(m_line->payloads.size(), 3);
    EXPECT_EQ(asked(), 1);
}

TEST_F(DispatcherLink, isKeptForMessagesThatAreNotedTogether)
{
    m_timings.run.max = 32;
    makeDispatcher();
    for (int i = 0; i < 40; ++i)
        add(u"60%1"_s.arg(i));
    sendAll();
    EXPECT_EQ(m_line->payloads.size(), 40);
    EXPECT_EQ(asked(), 1);
}

} // namespace

} // namespace norvane
