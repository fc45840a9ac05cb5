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
    RestartReportsClaims,   ///< what the process before had claimed is reported
    LateTruthIsSending,     ///< behind a takeover only "sent" is applied
    LateTruthEndsDoubt,     ///< behind a takeover only a doubt is overwritten
    FactsBeforeClaims,      ///< nothing is claimed while facts wait to be handed over
    BegunStaysWithEngine,   ///< all parts of a message leave through one device
    FactHasEpochOfClaim,    ///< not that of the moment when it was learned
    EpochOutlivesCut,       ///< an engine that reaches the database again doesn't register anew
    NothingRunsLate,        ///< a transaction that was given up takes effect at once or never
};

struct Rules
{
    std::optional<Rule> broken;
    int maxFaults = 2;

    bool holds(Rule rule) const { return broken != rule; }
};

} // namespace norvane::model
