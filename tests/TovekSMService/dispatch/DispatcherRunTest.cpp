#include "TovekSMService/dispatch/DispatcherFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A device so fast that several messages leave behind one commit: one, then two, then four.
class DispatcherRun : public DispatcherFixture
{
protected:
    /// Of seven messages, the one in the middle of the third run, with two more of it behind.
    static constexpr int middle = 4;

    DispatcherRun()
    {
        m_timings.run = {60'000, 8};
        m_timings.runLateMs = 60'000;
        makeDispatcher();
    }

    void addMany(int messages)
    {
        for (int i = 0; i < messages; ++i)
            add(phone(i));
    }

    static QString phone(int number) { return QString::number(600 + number); }

    static QString sentEvent(int number, int others)
    {
        return u"sent %1 text %2"_s.arg(phone(number)).arg(others);
    }

    /// What happens while the message in the middle is asked to be sent.
    void inTheMiddle(const std::function<void()> &what)
    {
        m_onSubmission = [this, what] {
            if (submissions() == middle + 1)
                what();
        };
    }

    /// How many messages are noted as leaving, and how many outcomes are kept.
    QString disk() const
    {
        return onDisk(u"SELECT (SELECT COUNT(*) FROM message WHERE state = 1) || ' ' "
                      "|| (SELECT COUNT(*) FROM outcome)"_s)
            .toString();
    }

    QStringList takenOf(const QList<int> &numbers) const
    {
        QStringList lines;
        for (const int number : numbers)
            lines << phone(number) + u" text"_s;
        return lines;
    }

    NotedLog m_log;
    OtherConnection m_other{file()};
};

TEST_F(DispatcherRun, isNotedAsLeavingBeforeTheFirstOfItLeavesAndKeptWithTheNextOne)
{
    QStringList seen;
    m_onSubmission = [&] { seen << disk(); };
    addMany(15);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    QStringList expected;
    for (const auto &[length, outcomes] : {std::pair(1, 0), {2, 1}, {4, 3}, {8, 7}})
        expected += QStringList(length, u"%1 %2"_s.arg(length).arg(outcomes));
    EXPECT_EQ(seen, expected);
    EXPECT_EQ(disk(), u"0 15"_s);
}

TEST_F(DispatcherRun, tellsEachMessageOnceInOrderWithTheQueueBehindIt)
{
    addMany(7);
    startReady();
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    QStringList expected;
    for (int i = 0; i < 7; ++i)
        expected << sentEvent(i, 6 - i);
    EXPECT_EQ(m_events.filter(u"sent"_s), expected);
    EXPECT_EQ(taken(), takenOf({0, 1, 2, 3, 4, 5, 6}));
}

TEST_F(DispatcherRun, letsTheRestWaitAgainWhenOneFails)
{
    QString behind;
    m_onSubmission = [&] {
        if (submissions() == middle + 1)
            m_line->submitAnswer = FakeModemLine::answer("+CMS ERROR: 1");
        else if (submissions() == middle + 2)
            behind = disk();
        if (submissions() != middle + 1)
            m_line->submitAnswer = "\r\n+CMGS: 42\r\n\r\nOK\r\n";
    };
    addMany(7);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    // From then on they leave one by one again.
    EXPECT_EQ(behind, u"1 5"_s);
    EXPECT_EQ(m_line->payloads.size(), 7);
    EXPECT_EQ(m_events.filter(u"failed"_s).size(), 1);
    EXPECT_TRUE(m_events.filter(u"failed"_s).value(0).startsWith(u"failed 604"_s));
    EXPECT_EQ(m_events.filter(u"sent"_s).size(), 6);
}

struct Action
{
    const char *name;
    std::function<void(Dispatcher &)> what;
};

class DispatcherRunWish : public DispatcherRun, public testing::WithParamInterface<Action>
{};

TEST_P(DispatcherRunWish, endsTheRunBehindThePartInProgress)
{
    QString afterwards;
    inTheMiddle([&] {
        GetParam().what(*m_dispatcher);
        QObject::connect(m_dispatcher.get(), &Dispatcher::sent, [&](const QString &sent) {
            if (sent == phone(middle))
                afterwards = disk();
        });
    });
    addMany(7);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([&] { return !afterwards.isEmpty(); }));
    EXPECT_EQ(afterwards, u"0 5"_s);
    EXPECT_EQ(m_line->payloads.size(), middle + 1);
    EXPECT_TRUE(has(sentEvent(middle, 2)));
}

INSTANTIATE_TEST_SUITE_P(
    Wishes, DispatcherRunWish,
    testing::Values(
        Action{"stop", [](Dispatcher &engine) { done(engine.stop()); }},
        Action{"finish", [](Dispatcher &engine) { engine.finish(); }},
        Action{"applySettings", [](Dispatcher &engine) { done(engine.applySettings()); }},
        Action{"testDevice", [](Dispatcher &engine) { engine.testDevice([](qint32) {}); }}),
    [](const auto &action) { return std::string(action.param.name); });

