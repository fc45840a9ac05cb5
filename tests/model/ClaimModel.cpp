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
    Moves(const State &state, const Rules &rules)
        : m_from(state), m_rules(rules), m_database(m_from, m_rules)
    {}

    std::vector<Move> all();

private:
    void addTransactions(std::uint8_t engine);
    void addEnroll(std::uint8_t engine);
    void addRecovery(std::uint8_t engine);
    void addReports(std::uint8_t engine);
    void addFences(std::uint8_t engine);
    void addClaims(std::uint8_t engine);
    void addTakeovers(std::uint8_t engine);
    void addLate(std::uint8_t engine);
    void addWork(std::uint8_t engine);
    void addDeviceAnswers(std::uint8_t engine);
    void addFileSteps(std::uint8_t engine);
    void addReturns(std::uint8_t engine);
    void addEnds(std::uint8_t engine);
    void addOtherFaults(std::uint8_t engine);

    bool isAtWork(const Engine &engine) const;
    bool mayClaim(const Engine &engine) const;
    Transaction report(Fact fact, std::uint8_t engine) const;

    /// @param learn  what the process does with the answer
    template <typename Learn>
    void addKnown(Step step, const Transaction &transaction, Learn learn);
    /// @param lose  what it does without one, apart from losing its connection
    template <typename Lose>
    void addLost(Step step, const Transaction &transaction, Lose lose);
    template <typename Learn>
    void addTransaction(Step step, const Transaction &transaction, Learn learn);
    template <typename Change>
    void add(Step step, Change change);

    State m_from;
    const Rules &m_rules;
    const ClaimDatabase m_database; ///< asked, not changed
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

template <typename Learn>
void Moves::addKnown(Step step, const Transaction &transaction, Learn learn)
{
    if (m_database.isBlocked(transaction, step.engine))
        return;
    add(step, [&](State &state) {
        ClaimDatabase(state, m_rules).run(transaction, step.engine);
        learn(state.engines[step.engine]);
    });
}

template <typename Lose>
void Moves::addLost(Step step, const Transaction &transaction, Lose lose)
{
    const bool hasLocks = transaction.kind == TransactionKind::ClaimWithLocks;
    step.answer = hasLocks ? Answer::LostWithLocks : Answer::Lost;
    add(step, [&](State &state) {
        Engine &losing = state.engines[step.engine];
        leaveLate(losing, transaction);
        loseConnection(losing, m_rules);
        lose(losing);
    });
    step.answer = hasLocks ? Answer::KilledWithLocks : Answer::Killed;
    add(step, [&](State &state) {
        leaveLate(state.engines[step.engine], transaction);
        endProcess(state, step.engine);
    });
}

template <typename Learn>
void Moves::addTransaction(Step step, const Transaction &transaction, Learn learn)
{
    addKnown(step, transaction, learn);
    addLost(step, transaction, doNothing);
}

void Moves::addTransactions(std::uint8_t engine)
{
    if (!m_from.engines[engine].isConnected) {
        addEnroll(engine);
        return;
    }
    addRecovery(engine);
    addReports(engine);
    addFences(engine);
    addClaims(engine);
    addTakeovers(engine);
}

void Moves::addEnroll(std::uint8_t engine)
{
    Transaction enroll;
    enroll.kind = TransactionKind::Enroll;
    if (!m_rules.holds(Rule::EpochPerConnection))
        enroll.fact.epoch = m_from.engines[engine].knownEpoch;
    addTransaction({StepKind::Enroll, engine}, enroll, connect);
}

/// Whether a part is on its way, or what became of one isn't in the database for certain.
bool Moves::isAtWork(const Engine &engine) const
{
    return engine.activity != Activity::Idle || engine.keptCount > 0;
}

void Moves::addRecovery(std::uint8_t engine)
{
    const Engine &from = m_from.engines[engine];
    if (isAtWork(from) && m_rules.holds(Rule::FactsBeforeRelease))
        return;
    if (from.recovery == Recovery::Release) {
        Transaction release{TransactionKind::Release, from.firstEpoch, from.knownEpoch, {}};
        if (!m_rules.holds(Rule::ReleaseHasFixedStart))
            release.firstEpoch = 0;
        if (!m_rules.holds(Rule::EpochPerConnection))
            ++release.endEpoch;
        addTransaction({StepKind::Release, engine}, release,
                       [](Engine &learning) { learning.recovery = Recovery::ReportLeft; });
    }
    if (from.recovery == Recovery::ReportLeft)
        addTransaction({StepKind::ReportLeft, engine},
                       {TransactionKind::ReportLeft, 0, from.firstEpoch, {}},
                       [](Engine &learning) { learning.recovery = Recovery::Done; });
}

Transaction Moves::report(Fact fact, std::uint8_t engine) const
{
    if (!m_rules.holds(Rule::FactHasEpochOfClaim))
        fact.epoch = m_from.engines[engine].knownEpoch;
    return {TransactionKind::Apply, 0, 0, fact};
}

void Moves::addReports(std::uint8_t engine)
{
    const Engine &from = m_from.engines[engine];
    if (from.activity == Activity::Learned)
        addTransaction({StepKind::Apply, engine}, report(from.work, engine), finishWork);
    if (from.handedOver < from.keptCount && m_rules.holds(Rule::HandOverBeforeDeletion))
        addTransaction({StepKind::HandOver, engine}, report(from.kept[from.handedOver], engine),
                       [](Engine &learning) { ++learning.handedOver; });
}

