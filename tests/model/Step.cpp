#include "model/Step.h"

#include <array>

namespace norvane::model {

StepKind stepKindOf(TransactionKind kind)
{
    switch (kind) {
    case TransactionKind::Enroll:
        return StepKind::Enroll;
    case TransactionKind::Release:
        return StepKind::Release;
    case TransactionKind::ReportLeft:
        return StepKind::ReportLeft;
    case TransactionKind::Apply:
        return StepKind::Apply;
    case TransactionKind::TakeOver:
        return StepKind::TakeOver;
    case TransactionKind::TakeOverBegun:
        return StepKind::TakeOverBegun;
    default:
        return StepKind::Claim;
    }
}

bool isFault(const Step &step)
{
    return step.kind >= StepKind::Stop || step.answer >= Answer::Lost;
}

std::string textOf(StepKind kind)
{
    constexpr std::array texts{
        "connects and enrolls",
        "claims",
        "releases what it may have claimed",
        "reports what an earlier process had claimed",
        "reports what became of the part",
        "hands over what it kept",
        "takes over what the other claimed",
        "takes over all that the other holds",
        "shows that it lives",
        "learns that it was taken over",
        "hands the part to the device",
        "learns that the part was accepted",
        "gets no answer although the part left",
        "gets no answer, and the part didn't leave",
        "learns that the message was refused",
        "learns that the part can be tried again",
        "keeps what it learned in its file",
        "deletes what it kept",
        "takes a fact out of its file",
        "starts again",
        "continues",
        "has a claim ended by the database",
        "is stopped",
        "is killed",
        "is killed while the part leaves",
        "is lost with its file",
        "is lost with its file while the part leaves",
        "is cut off from the database",
        "is without a database",
        "is retired, its claims taken over",
        "is retired, all that it holds taken over",
    };
    static_assert(texts.size() == stepKindCount);
    return texts[static_cast<std::size_t>(kind)];
}

std::string textOf(const Step &step)
{
    constexpr std::array engines{"A ", "B ", "Each engine "};
    constexpr std::array answers{
        "",
        ", run late",
        ", its connection lost before that runs",
        ", its connection lost before that is committed",
        ", killed before that runs",
        ", killed before that is committed",
    };
    std::string text = engines[step.engine] + textOf(step.kind);
    if (step.message < messageCount)
        text += " message " + std::to_string(step.message + 1);
    return text + answers[static_cast<std::size_t>(step.answer)];
}

} // namespace norvane::model
