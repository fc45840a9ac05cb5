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
// An engine gets another epoch with each connection that it makes. Its claims are fenced by that
// epoch and keep it; what became of a part is reported under the epoch of its claim. Behind a new
// connection, when nothing is at work and no fact is kept, what the process may have claimed under
// its earlier epochs waits again, and what an earlier process had claimed is reported as in doubt.
// Both name epochs that are over when they begin, so that they need no fence.
//
// An engine has one transaction on its way at a time. A transaction and its answer are one step, or
// the connection or the process is lost first. The transaction is late then: it runs as a whole, at
// any later moment, once or never. One that was committed before its answer was lost is late for no
// time; one that never runs is an engine that is cut off or killed without it. Each one that is
// late costs a fault, so that at most as many are on their way.
//
// A late claim takes the message that it finds. If its statements have run, it holds its message
// and the row of its engine until it is committed or the database ends it: other claims pass the
// message over, and whoever fences, enrolls or takes over the engine waits.
//
// The device's answer and what the process learns from it are one step as well. A part that the
// device holds when its engine ends leaves at once or never: no rule can know when it did.
//
// There is no clock. An engine that doesn't run, or doesn't reach the database, may have been
// silent for any time, also for the hour that is left to messages between two parts. It counts as
// silent until its next fence, so that a takeover may still come first when it is back. A takeover
// by an operator needs no silence, and the engine may live on and enroll again.
//
// Where an engine is free, it does either: it may enroll while its device has a part or before it
// keeps a fact. An engine without a connection counts as silent.

struct Move
{
    Step step;
    State state;
};

/// Each step that may be the next one, with the state behind it.
std::vector<Move> movesFrom(const State &state, const Rules &rules);

} // namespace norvane::model
