#include "model/ClaimProperties.h"

#include <algorithm>

namespace norvane::model {

namespace {

bool isQueued(const Message &message)
{
    return message.row != Row::Gone;
}

std::string_view violationInRow(const Message &message, std::uint8_t parts)
{
    const bool isHeld = message.row == Row::Leaving || message.row == Row::BetweenParts;
    if (isQueued(message) == (message.code != Code::None))
        return "a message is both queued and reported, or neither";
    if (isHeld != (message.holder != nobody))
        return "a message is held while it waits, or by nobody while it leaves";
    if (isQueued(message) && message.partsSent >= parts)
        return "a message waits of which all parts count as sent";
    return {};
}

std::string_view violationOfTruth(const Message &message, std::uint8_t parts)
{
    constexpr unsigned allDevices = (1U << engineCount) - 1;
    if (message.leftThrough == allDevices)
        return "a message left through two devices";
    for (std::uint8_t part = 0; part < parts; ++part) {
        const std::uint8_t times = message.timesLeft[part];
        if (times > 1)
            return "a part left twice";
        if (times == 0 && (message.code == Code::Sent || part < message.partsSent))
            return "a part counts as sent that never left";
    }
    return {};
}

/// Whether the engine has yet to report the message as sent.
bool isKnownToBeSent(const Engine &engine, std::uint8_t message)
{
    const auto tells = [message](const Fact &fact) {
        return fact.message == message && fact.fate == Fate::Sent;
    };
    return tells(engine.work) ||
           std::any_of(engine.kept.begin(), engine.kept.begin() + engine.keptCount, tells);
}

/// Whether it was kept, and is neither in the file nor in the database.
bool isFactLost(const State &state, std::uint8_t message)
{
    const Message &row = state.messages[message];
    return row.knowledge == Knowledge::InFile && row.code != Code::Sent &&
           std::none_of(
               state.engines.begin(), state.engines.end(),
               [message](const Engine &engine) { return isKnownToBeSent(engine, message); });
}

bool isKill(const Step &step)
{
    return step.kind == StepKind::Kill || step.kind == StepKind::KillWhileLeaving ||
           step.answer == Answer::Killed || step.answer == Answer::KilledWithLocks;
}

bool isAllowedChange(Code from, Code to)
{
    return from == to || from == Code::None || (from == Code::InDoubt && to == Code::Sent);
}

/// Only what an earlier process had claimed is in doubt because the engine comes back.
bool isOwnClaim(const Move &move, const State &before, std::uint8_t message)
{
    if (move.step.kind != StepKind::ReportLeft)
        return false;
    const Engine &engine = before.engines[move.step.engine];
    return engine.firstEpoch != 0 && before.messages[message].epoch >= engine.firstEpoch;
}

} // namespace

std::string_view violationIn(const State &state)
{
    for (std::uint8_t index = 0; index < messageCount; ++index) {
        const Message &message = state.messages[index];
        std::string_view violation = violationInRow(message, partsOf[index]);
        if (violation.empty())
            violation = violationOfTruth(message, partsOf[index]);
        if (!violation.empty())
            return violation;
    }
    return {};
}

std::string_view violationBy(const Move &move, const State &before)
{
    for (std::uint8_t message = 0; message < messageCount; ++message) {
        const Code from = before.messages[message].code;
        const Code to = move.state.messages[message].code;
        if (!isAllowedChange(from, to))
            return "a report is changed otherwise than from doubt to sent";
        if (isKill(move.step) && isFactLost(move.state, message) && !isFactLost(before, message))
            return "a fact that was kept is lost without its file";
        if (from == Code::None && to == Code::InDoubt && isOwnClaim(move, before, message))
            return "an engine reports as left behind what its own process claimed";
    }
    return {};
}

std::string_view violationAtEnd(const State &state)
{
    const auto isGone = [](const Engine &engine) { return engine.life == Life::Gone; };
    if (std::all_of(state.engines.begin(), state.engines.end(), isGone))
        return {};
    for (const Engine &engine : state.engines) {
        if (!isGone(engine) && (engine.activity != Activity::Idle || engine.keptCount > 0))
            return "an engine never finishes, or keeps a fact forever";
    }
    for (const Message &message : state.messages) {
        if (isQueued(message))
            return "a message is never reported";
        if (message.code != Code::Sent && message.knowledge != Knowledge::Nowhere)
            return "a message isn't reported as sent although its engine knew that it was";
    }
    return {};
}

} // namespace norvane::model
