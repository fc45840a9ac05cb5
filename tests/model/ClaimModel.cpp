#include "model/ClaimModel.h"

#include "model/ClaimDatabase.h"
#include "model/EngineProcess.h"

#include <algorithm>
#include <utility>

namespace norvane::model {

namespace {

/// Collects the moves from one state.
class Moves
{
public:
    Moves(const State &state, const Rules &rules) : m_from(state), m_rules(rules) {}

    std::vector<Move> all();

private:
    void addTransactions(std::uint8_t engine);
    void addReports(std::uint8_t engine);
    void addFences(std::uint8_t engine);
    void addClaims(std::uint8_t engine);
    void addRelease(std::uint8_t engine);
    void addTakeovers(std::uint8_t engine);
    void addWork(std::uint8_t engine);
    void addDeviceAnswers(std::uint8_t engine);
    void addFileSteps(std::uint8_t engine);
    void addReturns(std::uint8_t engine);
    void addEnds(std::uint8_t engine);
    void addOtherFaults(std::uint8_t engine);

    bool mayClaim(const Engine &engine) const;

    /// @param commit  changes the database
    /// @param learn   what the process does with the answer
    /// @param lose    what it does without an answer, whether the database changed or not
    template <typename Commit, typename Learn, typename Lose>
    void addTransaction(Step step, Commit commit, Learn learn, Lose lose);
    template <typename Change>
    void add(Step step, Change change);

