#include "harness/DialogueWatch.h"

#include <gtest/gtest.h>

namespace norvane {

namespace {

class WatchedDialogue : public testing::Test
{
protected:
    QList<Place> engine(const QByteArray &bytes) { return watch.read(From::Engine, bytes); }
    QList<Place> device(const QByteArray &bytes) { return watch.read(From::Device, bytes); }

    static bool areAll(const QList<Place> &places, Stage stage)
    {
        for (qsizetype i = 0; i < places.size(); ++i) {
            const Place &place = places.at(i);
            if (place.stage != stage || place.offset != i ||
                place.isLast != (i == places.size() - 1))
                return false;
        }
        return !places.isEmpty();
    }

    DialogueWatch watch;
};

} // namespace

TEST_F(WatchedDialogue, everyByteOfASubmissionHasItsPlace)
{
    watch.begin();
    EXPECT_EQ(engine("AT+CSQ\r").constFirst().stage, Stage::Outside);
    EXPECT_EQ(device("\r\nOK\r\n").constLast().stage, Stage::Outside);
    EXPECT_TRUE(areAll(engine("AT+CMGS=23\r"), Stage::Command));
    EXPECT_TRUE(areAll(device("\r\n> "), Stage::Prompt));
    const QList<Place> payload = engine("0011AB\x1A");
    EXPECT_TRUE(areAll(payload, Stage::Payload));
    EXPECT_EQ(payload.constLast().payload, "0011AB");
    const QList<Place> answer = device("\r\n+CMGS: 7\r\n\r\nOK\r\n");
    EXPECT_TRUE(areAll(answer, Stage::Answer));
    EXPECT_TRUE(answer.at(11).endsReference);
    EXPECT_FALSE(answer.at(10).endsReference);
    EXPECT_FALSE(answer.constLast().endsReference);
    EXPECT_EQ(engine("AT\r").constFirst().stage, Stage::Outside);
}

TEST_F(WatchedDialogue, aByteIsTheEnginesOrTheDevices)
{
    EXPECT_EQ(engine("AT+CMGS=23\r").constLast().from, From::Engine);
    EXPECT_EQ(device("\r\n> ").constLast().from, From::Device);
    EXPECT_EQ(engine("0011AB\x1A").constLast().from, From::Engine);
    EXPECT_EQ(device("\r\n+CMGS: 7\r\n\r\nOK\r\n").constLast().from, From::Device);
    EXPECT_EQ(engine("AT\r").constLast().from, From::Engine);
    EXPECT_EQ(device("\r\n").constLast().from, From::Device);
}

TEST_F(WatchedDialogue, submissionsAreCountedFromTheBeginning)
{
    for (int round = 0; round < 2; ++round) {
        watch.begin();
        EXPECT_EQ(engine("A").constFirst().submission, -1);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(engine("AT+CMGS=23\r").constFirst().submission, i);
            device("\r\n> ");
            engine("00\x1A");
            device("\r\n+CMS ERROR: 38\r\n");
        }
    }
}

TEST_F(WatchedDialogue, linesInBetweenBelongToTheirStage)
{
    engine("AT+CMGS=23\r");
    EXPECT_FALSE(device("\r\nRING\r\n").constLast().isLast);
    EXPECT_TRUE(device("\r\n> ").constLast().isLast);
    engine("00\x1A");
    EXPECT_FALSE(device("\r\nRING\r\n").constLast().isLast);
    EXPECT_TRUE(device("\r\nERROR\r\n").constLast().isLast);
}

TEST_F(WatchedDialogue, aPromptThatIsGivenUpEndsTheSubmission)
{
    engine("AT+CMGS=23\r");
    EXPECT_EQ(engine("\x1B\r").constFirst().stage, Stage::Outside);
    EXPECT_EQ(device("\r\n> ").constFirst().stage, Stage::Outside);
    engine("AT+CMGS=23\r");
    device("\r\n> ");
    EXPECT_EQ(engine("\x1B\r").constFirst().stage, Stage::Outside);
    EXPECT_EQ(engine("AT\r").constFirst().stage, Stage::Outside);
}

} // namespace norvane