TEST_F(DispatcherRun, lastsNoLongerThanAMomentWhenTheDeviceBecomesSlow)
{
    m_timings.runLateMs = 20;
    makeDispatcher();
    inTheMiddle([this] { m_line->promptHeldBack = true; });
    addMany(7);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return submissions() == middle + 1; }));
    ASSERT_TRUE(until([this] { return has(sentEvent(middle - 1, 3)); }));
    EXPECT_EQ(disk(), u"1 4"_s);
    m_line->promptHeldBack = false;
    m_line->say("\r\n> ");
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(taken(), takenOf({0, 1, 2, 3, 4, 5, 6}));
}

TEST_F(DispatcherRun, ofAnEngineThatWasKilledIsInDoubtAndNeverSentAgain)
{
    bool killed = false;
    inTheMiddle([&] { killed = true; });
    addMany(8);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([&] { return killed; }));
    ASSERT_EQ(disk(), u"4 3"_s);
    const qsizetype left = m_line->payloads.size();
    m_events.clear();
    makeDispatcher();
    done(m_dispatcher->resume());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    for (const int number : {3, 4, 5, 6})
        EXPECT_EQ(count(u"failed %1 text -39"_s.arg(phone(number))), 1) << number;
    EXPECT_EQ(count(u"warning -39"_s), 4);
    EXPECT_TRUE(has(sentEvent(7, 0)));
    EXPECT_EQ(m_line->payloads.size(), left + 1);
}

TEST_F(DispatcherRun, keepsItsOutcomesUntilTheStoreTakesThem)
{
    inTheMiddle([this] { m_other.refuse(u"INSERT"_s, u"outcome"_s); });
    addMany(9);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_log.count(u"outcome waits"_s) >= 2; }));
    EXPECT_EQ(submissions(), 7);
    EXPECT_EQ(disk(), u"4 3"_s);
    m_other.allow(u"outcome"_s);
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(disk(), u"0 9"_s);
    EXPECT_EQ(taken(), takenOf({0, 1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(m_events.filter(u"sent"_s).size(), 9);
}

TEST_F(DispatcherRun, keepsWhatItTookBeforeTheDeviceBecameSlowWithWhatCameAfter)
{
    m_timings.runLateMs = 20;
    makeDispatcher();
    inTheMiddle([this] {
        m_line->promptHeldBack = true;
        m_other.refuse(u"INSERT"_s, u"outcome"_s);
    });
    addMany(7);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_log.count(u"outcome waits"_s) >= 2; }));
    m_line->promptHeldBack = false;
    m_line->say("\r\n> ");
    ASSERT_TRUE(until([this] { return m_line->payloads.size() == middle + 1; }));
    takeTurns();
    EXPECT_EQ(submissions(), middle + 1);
    m_other.allow(u"outcome"_s);
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(taken(), takenOf({0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(disk(), u"0 7"_s);
}

TEST_F(DispatcherRun, isNoneWherePartsAreCounted)
{
    m_settings.partsPerDay = 1000;
    makeDispatcher();
    QStringList seen;
    m_onSubmission = [&] { seen << disk().section(u' ', 0, 0); };
    addMany(7);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(seen, QStringList(7, u"1"_s));
}

TEST_F(DispatcherRun, endsBeforeAMessageOfSeveralPartsAndOneThatIsNotDue)
{
    QStringList seen;
    m_onSubmission = [&] { seen << disk().section(u' ', 0, 0); };
    addMany(4);
    add(u"700"_s, longText(2));
    add(u"701"_s);
    add(u"702"_s, u"text"_s, u"2024-05-01T12:00:01"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 1; }));
    EXPECT_EQ(seen, QStringList({u"1"_s, u"2"_s, u"2"_s, u"1"_s, u"1"_s, u"1"_s, u"1"_s}));
    EXPECT_EQ(taken().last(), u"701 text"_s);
}

TEST_F(DispatcherRun, isHeldAgainstTheOperatorsDeletionsLikeTheMessageInProgress)
{
    inTheMiddle([this] {
        done(m_store->queue().clear());
        m_dispatcher->noticeQueueChange();
    });
    addMany(9);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(taken(), takenOf({0, 1, 2, 3, 4, 5, 6}));
}

TEST_F(DispatcherRun, tellsNobodyWhatNobodyHears)
{
    m_dispatcher->setHasListeners(false);
    addMany(3);
    startReady();
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(m_events.filter(u"sent"_s), QStringList());
    EXPECT_EQ(disk(), u"0 3"_s);
}

} // namespace

} // namespace norvane
