#include "TovekSMService/modem/device/ModemFixture.h"

namespace norvane {

namespace {

/// Each cut must end in exactly one word about the part, and in a closed modem that opens again.
class CutModem : public ModemFixture
{
protected:
    /// Sends with the line breaking as `cut` says.
    template <typename Cut>
    void sendCut(Cut cut)
    {
        m_line->payloads.clear();
        openReady();
        m_accepted->clear();
        m_partFailed->clear();
        m_failed->clear();
        m_line->commands.clear();
        cut();
        m_modem->send(part());
        ASSERT_TRUE(until([this] { return m_failed->count() == 1; }));
        EXPECT_EQ(failure().code, -5);
        EXPECT_EQ(m_modem->state(), Modem::State::Closed);
        EXPECT_EQ(m_accepted->count() + m_partFailed->count(), 1);
        // What the device has as a whole is never told as not sent.
        if (!m_line->payloads.isEmpty() && m_accepted->isEmpty()) {
            EXPECT_TRUE(sendFailure().mayBeDelivered);
            EXPECT_EQ(static_cast<int>(sendFailure().rule.treatment),
                      static_cast<int>(Treatment::Permanent));
        }
        EXPECT_LE(m_accepted->count(), m_line->payloads.size());
    }
};

TEST_F(CutModem, endsRightWhereverTheAnswerIsCut)
{
    // Prompt, reference, OK: 4 + 13 + 2 + 6 bytes and a few.
    const int whole = static_cast<int>(m_line->prompt.size() + m_line->submitAnswer.size());
    int accepted = 0;
    int uncertain = 0;
    int unsent = 0;
    for (int said = 0; said <= whole; ++said) {
        SCOPED_TRACE(said);
        sendCut([&] { m_line->breakAfterSaid = said; });
        if (!m_accepted->isEmpty())
            ++accepted;
        else if (sendFailure().mayBeDelivered)
            ++uncertain;
        else
            ++unsent;
        EXPECT_EQ(m_line->payloads.isEmpty(), said <= m_line->prompt.size());
    }
    EXPECT_GT(accepted, 0);
    EXPECT_GT(uncertain, 0);
    EXPECT_EQ(unsent, m_line->prompt.size());
    EXPECT_EQ(accepted + uncertain, m_line->submitAnswer.size() + 1);
}

TEST_F(CutModem, endsRightWhereverTheQuestionIsCut)
{
    const int command = static_cast<int>(qstrlen("AT+CMGS=13\r"));
    const int whole = command + static_cast<int>(part().hex.size()) + 1;
    for (int heard = 0; heard < whole; ++heard) {
        SCOPED_TRACE(heard);
        sendCut([&] { m_line->breakAfterHeard = heard; });
        ASSERT_EQ(m_partFailed->count(), 1);
        EXPECT_TRUE(m_line->payloads.isEmpty());
        // Up to the prompt nothing can have gone; from the first byte of the payload on the engine
        // can't know how far it came.
        EXPECT_EQ(sendFailure().mayBeDelivered, heard >= command);
    }
}

TEST_F(CutModem, endsRightWhereverTheInitialisationIsCut)
{
    int ready = 0;
    for (int said = 0; said < 800; said += 7) {
        SCOPED_TRACE(said);
        m_line->breakAfterSaid = said;
        m_failed->clear();
        open();
        if (m_modem->state() == Modem::State::Ready) {
            ++ready;
            m_line->breakAfterSaid = -1;
            m_modem->close();
        } else {
            EXPECT_EQ(m_failed->count(), 1);
            EXPECT_EQ(failure().code, -5);
        }
    }
    EXPECT_GT(ready, 0);
    EXPECT_LT(ready, 110);
}

} // namespace

} // namespace norvane
