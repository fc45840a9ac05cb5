#include "model/Simplification.h"

#include "model/ClaimDatabase.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <utility>

namespace norvane::model {

namespace {

/// The message is reported, and the fact can't change the report.
bool isMoot(const State &state, const Fact &fact, std::uint8_t engine, const Rules &rules)
{
    if (fact.fate == Fate::Open || state.messages[fact.message].row != Row::Gone)
        return false;
    State applied = state;
    ClaimDatabase(applied, rules).apply(fact, engine);
    return applied == state;
}

void simplifyFacts(State &state, std::uint8_t index, const Rules &rules)
{
    constexpr Fact moot{0, 0, 0, Fate::Moot};
    Engine &engine = state.engines[index];
    if (isMoot(state, engine.work, index, rules))
        engine.work = moot;
    for (std::uint8_t kept = 0; kept < engine.keptCount; ++kept) {
        if (isMoot(state, engine.kept[kept], index, rules))
            engine.kept[kept] = moot;
    }
}

/// Whether the engine may still send a part of the message, or say something about it.
bool concerns(const Engine &engine, std::uint8_t message)
{
    const auto isOfMessage = [message](const Fact &fact) {
        return fact.message == message && fact.fate != Fate::Moot;
    };
    return (engine.activity != Activity::Idle && isOfMessage(engine.work)) ||
           (engine.hasLate && isOfMessage(engine.late)) ||
           std::any_of(engine.kept.begin(), engine.kept.begin() + engine.keptCount, isOfMessage);
}

/// How a message ended makes no difference as soon as nobody can say more about it.
void simplifyMessage(State &state, std::uint8_t index)
{
    Message &message = state.messages[index];
    if (message.code == Code::Sent)
        message.knowledge = Knowledge::Nowhere;
    if (message.row == Row::BetweenParts)
        message.epoch = 0;
    const auto concernsMessage = [index](const Engine &engine) { return concerns(engine, index); };
    if (message.row != Row::Gone ||
        std::any_of(state.engines.begin(), state.engines.end(), concernsMessage))
        return;
    const Knowledge knowledge = message.knowledge;
    message = {};
    message.row = Row::Gone;
    message.code = Code::InDoubt;
    message.knowledge = knowledge;
}

/// Only whether two epochs of an engine are the same matters. They are counted from 1.
void renumberEpochs(State &state, std::uint8_t index)
{
    Engine &engine = state.engines[index];
    if (engine.epoch < 2)
        return;
    std::array<std::uint8_t *, 4 + maxKeptFacts + 2 * messageCount> epochs{};
    std::size_t count = 0;
    for (std::uint8_t *epoch :
         {&engine.epoch, &engine.knownEpoch, &engine.work.epoch, &engine.late.epoch})
        epochs[count++] = epoch;
    for (Fact &fact : engine.kept)
        epochs[count++] = &fact.epoch;
    for (Message &message : state.messages) {
        if (message.holder == index)
            epochs[count++] = &message.epoch;
        if (message.outcomeEngine == index)
            epochs[count++] = &message.outcomeEpoch;
    }
    std::uint32_t used = 0; // a bit for each epoch
    for (std::size_t place = 0; place < count; ++place)
        used |= 1U << *epochs[place];
    used &= ~1U;
    for (std::size_t place = 0; place < count; ++place) {
        const std::uint32_t upToThis = (2U << *epochs[place]) - 1;
        *epochs[place] = static_cast<std::uint8_t>(std::popcount(used & upToThis));
    }
}

std::uint8_t mirrored(std::uint8_t engine)
{
    return engine == nobody ? nobody : 1 - engine;
}

} // namespace

State simplified(State state, const Rules &rules)
{
    for (std::uint8_t engine = 0; engine < engineCount; ++engine)
        simplifyFacts(state, engine, rules);
    for (std::uint8_t message = 0; message < messageCount; ++message)
        simplifyMessage(state, message);
    for (std::uint8_t engine = 0; engine < engineCount; ++engine)
        renumberEpochs(state, engine);
    return state;
}

State ordered(State state)
{
    if (std::memcmp(&state.engines[0], &state.engines[1], sizeof(Engine)) <= 0)
        return state;
    std::swap(state.engines[0], state.engines[1]);
    for (Message &message : state.messages) {
        const std::uint8_t devices = message.leftThrough;
        message.holder = mirrored(message.holder);
        message.outcomeEngine = mirrored(message.outcomeEngine);
        message.leftThrough = static_cast<std::uint8_t>((devices & 1U) << 1U | devices >> 1U);
    }
    return state;
}

} // namespace norvane::model
