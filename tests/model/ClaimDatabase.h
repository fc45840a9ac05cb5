#pragma once

#include "model/ClaimState.h"
#include "model/Rules.h"

namespace norvane::model {

/// The transactions of engines, each as a whole. They change what the database holds and nothing
/// else.
class ClaimDatabase
{
public:
    ClaimDatabase(State &state, const Rules &rules) : m_state(state), m_rules(rules) {}

    /// @return false if the engine's epoch isn't this one any more
    bool fence(std::uint8_t engine, std::uint8_t epoch);

    /// Does nothing where what the transaction asks for isn't there.
    void run(const Transaction &transaction, std::uint8_t engine);

    /// Whether the transaction waits for a claim that holds the row of an engine.
    bool isBlocked(const Transaction &transaction, std::uint8_t engine) const;
    bool isLocked(std::uint8_t engine) const;

    /// A message that another claim has locked is passed over.
    bool isClaimable(std::uint8_t message, std::uint8_t engine) const;

    /// Whether the row has this epoch, or the rule that it must is broken.
    bool matches(const Fact &fact, std::uint8_t engine) const;
    /// Whether a transaction would put the message back, or report it as left behind.
    bool concerns(const Transaction &transaction, std::uint8_t engine, std::uint8_t message) const;

    /// Whether such a takeover would do more than raise a number.
    bool isWorthTakingOver(std::uint8_t engine, bool begun) const;
    void takeOver(std::uint8_t engine, bool begun);

private:
    void claim(const Fact &claim, std::uint8_t engine);
    void apply(const Fact &fact, std::uint8_t engine);
    void enroll(std::uint8_t engine, std::uint8_t keptEpoch);
    void release(const Transaction &transaction, std::uint8_t engine);
    void reportLeft(const Transaction &transaction, std::uint8_t engine);
    void applyToRow(Message &message, Fate fate) const;
    void applyLateTruth(Message &message, const Fact &fact, std::uint8_t engine) const;
    void putBack(Message &message) const;

    State &m_state;
    const Rules &m_rules;
};

} // namespace norvane::model
