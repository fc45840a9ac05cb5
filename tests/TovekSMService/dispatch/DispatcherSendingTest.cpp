#include "TovekSMService/dispatch/DispatcherFixture.h"

#include "TovekSMService/modem/codec/SubmitDecoder.h"

#include <QCryptographicHash>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class DispatcherSending : public DispatcherFixture
{};

QString at(const char *time)
{
    return u"2024-05-01T"_s + QLatin1String(time);
}

TEST_F(DispatcherSending, nothingIsSentWhileStopped)
{
    done(m_dispatcher->resume());
    add(u"600"_s);
    m_dispatcher->work();
    takeTurns();
    EXPECT_EQ(m_dispatcher->status(), 0);
    EXPECT_EQ(m_line->openings, 0);
    EXPECT_EQ(m_store->queue().size(), 1);
    EXPECT_EQ(eventsButQueue(), QStringList());
}

TEST_F(DispatcherSending, startAndStopTellTheStatusOnceAndKeepIt)
{
    done(m_dispatcher->start());
    done(m_dispatcher->start());
    EXPECT_EQ(m_dispatcher->status(), 1);
    EXPECT_TRUE(given(m_store->settings().isToRun()));
    done(m_dispatcher->stop());
    done(m_dispatcher->stop());
    EXPECT_EQ(m_dispatcher->status(), 0);
    EXPECT_FALSE(given(m_store->settings().isToRun()));
    EXPECT_EQ(m_events, QStringList({u"status 1"_s, u"status 0"_s}));
}

TEST_F(DispatcherSending, anEngineThatWasStartedComesBackStarted)
{
    done(m_store->settings().setToRun(true));
    done(m_store->queue().add({{u"600"_s, u"text"_s}}, noon()));
    done(m_dispatcher->resume());
    EXPECT_EQ(m_dispatcher->status(), 1);
    EXPECT_TRUE(has(u"status 1"_s));
    EXPECT_TRUE(until([this] { return has(u"sent 600 text 0"_s); }));
}

TEST_F(DispatcherSending, messagesGoByDateAndThenByQueueingAndTellHowManyWait)
{
    add(u"3"_s, u"c"_s, at("11:00:00"));
    add(u"1"_s, u"a"_s, at("10:00:00"));
    add(u"2"_s, u"b"_s, at("10:00:00"));
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(taken(), QStringList({u"1 a"_s, u"2 b"_s, u"3 c"_s}));
    EXPECT_EQ(eventsButQueue(), QStringList({u"status 1"_s, u"info Model 7"_s, u"sent 1 a 2"_s,
                                             u"sent 2 b 1"_s, u"sent 3 c 0"_s}));
}

TEST_F(DispatcherSending, theQueueChangesWithEachMessageThatLeaves)
{
    startReady();
    m_events.clear();
    add(u"1"_s);
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(m_events, QStringList({u"queue"_s, u"sent 1 text 0"_s, u"queue"_s}));
}

TEST_F(DispatcherSending, aMessageWaitsForItsDateAndTheClockMayBeSet)
{
    startReady();
    add(u"600"_s, u"text"_s, at("12:00:01"));
    takeTurns();
    EXPECT_EQ(submissions(), 0);
    m_clock.now = m_clock.now.addDays(-1);
    m_dispatcher->work();
    takeTurns();
    EXPECT_EQ(submissions(), 0);
    m_clock.now = m_clock.now.addDays(1).addSecs(1);
    // The dispatcher looks at the clock by itself.
    EXPECT_TRUE(until([this] { return has(u"sent 600 text 0"_s); }));
    EXPECT_EQ(m_line->payloads.size(), 1);
}

TEST_F(DispatcherSending, anEarlierMessageOvertakesTheOneThatIsWaitedFor)
{
    startReady();
    add(u"later"_s, u"text"_s, at("23:00:00"));
    add(u"601"_s, u"text"_s, at("12:00:00"));
    EXPECT_TRUE(until([this] { return has(u"sent 601 text 1"_s); }));
}

