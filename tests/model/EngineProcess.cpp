#include "model/EngineProcess.h"

namespace norvane::model {

void finishWork(Engine &engine)
{
    engine.activity = Activity::Idle;
    engine.work = {};
}

void leave(State &state, std::uint8_t engine)
{
    const Fact &work = state.engines[engine].work;
    Message &message = state.messages[work.message];
    ++message.timesLeft[work.part];
    message.leftThrough |= static_cast<std::uint8_t>(1U << engine);
}

void learnFate(State &state, std::uint8_t engine, Fate fate, const Rules &rules)
{
    Engine &learning = state.engines[engine];
    learning.activity = Activity::Learned;
    learning.work.fate = fate;
    learning.work.part = 0;
    if (!rules.holds(Rule::FactHasEpochOfClaim))
        learning.work.epoch = learning.knownEpoch;
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
    keeping.isHandedOver = false;
    finishWork(keeping);
}

void deleteKeptFacts(Engine &engine)
{
    engine.kept = {};
    engine.keptCount = 0;
    engine.isHandedOver = false;
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
    ended.knownEpoch = 0;
    ended.isHandedOver = false;
    ended.life = Life::Killed;
}

void endMachine(State &state, std::uint8_t engine)
{
    endProcess(state, engine);
    Engine &ended = state.engines[engine];
    for (const Fact &fact : ended.kept) {
        if (fact.fate == Fate::Sent)
            state.messages[fact.message].knowledge = Knowledge::Nowhere;
    }
    deleteKeptFacts(ended);
    ended.life = Life::Gone;
    ended.isConnected = false;
}

} // namespace norvane::model
