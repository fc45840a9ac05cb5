#include "TovekSMService/modem/device/ModemFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using State = Modem::State;

TEST_F(ModemFixture, sendsAPartAndTellsItsReference)
{
    openReady();
    m_modem->send(part());
    EXPECT_EQ(m_modem->state(), State::Busy);
    ASSERT_TRUE(until([this] { return !m_accepted->isEmpty(); }));
    EXPECT_EQ(m_accepted->first().first().toInt(), 42);
    EXPECT_EQ(m_line->commands.last(), "AT+CMGS=13");
    EXPECT_EQ(m_line->payloads, QList<QByteArray>{part().hex});
    EXPECT_EQ(m_modem->state(), State::Ready);
    EXPECT_TRUE(m_partFailed->isEmpty());
}

TEST_F(ModemFixture, takesAnOkWithoutAReference)
{
    m_line->submitAnswer = FakeModemLine::answer("OK");
    openReady();
    send();
    ASSERT_EQ(m_accepted->count(), 1);
    EXPECT_EQ(m_accepted->first().first().toInt(), -1);
}

TEST_F(ModemFixture, sendsTheNextPartFromWithinTheAnswerToTheLast)
{
    openReady();
    int sent = 1;
    QObject::connect(m_modem.get(), &Modem::partAccepted, m_modem.get(), [&] {
        if (sent++ < 2000)
            m_modem->send(part());
    });
    m_modem->send(part());
    ASSERT_TRUE(until([this] { return m_accepted->count() == 2000; }));
    EXPECT_EQ(m_line->payloads.size(), 2000);
}

TEST_F(ModemFixture, waitsForASlowPrompt)
{
    openReady();
    m_line->promptHeldBack = true;
    m_modem->send(part());
    ASSERT_TRUE(until([this] { return m_line->atPrompt; }));
    EXPECT_TRUE(m_line->payloads.isEmpty());
    m_line->say("\r\nRING\r\n\r\n> ");
    ASSERT_TRUE(until([this] { return m_accepted->count() == 1; }));
    EXPECT_EQ(m_line->payloads.size(), 1);
}

TEST_F(ModemFixture, sendsNothingWithoutAPrompt)
{
    openReady();
    m_line->promptHeldBack = true;
    const int escapes = m_line->escapes;
    send();
    EXPECT_EQ(static_cast<int>(sendFailure().problem), static_cast<int>(SendProblem::NoPrompt));
    EXPECT_EQ(sendFailure().rule.code, -39);
    EXPECT_FALSE(sendFailure().mayBeDelivered);
    EXPECT_TRUE(m_line->payloads.isEmpty());
    EXPECT_GT(m_line->escapes, escapes);
    EXPECT_EQ(m_modem->state(), State::Ready);
    EXPECT_TRUE(m_failed->isEmpty());

    // Tried again, it goes once.
    m_line->promptHeldBack = false;
    send();
    EXPECT_EQ(m_accepted->count(), 1);
    EXPECT_EQ(m_line->payloads.size(), 1);
}

TEST_F(ModemFixture, leavesAPromptThatComesTooLate)
{
    openReady();
    m_line->promptHeldBack = true;
    // The device takes the ESC for nothing while it gets the prompt ready.
    m_line->onCommand = [this](const QByteArray &command) -> std::optional<QByteArray> {
        if (command == "AT" && !m_line->atPrompt && m_line->promptHeldBack) {
            m_line->promptHeldBack = false;
            m_line->atPrompt = true;
            return QByteArray("\r\n> ");
        }
        return std::nullopt;
    };
    send();
    EXPECT_EQ(static_cast<int>(sendFailure().problem), static_cast<int>(SendProblem::NoPrompt));
    EXPECT_EQ(m_modem->state(), State::Ready);
    EXPECT_TRUE(m_line->payloads.isEmpty());
    send();
    EXPECT_EQ(m_accepted->count(), 1);
    EXPECT_EQ(m_line->payloads, QList<QByteArray>{part().hex});
}

struct ErrorRow
{
    const char *answer;
    SendProblem problem;
    int number;
    int code;
    Treatment treatment;
    bool mayBeDelivered;
};

