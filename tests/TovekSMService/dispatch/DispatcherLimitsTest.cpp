#include "TovekSMService/dispatch/DispatcherFixture.h"

#include "TovekSMService/modem/codec/SubmitDecoder.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class DispatcherLimits : public DispatcherFixture
{
protected:
    /// Begins anew with these settings.
    void set(int EngineSettings::*number, int value)
    {
        m_settings.*number = value;
        makeDispatcher();
    }

    QString state() const
    {
        return onDisk(u"SELECT state || ' ' || parts_sent || ' ' || delivery_date "
                      "FROM message ORDER BY due, id"_s)
            .toString();
    }
};

TEST_F(DispatcherLimits, aMessageThatIsTooLateIsReportedInsteadOfSent)
{
    set(&EngineSettings::maxLateness, 3600);
    add(u"600"_s, u"late"_s, u"2024-05-01T10:59:59"_s);
    add(u"601"_s, u"in time"_s, u"2024-05-01T11:00:00"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(taken(), QStringList({u"601 in time"_s}));
    EXPECT_EQ(count(u"failed 600 late -54"_s), 1);
    EXPECT_EQ(onDisk(u"SELECT code FROM outcome WHERE phone = '600'"_s).toInt(), -54);
}

TEST_F(DispatcherLimits, withoutTheLimitAMessageGoesHoweverLate)
{
    add(u"600"_s, u"text"_s, u"1999-01-01T00:00:00"_s);
    done(m_dispatcher->start());
    EXPECT_TRUE(until([this] { return has(u"sent 600 text 0"_s); }));
}

TEST_F(DispatcherLimits, latenessIsCountedFromTheOriginalDateAndNotFromARetry)
{
    set(&EngineSettings::maxLateness, 60);
    m_submitAnswers = {cmsError(41)};
    add(u"600"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return state() == u"0 0 2024-05-01T12:00:30"_s; }));
    m_clock.now = m_clock.now.addSecs(61);
    ASSERT_TRUE(until([this] { return has(u"failed 600 text -54"_s); }));
    EXPECT_EQ(submissions(), 1);
}

TEST_F(DispatcherLimits, aRetryThatWouldComeTooLateIsNotWaitedFor)
{
    set(&EngineSettings::maxLateness, 60);
    m_clock.now = m_clock.now.addSecs(31);
    m_submitAnswers = {cmsError(41)};
    add(u"600"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_TRUE(has(u"failed 600 text -36"_s));
}

TEST_F(DispatcherLimits, aMessageThatBeganInTimeIsNotCutOffBetweenItsParts)
{
    set(&EngineSettings::maxLateness, 60);
    m_onSubmission = [this] { m_clock.now = m_clock.now.addSecs(50); };
    add(u"600"_s, longText(3));
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(m_line->payloads.size(), 3);
    EXPECT_EQ(eventsButQueue().filter(u"failed"_s), QStringList());
}

TEST_F(DispatcherLimits, aMessageFoundBetweenItsPartsIsReportedWhenItIsTooLate)
{
    done(m_store->queue().add({{u"600"_s, longText(2)}}, noon()));
    done(m_store->queue().begin({{given(m_store->queue().first())->id, 5, {}}}));
    done(m_store->queue().endPart(given(m_store->queue().first())->id, 1));
    done(m_store->settings().setToRun(true));
    set(&EngineSettings::maxLateness, 60);
    m_clock.now = m_clock.now.addDays(7);
    done(m_dispatcher->resume());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(submissions(), 0);
    EXPECT_EQ(eventsButQueue().filter(u"failed"_s).size(), 1);
}

TEST_F(DispatcherLimits, theNetworkIsAskedForTheValidityPeriodThatIsSet)
{
    add(u"600"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    set(&EngineSettings::validityPeriod, 24 * 60);
    add(u"600"_s, longText(2));
    done(m_dispatcher->start());
    done(m_dispatcher->resume());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    ASSERT_EQ(m_line->payloads.size(), 3);
    // 00, first octet, reference, address of three digits, protocol, coding, validity.
    constexpr qsizetype firstOctet = 2;
    constexpr qsizetype validity = 2 * 9;
    const auto octet = [this](qsizetype payload, qsizetype at) {
        return m_line->payloads.at(payload).mid(at, 2).toInt(nullptr, 16);
    };
    EXPECT_EQ(octet(0, firstOctet) & 0x18, 0);
    for (const qsizetype payload : {1, 2}) {
        EXPECT_EQ(octet(payload, firstOctet) & 0x18, 0x10);
        EXPECT_EQ(octet(payload, validity), 167);
    }
}

TEST_F(DispatcherLimits, partsBeyondAMinutesNumberWaitInTheirPlaceForTheNext)
{
    set(&EngineSettings::partsPerMinute, 2);
    add(u"600"_s);
    add(u"601"_s, longText(2));
    add(u"602"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_line->payloads.size() == 2; }));
    m_clock.now = m_clock.now.addSecs(59);
    takeTurns();
    EXPECT_EQ(m_line->payloads.size(), 2);
    EXPECT_EQ(state(), u"2 1 "_s + noon());

    m_clock.now = m_clock.now.addSecs(1);
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    ASSERT_EQ(m_line->payloads.size(), 4);
    EXPECT_EQ(decodeSubmit(m_line->payloads.at(2))->phone, u"601"_s);
    EXPECT_EQ(decodeSubmit(m_line->payloads.at(2))->number, 2);
    EXPECT_EQ(decodeSubmit(m_line->payloads.at(3))->phone, u"602"_s);
    EXPECT_EQ(eventsButQueue().filter(u"warning"_s), QStringList());
}

