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

bool isAllowedChange(Code from, Code to)
{
    return from == to || from == Code::None || (from == Code::InDoubt && to == Code::Sent);
}

/// Only what a process before this one had claimed is in doubt when an engine registers.
bool isOwnWork(const Move &move, const State &before, std::uint8_t message)
{
    if (move.step.kind != StepKind::Register)
        return false;
    const Engine &engine = before.engines[move.step.engine];
    return engine.activity != Activity::Idle && engine.work.message == message;
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
        if (from == Code::None && to == Code::InDoubt && isOwnWork(move, before, message))
            return "an engine reports as in doubt what it has at work";
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
