#include "TovekSMService/modem/device/ModemFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using State = Modem::State;

const QString rightPin = u"1234"_s;
const QString knownSimId = u"8934071100275844103"_s;
const QByteArray pinCommand = "AT+CPIN=\"1234\"";

/// A device whose SIM asks for a PIN.
class LockedModem : public ModemFixture
{
protected:
    LockedModem()
    {
        state("SIM PIN");
        m_line->onCommand = [this](const QByteArray &command) -> std::optional<QByteArray> {
            if (command == pinCommand && m_rightPin) {
                EXPECT_TRUE(m_gate.history.contains(key(m_gate.lastSim.name())))
                    << "the attempt wasn't on record when the PIN left";
                state("READY");
                return FakeModemLine::answer("OK");
            }
            if (command == pinCommand)
                return m_pinAnswer;
            return std::nullopt;
        };
    }

    void state(const QByteArray &told)
    {
        m_line->answers.insert("AT+CPIN?", FakeModemLine::info("+CPIN: " + told));
    }

    void tries(int left)
    {
        m_line->answers.insert(
            "AT+CPINR=\"SIM PIN\"",
            FakeModemLine::info("+CPINR: SIM PIN," + QByteArray::number(left) + ",3"));
    }

    static QString key(const QString &simId = knownSimId) { return simId + u'/' + rightPin; }
    qsizetype attempts() const { return m_line->commands.count(pinCommand); }

    bool m_rightPin = true;
    QByteArray m_pinAnswer = FakeModemLine::answer("+CME ERROR: 16");
};

TEST_F(LockedModem, unlocksTheSimWithTheRightPin)
{
    tries(3);
    openReady(rightPin);
    EXPECT_EQ(attempts(), 1);
    EXPECT_EQ(m_gate.lastSim, (SimIdentity{knownSimId, u"490154203237518"_s}));
    EXPECT_EQ(m_gate.lastTriesLeft, 3);
    EXPECT_EQ(m_gate.history.value(key()), PinHistory::Accepted);
}

TEST_F(LockedModem, unlocksTheSameSimAgainAfterEachPowerCycle)
{
    for (int cycle = 1; cycle <= 3; ++cycle) {
        state("SIM PIN");
        tries(cycle == 3 ? 1 : 3);
        openReady(rightPin);
        EXPECT_EQ(attempts(), cycle);
    }
}

TEST_F(LockedModem, triesARefusedPinNeverAgain)
{
    m_rightPin = false;
    open(rightPin);
    EXPECT_EQ(failure().code, -27);
    EXPECT_TRUE(failure().needsOperator);
    EXPECT_EQ(m_gate.history.value(key()), PinHistory::Refused);
    open(rightPin);
    open(rightPin);
    EXPECT_EQ(failure().code, -27);
    EXPECT_TRUE(failure().needsOperator);
    EXPECT_EQ(attempts(), 1);
    EXPECT_FALSE(failure().text.contains(rightPin));

    // Another one may be tried once.
    m_line->answers.insert("AT+CPIN=\"4321\"", FakeModemLine::answer("+CME ERROR: 16"));
    open(u"4321"_s);
    open(u"4321"_s);
    EXPECT_EQ(m_line->commands.count("AT+CPIN=\"4321\""), 1);
}

TEST_F(LockedModem, readsFromTheStateWhatAnUnclearAnswerMeant)
{
    m_rightPin = false;
    for (const char *answer : {"ERROR", "+CME ERROR: 3", ""}) {
        m_gate.history.clear();
        m_line->commands.clear();
        m_pinAnswer = *answer == '\0' ? QByteArray() : FakeModemLine::answer(answer);
        open(rightPin);
        EXPECT_EQ(failure().code, -27) << answer;
        EXPECT_EQ(attempts(), 1) << answer;
        EXPECT_EQ(m_gate.history.value(key()), PinHistory::Refused) << answer;
    }

    // No answer, but the SIM is open.
    m_gate.history.clear();
    m_line->onCommand = [this](const QByteArray &command) -> std::optional<QByteArray> {
        if (command != pinCommand)
            return std::nullopt;
        state("READY");
        return QByteArray();
    };
    openReady(rightPin);
    EXPECT_EQ(m_gate.history.value(key()), PinHistory::Accepted);
}

