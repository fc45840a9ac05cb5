#include "TovekSMService/dispatch/Scheduler.h"

#include "TovekSMService/dispatch/DispatcherFixture.h"
#include "TovekSMService/dispatch/OpenStore.h"
#include "TovekSMService/store/StoreResults.h"
#include "contract/ErrorCodes.h"

namespace norvane {

namespace {

class SchedulerTest : public testing::Test
{
protected:
    void makeScheduler()
    {
        m_scheduler = std::make_unique<Scheduler>(*m_store, m_clock, m_settings, encodeSubmit,
                                                  [this] { return m_unit; });
    }
    static StoredMessage message(const QString &date, const QString &phone = u"600"_s,
                                 const QString &text = u"text"_s)
    {
        StoredMessage message;
        message.id = 1;
        message.deliveryDate = date;
        message.originalDate = date;
        message.phone = phone;
        message.text = text;
        return message;
    }
    qint32 codeOf(const StoredMessage &message)
    {
        const auto result = m_scheduler->encoded(message);
        const auto *const code = std::get_if<qint32>(&result);
        return code == nullptr ? 0 : *code;
    }

    // The queue on disk.
    void add(const QString &phone, const QString &text = u"text"_s, const QString &date = noon())
    {
        done(m_store->queue().add({{phone, text}}, date));
    }
    QStringList beginRun(int maxLength)
    {
        QStringList phones;
        const Scheduler::Next next = given(m_scheduler->beginNext(maxLength));
        for (const LeavingMessage &leaving : next.run)
            phones.append(leaving.message.phone);
        return phones;
    }
    qsizetype leaving() const { return given(m_store->queue().interrupted()).size(); }
    void release()
    {
        for (const StoredMessage &message : given(m_store->queue().interrupted()))
            done(m_store->queue().cancel({message.id}));
    }

