#pragma once

#include <cstdint>
#include <optional>

namespace norvane::model {

/// What the protocol demands. A variant of the model breaks one of these.
enum class Rule : std::uint8_t {
    ClaimIsFenced,          ///< an engine that was taken over claims nothing
    TakenClaimIsInDoubt,    ///< what a silent engine had claimed is reported, not sent again
    CommitBeforeSubmit,     ///< the device gets a part when its claim is known to be committed
    HandOverBeforeDeletion, ///< a kept fact is in the database before it leaves the file
    FactMatchesEpoch,       ///< a fact is applied to a row of its own epoch alone
    LeftClaimIsInDoubt,     ///< what an earlier process had claimed is reported
    LateTruthIsSending,     ///< behind a takeover only "sent" is applied
    LateTruthEndsDoubt,     ///< behind a takeover only a doubt is overwritten
    BegunStaysWithEngine,   ///< all parts of a message leave through one device
    FactHasEpochOfClaim,    ///< not that of the connection through which it is reported
    EpochPerConnection,     ///< an engine that is connected again gets another epoch
    FactsBeforeRelease,     ///< nothing is released while a part is at work or a fact is kept
    ReleaseHasFixedStart,   ///< what an earlier process had claimed isn't released
    ReleaseHasFixedEnd,     ///< a release ends at the epoch in which it was begun, when it runs too
};

struct Rules
{
    std::optional<Rule> broken;
    int maxFaults = 2;

    bool holds(Rule rule) const { return broken != rule; }
};

} // namespace norvane::model
