#include "TovekSMService/modem/at/AtDialogue.h"

#include "TovekSMService/modem/at/FakeModemLine.h"
#include "contract/ErrorCodes.h"
#include "support/TurnedTime.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class Dialogue : public testing::Test
{
protected:
    Dialogue()
    {
        EXPECT_TRUE(m_line.open(u"/dev/fake"_s, 9600));
        m_line.answers.insert("AT", FakeModemLine::answer("OK"));
        m_line.answers.insert("AT+X", FakeModemLine::answer("OK"));
        m_line.answers.insert("AT+Y", FakeModemLine::answer("OK"));
    }

    static AtDialogue::Question question(const QByteArray &command)
    {
        return {{command, 1000, {}}, {}, {}, true};
    }

    /// A question whose answer is a failure, whatever it says.
    static AtDialogue::Question failing(const QByteArray &command)
    {
        AtDialogue::Question question = Dialogue::question(command);
        question.take = [](const AtAnswer &) -> ModemResult {
            return failed(ModemFailure{ErrorCode::phoneInit, u"no"_s, true});
        };
        return question;
    }

    std::optional<ModemResult> askAll(const QList<AtDialogue::Question> &questions)
    {
        std::optional<ModemResult> finished;
        m_dialogue.askAll(questions, [&](const ModemResult &result) { finished = result; });
        m_time.until([&] { return finished.has_value() || m_lost.has_value(); });
        return finished;
    }

    TurnedTime m_time;
    FakeModemLine m_line;
    const ModemTimings m_timings;
    AtChannel m_channel{&m_line, m_timings, m_time};
    std::optional<ModemFailure> m_lost;
    AtDialogue m_dialogue{m_channel, m_timings,
                          [this](const ModemFailure &failure) { m_lost = failure; }};
};

TEST_F(Dialogue, aListWhoseAnswersAreTakenEndsWell)
{
    const auto finished = askAll({question("AT+X"), question("AT+Z"), question("AT+Y")});
    ASSERT_TRUE(finished.has_value());
    EXPECT_TRUE(finished->has_value());
    EXPECT_EQ(m_line.commands, (QList<QByteArray>{"AT+X", "AT+Z", "AT+Y"}));
}

TEST_F(Dialogue, aFailureEndsTheListAndIsItsResult)
{
    const auto finished = askAll({question("AT+X"), failing("AT+Y"), question("AT+X")});
    ASSERT_TRUE(finished.has_value());
    ASSERT_FALSE(finished->has_value());
    EXPECT_EQ(finished->error().code, ErrorCode::phoneInit);
    EXPECT_EQ(finished->error().text, u"no"_s);
    EXPECT_TRUE(finished->error().needsOperator);
    EXPECT_EQ(m_line.commands, (QList<QByteArray>{"AT+X", "AT+Y"}));
    EXPECT_TRUE(askAll({question("AT+X")})->has_value()) << "nothing is left of the list";
}

TEST_F(Dialogue, aQuestionThatIsNotWantedWhenItsTurnComesIsLeftOut)
{
    AtDialogue::Question unwanted = failing("AT+Y");
    unwanted.wanted = [] { return false; };
    const auto finished = askAll({question("AT+X"), unwanted});
    ASSERT_TRUE(finished.has_value());
    EXPECT_TRUE(finished->has_value());
    EXPECT_EQ(m_line.commands, QList<QByteArray>{"AT+X"});
}

TEST_F(Dialogue, aDeviceThatStopsAnsweringIsLostAndTheListHasNoResult)
{
    m_line.silent = true;
    EXPECT_FALSE(askAll({question("AT+X")}).has_value());
    ASSERT_TRUE(m_lost.has_value());
    EXPECT_EQ(m_lost->code, ErrorCode::noRespond);
}

} // namespace

} // namespace norvane
