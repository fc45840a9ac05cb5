#include "TovekSMService/host/StoredPinGate.h"

#include "TovekSMService/store/StoreFixture.h"
#include "support/TurnedTime.h"

#include <QEventLoop>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Decision = PinGate::Decision;

class StoredPinGateTest : public StoreFixture
{
protected:
    /// The engine as it comes up anew: another gate over the reopened store.
    void restart()
    {
        m_gate.reset();
        reopen();
        m_gate = makeGate();
    }

    std::unique_ptr<StoredPinGate> makeGate()
    {
        return std::make_unique<StoredPinGate>(
            m_store->pins(), [] { return noon(); }, m_time);
    }

    Decision ask(std::optional<int> triesLeft = std::nullopt)
    {
        return m_gate->mayTry(m_sim, m_pin, triesLeft);
    }

    PinHistory onDisk() const { return given(m_store->pins().history(m_sim.name(), m_pin)); }

    SimIdentity m_sim{u"893407"_s, u"490154"_s};
    const SimIdentity m_unnumbered{{}, m_sim.imei};
    QString m_pin = u"1234"_s;
    TurnedTime m_time;
    std::unique_ptr<StoredPinGate> m_gate = makeGate();
};

TEST_F(StoredPinGateTest, anAttemptIsOnDiskBeforeItMayBeMade)
{
    EXPECT_EQ(ask(), Decision::Try);
    EXPECT_EQ(onDisk(), PinHistory::Tried);
    OtherConnection other(file());
    EXPECT_EQ(other
                  .value(u"SELECT count(*) FROM pin_attempt WHERE at = '%1' AND "
                         "history = 1 AND sim IN ('893407', 'numbered in 490154')"_s.arg(noon()))
                  .toInt(),
              2);
}

TEST_F(StoredPinGateTest, anAttemptOfUnknownEndIsNeverMadeAgain)
{
    ask();
    EXPECT_EQ(ask(), Decision::AlreadyTried);
    restart();
    EXPECT_EQ(ask(3), Decision::AlreadyTried);
}

TEST_F(StoredPinGateTest, aRefusedPinIsNeverTriedAgain)
{
    ask();
    m_gate->refused(m_sim, m_pin);
    EXPECT_EQ(onDisk(), PinHistory::Refused);
    restart();
    EXPECT_EQ(ask(3), Decision::AlreadyTried);
}

TEST_F(StoredPinGateTest, anAcceptedPinIsUsedWheneverTheSimAsks)
{
    ask();
    m_gate->accepted(m_sim, m_pin);
    for (int round = 0; round < 3; ++round) {
        restart();
        EXPECT_EQ(ask(1), Decision::Try);
        EXPECT_EQ(onDisk(), PinHistory::Accepted);
    }
}

TEST_F(StoredPinGateTest, anAcceptedPinThatIsRefusedLaterIsNotTriedAgain)
{
    ask();
    m_gate->accepted(m_sim, m_pin);
    ask();
    m_gate->refused(m_sim, m_pin);
    EXPECT_EQ(ask(), Decision::AlreadyTried);
    restart();
    EXPECT_EQ(ask(), Decision::AlreadyTried);
}

TEST_F(StoredPinGateTest, anotherPinAndAnotherSimHaveTheirOwnTry)
{
    ask();
    m_gate->refused(m_sim, m_pin);
    EXPECT_EQ(m_gate->mayTry(m_sim, u"4321"_s, 2), Decision::Try);
    EXPECT_EQ(m_gate->mayTry({u"8935"_s, m_sim.imei}, m_pin, 2), Decision::Try);
}

TEST_F(StoredPinGateTest, aPinThatWasRefusedWithoutTheSimsNumberIsNotTriedWithIt)
{
    EXPECT_EQ(m_gate->mayTry(m_unnumbered, m_pin, 3), Decision::Try);
    EXPECT_EQ(ask(3), Decision::AlreadyTried) << "its end isn't known";
    m_gate->refused(m_unnumbered, m_pin);
    restart();
    EXPECT_EQ(ask(2), Decision::AlreadyTried);
    EXPECT_EQ(m_gate->mayTry({m_sim.iccid, u"350000"_s}, m_pin, 2), Decision::Try)
        << "in another device";
}

TEST_F(StoredPinGateTest, aPinThatWasRefusedWithTheSimsNumberIsNotTriedWithoutIt)
{
    ask();
    EXPECT_EQ(m_gate->mayTry(m_unnumbered, m_pin, 3), Decision::AlreadyTried);
    m_gate->refused(m_sim, m_pin);
    const SimIdentity second{u"8935"_s, m_sim.imei};
    EXPECT_EQ(m_gate->mayTry(second, m_pin, 3), Decision::Try);
    m_gate->accepted(second, m_pin);
    restart();
    EXPECT_EQ(m_gate->mayTry(m_unnumbered, m_pin, 2), Decision::AlreadyTried)
        << "it may be the first SIM again";
}

TEST_F(StoredPinGateTest, aPinThatWasAcceptedUnderAnotherNameHasOneTryMore)
{
    m_gate->mayTry(m_unnumbered, m_pin, 3);
    m_gate->accepted(m_unnumbered, m_pin);
    EXPECT_EQ(ask(1), Decision::TooFewTries);
    EXPECT_EQ(ask(2), Decision::Try);
    EXPECT_EQ(ask(2), Decision::AlreadyTried);
}