TEST_F(DispatcherSending, anOddDateIsReportedAndNotSent)
{
    add(u"600"_s, u"text"_s, u"tomorrow"_s);
    add(u"601"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_TRUE(has(u"failed 600 text -11"_s));
    EXPECT_EQ(taken(), QStringList({u"601 text"_s}));
}

TEST_F(DispatcherSending, aPartIsOnDiskAsLeavingBeforeTheDeviceHearsOfIt)
{
    QByteArray hash;
    m_onSubmission = [this, &hash] {
        EXPECT_EQ(onDisk(u"SELECT COUNT(*) FROM message WHERE state = 1"_s).toInt(), 1);
        hash = onDisk(u"SELECT part_hash FROM message"_s).toByteArray();
    };
    add(u"600"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    ASSERT_EQ(m_line->payloads.size(), 1);
    EXPECT_EQ(hash,
              QCryptographicHash::hash(m_line->payloads.constFirst(), QCryptographicHash::Sha256));
}

TEST_F(DispatcherSending, aMessageIsToldAsSentWhenItsOutcomeIsOnDisk)
{
    QVariant outcome;
    QObject::connect(m_dispatcher.get(), &Dispatcher::sent, [&] {
        outcome = onDisk(u"SELECT code || ' ' || network_reference || ' ' || at "
                         "FROM outcome"_s);
    });
    add(u"600"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(outcome.toString(), u"1 42 "_s + noon());
}

TEST_F(DispatcherSending, aLongTextGoesInPartsOfOneReferenceAndIsToldOnce)
{
    QSet<QByteArray> hashes;
    m_onSubmission = [&] {
        hashes << onDisk(u"SELECT part_hash FROM message WHERE state = 1"_s).toByteArray();
    };
    add(u"600"_s, longText(3));
    add(u"601"_s, longText(2));
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    ASSERT_EQ(m_line->payloads.size(), 5);
    QString together;
    QList<int> references;
    for (qsizetype i = 0; i < 5; ++i) {
        const std::optional<DecodedSubmit> part = decodeSubmit(m_line->payloads.at(i));
        ASSERT_TRUE(part);
        EXPECT_EQ(part->number, i < 3 ? i + 1 : i - 2);
        EXPECT_EQ(part->total, i < 3 ? 3 : 2);
        references << part->concatenationReference.value_or(-1);
        together += part->text;
    }
    EXPECT_EQ(together, longText(3) + longText(2));
    EXPECT_EQ(references.count(references.at(0)), 3);
    EXPECT_EQ(references.count(references.at(3)), 2);
    EXPECT_NE(references.at(0), references.at(3));
    EXPECT_EQ(eventsButQueue().size(), 4);
    EXPECT_EQ(hashes.size(), 5);
}

TEST_F(DispatcherSending, stopFinishesThePartInProgressAndStartSendsTheOthersOnly)
{
    m_onSubmission = [this] {
        m_onSubmission = nullptr;
        done(m_dispatcher->stop());
        EXPECT_EQ(m_events.constLast(), u"status 0"_s);
    };
    add(u"600"_s, longText(3));
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] {
        return m_line->payloads.size() == 1 && m_modem->state() == Modem::State::Closed;
    }));
    takeTurns();
    EXPECT_EQ(m_line->payloads.size(), 1);
    EXPECT_EQ(onDisk(u"SELECT state || ' ' || parts_sent FROM message"_s).toString(), u"0 1"_s);

    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    ASSERT_EQ(m_line->payloads.size(), 3);
    QList<int> numbers;
    QSet<int> references;
    for (const QByteArray &payload : m_line->payloads) {
        numbers << decodeSubmit(payload)->number;
        references << decodeSubmit(payload)->concatenationReference.value_or(-1);
    }
    EXPECT_EQ(numbers, QList<int>({1, 2, 3}));
    EXPECT_EQ(references.size(), 1);
    EXPECT_EQ(count(u"sent 600 "_s + longText(3) + u" 0"_s), 1);
}

