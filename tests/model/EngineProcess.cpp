#include "model/EngineProcess.h"

#include <algorithm>
#include <cstring>

namespace norvane::model {

namespace {

/// An order that puts what isn't there last: in which order transactions were left is no matter.
void sortLate(Engine &engine)
{
    const auto isFirst = [](const Transaction &one, const Transaction &other) {
        return std::memcmp(&one, &other, sizeof(Transaction)) > 0;
    };
    std::sort(engine.late.begin(), engine.late.end(), isFirst);
}

} // namespace

void finishWork(Engine &engine)
{
    engine.activity = Activity::Idle;
    engine.work = {};
}

void connect(Engine &engine)
{
    engine.isConnected = true;
    engine.knownEpoch = engine.epoch;
    if (engine.firstEpoch == 0)
        engine.firstEpoch = engine.epoch;
    engine.recovery = Recovery::Release;
}

void loseConnection(Engine &engine, const Rules &rules)
{
    engine.isConnected = false;
    engine.recovery = Recovery::Done;
    if (rules.holds(Rule::EpochPerConnection))
        engine.knownEpoch = 0;
}

void leaveLate(Engine &engine, const Transaction &transaction)
{
    engine.late.back() = transaction;
    sortLate(engine);
}

void forgetLate(Engine &engine, std::size_t index)
{
    engine.late[index] = {};
    sortLate(engine);
}

void leave(State &state, std::uint8_t engine)
{
    const Fact &work = state.engines[engine].work;
    Message &message = state.messages[work.message];
    ++message.timesLeft[work.part];
    message.leftThrough |= static_cast<std::uint8_t>(1U << engine);
}

void learnFate(State &state, std::uint8_t engine, Fate fate)
{
    Engine &learning = state.engines[engine];
    learning.activity = Activity::Learned;
    learning.work.fate = fate;
    learning.work.part = 0;
    if (fate == Fate::Sent)
        state.messages[learning.work.message].knowledge = Knowledge::InProcess;
}

void keepFact(State &state, std::uint8_t engine)
{
    Engine &keeping = state.engines[engine];
    if (keeping.work.fate == Fate::Sent)
        state.messages[keeping.work.message].knowledge = Knowledge::InFile;
    keeping.kept[keeping.keptCount] = keeping.work;
    ++keeping.keptCount;
    keeping.handedOver = 0;
    finishWork(keeping);
}

void deleteKeptFacts(Engine &engine)
{
    engine.kept = {};
    engine.keptCount = 0;
    engine.handedOver = 0;
}

void takeKeptFact(Engine &engine)
{
    --engine.keptCount;
    engine.activity = Activity::Learned;
    engine.work = engine.kept[engine.keptCount];
    engine.kept[engine.keptCount] = {};
}

void endProcess(State &state, std::uint8_t engine)
{
    Engine &ended = state.engines[engine];
    Knowledge &knowledge = state.messages[ended.work.message].knowledge;
    if (ended.work.fate == Fate::Sent && knowledge == Knowledge::InProcess)
        knowledge = Knowledge::Nowhere;
    finishWork(ended);
    ended.isConnected = false;
    ended.knownEpoch = 0;
    ended.firstEpoch = 0;
    ended.recovery = Recovery::Done;
    ended.handedOver = 0;
    ended.life = Life::Killed;
}

void endMachine(State &state, std::uint8_t engine)
{
    Engine &ended = state.engines[engine];
    if (ended.work.fate == Fate::Sent)
        state.messages[ended.work.message].knowledge = Knowledge::Nowhere;
    endProcess(state, engine);
    for (const Fact &fact : ended.kept) {
        if (fact.fate == Fate::Sent)
            state.messages[fact.message].knowledge = Knowledge::Nowhere;
    }
    deleteKeptFacts(ended);
    ended.life = Life::Gone;
}

} // namespace norvane::model
