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

bool ClaimDatabase::fence(std::uint8_t engine, std::uint8_t epoch)
{
    Engine &row = m_state.engines[engine];
    if (row.epoch != epoch)
        return false;
    row.isSilent = false;
    return true;
}

void ClaimDatabase::run(const Transaction &transaction, std::uint8_t engine)
{
    const std::uint8_t other = 1 - engine;
    switch (transaction.kind) {
    case TransactionKind::Claim:
    case TransactionKind::ClaimWithLocks:
        return claim(transaction.fact, engine);
    case TransactionKind::Apply:
        return apply(transaction.fact, engine);
    case TransactionKind::Enroll:
        return enroll(engine, transaction.fact.epoch);
    case TransactionKind::Release:
        return release(transaction, engine);
    case TransactionKind::ReportLeft:
        return reportLeft(transaction, engine);
    case TransactionKind::TakeOver:
    case TransactionKind::TakeOverBegun:
        if (m_state.engines[other].isSilent)
            takeOver(other, transaction.kind == TransactionKind::TakeOverBegun);
        return;
    case TransactionKind::None:
        return;
    }
}

bool ClaimDatabase::isLocked(std::uint8_t engine) const
{
    const auto &late = m_state.engines[engine].late;
    return std::any_of(late.begin(), late.end(), [](const Transaction &transaction) {
        return transaction.kind == TransactionKind::ClaimWithLocks;
    });
}

bool ClaimDatabase::isBlocked(const Transaction &transaction, std::uint8_t engine) const
{
    switch (transaction.kind) {
    case TransactionKind::Claim:
    case TransactionKind::Enroll:
        return isLocked(engine);
    case TransactionKind::TakeOver:
    case TransactionKind::TakeOverBegun:
        return isLocked(1 - engine);
    default:
        return false;
    }
}

bool ClaimDatabase::isClaimable(std::uint8_t message, std::uint8_t engine) const
{
    for (const Engine &other : m_state.engines) {
        for (const Transaction &late : other.late) {
            if (late.kind == TransactionKind::ClaimWithLocks && late.fact.message == message)
                return false;
        }
    }
    const Message &row = m_state.messages[message];
    return row.row == Row::Waiting || (row.row == Row::BetweenParts && row.holder == engine);
}

void ClaimDatabase::claim(const Fact &claim, std::uint8_t engine)
{
    if (!fence(engine, claim.epoch) && m_rules.holds(Rule::ClaimIsFenced))
        return;
    Message &row = m_state.messages[claim.message];
    row.row = Row::Leaving;
    row.holder = engine;
    row.epoch = claim.epoch;
}

void ClaimDatabase::enroll(std::uint8_t engine, std::uint8_t keptEpoch)
{
    Engine &row = m_state.engines[engine];
    if (keptEpoch == 0 || keptEpoch != row.epoch)
        ++row.epoch;
    row.isSilent = false;
}

bool ClaimDatabase::concerns(const Transaction &transaction, std::uint8_t engine,
                             std::uint8_t message) const
{
    const Message &row = m_state.messages[message];
    if (!isClaimedBy(row, engine))
        return false;
    const bool endsAtPresent =
        transaction.kind == TransactionKind::Release && !m_rules.holds(Rule::ReleaseHasFixedEnd);
    const int end = endsAtPresent ? m_state.engines[engine].epoch + 1 : transaction.endEpoch;
    return row.epoch >= transaction.firstEpoch && row.epoch < end;
}

void ClaimDatabase::release(const Transaction &transaction, std::uint8_t engine)
{
    for (std::uint8_t message = 0; message < messageCount; ++message) {
        if (concerns(transaction, engine, message))
            putBack(m_state.messages[message]);
    }
}

void ClaimDatabase::reportLeft(const Transaction &transaction, std::uint8_t engine)
{
    for (std::uint8_t message = 0; message < messageCount; ++message) {
        if (concerns(transaction, engine, message) && m_rules.holds(Rule::LeftClaimIsInDoubt))
            report(m_state.messages[message], Code::InDoubt);
    }
}

bool ClaimDatabase::matches(const Fact &fact, std::uint8_t engine) const
{
    const Message &message = m_state.messages[fact.message];
    return isClaimedBy(message, engine) &&
           (message.epoch == fact.epoch || !m_rules.holds(Rule::FactMatchesEpoch));
}

void ClaimDatabase::apply(const Fact &fact, std::uint8_t engine)
{
    if (fact.fate == Fate::Moot)
        return;
    Message &message = m_state.messages[fact.message];
    if (matches(fact, engine))
        applyToRow(message, fact.fate);
    else
        applyLateTruth(message, fact, engine);
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
    return (row.knownEpoch != 0 && row.knownEpoch == row.epoch) ||
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
