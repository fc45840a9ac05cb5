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

    /// @return false if the engine was taken over since it registered
    bool fence(std::uint8_t engine);

    /// Applies what the engine's file holds, reports what else it had claimed, and raises its
    /// epoch.
    void registerEngine(std::uint8_t engine);

    bool isClaimable(std::uint8_t message, std::uint8_t engine) const;
    void claim(std::uint8_t message, std::uint8_t engine, std::uint8_t epoch);

    /// What the engine claimed without knowing it waits again.
    void release(std::uint8_t engine);

    void apply(const Fact &fact, std::uint8_t engine);
    void applyKept(std::uint8_t engine);

    /// Runs what the engine's process gave up.
    void runLate(std::uint8_t engine);

    /// @param begun  also the messages that the engine has begun and not claimed
    void takeOver(std::uint8_t engine, bool begun);

    /// Whether such a takeover would do more than raise a number.
    bool isWorthTakingOver(std::uint8_t engine, bool begun) const;

private:
    void applyToRow(Message &message, Fate fate) const;
    void applyLateTruth(Message &message, const Fact &fact, std::uint8_t engine) const;
    void putBack(Message &message) const;

    State &m_state;
    const Rules &m_rules;
};

} // namespace norvane::model
