#pragma once

#include "model/ClaimState.h"

#include <cstdint>
#include <string>

namespace norvane::model {

enum class StepKind : std::uint8_t {
    // Transactions.
    Enroll,
    Claim,
    Release,
    ReportLeft,
    Apply,
    HandOver,
    TakeOver,
    TakeOverBegun,
    Heartbeat,
    LearnTakeover,
    // What a process does by itself, and its device.
    Submit,
    Accepted,
    AcceptedWithoutAnswer,
    LostWithoutAnswer,
    Refused,
    Returned,
    Keep,
    DeleteKept,
    TakeKept,
    // What comes back, and what the database ends.
    Restart,
    Continue,
    EndLocks,
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

constexpr std::size_t stepKindCount = 31;

/// How a transaction goes on. One that is lost on its way runs late, or never.
enum class Answer : std::uint8_t {
    Known,
    Late,            ///< it runs, and nobody waits for it
    Lost,            ///< with the connection
    LostWithLocks,   ///< its statements ran, it waits for its commit
    Killed,          ///< with the process
    KilledWithLocks, ///< its statements ran, it waits for its commit
};

struct Step
{
    StepKind kind;
    std::uint8_t engine;                 ///< `nobody` if it concerns all
    std::uint8_t message = messageCount; ///< that of a claim
    Answer answer = Answer::Known;
};

/// That of a claim where there is no transaction.
StepKind stepKindOf(TransactionKind kind);

/// Faults happen a few times in all, everything else as often as it can.
bool isFault(const Step &step);

/// A sentence without its full stop. The engines are A and B.
std::string textOf(const Step &step);
std::string textOf(StepKind kind);

} // namespace norvane::model
