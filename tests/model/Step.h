#pragma once

#include "model/ClaimState.h"

#include <cstdint>
#include <string>

namespace norvane::model {

enum class StepKind : std::uint8_t {
    // Transactions.
    Register,
    Heartbeat,
    LearnTakeover,
    Claim,
    Release,
    Apply,
    HandOver,
    TakeOver,
    TakeOverBegun,
    RunLate,
    // What a process does by itself, and its device.
    Submit,
    Accepted,
    AcceptedWithoutAnswer,
    LostWithoutAnswer,
    Refused,
    Returned,
    GiveUpApply,
    Keep,
    DeleteKept,
    TakeKept,
    // What comes back.
    Restart,
    Continue,
    Reconnect,
    // Faults.
    Stop,
    Kill,
    KillWhileLeaving,
    Lose,
    LoseWhileLeaving,
    CutOff,
    DatabaseAway,
    Retire,
    RetireBegun,
};

constexpr std::size_t stepKindCount = 32;

/// How a transaction ends for the engine that began it.
enum class Answer : std::uint8_t { Known, LostAfterCommit, LostWithoutCommit, LostBeforeRun };

struct Step
{
    StepKind kind;
    std::uint8_t engine;                 ///< `nobody` if it concerns all
    std::uint8_t message = messageCount; ///< that of a claim
    Answer answer = Answer::Known;
};

/// Faults happen a few times in all, everything else as often as it can.
bool isFault(const Step &step);

/// A sentence without its full stop. The engines are A and B.
std::string textOf(const Step &step);
std::string textOf(StepKind kind);

} // namespace norvane::model