TEST_F(DispatcherLimits, aDaysNumberHoldsAcrossARestartAndUntilMidnight)
{
    set(&EngineSettings::partsPerDay, 2);
    for (int i = 0; i < 3; ++i)
        add(u"60%1"_s.arg(i));
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 1; }));
    makeDispatcher();
    done(m_dispatcher->resume());
    ASSERT_TRUE(until([this] { return m_modem->state() == Modem::State::Ready; }));
    m_clock.now = QDateTime(QDate(2024, 5, 1), QTime(23, 59, 59), Qt::UTC);
    takeTurns();
    EXPECT_EQ(submissions(), 2);
    EXPECT_EQ(state(), u"0 0 "_s + noon());
    m_clock.now = m_clock.now.addSecs(1);
    EXPECT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(submissions(), 3);
}

TEST_F(DispatcherLimits, whileAMessageWaitsForItsLimitTheDeviceIsTestedAndTheUnsendableReported)
{
    set(&EngineSettings::partsPerDay, 1);
    add(u"600"_s);
    add(u"601"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 1; }));
    takeTurns();
    qint32 answer = 0;
    m_dispatcher->testDevice([&](qint32 result) { answer = result; });
    EXPECT_TRUE(until([&] { return answer == 1; }));
    add(u"call me"_s, u"text"_s, u"2024-05-01T11:00:00"_s);
    EXPECT_TRUE(until([this] { return has(u"failed call me text -18"_s); }));
    EXPECT_TRUE(given(m_store->queue().update({}, {given(m_store->queue().first())->id})));
    EXPECT_EQ(m_store->queue().size(), 0);
    EXPECT_EQ(submissions(), 1);
}

TEST_F(DispatcherLimits, aPartThatDidNotLeaveIsNotCounted)
{
    set(&EngineSettings::partsPerDay, 1);
    m_submitAnswers = {cmsError(331), cmsError(331), FakeModemLine::info("+CMGS: 1")};
    add(u"600"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return has(u"sent 600 text 0"_s); }));
    EXPECT_EQ(given(m_store->parts().counts(noon())).inDay, 1);
}

struct Coverage
{
    const char *name;
    QByteArray answer;
};

class DispatcherCoverage : public DispatcherFixture, public testing::WithParamInterface<Coverage>
{};

TEST_P(DispatcherCoverage, itsAbsenceCostsAMessageNoAttemptHoweverLong)
{
    for (int i = 0; i < 6; ++i)
        m_submitAnswers << GetParam().answer;
    m_submitAnswers << FakeModemLine::info("+CMGS: 1");
    m_onSubmission = [this] {
        EXPECT_EQ(onDisk(u"SELECT attempts || ' ' || delivery_date FROM message"_s).toString(),
                  u"0 "_s + noon());
    };
    add(u"600"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return has(u"sent 600 text 0"_s); }));
    EXPECT_EQ(submissions(), 7);
    EXPECT_EQ(eventsButQueue().filter(u"failed"_s), QStringList());
}

INSTANTIATE_TEST_SUITE_P(Answers, DispatcherCoverage,
                         testing::Values(Coverage{"noService", cmsError(331)},
                                         Coverage{"noServiceOfTheDevice", "\r\n+CME ERROR: 30\r\n"},
                                         Coverage{"emergencyCallsOnly", "\r\n+CME ERROR: 32\r\n"}),
                         [](const auto &coverage) { return std::string(coverage.param.name); });

} // namespace

} // namespace norvane