void Moves::addFences(std::uint8_t engine)
{
    const Engine &from = m_from.engines[engine];
    if (m_database.isLocked(engine))
        return;
    if (from.knownEpoch != from.epoch)
        add({StepKind::LearnTakeover, engine},
            [&](State &state) { loseConnection(state.engines[engine], m_rules); });
    else
        add({StepKind::Heartbeat, engine},
            [&](State &state) { ClaimDatabase(state, m_rules).fence(engine, from.knownEpoch); });
}

bool Moves::mayClaim(const Engine &engine) const
{
    if (m_rules.holds(Rule::ClaimIsFenced) && engine.epoch != engine.knownEpoch)
        return false;
    if (engine.activity != Activity::Idle || engine.recovery != Recovery::Done)
        return false;
    return engine.keptCount == 0 ||
           (engine.keptCount < maxKeptFacts && !m_rules.holds(Rule::FactsBeforeRelease));
}

void Moves::addClaims(std::uint8_t engine)
{
    const Engine &from = m_from.engines[engine];
    if (!mayClaim(from))
        return;
    for (std::uint8_t message = 0; message < messageCount; ++message) {
        if (!m_database.isClaimable(message, engine))
            continue;
        const Fact work{message, m_from.messages[message].partsSent, from.knownEpoch, Fate::Open};
        const auto beginAs = [work](Activity activity) {
            return [work, activity](Engine &claiming) {
                claiming.activity = activity;
                claiming.work = work;
            };
        };
        const Step step{StepKind::Claim, engine, message};
        Transaction claim{TransactionKind::Claim, 0, 0, {message, 0, from.knownEpoch, Fate::Open}};
        addKnown(step, claim, beginAs(Activity::Claimed));
        if (m_rules.holds(Rule::CommitBeforeSubmit))
            addLost(step, claim, doNothing);
        else
            addLost(step, claim, beginAs(Activity::Submitting));
        claim.kind = TransactionKind::ClaimWithLocks;
        addLost(step, claim, doNothing);
    }
}

void Moves::addTakeovers(std::uint8_t engine)
{
    const std::uint8_t other = 1 - engine;
    for (const bool begun : {false, true}) {
        const Step step{begun ? StepKind::TakeOverBegun : StepKind::TakeOver, engine};
        const Transaction takeover{
            begun ? TransactionKind::TakeOverBegun : TransactionKind::TakeOver, 0, 0, {}};
        if (m_from.engines[other].isSilent && m_database.isWorthTakingOver(other, begun))
            addKnown(step, takeover, doNothing);
        addLost(step, takeover, doNothing);
    }
}

/// A claim takes what it finds when it runs, unless its statements ran before.
void Moves::addLate(std::uint8_t engine)
{
    for (std::size_t index = 0; index < maxLate; ++index) {
        Transaction late = m_from.engines[engine].late[index];
        if (late.kind == TransactionKind::None || m_database.isBlocked(late, engine))
            continue;
        const auto runLate = [&](std::uint8_t message) {
            add({stepKindOf(late.kind), engine, message, Answer::Late}, [&](State &state) {
                ClaimDatabase(state, m_rules).run(late, engine);
                forgetLate(state.engines[engine], index);
            });
        };
        if (late.kind != TransactionKind::Claim) {
            runLate(late.kind == TransactionKind::ClaimWithLocks ? late.fact.message
                                                                 : messageCount);
            continue;
        }
        for (late.fact.message = 0; late.fact.message < messageCount; ++late.fact.message) {
            if (m_database.isClaimable(late.fact.message, engine))
                runLate(late.fact.message);
        }
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
}

void Moves::addDeviceAnswers(std::uint8_t engine)
{
    const Fact &work = m_from.engines[engine].work;
    const bool isLast = work.part + 1 >= partsOf[work.message];
    const auto learnFrom = [&](StepKind kind, Fate fate) {
        add({kind, engine}, [&](State &state) {
            if (kind == StepKind::Accepted || kind == StepKind::AcceptedWithoutAnswer)
                leave(state, engine);
            learnFate(state, engine, fate);
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
    if (from.activity == Activity::Learned && !from.isConnected)
        add({StepKind::Keep, engine}, [&](State &state) { keepFact(state, engine); });
    if (from.keptCount > 0 && from.handedOver == from.keptCount)
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
    for (std::size_t index = 0; index < maxLate; ++index) {
        if (from.late[index].kind == TransactionKind::ClaimWithLocks)
            add({StepKind::EndLocks, engine},
                [&](State &state) { forgetLate(state.engines[engine], index); });
    }
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
    for (const bool begun : {false, true}) {
        if (m_database.isLocked(engine))
            break;
        add({begun ? StepKind::RetireBegun : StepKind::Retire, engine},
            [&](State &state) { ClaimDatabase(state, m_rules).takeOver(engine, begun); });
    }
    if (from.life == Life::Running)
        add({StepKind::Stop, engine},
            [&](State &state) { state.engines[engine].life = Life::Stopped; });
    if (from.isConnected)
        add({StepKind::CutOff, engine},
            [&](State &state) { loseConnection(state.engines[engine], m_rules); });
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
        addLate(engine);
        addReturns(engine);
        addEnds(engine);
        addOtherFaults(engine);
    }
    add({StepKind::DatabaseAway, nobody}, [&](State &state) {
        for (Engine &engine : state.engines)
            loseConnection(engine, m_rules);
    });
    return std::move(m_moves);
}

} // namespace

std::vector<Move> movesFrom(const State &state, const Rules &rules)
{
    return Moves(state, rules).all();
}

} // namespace norvane::model
