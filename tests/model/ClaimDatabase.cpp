#include "model/ClaimDatabase.h"

#include <algorithm>

namespace norvane::model {

namespace {

/// Code::None for what isn't reported.
Code reportedCode(Fate fate)
{
    switch (fate) {
    case Fate::Sent:
        return Code::Sent;
    case Fate::Failed:
        return Code::Failed;
    case Fate::InDoubt:
        return Code::InDoubt;
    default:
        return Code::None;
    }
}

bool isClaimedBy(const Message &message, std::uint8_t engine)
{
    return message.row == Row::Leaving && message.holder == engine;
}

void report(Message &message, Code code)
{
    message.code = code;
    message.outcomeEngine = message.holder;
    message.outcomeEpoch = message.epoch;
    message.row = Row::Gone;
    message.partsSent = 0;
    message.holder = nobody;
    message.epoch = 0;
}

} // namespace

bool ClaimDatabase::fence(std::uint8_t engine)
{
    Engine &row = m_state.engines[engine];
    if (row.epoch != row.knownEpoch)
        return false;
    row.isSilent = false;
    return true;
}

void ClaimDatabase::registerEngine(std::uint8_t engine)
{
    applyKept(engine);
    for (Message &message : m_state.messages) {
        if (isClaimedBy(message, engine) && m_rules.holds(Rule::RestartReportsClaims))
            report(message, Code::InDoubt);
    }
    Engine &row = m_state.engines[engine];
    ++row.epoch;
    row.isSilent = false;
}

bool ClaimDatabase::isClaimable(std::uint8_t message, std::uint8_t engine) const
{
    const Message &row = m_state.messages[message];
    return row.row == Row::Waiting || (row.row == Row::BetweenParts && row.holder == engine);
}

void ClaimDatabase::claim(std::uint8_t message, std::uint8_t engine, std::uint8_t epoch)
{
    Message &row = m_state.messages[message];
    row.row = Row::Leaving;
    row.holder = engine;
    row.epoch = epoch;
}

void ClaimDatabase::release(std::uint8_t engine)
{
    for (Message &message : m_state.messages) {
        if (isClaimedBy(message, engine) && message.epoch == m_state.engines[engine].knownEpoch)
            putBack(message);
    }
}

void ClaimDatabase::apply(const Fact &fact, std::uint8_t engine)
{
    if (fact.fate == Fate::Moot)
        return;
    Message &message = m_state.messages[fact.message];
    const bool matches = message.epoch == fact.epoch || !m_rules.holds(Rule::FactMatchesEpoch);
    if (isClaimedBy(message, engine) && matches)
        applyToRow(message, fact.fate);
    else
        applyLateTruth(message, fact, engine);
}

void ClaimDatabase::applyKept(std::uint8_t engine)
{
    const Engine &row = m_state.engines[engine];
    for (std::uint8_t index = 0; index < row.keptCount; ++index)
        apply(row.kept[index], engine);
}

void ClaimDatabase::runLate(std::uint8_t engine)
{
    Engine &row = m_state.engines[engine];
    const Fact late = row.late;
    row.hasLate = false;
    row.late = {};
    if (late.fate != Fate::Open)
        apply(late, engine);
    else if (row.epoch == late.epoch && isClaimable(late.message, engine))
        claim(late.message, engine, late.epoch);
}

void ClaimDatabase::takeOver(std::uint8_t engine, bool begun)
{
    ++m_state.engines[engine].epoch;
    for (Message &message : m_state.messages) {
        if (isClaimedBy(message, engine) && !m_rules.holds(Rule::TakenClaimIsInDoubt))
            putBack(message);
        else if (isClaimedBy(message, engine) || (begun && message.holder == engine))
            report(message, Code::InDoubt);
    }
}

bool ClaimDatabase::isWorthTakingOver(std::uint8_t engine, bool begun) const
{
    const auto isTaken = [engine, begun](const Message &message) {
        return isClaimedBy(message, engine) || (begun && message.holder == engine);
    };
    const Engine &row = m_state.engines[engine];
    return row.knownEpoch == row.epoch ||
           std::any_of(m_state.messages.begin(), m_state.messages.end(), isTaken);
}

void ClaimDatabase::applyToRow(Message &message, Fate fate) const
{
    if (fate == Fate::PartAccepted) {
        message.row = Row::BetweenParts;
        ++message.partsSent;
    } else if (fate == Fate::Returned) {
        putBack(message);
    } else {
        report(message, reportedCode(fate));
    }
}

/// For a row that was taken over, and for a fact that is applied once more.
void ClaimDatabase::applyLateTruth(Message &message, const Fact &fact, std::uint8_t engine) const
{
    const Code code = reportedCode(fact.fate);
    if (message.outcomeEngine != engine || message.outcomeEpoch != fact.epoch || code == Code::None)
        return;
    const bool isSending = code == Code::Sent || !m_rules.holds(Rule::LateTruthIsSending);
    const bool wasInDoubt =
        message.code == Code::InDoubt || !m_rules.holds(Rule::LateTruthEndsDoubt);
    if (isSending && wasInDoubt)
        message.code = code;
}

/// What was begun stays with its engine.
void ClaimDatabase::putBack(Message &message) const
{
    if (message.partsSent > 0 && m_rules.holds(Rule::BegunStaysWithEngine)) {
        message.row = Row::BetweenParts;
        return;
    }
    message.row = Row::Waiting;
    message.holder = nobody;
    message.epoch = 0;
}

} // namespace norvane::model
