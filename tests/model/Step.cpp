#include "model/Step.h"

#include <array>

namespace norvane::model {

bool isFault(const Step &step)
{
    return step.kind >= StepKind::Stop || step.answer != Answer::Known;
}

std::string textOf(StepKind kind)
{
    constexpr std::array texts{
        "registers",
        "shows that it lives",
        "learns that it was taken over",
        "claims",
        "releases what it may have claimed",
        "reports what became of the part",
        "hands over what it kept",
        "takes over what the other claimed",
        "takes over all that the other holds",
        "has a transaction run that it gave up",
        "hands the part to the device",
        "learns that the part was accepted",
        "gets no answer although the part left",
        "gets no answer, and the part didn't leave",
        "learns that the message was refused",
        "learns that the part can be tried again",
        "can't reach the database",
        "keeps what it learned in its file",
        "deletes what it kept",
        "takes a fact out of its file",
        "starts again",
        "continues",
        "reaches the database again",
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
    constexpr std::array answers{"", ", committed, the answer lost",
                                 ", not committed, the answer lost",
                                 ", not run yet, the answer lost"};
    std::string text = engines[step.engine] + textOf(step.kind);
    if (step.message < messageCount)
        text += " message " + std::to_string(step.message + 1);
    return text + answers[static_cast<std::size_t>(step.answer)];
}

} // namespace norvane::model
