#include "model/Simplification.h"

#include "model/ClaimDatabase.h"
#include "model/EngineProcess.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <utility>

namespace norvane::model {

namespace {

bool isGone(const Message &message)
{
    return message.row == Row::Gone;
}

/// The fact is of no row that there is, and can't change a report either. An engine claims under
/// its present epoch only, so that no row gets the epoch of an earlier one any more.
bool isMoot(const State &state, const Fact &fact, std::uint8_t engine, const Rules &rules)
{
    if (fact.fate == Fate::Open || !rules.holds(Rule::FactHasEpochOfClaim))
        return false;
    const bool isEarlier = fact.epoch < state.engines[engine].epoch &&
                           rules.holds(Rule::ClaimIsFenced) && rules.holds(Rule::FactMatchesEpoch);
    if (!isGone(state.messages[fact.message]) && !isEarlier)
        return false;
    State applied = state;
    ClaimDatabase(applied, rules).run({TransactionKind::Apply, 0, 0, fact}, engine);
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

/// Whether there is a row that the release or the report concerns, or may be one.
bool concernsRow(State &state, const Transaction &transaction, std::uint8_t engine,
                 const Rules &rules)
{
    const ClaimDatabase database(state, rules);
    const bool isEarlier = transaction.endEpoch <= state.engines[engine].epoch &&
                           rules.holds(Rule::ClaimIsFenced) &&
                           rules.holds(Rule::ReleaseHasFixedEnd);
    if (!isEarlier)
        return true;
    for (std::uint8_t message = 0; message < messageCount; ++message) {
        if (database.concerns(transaction, engine, message))
            return true;
    }
    return false;
}

/// Whether the transaction can't change anything any more, whenever it runs.
bool isOver(State &state, const Transaction &late, std::uint8_t engine, const Rules &rules)
{
    switch (late.kind) {
    case TransactionKind::None:
    case TransactionKind::ClaimWithLocks:
        return false;
    case TransactionKind::Apply:
        return late.fact.fate == Fate::Moot || isMoot(state, late.fact, engine, rules);
    case TransactionKind::Claim:
        if (late.fact.epoch != state.engines[engine].epoch && rules.holds(Rule::ClaimIsFenced))
            return true;
        break;
    case TransactionKind::Release:
    case TransactionKind::ReportLeft:
        return !concernsRow(state, late, engine, rules);
    default:
        break;
    }
    return std::all_of(state.messages.begin(), state.messages.end(), isGone);
}

void simplifyLate(State &state, std::uint8_t index, const Rules &rules)
{
    Engine &engine = state.engines[index];
    if (engine.late.front().kind == TransactionKind::None)
        return;
    for (std::size_t place = maxLate; place > 0; --place) {
        if (isOver(state, engine.late[place - 1], index, rules))
            forgetLate(engine, place - 1);
    }
}

/// Passes what would change nothing.
void simplifyRecovery(State &state, std::uint8_t index, const Rules &rules)
{
    Engine &engine = state.engines[index];
    if (engine.recovery == Recovery::Done)
        return;
    if (!rules.holds(Rule::ReleaseHasFixedStart) || !rules.holds(Rule::EpochPerConnection))
        return;
    const Transaction release{TransactionKind::Release, engine.firstEpoch, engine.knownEpoch, {}};
    if (engine.recovery == Recovery::Release && !concernsRow(state, release, index, rules))
        engine.recovery = Recovery::ReportLeft;
    const Transaction reportLeft{TransactionKind::ReportLeft, 0, engine.firstEpoch, {}};
    if (engine.recovery == Recovery::ReportLeft && !concernsRow(state, reportLeft, index, rules))
        engine.recovery = Recovery::Done;
}

/// Whether the engine may still send a part of the message, or say something about it.
bool concerns(const Engine &engine, std::uint8_t message)
{
    const auto isOfMessage = [message](const Fact &fact) {
        return fact.message == message && fact.fate != Fate::Moot;
    };
    return (engine.activity != Activity::Idle && isOfMessage(engine.work)) ||
           std::any_of(engine.late.begin(), engine.late.end(),
                       [&](const Transaction &late) {
                           return late.kind == TransactionKind::Apply && isOfMessage(late.fact);
                       }) ||
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

bool isClaim(const Transaction &transaction)
{
    return transaction.kind == TransactionKind::Claim ||
           transaction.kind == TransactionKind::ClaimWithLocks;
}

/// Without a connection the engine gets another epoch than any before, whether it was taken over
/// meanwhile or not, unless a claim can still be committed under the one that it had.
void simplifyEpoch(Engine &engine, const Rules &rules)
{
    constexpr std::uint8_t behindAll = 30;
    const bool mayClaim = engine.isConnected ||
                          std::any_of(engine.late.begin(), engine.late.end(), isClaim) ||
                          rules.broken;
    if (!mayClaim)
        engine.epoch = behindAll;
}

/// The process's first epoch becomes the one behind those of the rows that an earlier process left.
void simplifyFirstEpoch(State &state, std::uint8_t index, const Rules &rules)
{
    if (rules.broken)
        return;
    Engine &engine = state.engines[index];
    std::uint8_t last = 0;
    const auto consider = [&](std::uint8_t epoch) {
        if (engine.firstEpoch == 0 || epoch < engine.firstEpoch)
            last = std::max(last, epoch);
    };
    for (const Message &message : state.messages) {
        if (message.row == Row::Leaving && message.holder == index)
            consider(message.epoch);
    }
    for (const Transaction &late : engine.late) {
        if (isClaim(late))
            consider(late.fact.epoch);
    }
    if (engine.firstEpoch != 0 || last == 0)
        engine.firstEpoch = last + 1;
}

/// Only the order of an engine's epochs matters. They are counted from 1.
class EpochNumbers
{
public:
    void add(std::uint8_t &epoch)
    {
        if (epoch == 0)
            return;
        m_places[m_count++] = &epoch;
        m_used |= 1U << epoch;
    }

    void renumber()
    {
        for (std::size_t place = 0; place < m_count; ++place)
            *m_places[place] = numberOf(*m_places[place]);
    }

    /// How many there are up to this one.
    std::uint8_t numberOf(std::uint8_t epoch) const
    {
        const std::uint32_t upToThis = (2U << epoch) - 1;
        return static_cast<std::uint8_t>(std::popcount(m_used & upToThis));
    }

private:
    std::array<std::uint8_t *, 3 + 3 * maxLate + maxKeptFacts + 2 * messageCount> m_places{};
    std::size_t m_count = 0;
    std::uint32_t m_used = 0; ///< a bit for each epoch
};

void renumberEpochs(State &state, std::uint8_t index)
{
    Engine &engine = state.engines[index];
    EpochNumbers numbers;
    numbers.add(engine.epoch);
    numbers.add(engine.knownEpoch);
    numbers.add(engine.work.epoch);
    for (std::size_t late = 0; late < maxLate && engine.late[late].kind != TransactionKind::None;
         ++late) {
        numbers.add(engine.late[late].firstEpoch);
        numbers.add(engine.late[late].endEpoch);
        numbers.add(engine.late[late].fact.epoch);
    }
    for (std::size_t kept = 0; kept < engine.keptCount; ++kept)
        numbers.add(engine.kept[kept].epoch);
    for (Message &message : state.messages) {
        if (message.holder == index)
            numbers.add(message.epoch);
        if (message.outcomeEngine == index)
            numbers.add(message.outcomeEpoch);
    }
    numbers.renumber();
    // What counts is which rows are older.
    if (engine.firstEpoch > 0)
        engine.firstEpoch = numbers.numberOf(engine.firstEpoch - 1) + 1;
}

std::uint8_t mirrored(std::uint8_t engine)
{
    return engine == nobody ? nobody : 1 - engine;
}

} // namespace

State simplified(State state, const Rules &rules)
{
    for (std::uint8_t engine = 0; engine < engineCount; ++engine) {
        simplifyLate(state, engine, rules);
        simplifyEpoch(state.engines[engine], rules);
        simplifyFacts(state, engine, rules);
        simplifyLate(state, engine, rules);
        simplifyRecovery(state, engine, rules);
    }
    for (std::uint8_t message = 0; message < messageCount; ++message)
        simplifyMessage(state, message);
    for (std::uint8_t engine = 0; engine < engineCount; ++engine) {
        simplifyFirstEpoch(state, engine, rules);
        renumberEpochs(state, engine);
    }
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
