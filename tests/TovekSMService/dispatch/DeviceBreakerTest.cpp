#include "TovekSMService/dispatch/DeviceBreaker.h"

#include "TovekSMService/dispatch/DispatcherTimings.h"
#include "TovekSMService/dispatch/OpenStore.h"
#include "TovekSMService/dispatch/Outbox.h"
#include "TovekSMService/modem/at/ModemTypes.h"
#include "contract/ErrorCodes.h"
#include "support/TurnedTime.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int maxFailures = 3;

class DeviceBreakerTest : public testing::Test
{
protected:
    DeviceBreakerTest()
    {
        QObject::connect(&m_outbox, &Outbox::warned, [this](int code, const QString &text) {
            m_warnings.append(u"%1 %2"_s.arg(code).arg(text));
        });
    }

    static DispatcherTimings timings()
    {
        DispatcherTimings timings;
        timings.steadyMs = 1000;
        return timings;
    }
    static RetryPolicy retries()
    {
        RetryTimes times;
        times.minReopenMs = 20;
        times.maxReopenMs = 80;
        return RetryPolicy([] { return 0.0; }, times);
    }

    void lose(qint32 code = ErrorCode::portNotFound, const QString &text = u"gone"_s)
    {
        m_breaker.noteLost({code, text, false});
    }
    void refuse(int times, const QString &text = u"refused"_s)
    {
        for (int time = 0; time < times; ++time)
            m_breaker.noteRefusal(ErrorCode::smsService, text);
    }

    QTemporaryDir m_folder;
    TurnedTime m_time;
    std::unique_ptr<Store> m_store = openStore(m_folder);
    Outbox m_outbox{m_store->database(), m_store->outcomes(), timings(), m_time};
    QStringList m_warnings;
    DeviceBreaker m_breaker{m_outbox, retries(), timings(), maxFailures, m_time};
    QSignalSpy m_openingAllowed{&m_breaker, &DeviceBreaker::openingAllowed};
    QSignalSpy m_steady{&m_breaker, &DeviceBreaker::steady};
};

TEST_F(DeviceBreakerTest, opensAtItsLimitOfFailures)
{
    lose();
    m_breaker.noteLostAnswer();
    EXPECT_FALSE(m_breaker.isOpen());
    refuse(1);
    EXPECT_TRUE(m_breaker.isOpen());
    m_breaker.clear();
    EXPECT_FALSE(m_breaker.isOpen());
}

TEST_F(DeviceBreakerTest, theDelayBeforeTheNextOpeningDoublesUpToItsLimit)
{
    EXPECT_TRUE(m_breaker.allowsOpening());
    qsizetype openings = 0;
    for (const int delay : {20, 40, 80, 80}) {
        lose();
        m_time.pass(delay - 1);
        EXPECT_FALSE(m_breaker.allowsOpening()) << delay;
        m_time.pass(1);
        EXPECT_TRUE(m_breaker.allowsOpening()) << delay;
        EXPECT_EQ(m_openingAllowed.count(), ++openings);
    }
}

TEST_F(DeviceBreakerTest, aLostAnswerAloneDelaysNothing)
{
    m_breaker.noteLostAnswer();
    EXPECT_TRUE(m_breaker.allowsOpening());
    EXPECT_TRUE(m_warnings.isEmpty());
}

TEST_F(DeviceBreakerTest, warnsOfEachLossOnceForEachCode)
{
    lose(ErrorCode::portNotFound, u"gone"_s);
    lose(ErrorCode::portNotFound, u"still gone"_s);
    lose(ErrorCode::simNotInserted, u"no SIM"_s);
    lose(ErrorCode::portNotFound, u"gone again"_s);
    EXPECT_EQ(m_warnings, (QStringList{u"-2 gone"_s, u"-29 no SIM"_s}));
    m_breaker.clear();
    lose(ErrorCode::portNotFound, u"gone"_s);
    EXPECT_EQ(m_warnings.size(), 3) << "of another fault";
}

TEST_F(DeviceBreakerTest, theFaultIsTheOneMetLastInTheWordsOfItsWarning)
{
    EXPECT_EQ(m_breaker.fault().code, 0);
    lose(ErrorCode::portNotFound, u"gone"_s);
    lose(ErrorCode::portNotFound, u"still gone"_s);
    EXPECT_EQ(m_breaker.fault(), (DeviceBreaker::Warning{ErrorCode::portNotFound, u"gone"_s}));
    lose(ErrorCode::simNotInserted, u"no SIM"_s);
    EXPECT_EQ(m_breaker.fault().code, ErrorCode::simNotInserted);
    lose(ErrorCode::portNotFound, u"gone again"_s);
    EXPECT_EQ(m_breaker.fault(),
              (DeviceBreaker::Warning{ErrorCode::portNotFound, u"gone again"_s}));
    m_breaker.clear();
    EXPECT_EQ(m_breaker.fault().code, 0);
}