const ErrorRow errorRows[] = {
    {"+CMS ERROR: 38", SendProblem::CmsError, 38, -36, Treatment::Temporary, false},
    {"+CMS ERROR: 195", SendProblem::CmsError, 195, -37, Treatment::Permanent, false},
    {"+CMS ERROR: 330", SendProblem::CmsError, 330, -19, Treatment::Device, false},
    {"+CMS ERROR: 332", SendProblem::CmsError, 332, -35, Treatment::Device, true},
    {"+CMS ERROR: network timeout", SendProblem::CmsError, 332, -35, Treatment::Device, true},
    {"+CMS ERROR: whatever", SendProblem::CmsError, -1, -42, Treatment::Temporary, false},
    {"+CME ERROR: 10", SendProblem::CmeError, 10, -29, Treatment::Device, false},
    {"ERROR", SendProblem::GenericError, -1, -42, Treatment::Temporary, false},
    {"COMMAND NOT SUPPORT", SendProblem::GenericError, -1, -40, Treatment::DeviceOrMessage, false},
};

void expectFailure(const SendFailure &failure, const ErrorRow &row)
{
    EXPECT_EQ(static_cast<int>(failure.problem), static_cast<int>(row.problem)) << row.answer;
    EXPECT_EQ(failure.number, row.number) << row.answer;
    EXPECT_EQ(failure.rule, (FailureRule{row.code, row.treatment})) << row.answer;
}

TEST_F(ModemFixture, tellsAnErrorAfterThePayload)
{
    openReady();
    for (const ErrorRow &row : errorRows) {
        m_line->submitAnswer = FakeModemLine::answer(row.answer);
        send();
        expectFailure(sendFailure(), row);
        EXPECT_EQ(sendFailure().mayBeDelivered, row.mayBeDelivered) << row.answer;
        EXPECT_EQ(m_modem->state(), State::Ready);
    }
    EXPECT_TRUE(m_accepted->isEmpty());
    EXPECT_EQ(m_line->payloads.size(), static_cast<qsizetype>(std::size(errorRows)));
}

TEST_F(ModemFixture, tellsAnErrorInPlaceOfThePrompt)
{
    openReady();
    for (const ErrorRow &row : errorRows) {
        m_line->answers.insert("AT+CMGS=13", FakeModemLine::answer(row.answer));
        send();
        expectFailure(sendFailure(), row);
        EXPECT_FALSE(sendFailure().mayBeDelivered) << row.answer;
    }
    EXPECT_TRUE(m_line->payloads.isEmpty());
    EXPECT_EQ(m_modem->state(), State::Ready);
}

TEST_F(ModemFixture, anOkInPlaceOfThePromptIsNoAcceptance)
{
    openReady();
    m_line->answers.insert("AT+CMGS=13", FakeModemLine::answer("OK"));
    send();
    EXPECT_TRUE(m_accepted->isEmpty());
    EXPECT_EQ(static_cast<int>(sendFailure().problem), static_cast<int>(SendProblem::NoPrompt));
    EXPECT_FALSE(sendFailure().mayBeDelivered);
}

TEST_F(ModemFixture, aLostAnswerMayMeanThatThePartWasDelivered)
{
    openReady();
    m_line->submitAnswer.clear();
    send();
    EXPECT_EQ(static_cast<int>(sendFailure().problem), static_cast<int>(SendProblem::LostAnswer));
    EXPECT_EQ(sendFailure().rule, (FailureRule{-39, Treatment::Permanent}));
    EXPECT_TRUE(sendFailure().mayBeDelivered);
    EXPECT_EQ(m_modem->state(), State::Ready);
    EXPECT_EQ(m_line->payloads.size(), 1);

    // The answer that comes after all is not the next part's.
    m_line->promptHeldBack = true;
    m_modem->send(part());
    m_line->say("\r\n+CMS ERROR: 38\r\n");
    m_line->submitAnswer = FakeModemLine::info("+CMGS: 43");
    ASSERT_TRUE(until([this] { return m_partFailed->count() == 2; }));
}

TEST_F(ModemFixture, aReferenceCountsEvenIfTheOkIsLost)
{
    openReady();
    m_line->submitAnswer = FakeModemLine::answer("+CMGS: 77");
    send();
    ASSERT_EQ(m_accepted->count(), 1);
    EXPECT_EQ(m_accepted->first().first().toInt(), 77);
    ASSERT_TRUE(until([this] { return m_modem->state() == State::Ready; }));
    EXPECT_TRUE(m_partFailed->isEmpty());
}