TEST_F(StoredPinGateTest, anAcceptedPinThatIsRefusedUnderAnotherNameIsNotTriedAgain)
{
    // The PIN is changed in a phone, and the device tells the SIM's number at one time only.
    const SimIdentity names[][2] = {{m_sim, m_unnumbered}, {m_unnumbered, m_sim}};
    for (const auto &[first, second] : names) {
        m_pin = first == m_sim ? u"1111"_s : u"2222"_s;
        m_gate->mayTry(first, m_pin, 3);
        m_gate->accepted(first, m_pin);
        EXPECT_EQ(m_gate->mayTry(second, m_pin, 2), Decision::Try);
        m_gate->refused(second, m_pin);
        restart();
        EXPECT_EQ(m_gate->mayTry(first, m_pin, 2), Decision::AlreadyTried);
        EXPECT_EQ(m_gate->mayTry(second, m_pin, 2), Decision::AlreadyTried);
    }
}

TEST_F(StoredPinGateTest, anAttemptOfUnknownEndUnderAnotherNameLeavesAnAcceptedPinInUse)
{
    ask();
    m_gate->accepted(m_sim, m_pin);
    EXPECT_EQ(m_gate->mayTry(m_unnumbered, m_pin, 3), Decision::Try);
    restart();
    EXPECT_EQ(ask(1), Decision::Try);
}

TEST_F(StoredPinGateTest, whatAnotherSimTakesDoesNotEndAnAttemptOfUnknownEnd)
{
    ask();
    const SimIdentity second{u"8935"_s, m_sim.imei};
    m_gate->mayTry(second, m_pin, 3);
    m_gate->accepted(second, m_pin);
    EXPECT_EQ(m_gate->mayTry(m_unnumbered, m_pin, 3), Decision::AlreadyTried);
    EXPECT_EQ(m_gate->mayTry(second, m_pin, 1), Decision::Try);
}

TEST_F(StoredPinGateTest, whatCouldNotBeRecordedHoldsUnderEveryNameOfTheSim)
{
    ask();
    m_gate->accepted(m_sim, m_pin);
    OtherConnection other(file());
    other.lock();
    m_gate->refused(m_sim, m_pin);
    EXPECT_EQ(m_gate->mayTry({m_sim.iccid, {}}, m_pin, 2), Decision::AlreadyTried);
    EXPECT_EQ(m_gate->mayTry(m_unnumbered, m_pin, 2), Decision::AlreadyTried);
    other.unlock();
    EXPECT_EQ(m_gate->mayTry(m_unnumbered, m_pin, 2), Decision::AlreadyTried);
    EXPECT_EQ(onDisk(), PinHistory::Refused);
}

TEST_F(StoredPinGateTest, aRefusalEndsAnAcceptanceThatIsStillToBeRecorded)
{
    ask();
    OtherConnection other(file());
    other.lock();
    m_gate->accepted(m_sim, m_pin);
    EXPECT_EQ(m_gate->mayTry({m_sim.iccid, {}}, m_pin, 2), Decision::Try);
    other.unlock();
    m_gate->refused({m_sim.iccid, {}}, m_pin);
    EXPECT_EQ(ask(), Decision::AlreadyTried);
    EXPECT_EQ(onDisk(), PinHistory::Refused);
}

TEST_F(StoredPinGateTest, aSimWhoseDeviceHasNoNumberHasItsOwnRecordAlone)
{
    m_sim.imei.clear();
    ask();
    m_gate->refused(m_sim, m_pin);
    EXPECT_EQ(ask(3), Decision::AlreadyTried);
    EXPECT_EQ(m_gate->mayTry({{}, u"490154"_s}, m_pin, 3), Decision::Try);
}

TEST_F(StoredPinGateTest, withTooFewTriesLeftNothingIsRecorded)
{
    EXPECT_EQ(ask(1), Decision::TooFewTries);
    EXPECT_EQ(ask(0), Decision::TooFewTries);
    EXPECT_EQ(onDisk(), PinHistory::NeverTried);
    EXPECT_EQ(ask(2), Decision::Try);
}

TEST_F(StoredPinGateTest, whatCannotBeRecordedMustNotBeTried)
{
    OtherConnection other(file());
    other.lock();
    EXPECT_EQ(ask(), Decision::NotRecorded);
    other.unlock();
    EXPECT_EQ(onDisk(), PinHistory::NeverTried);
    EXPECT_EQ(ask(), Decision::Try);
}

TEST_F(StoredPinGateTest, anAcceptedPinThatCannotBeRecordedIsRecordedWhenTheStoreIsBack)
{
    ask();
    OtherConnection other(file());
    other.lock();
    m_gate->accepted(m_sim, m_pin);
    EXPECT_EQ(onDisk(), PinHistory::Tried);
    other.unlock();
    EXPECT_TRUE(m_time.until([this] { return onDisk() == PinHistory::Accepted; }));
}

TEST_F(StoredPinGateTest, anAcceptedPinUnlocksAgainAlthoughItsRecordIsStillToCome)
{
    ask();
    OtherConnection other(file());
    other.lock();
    m_gate->accepted(m_sim, m_pin);
    EXPECT_EQ(ask(), Decision::Try);
    other.unlock();
    EXPECT_EQ(ask(), Decision::Try);
    EXPECT_EQ(onDisk(), PinHistory::Accepted);
}

TEST_F(StoredPinGateTest, aRefusalThatCannotBeRecordedStillHolds)
{
    ask();
    m_gate->accepted(m_sim, m_pin);
    ask();
    OtherConnection other(file());
    other.lock();
    m_gate->refused(m_sim, m_pin);
    EXPECT_EQ(ask(), Decision::AlreadyTried);
    other.unlock();
    EXPECT_EQ(onDisk(), PinHistory::Accepted);
    EXPECT_EQ(ask(), Decision::AlreadyTried);
    EXPECT_EQ(onDisk(), PinHistory::Refused);
    EXPECT_EQ(ask(), Decision::AlreadyTried);
}

} // namespace

} // namespace norvane