    const QString m_later = u"2024-05-01T12:00:01"_s;
    QTemporaryDir m_folder;
    TurnedTime m_time;
    SetClock m_clock{m_time};
    std::unique_ptr<Store> m_store = openStore(m_folder);
    EngineSettings m_settings;
    Modem::Unit m_unit = Modem::Unit::Part;
    std::unique_ptr<Scheduler> m_scheduler = std::make_unique<Scheduler>(
        *m_store, m_clock, m_settings, encodeSubmit, [this] { return m_unit; });
};

TEST_F(SchedulerTest, aMessageIsDueFromItsDateOn)
{
    EXPECT_TRUE(m_scheduler->isDue(message(u"2024-05-01T11:59:59"_s)));
    EXPECT_TRUE(m_scheduler->isDue(message(noon())));
    EXPECT_FALSE(m_scheduler->isDue(message(m_later)));
}

TEST_F(SchedulerTest, aMessageWithAnOddDateIsDueAndFails)
{
    StoredMessage odd = message(u"someday"_s);
    odd.dateIsOdd = true;
    EXPECT_TRUE(m_scheduler->isDue(odd));
    EXPECT_EQ(codeOf(odd), ErrorCode::methodParam);
}

TEST_F(SchedulerTest, aMessageIsTooLateBeyondItsLimit)
{
    m_settings.maxLateness = 60;
    makeScheduler();
    const StoredMessage due = message(noon());
    EXPECT_FALSE(m_scheduler->isTooLate(due, u"2024-05-01T12:01:00"_s));
    EXPECT_TRUE(m_scheduler->isTooLate(due, u"2024-05-01T12:01:01"_s));
    m_clock.now = m_clock.now.addSecs(61);
    EXPECT_EQ(codeOf(due), ErrorCode::protocolTimeout);
    m_scheduler->setUnfinished(due.id);
    EXPECT_EQ(codeOf(due), 0) << "one that is on its way is not cut off";
}

TEST_F(SchedulerTest, lateIsCountedFromTheDateThatWasGiven)
{
    m_settings.maxLateness = 60;
    makeScheduler();
    StoredMessage retried = message(u"2024-05-01T11:00:00"_s);
    retried.deliveryDate = noon();
    EXPECT_EQ(codeOf(retried), ErrorCode::protocolTimeout);
}

TEST_F(SchedulerTest, withoutALimitNothingIsTooLate)
{
    EXPECT_FALSE(m_scheduler->isTooLate(message(noon()), u"2034-05-01T12:00:00"_s));
}

TEST_F(SchedulerTest, whatCannotBeEncodedFailsWithItsCode)
{
    EXPECT_EQ(codeOf(message(noon(), QString())), ErrorCode::methodParam);
    EXPECT_EQ(codeOf(message(noon(), QString(21, u'6'))), ErrorCode::numberTooLong);
    EXPECT_EQ(codeOf(message(noon(), u"six"_s)), ErrorCode::invalidCharacters);
    EXPECT_EQ(codeOf(message(noon(), u"600"_s, QString(100'000, u'a'))), ErrorCode::textTooLong);
    EXPECT_EQ(codeOf(message(noon())), 0);
}

TEST_F(SchedulerTest, aRunTakesTheMessagesThatAreDueUpToItsLength)
{
    for (const QString &phone : {u"601"_s, u"602"_s, u"603"_s})
        add(phone);
    add(u"604"_s, u"text"_s, m_later);
    EXPECT_EQ(beginRun(1), QStringList{u"601"_s});
    release();
    EXPECT_EQ(beginRun(2), (QStringList{u"601"_s, u"602"_s}));
    EXPECT_EQ(leaving(), 2);
    release();
    EXPECT_EQ(beginRun(10), (QStringList{u"601"_s, u"602"_s, u"603"_s}));
}

TEST_F(SchedulerTest, aRunEndsBeforeAMessageOfSeveralParts)
{
    add(u"601"_s);
    add(u"602"_s, QString(200, u'a'));
    add(u"603"_s);
    EXPECT_EQ(beginRun(10), QStringList{u"601"_s});
}

TEST_F(SchedulerTest, aMessageOfSeveralPartsGoesAloneWithAReference)
{
    add(u"601"_s, QString(200, u'a'));
    add(u"602"_s);
    const QList<LeavingMessage> run = given(m_scheduler->beginNext(10)).run;
    ASSERT_EQ(run.size(), 1);
    EXPECT_TRUE(run.first().message.reference.has_value());
    EXPECT_EQ(given(m_store->queue().interrupted()).first().reference,
              run.first().message.reference);
}

TEST_F(SchedulerTest, aRunEndsBeforeAMessageThatFails)
{
    add(u"601"_s);
    add(u"six"_s);
    add(u"603"_s);
    EXPECT_EQ(beginRun(10), QStringList{u"601"_s});
}

TEST_F(SchedulerTest, whereThePartsAreLimitedOneMessageLeavesAtATime)
{
    m_settings.partsPerDay = 100;
    makeScheduler();
    add(u"601"_s);
    add(u"602"_s);
    EXPECT_EQ(beginRun(10), QStringList{u"601"_s});
}

TEST_F(SchedulerTest, aLimitHoldsBackWhatGoesBeyondIt)
{
    for (int EngineSettings::*const limit :
         {&EngineSettings::partsPerMinute, &EngineSettings::partsPerDay}) {
        m_clock.now = m_clock.now.addDays(1);
        m_settings = {};
        m_settings.*limit = 2;
        makeScheduler();
        add(u"601"_s);
        LeavingMessage counted;
        for (int part = 0; part < 2; ++part) {
            EXPECT_TRUE(given(m_scheduler->limitsAllow(1)));
            counted = given(m_scheduler->beginNext(1)).run.first();
            release();
        }
        EXPECT_FALSE(given(m_scheduler->limitsAllow(1)));
        done(m_scheduler->uncount(counted));
        EXPECT_TRUE(given(m_scheduler->limitsAllow(1))) << "one of them did not leave";
    }
}

TEST_F(SchedulerTest, aMessageThatGoesAsAWholeCountsAsManyPartsAsItHas)
{
    m_settings.partsPerDay = 5;
    m_unit = Modem::Unit::Message;
    makeScheduler();
    add(u"601"_s, QString(400, u'a')); // three parts
    auto first = m_scheduler->encoded(*given(m_store->queue().first()));
    const LeavingMessage message = std::get<LeavingMessage>(first);
    ASSERT_EQ(message.parts.size(), 1);
    EXPECT_EQ(message.part().count(), 3);
    EXPECT_EQ(message.part().whole->text.size(), 400);
    EXPECT_TRUE(given(m_scheduler->limitsAllow(3)));
    const LeavingMessage begun = given(m_scheduler->beginNext(1)).run.first();
    EXPECT_TRUE(given(m_scheduler->limitsAllow(2)));
    EXPECT_FALSE(given(m_scheduler->limitsAllow(3)));
    done(m_scheduler->uncount(begun));
    EXPECT_TRUE(given(m_scheduler->limitsAllow(3)));
}

TEST_F(SchedulerTest, aMessageThatAnotherDeviceSentInPartIsNotSentAgainAsAWhole)
{
    m_unit = Modem::Unit::Message;
    makeScheduler();
    StoredMessage begun = message(noon(), u"600"_s, QString(400, u'a'));
    begun.partsSent = 1;
    EXPECT_EQ(codeOf(begun), ErrorCode::noRespond);
    begun.partsSent = 0;
    EXPECT_EQ(codeOf(begun), 0);
}

TEST_F(SchedulerTest, aMessageOfMorePartsThanAreEverAllowedLeavesBehindNone)
{
    m_settings.partsPerDay = 2;
    makeScheduler();
    add(u"601"_s);
    EXPECT_TRUE(given(m_scheduler->limitsAllow(3)));
    beginRun(1);
    EXPECT_FALSE(given(m_scheduler->limitsAllow(3)));
}

TEST_F(SchedulerTest, aWholeMessageHasTheValidityThatTheNetworkWouldGet)
{
    m_settings.validityPeriod = 63;
    m_unit = Modem::Unit::Message;
    makeScheduler();
    add(u"601"_s);
    auto first = m_scheduler->encoded(*given(m_store->queue().first()));
    EXPECT_EQ(std::get<LeavingMessage>(first).part().whole->validityMinutes, 60);
}

TEST_F(SchedulerTest, theNextMinuteHasALimitOfItsOwn)
{
    m_settings.partsPerMinute = 1;
    makeScheduler();
    add(u"601"_s);
    beginRun(1);
    EXPECT_FALSE(given(m_scheduler->limitsAllow(1)));
    m_clock.now = m_clock.now.addSecs(60);
    EXPECT_TRUE(given(m_scheduler->limitsAllow(1)));
}

TEST_F(SchedulerTest, withoutLimitsNothingIsCounted)
{
    add(u"601"_s);
    beginRun(1);
    m_settings.partsPerDay = 1;
    makeScheduler();
    EXPECT_TRUE(given(m_scheduler->limitsAllow(1)));
}

} // namespace

} // namespace norvane