TEST_F(DispatcherSending, anEngineThatEndedBetweenTwoPartsGoesOnWithTheOthers)
{
    done(m_store->settings().setToRun(true));
    done(m_store->queue().add({{u"600"_s, longText(3)}}, noon()));
    const qint64 id = given(m_store->queue().first())->id;
    done(m_store->queue().begin({{id, 77, {}}}));
    done(m_store->queue().endPart(id, 2));
    done(m_dispatcher->resume());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    ASSERT_EQ(m_line->payloads.size(), 1);
    EXPECT_EQ(decodeSubmit(m_line->payloads.constFirst())->number, 3);
    EXPECT_EQ(decodeSubmit(m_line->payloads.constFirst())->concatenationReference, 77);
}

TEST_F(DispatcherSending, anEngineThatComesUpStoppedLetsAMessageBetweenPartsBeEdited)
{
    done(m_store->queue().add({{u"600"_s, longText(3)}}, noon()));
    const qint64 id = given(m_store->queue().first())->id;
    done(m_store->queue().begin({{id, 77, {}}}));
    done(m_store->queue().endPart(id, 2));
    done(m_dispatcher->resume());
    takeTurns();
    EXPECT_TRUE(given(m_store->queue().update({}, {id})));
    EXPECT_EQ(m_store->queue().size(), 0);
}

TEST_F(DispatcherSending, whatWasLeavingWhenTheEngineEndedIsReportedOnceAndNeverSent)
{
    done(m_store->settings().setToRun(true));
    done(m_store->queue().add({{u"600"_s, u"first"_s}}, noon()));
    done(m_store->queue().begin({{given(m_store->queue().first())->id, std::nullopt, {}}}));
    for (int round = 0; round < 2; ++round) {
        m_dispatcher->setHasListeners(false);
        done(m_dispatcher->resume());
        ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
        const QList<Outcome> failures = given(m_store->outcomes().unreportedFailures());
        ASSERT_EQ(failures.size(), 1);
        EXPECT_EQ(failures.constFirst().phone, u"600"_s);
        EXPECT_EQ(failures.constFirst().text, u"first"_s);
        EXPECT_EQ(failures.constFirst().code, -39);
        // The warning comes with the failure, whenever that is heard.
        EXPECT_TRUE(m_dispatcher->unacknowledgedWarnings().entries().isEmpty());
        makeDispatcher();
    }
    EXPECT_EQ(submissions(), 0);
}

struct Unsendable
{
    const char *name;
    QString phone;
    QString text;
    int code;
};

class DispatcherUnsendable : public DispatcherFixture,
                             public testing::WithParamInterface<Unsendable>
{};

TEST_P(DispatcherUnsendable, isReportedAndHoldsUpNobody)
{
    add(GetParam().phone, GetParam().text);
    add(u"601"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_TRUE(
        has(u"failed %1 %2 %3"_s.arg(GetParam().phone, GetParam().text).arg(GetParam().code)));
    EXPECT_EQ(taken(), QStringList({u"601 text"_s}));
}

INSTANTIATE_TEST_SUITE_P(
    Messages, DispatcherUnsendable,
    testing::Values(Unsendable{"noPhone", QString(), u"text"_s, -11},
                    Unsendable{"words", u"call me"_s, u"text"_s, -18},
                    Unsendable{"manyDigits", QString(21, u'1'), u"text"_s, -17},
                    Unsendable{"manyWords", u"600"_s, QString(255 * 152 + 1, u'x'), -16}),
    [](const auto &message) { return std::string(message.param.name); });

TEST_F(DispatcherSending, aMessageOfSeveralPartsIsEncodedOnce)
{
    add(u"600"_s, longText(5));
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(m_line->payloads.size(), 5);
    EXPECT_EQ(m_encodings, 1);
}

TEST_F(DispatcherSending, nothingBeginsBeforeWhoeverChangedTheQueueIsAnswered)
{
    startReady();
    add(u"600"_s);
    EXPECT_TRUE(has(u"queue"_s));
    EXPECT_FALSE(m_dispatcher->isSending());
    EXPECT_EQ(onDisk(u"SELECT state FROM message"_s), 0);
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
}

} // namespace

} // namespace norvane
