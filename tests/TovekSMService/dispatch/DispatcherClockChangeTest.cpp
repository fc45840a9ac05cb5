#include "TovekSMService/dispatch/DispatcherFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class DispatcherClockChange : public DispatcherFixture
{
protected:
    void setClock(const char *moment)
    {
        const QString text = QLatin1String(moment);
        m_clock.now = {QDate::fromString(text.left(10), Qt::ISODate),
                       QTime::fromString(text.mid(11)), Qt::UTC};
        m_dispatcher->work();
        takeTurns();
    }
};

TEST_F(DispatcherClockChange, aDateInTheSkippedHourGoesOnceWhenTheHourIsOver)
{
    m_clock.now = QDateTime(QDate(2024, 3, 31), QTime(1, 0), Qt::UTC);
    startReady();
    add(u"600"_s, u"a"_s, u"2024-03-31T02:30:00"_s);
    add(u"601"_s, u"b"_s, u"2024-03-31T03:00:01"_s);
    setClock("2024-03-31T01:59:59");
    EXPECT_EQ(submissions(), 0);
    setClock("2024-03-31T03:00:00");
    ASSERT_TRUE(until([this] { return has(u"sent 600 a 1"_s); }));
    setClock("2024-03-31T04:00:00");
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(taken(), QStringList({u"600 a"_s, u"601 b"_s}));
}

TEST_F(DispatcherClockChange, aDateInTheRepeatedHourGoesOnceTheFirstTime)
{
    m_clock.now = QDateTime(QDate(2024, 10, 27), QTime(1, 0), Qt::UTC);
    startReady();
    add(u"600"_s, u"a"_s, u"2024-10-27T02:30:00"_s);
    add(u"601"_s, u"b"_s, u"2024-10-27T02:59:00"_s);
    setClock("2024-10-27T02:30:00");
    ASSERT_TRUE(until([this] { return has(u"sent 600 a 1"_s); }));
    setClock("2024-10-27T02:00:00");
    setClock("2024-10-27T02:30:00");
    EXPECT_EQ(submissions(), 1);
    setClock("2024-10-27T02:59:00");
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    setClock("2024-10-27T03:30:00");
    EXPECT_EQ(taken(), QStringList({u"600 a"_s, u"601 b"_s}));
}

TEST_F(DispatcherClockChange, aClockSetBackByADaySendsNothingAgainAndNothingEarly)
{
    startReady();
    add(u"600"_s, u"a"_s);
    add(u"601"_s, u"b"_s, u"2024-05-01T12:00:01"_s);
    ASSERT_TRUE(until([this] { return has(u"sent 600 a 1"_s); }));
    setClock("2024-04-30T12:00:00");
    setClock("2024-05-01T12:00:00");
    EXPECT_EQ(submissions(), 1);
    setClock("2024-05-01T12:00:01");
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(taken(), QStringList({u"600 a"_s, u"601 b"_s}));
}

TEST_F(DispatcherClockChange, aPartInProgressWhileTheClockIsSetBackGoesOnce)
{
    m_onSubmission = [this] { m_clock.now = m_clock.now.addDays(-1); };
    add(u"600"_s, u"a"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    m_onSubmission = nullptr;
    setClock("2024-05-02T12:00:00");
    EXPECT_EQ(taken(), QStringList({u"600 a"_s}));
}

TEST_F(DispatcherClockChange, theRepeatedHourHasItsPartsOfAMinuteToo)
{
    m_settings.partsPerMinute = 1;
    makeDispatcher();
    startReady();
    add(u"600"_s, u"a"_s);
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    setClock("2024-05-01T12:01:00");
    add(u"601"_s, u"b"_s);
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    setClock("2024-05-01T12:00:00");
    add(u"602"_s, u"c"_s);
    EXPECT_TRUE(until([this] { return m_store->queue().size() == 0; }));
}

TEST_F(DispatcherClockChange, equalDatesKeepTheOrderOfQueueing)
{
    m_clock.now = m_clock.now.addSecs(-1);
    startReady();
    QStringList expected;
    for (int i = 0; i < 20; ++i) {
        add(u"%1"_s.arg(600 + i), u"x"_s);
        expected << u"%1 x"_s.arg(600 + i);
    }
    m_clock.now = m_clock.now.addSecs(1);
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(taken(), expected);
}

} // namespace

} // namespace norvane