TEST_F(LockedModem, anOkThatAnswersSomethingElseIsNotTheSimsWord)
{
    // The device is one answer behind: the refusal comes as the answer to the next question.
    m_rightPin = false;
    m_pinAnswer = FakeModemLine::answer("OK");
    const auto device = m_line->onCommand;
    m_line->onCommand = [&](const QByteArray &command) -> std::optional<QByteArray> {
        if (command == "AT+CPIN?" && attempts() == 1)
            return FakeModemLine::answer("+CME ERROR: 16");
        return device(command);
    };
    open(rightPin);
    EXPECT_EQ(failure().code, -27);
    EXPECT_EQ(m_gate.history.value(key()), PinHistory::Refused);

    // Or is lost, and the SIM goes on asking.
    m_gate.history.clear();
    m_line->commands.clear();
    m_line->onCommand = device;
    open(rightPin);
    EXPECT_EQ(failure().code, -27);
    EXPECT_EQ(m_gate.history.value(key()), PinHistory::Refused);
    open(rightPin);
    EXPECT_EQ(attempts(), 1);
}

TEST_F(LockedModem, tellsWhenThePukIsAskedForAfterAWrongPin)
{
    m_rightPin = false;
    m_pinAnswer = FakeModemLine::answer("+CME ERROR: 12");
    open(rightPin);
    EXPECT_EQ(failure().code, -31);
    EXPECT_TRUE(failure().needsOperator);
    EXPECT_EQ(m_gate.history.value(key()), PinHistory::Refused);
}

TEST_F(LockedModem, doesNotTryWithFewerThanTwoTriesLeft)
{
    for (const int left : {0, 1}) {
        tries(left);
        open(rightPin);
        EXPECT_EQ(failure().code, -30);
        EXPECT_TRUE(failure().needsOperator);
    }
    EXPECT_EQ(attempts(), 0);
    tries(2);
    openReady(rightPin);
    EXPECT_EQ(attempts(), 1);
}

TEST_F(LockedModem, asksForTheTriesInAnotherWayToo)
{
    m_line->answers.insert("AT^CPIN?", FakeModemLine::info("^CPIN: SIM PIN,,10,1,10,3"));
    open(rightPin);
    EXPECT_EQ(m_gate.lastTriesLeft, 1);
    EXPECT_EQ(attempts(), 0);
}

TEST_F(LockedModem, doesNotTryWhatCannotBeRecorded)
{
    m_gate.recording = false;
    open(rightPin);
    EXPECT_EQ(failure().code, -30);
    EXPECT_FALSE(failure().needsOperator);
    EXPECT_EQ(attempts(), 0);
}

TEST_F(LockedModem, asksForAPinWhereNoneIsSet)
{
    open();
    EXPECT_EQ(failure().code, -30);
    EXPECT_TRUE(failure().needsOperator);
    EXPECT_EQ(m_gate.asked, 0);
}

TEST_F(LockedModem, triesNothingThatIsNoPin)
{
    for (const char *pin : {"123", "123456789", "12a4", "12\"4", "1234\"\r", "12 34",
                            "\xD9\xA1\xD9\xA2\xD9\xA3\xD9\xA4"}) {
        open(QString::fromUtf8(pin));
        EXPECT_EQ(failure().code, -27) << pin;
        EXPECT_TRUE(failure().needsOperator);
    }
    EXPECT_EQ(m_gate.asked, 0);
    for (const QByteArray &command : std::as_const(m_line->commands))
        EXPECT_FALSE(command.startsWith("AT+CPIN="));
    openReady(u" 1234 "_s);
}

TEST_F(LockedModem, knowsTheSimByTheImeiIfItDoesNotTellItsNumber)
{
    m_line->answers.remove("AT+CCID");
    openReady(rightPin);
    EXPECT_EQ(m_gate.lastSim, (SimIdentity{{}, u"490154203237518"_s}));
}

TEST_F(LockedModem, waitsForTheNumberOfASimThatIsBusy)
{
    // Taken for one without a number it would get its refused PIN a second time.
    int asked = 0;
    const auto device = m_line->onCommand;
    m_line->onCommand = [&](const QByteArray &command) -> std::optional<QByteArray> {
        if (command == "AT+CCID" && ++asked <= 2)
            return FakeModemLine::answer("+CME ERROR: 14");
        return device(command);
    };
    openReady(rightPin);
    EXPECT_EQ(m_gate.lastSim, (SimIdentity{knownSimId, u"490154203237518"_s}));
    EXPECT_EQ(m_gate.asked, 1);
}