TEST_F(DeviceBreakerTest, aRefusalIsWarnedOfWhenTheBreakerOpens)
{
    refuse(maxFailures - 1);
    EXPECT_TRUE(m_warnings.isEmpty());
    EXPECT_FALSE(m_breaker.allowsOpening());
    refuse(2);
    EXPECT_EQ(m_warnings, QStringList{u"-20 refused"_s});
}

TEST_F(DeviceBreakerTest, aRefusalThatIsOfThePortIsWarnedOfAtOnce)
{
    for (const qint32 code : {ErrorCode::portNotFound, ErrorCode::portRead})
        m_breaker.noteRefusal(code, u"port"_s);
    EXPECT_EQ(m_warnings, (QStringList{u"-2 port"_s, u"-7 port"_s}));
    EXPECT_FALSE(m_breaker.suggestsReset());
}

TEST_F(DeviceBreakerTest, anOpenBreakerThatPausesWarnsOnce)
{
    for (int failure = 0; failure < maxFailures; ++failure)
        m_breaker.noteLostAnswer();
    m_breaker.pause(ErrorCode::noRespond, u"silent"_s);
    m_breaker.pause(ErrorCode::noRespond, u"silent"_s);
    refuse(1);
    EXPECT_EQ(m_warnings, QStringList{u"-39 silent"_s});
    EXPECT_FALSE(m_breaker.allowsOpening());
}

TEST_F(DeviceBreakerTest, suggestsAResetWhenADeviceThatIsThereFailsAgainAndAgain)
{
    refuse(maxFailures - 1);
    EXPECT_FALSE(m_breaker.suggestsReset());
    lose(ErrorCode::portNotFound);
    EXPECT_FALSE(m_breaker.suggestsReset()) << "an absent one isn't helped by it";
    m_breaker.noteLost({ErrorCode::simPinRequired, u"PIN"_s, true});
    EXPECT_FALSE(m_breaker.suggestsReset()) << "nor one that waits for the operator";
    lose(ErrorCode::noRespond);
    EXPECT_TRUE(m_breaker.suggestsReset());
    m_breaker.noteSimState(true);
    EXPECT_FALSE(m_breaker.suggestsReset());
    m_breaker.noteReady();
    EXPECT_TRUE(m_breaker.suggestsReset());
    m_breaker.clear();
    EXPECT_FALSE(m_breaker.suggestsReset());
}

TEST_F(DeviceBreakerTest, aDeviceThatIsReadyEndsTheDelayAndTheFault)
{
    lose();
    m_breaker.noteReady();
    EXPECT_TRUE(m_breaker.allowsOpening());
    EXPECT_EQ(m_breaker.fault().code, 0);
    lose();
    EXPECT_EQ(m_warnings.size(), 1) << "it isn't forgotten before the device is steady";
}

TEST_F(DeviceBreakerTest, theFaultOfADeviceThatTakesNoMessageStandsWhileItIsReady)
{
    refuse(maxFailures);
    m_breaker.noteReady();
    EXPECT_EQ(m_breaker.fault().code, ErrorCode::smsService);
    EXPECT_TRUE(m_breaker.isOpen());
}

TEST_F(DeviceBreakerTest, aDeviceIsSteadyWhenItHasBeenReadyForLongEnough)
{
    m_breaker.noteReady();
    m_time.pass(999);
    EXPECT_EQ(m_steady.count(), 0);
    m_time.pass(1);
    EXPECT_EQ(m_steady.count(), 1);
    m_breaker.restartSteadyTimer();
    m_time.pass(999);
    EXPECT_EQ(m_steady.count(), 1);
    m_time.pass(1);
    EXPECT_EQ(m_steady.count(), 2);
}

TEST_F(DeviceBreakerTest, aDeviceThatFailsIsNotSteady)
{
    for (const auto &fail :
         {std::function<void()>([this] { lose(); }), std::function<void()>([this] { refuse(1); }),
          std::function<void()>([this] { m_breaker.noteLostAnswer(); })}) {
        m_breaker.noteReady();
        fail();
        m_time.pass(60'000);
        EXPECT_EQ(m_steady.count(), 0);
    }
}

TEST_F(DeviceBreakerTest, aWarningOfATestIsNotRepeatedForTheSameFault)
{
    m_breaker.warn(ErrorCode::portNotFound, u"test"_s);
    m_breaker.warn(ErrorCode::portNotFound, u"test"_s);
    EXPECT_EQ(m_warnings.size(), 2) << "every test is answered with its reason";
    lose();
    EXPECT_EQ(m_warnings.size(), 2);
    EXPECT_EQ(m_breaker.fault().text, u"gone"_s);
}

} // namespace

} // namespace norvane
