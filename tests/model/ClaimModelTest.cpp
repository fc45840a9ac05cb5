#include "model/ClaimModel.h"
#include "model/ClaimProperties.h"
#include "model/Exploration.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace norvane::model {

namespace {

/// The variant of the model that breaks the rule violates this, within so many faults.
void expectViolation(Rule broken, const std::string &violation, int maxFaults = 1)
{
    const Exploration exploration = explore({.broken = broken, .maxFaults = maxFaults});
    EXPECT_EQ(exploration.violation, violation) << "in " << exploration.states << " states, by\n"
                                                << exploration.trace;
}

/// The first engine learned that it sent the message which is reported as `code` meanwhile.
State stateWithLateTruth(Code code)
{
    State state;
    Message &message = state.messages[0];
    message.row = Row::Gone;
    message.code = code;
    message.outcomeEngine = 0;
    message.outcomeEpoch = 1;
    message.timesLeft[0] = 1;
    Engine &engine = state.engines[0];
    engine.epoch = 1;
    engine.isConnected = true;
    engine.knownEpoch = 1;
    engine.firstEpoch = 1;
    engine.activity = Activity::Learned;
    engine.work = {0, 0, 1, Fate::Sent};
    return state;
}

/// The move in which the first engine reports what it learned, and knows that it did.
Move reportFrom(const State &state, const Rules &rules)
{
    const std::vector<Move> moves = movesFrom(state, rules);
    const auto move = std::find_if(moves.begin(), moves.end(), [](const Move &candidate) {
        return candidate.step.kind == StepKind::Apply && !isFault(candidate.step);
    });
    return move == moves.end() ? Move{{StepKind::Apply, 0}, state} : *move;
}

} // namespace

TEST(ClaimModel, keepsItsPropertiesThroughTwoFaults)
{
    const Exploration exploration = explore({.broken = {}, .maxFaults = 2});
    EXPECT_EQ(exploration.violation, "") << exploration.trace;
    EXPECT_GT(exploration.states, 100'000U);
    for (std::size_t index = 0; index < stepKindCount; ++index) {
        const auto kind = static_cast<StepKind>(index);
        EXPECT_NE(exploration.taken[index], kind == StepKind::TakeKept)
            << "an engine " << textOf(kind);
    }
    for (const StepKind kind :
         {StepKind::Enroll, StepKind::Claim, StepKind::Release, StepKind::ReportLeft,
          StepKind::Apply, StepKind::TakeOver, StepKind::TakeOverBegun})
        EXPECT_TRUE(exploration.takenLate[static_cast<std::size_t>(kind)])
            << "late, an engine " << textOf(kind);
}

TEST(ClaimModel, withoutFaultsNothingIsTakenOverOrKept)
{
    const Exploration exploration = explore({.broken = {}, .maxFaults = 0});
    EXPECT_EQ(exploration.violation, "") << exploration.trace;
    for (const StepKind kind : {StepKind::LearnTakeover, StepKind::Release, StepKind::ReportLeft,
                                StepKind::TakeOver, StepKind::Keep, StepKind::HandOver})
        EXPECT_FALSE(exploration.taken[static_cast<std::size_t>(kind)]) << textOf(kind);
}

TEST(ClaimModel, aLateTruthTurnsDoubtIntoSent)
{
    const State before = stateWithLateTruth(Code::InDoubt);
    const Move report = reportFrom(before, {});
    EXPECT_EQ(report.state.messages[0].code, Code::Sent);
    EXPECT_EQ(violationBy(report, before), "");
}

TEST(ClaimModel, aLateTruthLeavesAnotherFailureAlone)
{
    const State before = stateWithLateTruth(Code::Failed);
    const Move report = reportFrom(before, {});
    EXPECT_EQ(report.state.messages[0].code, Code::Failed);
    EXPECT_EQ(report.state.engines[0].activity, Activity::Idle);
    EXPECT_EQ(violationBy(report, before), "");

    const Move wrong = reportFrom(before, {.broken = Rule::LateTruthEndsDoubt});
    EXPECT_EQ(violationBy(wrong, before), "a report is changed otherwise than from doubt to sent");
}

// An engine that knows of the last part's acceptance can't have reported a refusal under the same
// epoch, so that this rule is never put to use as long as all others hold.
TEST(ClaimModel, noEngineReportsAnotherFailureOfWhatItSent)
{
    const Exploration exploration = explore({.broken = Rule::LateTruthEndsDoubt, .maxFaults = 1});
    EXPECT_EQ(exploration.violation, "") << exploration.trace;
}

TEST(BrokenClaimRule, anEngineThatWasTakenOverClaimsNothing)
{
    expectViolation(Rule::ClaimIsFenced, "a message is never reported");
}

TEST(BrokenClaimRule, aSilentEnginesClaimsAreNotGivenBack)
{
    expectViolation(Rule::TakenClaimIsInDoubt, "a message left through two devices");
}

TEST(BrokenClaimRule, aPartIsSubmittedBehindAKnownCommit)
{
    expectViolation(Rule::CommitBeforeSubmit, "a message left through two devices");
}

TEST(BrokenClaimRule, aKeptFactIsHandedOverBeforeItsDeletion)
{
    expectViolation(Rule::HandOverBeforeDeletion, "a fact that was kept is lost without its file",
                    2);
}

TEST(BrokenClaimRule, aFactIsAppliedToARowOfItsEpoch)
{
    expectViolation(Rule::FactMatchesEpoch, "a message waits of which all parts count as sent");
}

TEST(BrokenClaimRule, aRestartReportsWhatWasLeaving)
{
    expectViolation(Rule::LeftClaimIsInDoubt, "a message is never reported");
}

TEST(BrokenClaimRule, behindATakeoverOnlySendingIsTold)
{
    expectViolation(Rule::LateTruthIsSending,
                    "a report is changed otherwise than from doubt to sent");
}

TEST(BrokenClaimRule, aBegunMessageStaysWithItsEngine)
{
    expectViolation(Rule::BegunStaysWithEngine, "a message left through two devices");
}

TEST(BrokenClaimRule, aFactHasTheEpochOfItsClaim)
{
    expectViolation(Rule::FactHasEpochOfClaim, "a part left twice");
}

TEST(BrokenClaimRule, anEngineThatIsConnectedAgainHasAnotherEpoch)
{
    expectViolation(Rule::EpochPerConnection, "a message waits of which all parts count as sent");
}

TEST(BrokenClaimRule, nothingIsReleasedWhileAPartIsAtWork)
{
    expectViolation(Rule::FactsBeforeRelease, "a part left twice");
}

TEST(BrokenClaimRule, whatAnEarlierProcessClaimedIsNotReleased)
{
    expectViolation(Rule::ReleaseHasFixedStart, "a part left twice");
}

TEST(BrokenClaimRule, aLateReleaseSparesWhatIsClaimedSince)
{
    expectViolation(Rule::ReleaseHasFixedEnd, "a part left twice");
}

} // namespace norvane::model
