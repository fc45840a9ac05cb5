#pragma once

#include "model/ClaimState.h"
#include "model/Rules.h"
#include "model/Step.h"

#include <vector>

namespace norvane::model {

// Several engines send the messages of one database, each through a device of its own. An engine
// claims a message by a committed transaction, hands one part to its device, and reports what
// became of it. It may be killed, stopped, cut off or lost between any two steps, and another one
// takes over what it had claimed. The model holds two engines and two messages, one of a single
// part and one of two, and says which steps may follow a state.
//
// A transaction and its answer are one step. An engine that is killed between the commit and the
// answer is one that is killed right behind this step: what it learned is lost with it. An answer
// that is lost while the engine lives is a step of its own, committed or not.
//
// The device's answer and what the process learns from it are one step as well. A part that the
// device holds when its engine ends leaves at once or never: no rule can know when it did.
//
// There is no clock. An engine that doesn't run, or doesn't reach the database, may have been
// silent for any time, also for the hour that is left to messages between two parts. It counts as
// silent until its next fence, so that a takeover may still come first when it is back. A takeover
// by an operator needs no silence, and the engine may live on and register again.
//
// Where an engine is free, it does either: it may register while its device has a part, and may
// claim while facts lie in its file that it handed over under an older epoch.

struct Move
{
    Step step;
    State state;
};

/// Each step that may be the next one, with the state behind it.
std::vector<Move> movesFrom(const State &state, const Rules &rules);

} // namespace norvane::model
