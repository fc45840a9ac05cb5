#include "TovekSMService/modem/device/ModemFixture.h"

namespace norvane {

namespace {

/// Lines that the device says by itself, wherever they come, must neither lose a part nor have it
/// sent twice, and leave a modem that goes on.
class InterruptedModem : public ModemFixture,
                         public testing::WithParamInterface<std::tuple<const char *, bool>>
{};

TEST_P(InterruptedModem, endsRightWhereverItIsInterrupted)
{
    m_line->interjection = std::get<0>(GetParam());
    m_line->echo = std::get<1>(GetParam());
    openReady();
    const QByteArray said = m_line->prompt + m_line->submitAnswer;
    const auto echoed = m_line->echo ? part().hex.size() + 20 : 0;
    const auto whole = static_cast<int>(said.size() + echoed);
    int accepted = 0;
    for (int at = 0; at <= whole; ++at) {
        SCOPED_TRACE(at);
        if (m_modem->state() != Modem::State::Ready)
            openReady();
        m_accepted->clear();
        m_partFailed->clear();
        m_line->payloads.clear();
        m_line->interjectAfter = at;
        send();
        ASSERT_EQ(m_accepted->count() + m_partFailed->count(), 1);
        EXPECT_LE(m_line->payloads.size(), 1);
        if (!m_accepted->isEmpty()) {
            EXPECT_EQ(m_line->payloads, QList<QByteArray>{part().hex});
            ++accepted;
        } else {
            // Told as not sent only where it wasn't.
            EXPECT_EQ(sendFailure().mayBeDelivered, !m_line->payloads.isEmpty());
        }
        EXPECT_EQ(m_modem->state(), Modem::State::Ready);
        m_line->interjectAfter = -1;
    }
    // Only a line that tears apart the prompt or the final result itself can cost an answer.
    EXPECT_GE(accepted, whole + 1 - 8);
}

INSTANTIATE_TEST_SUITE_P(Lines, InterruptedModem,
                         testing::Combine(testing::Values("\r\nRING\r\n", "\r\n+CMTI: \"SM\",3\r\n",
                                                          "\r\n+CREG: 1,\"00C3\",\"11A2\"\r\n",
                                                          "\r\n^RSSI:18\r\n"),
                                          testing::Bool()));

} // namespace

} // namespace norvane