TEST_F(LockedModem, triesNoPinOnASimThatNobodyCanTellFromOthers)
{
    for (const char *command : {"AT+CCID", "AT+CGSN"})
        m_line->answers.remove(command);
    open(rightPin);
    EXPECT_EQ(failure().code, -28);
    EXPECT_EQ(attempts(), 0);
}

TEST_F(LockedModem, anAttemptCutOffIsNotRepeated)
{
    m_line->onCommand = [this](const QByteArray &command) -> std::optional<QByteArray> {
        if (command == pinCommand)
            m_line->breakOff();
        return command == pinCommand ? std::optional(QByteArray()) : std::nullopt;
    };
    open(rightPin);
    EXPECT_EQ(failure().code, -5);
    EXPECT_EQ(m_gate.history.value(key()), PinHistory::Tried);
    open(rightPin);
    EXPECT_EQ(failure().code, -27);
    EXPECT_EQ(attempts(), 1);
}

TEST_F(LockedModem, waitsUntilTheSimIsReadyAfterItsPin)
{
    int looks = 0;
    const auto device = m_line->onCommand;
    m_line->onCommand = [&](const QByteArray &command) -> std::optional<QByteArray> {
        if (command == "AT+CPIN?" && attempts() == 1 && ++looks <= 3)
            return looks == 1 ? FakeModemLine::info("+CPIN: SIM PIN")
                              : FakeModemLine::answer("+CME ERROR: 14");
        return device(command);
    };
    openReady(rightPin);
    EXPECT_EQ(attempts(), 1);
    EXPECT_EQ(m_gate.history.value(key()), PinHistory::Accepted);
}

struct StateRow
{
    const char *answer;
    int code;
    bool needsOperator;
};

TEST_F(ModemFixture, tellsWhatTheSimWaitsFor)
{
    const StateRow rows[] = {
        {"+CPIN: SIM PUK", -31, true},    {"+CPIN: SIM PIN2", -32, true},
        {"+CPIN: SIM PUK2", -33, true},   {"+CPIN: PH-SIM PIN", -10, true},
        {"+CPIN: PH-NET PIN", -10, true}, {"+CPIN: NOT INSERTED", -29, false},
        {"+CPIN: NOT READY", -28, false}, {"+CPIN: SIM BUSY", -28, false},
        {"+CPIN: SOMETHING", -41, false}, {"+CME ERROR: 5", -10, true},
        {"+CME ERROR: 10", -29, false},   {"+CME ERROR: SIM not inserted", -29, false},
        {"+CME ERROR: 11", -30, true},    {"+CME ERROR: 12", -31, true},
        {"+CME ERROR: 13", -28, false},   {"+CME ERROR: 14", -28, false},
        {"+CME ERROR: 15", -28, false},   {"+CME ERROR: 17", -32, true},
        {"+CME ERROR: 18", -33, true},    {"+CME ERROR: 40", -10, true},
        {"+CME ERROR: 100", -28, false},  {"ERROR", -28, false},
    };
    for (const StateRow &row : rows) {
        const bool isError = !QByteArray(row.answer).startsWith("+CPIN");
        m_line->answers.insert("AT+CPIN?", isError ? FakeModemLine::answer(row.answer)
                                                   : FakeModemLine::info(row.answer));
        open();
        EXPECT_EQ(failure().code, row.code) << row.answer;
        EXPECT_EQ(failure().needsOperator, row.needsOperator) << row.answer;
        EXPECT_EQ(m_modem->state(), State::Closed) << row.answer;
    }
    EXPECT_EQ(m_gate.asked, 0);
}

TEST_F(ModemFixture, goesOnWithADeviceThatDoesNotKnowTheQuestionForThePin)
{
    for (const char *answer : {"+CME ERROR: 4", "COMMAND NOT SUPPORT"}) {
        m_line->answers.insert("AT+CPIN?", FakeModemLine::answer(answer));
        open();
        EXPECT_EQ(m_modem->state(), State::Ready) << answer;
    }
}

TEST_F(ModemFixture, waitsForASimThatComesUpSlowly)
{
    int looks = 0;
    m_line->onCommand = [&looks](const QByteArray &command) -> std::optional<QByteArray> {
        if (command == "AT+CPIN?" && ++looks < 4)
            return looks == 1 ? QByteArray() : FakeModemLine::answer("+CME ERROR: SIM busy");
        return std::nullopt;
    };
    openReady();
    EXPECT_EQ(looks, 4);
}

} // namespace

} // namespace norvane