TEST_F(ModemFixture, aReferenceCountsWhateverErrorComesBehindIt)
{
    openReady();
    m_line->submitAnswer = "\r\n+CMGS: 78\r\n\r\n+CMS ERROR: 500\r\n";
    send();
    ASSERT_EQ(m_accepted->count(), 1);
    EXPECT_EQ(m_accepted->first().first().toInt(), 78);
    EXPECT_TRUE(m_partFailed->isEmpty());
    EXPECT_EQ(m_modem->state(), State::Ready);
}

TEST_F(ModemFixture, aDeviceThatFallsSilentAfterThePayloadIsLost)
{
    openReady();
    m_line->onCommand = [this](const QByteArray &command) -> std::optional<QByteArray> {
        if (command.startsWith("AT+CMGS"))
            m_line->submitAnswer.clear();
        return command == "AT" ? std::optional(QByteArray()) : std::nullopt;
    };
    send();
    EXPECT_TRUE(sendFailure().mayBeDelivered);
    ASSERT_TRUE(until([this] { return !m_failed->isEmpty(); }));
    EXPECT_EQ(failure().code, -39);
    EXPECT_EQ(m_modem->state(), State::Closed);
    EXPECT_EQ(m_partFailed->count(), 1);
    EXPECT_EQ(m_failed->count(), 1);
}

TEST_F(ModemFixture, sendingWithoutBeingReadyFailsWithoutSending)
{
    m_modem->send(part());
    EXPECT_TRUE(m_partFailed->isEmpty());
    ASSERT_TRUE(until([this] { return m_partFailed->count() == 1; }));
    EXPECT_EQ(static_cast<int>(sendFailure().problem), static_cast<int>(SendProblem::NotSent));
    EXPECT_EQ(sendFailure().rule, (FailureRule{-5, Treatment::Device}));

    openReady();
    m_modem->send(part());
    m_modem->send(part());
    ASSERT_TRUE(until([this] { return m_partFailed->count() == 2 && m_accepted->count() == 1; }));
    EXPECT_EQ(m_line->payloads.size(), 1);
}

TEST_F(ModemFixture, closingAnswersThePartInProgress)
{
    openReady();
    m_line->promptHeldBack = true;
    m_modem->send(part());
    m_modem->close();
    ASSERT_EQ(m_partFailed->count(), 1);
    EXPECT_EQ(static_cast<int>(sendFailure().problem),
              static_cast<int>(SendProblem::LineBrokenBefore));
    EXPECT_FALSE(sendFailure().mayBeDelivered);

    m_line->promptHeldBack = false;
    m_line->submitAnswer.clear();
    openReady();
    m_modem->send(part());
    ASSERT_TRUE(until([this] { return m_line->payloads.size() == 1; }));
    m_modem->close();
    ASSERT_EQ(m_partFailed->count(), 2);
    EXPECT_EQ(static_cast<int>(sendFailure().problem),
              static_cast<int>(SendProblem::LineBrokenAfter));
    EXPECT_TRUE(sendFailure().mayBeDelivered);
    EXPECT_TRUE(m_failed->isEmpty());
}

TEST_F(ModemFixture, aWriteThatFailsEndsThePart)
{
    openReady();
    m_line->writable = false;
    send();
    EXPECT_EQ(static_cast<int>(sendFailure().problem),
              static_cast<int>(SendProblem::LineBrokenBefore));
    ASSERT_TRUE(until([this] { return !m_failed->isEmpty(); }));
    EXPECT_EQ(failure().code, -6);
}

TEST_F(ModemFixture, reopenedOnTheNewsOfAFailedPartItGoesOnWithTheNewOpening)
{
    openReady();
    QObject::connect(m_modem.get(), &Modem::partFailed, m_modem.get(), [this] {
        m_modem->open(PortParameter{u"/dev/again"_s, 9600}, {});
    });
    m_line->breakAfterSaid = 2;
    m_modem->send(part());
    ASSERT_TRUE(until([this] { return m_ready->count() == 2; }));
    EXPECT_EQ(m_modem->state(), State::Ready);
    EXPECT_TRUE(m_failed->isEmpty());
}

} // namespace

} // namespace norvane
