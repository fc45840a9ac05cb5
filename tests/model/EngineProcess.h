#pragma once

#include "model/ClaimState.h"
#include "model/Rules.h"

namespace norvane::model {

// What happens to an engine's process, its device and its file; the database doesn't change.

void finishWork(Engine &engine);

/// The process knows that it is enrolled.
void connect(Engine &engine);
void loseConnection(Engine &engine, const Rules &rules);

/// The transaction may run from now on without anyone waiting for it.
void leaveLate(Engine &engine, const Transaction &transaction);
void forgetLate(Engine &engine, std::size_t index);

/// The part that the engine's device has leaves.
void leave(State &state, std::uint8_t engine);

/// The process learns what became of its part.
void learnFate(State &state, std::uint8_t engine, Fate fate);

/// Adds what the process learned to its file. All that stands there counts as not handed over.
void keepFact(State &state, std::uint8_t engine);
void deleteKeptFacts(Engine &engine);

/// Moves the last fact of the file back into the process.
void takeKeptFact(Engine &engine);

/// What only the process knew is lost.
void endProcess(State &state, std::uint8_t engine);

/// What only the machine knew is lost.
void endMachine(State &state, std::uint8_t engine);

} // namespace norvane::model