    const State &m_from;
    const Rules &m_rules;
    std::vector<Move> m_moves;
};

void doNothing(Engine &) {}

void noteSilence(State &state)
{
    for (Engine &engine : state.engines) {
        if (engine.life != Life::Running || !engine.isConnected)
            engine.isSilent = true;
    }
}

/// What changes nothing is no step.
template <typename Change>
void Moves::add(Step step, Change change)
{
    if (isFault(step) && m_from.faults >= m_rules.maxFaults)
        return;
    Move move{step, m_from};
    change(move.state);
    noteSilence(move.state);
    if (move.state == m_from)
        return;
    if (isFault(step))
        ++move.state.faults;
    m_moves.push_back(move);
}

template <typename Commit, typename Learn, typename Lose>
void Moves::addTransaction(Step step, Commit commit, Learn learn, Lose lose)
{
    const auto addWith = [&](Answer answer, auto change) {
        step.answer = answer;
        add(step, change);
    };
    addWith(Answer::Known, [&](State &state) {
        commit(state);
        learn(state.engines[step.engine]);
    });
    addWith(Answer::LostAfterCommit, [&](State &state) {
        commit(state);
        lose(state.engines[step.engine]);
    });
    addWith(Answer::LostWithoutCommit, [&](State &state) { lose(state.engines[step.engine]); });
    const bool writesWork = step.kind == StepKind::Claim || step.kind == StepKind::Apply;
    if (m_rules.holds(Rule::NothingRunsLate) || !writesWork)
        return;
    addWith(Answer::LostBeforeRun, [&](State &state) {
        Engine &losing = state.engines[step.engine];
        lose(losing);
        losing.late = losing.work;
        losing.hasLate = true;
    });
}

void Moves::addTransactions(std::uint8_t engine)
{
    const Engine &from = m_from.engines[engine];
    if (!from.isConnected)
        return;
    addReports(engine);
    addFences(engine);
    if (from.knownEpoch == 0)
        return;
    addClaims(engine);
    addRelease(engine);
    addTakeovers(engine);
}

void Moves::addReports(std::uint8_t engine)
{
    const Engine &from = m_from.engines[engine];
    if (from.activity == Activity::Learned)
        addTransaction(
            {StepKind::Apply, engine},
            [&](State &state) { ClaimDatabase(state, m_rules).apply(from.work, engine); },
            finishWork, [](Engine &losing) { losing.activity = Activity::Keeping; });
    if (from.keptCount > 0 && !from.isHandedOver && m_rules.holds(Rule::HandOverBeforeDeletion))
        addTransaction(
            {StepKind::HandOver, engine},
            [&](State &state) { ClaimDatabase(state, m_rules).applyKept(engine); },
            [](Engine &learning) { learning.isHandedOver = true; }, doNothing);
}

void Moves::addFences(std::uint8_t engine)
{
    const Engine &from = m_from.engines[engine];
    if (from.knownEpoch == 0)
        addTransaction(
            {StepKind::Register, engine},
            [&](State &state) { ClaimDatabase(state, m_rules).registerEngine(engine); },
            [](Engine &learning) {
                learning.knownEpoch = learning.epoch;
                learning.isHandedOver = learning.keptCount > 0;
            },
            doNothing);
    else if (from.knownEpoch != from.epoch)
        add({StepKind::LearnTakeover, engine},
            [&](State &state) { state.engines[engine].knownEpoch = 0; });
    else
        add({StepKind::Heartbeat, engine},
            [&](State &state) { ClaimDatabase(state, m_rules).fence(engine); });
}

bool Moves::mayClaim(const Engine &engine) const
{
    if (m_rules.holds(Rule::ClaimIsFenced) && engine.epoch != engine.knownEpoch)
        return false;
    if (engine.activity != Activity::Idle || engine.keptCount == maxKeptFacts)
        return false;
    const auto end = engine.kept.begin() + engine.keptCount;
    const bool isHandedOver =
        engine.keptCount == 0 ||
        (engine.isHandedOver && std::none_of(engine.kept.begin(), end, [&](const Fact &fact) {
             return fact.epoch == engine.knownEpoch;
         }));
    return isHandedOver || !m_rules.holds(Rule::FactsBeforeClaims);
}

void Moves::addClaims(std::uint8_t engine)
{
    const Engine &from = m_from.engines[engine];
    if (!mayClaim(from))
        return;
    const Activity lost =
        m_rules.holds(Rule::CommitBeforeSubmit) ? Activity::ClaimLost : Activity::Submitting;
    for (std::uint8_t message = 0; message < messageCount; ++message) {
        State state = m_from;
        if (!ClaimDatabase(state, m_rules).isClaimable(message, engine))
            continue;
        const Fact work{message, m_from.messages[message].partsSent, from.knownEpoch, Fate::Open};
        const auto beginAs = [work](Activity activity) {
            return [work, activity](Engine &claiming) {
                claiming.activity = activity;
                claiming.work = work;
            };
        };
        addTransaction(
            {StepKind::Claim, engine, message},
            [&](State &claimed) {
                ClaimDatabase database(claimed, m_rules);
                database.fence(engine);
                database.claim(message, engine, from.knownEpoch);
            },
            beginAs(Activity::Claimed), beginAs(lost));
    }
}

void Moves::addRelease(std::uint8_t engine)
{
    const Engine &from = m_from.engines[engine];
    if (from.activity != Activity::ClaimLost || from.epoch != from.knownEpoch)
        return;
    addTransaction(
        {StepKind::Release, engine},
        [&](State &state) {
            ClaimDatabase database(state, m_rules);
            database.fence(engine);
            database.release(engine);
        },
        finishWork, doNothing);
}

void Moves::addTakeovers(std::uint8_t engine)
{
    const std::uint8_t other = 1 - engine;
    if (!m_from.engines[other].isSilent)
        return;
    for (const bool begun : {false, true}) {
        State from = m_from;
        if (ClaimDatabase(from, m_rules).isWorthTakingOver(other, begun))
            add({begun ? StepKind::TakeOverBegun : StepKind::TakeOver, engine},
                [&](State &state) { ClaimDatabase(state, m_rules).takeOver(other, begun); });
    }
}

void Moves::addWork(std::uint8_t engine)
{
    const Engine &from = m_from.engines[engine];
    const auto goOn = [&](StepKind kind, Activity activity) {
        add({kind, engine}, [&](State &state) { state.engines[engine].activity = activity; });
    };
    if (from.activity == Activity::Claimed)
        goOn(StepKind::Submit, Activity::Submitting);
    if (from.activity == Activity::Submitting)
        addDeviceAnswers(engine);
    if (from.activity == Activity::Learned && !from.isConnected)
        goOn(StepKind::GiveUpApply, Activity::Keeping);
}

void Moves::addDeviceAnswers(std::uint8_t engine)
{
    const Fact &work = m_from.engines[engine].work;
    const bool isLast = work.part + 1 >= partsOf[work.message];
    const auto learnFrom = [&](StepKind kind, Fate fate) {
        add({kind, engine}, [&](State &state) {
            if (kind == StepKind::Accepted || kind == StepKind::AcceptedWithoutAnswer)
                leave(state, engine);
            learnFate(state, engine, fate, m_rules);
        });
    };
    learnFrom(StepKind::Accepted, isLast ? Fate::Sent : Fate::PartAccepted);
    learnFrom(StepKind::AcceptedWithoutAnswer, Fate::InDoubt);
    learnFrom(StepKind::LostWithoutAnswer, Fate::InDoubt);
    learnFrom(StepKind::Refused, Fate::Failed);
    learnFrom(StepKind::Returned, Fate::Returned);
}

void Moves::addFileSteps(std::uint8_t engine)
{
    const Engine &from = m_from.engines[engine];
    if (from.activity == Activity::Keeping)
        add({StepKind::Keep, engine}, [&](State &state) { keepFact(state, engine); });
    if (from.isHandedOver)
        add({StepKind::DeleteKept, engine},
            [&](State &state) { deleteKeptFacts(state.engines[engine]); });
    else if (from.activity == Activity::Idle && from.keptCount > 0 &&
             !m_rules.holds(Rule::HandOverBeforeDeletion))
        add({StepKind::TakeKept, engine},
            [&](State &state) { takeKeptFact(state.engines[engine]); });
}

void Moves::addReturns(std::uint8_t engine)
{
    const Engine &from = m_from.engines[engine];
    const auto run = [&](State &state) { state.engines[engine].life = Life::Running; };
    if (from.life == Life::Killed)
        add({StepKind::Restart, engine}, run);
    if (from.life == Life::Stopped)
        add({StepKind::Continue, engine}, run);
    if (!from.isConnected && from.life != Life::Gone)
        add({StepKind::Reconnect, engine}, [&](State &state) {
            state.engines[engine].isConnected = true;
            if (!m_rules.holds(Rule::EpochOutlivesCut))
                state.engines[engine].knownEpoch = 0;
        });
    if (from.hasLate)
        add({StepKind::RunLate, engine},
            [&](State &state) { ClaimDatabase(state, m_rules).runLate(engine); });
}

void Moves::addEnds(std::uint8_t engine)
{
    const Engine &from = m_from.engines[engine];
    const auto addEnd = [&](StepKind kind, StepKind kindWhileLeaving, auto end) {
        add({kind, engine}, [&](State &state) { end(state, engine); });
        if (from.activity == Activity::Submitting)
            add({kindWhileLeaving, engine}, [&](State &state) {
                leave(state, engine);
                end(state, engine);
            });
    };
    if (from.life == Life::Running || from.life == Life::Stopped)
        addEnd(StepKind::Kill, StepKind::KillWhileLeaving, endProcess);
    if (from.life != Life::Gone)
        addEnd(StepKind::Lose, StepKind::LoseWhileLeaving, endMachine);
}

void Moves::addOtherFaults(std::uint8_t engine)
{
    const Engine &from = m_from.engines[engine];
    for (const bool begun : {false, true})
        add({begun ? StepKind::RetireBegun : StepKind::Retire, engine},
            [&](State &state) { ClaimDatabase(state, m_rules).takeOver(engine, begun); });
    if (from.life == Life::Running)
        add({StepKind::Stop, engine},
            [&](State &state) { state.engines[engine].life = Life::Stopped; });
    if (from.life != Life::Gone)
        add({StepKind::CutOff, engine},
            [&](State &state) { state.engines[engine].isConnected = false; });
}

std::vector<Move> Moves::all()
{
    constexpr std::size_t usualCount = 16;
    m_moves.reserve(usualCount);
    for (std::uint8_t engine = 0; engine < engineCount; ++engine) {
        if (m_from.engines[engine].life == Life::Running) {
            addTransactions(engine);
            addWork(engine);
            addFileSteps(engine);
        }
        addReturns(engine);
        addEnds(engine);
        addOtherFaults(engine);
    }
    add({StepKind::DatabaseAway, nobody}, [](State &state) {
        for (Engine &engine : state.engines)
            engine.isConnected = false;
    });
    return std::move(m_moves);
}

} // namespace

std::vector<Move> movesFrom(const State &state, const Rules &rules)
{
    return Moves(state, rules).all();
}

} // namespace norvane::model
