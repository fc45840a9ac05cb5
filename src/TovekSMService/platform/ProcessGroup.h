#pragma once

#include <QtGlobal>

/// A process with all that it starts.
namespace norvane::ProcessGroup {

/// Makes the calling process the leader of a group of its own. May be called between the making of
/// a process and the start of its program.
void lead();
/// Ends the group at once.
/// @param leader  its process; nothing is done where that isn't above 0
void kill(qint64 leader);

} // namespace norvane::ProcessGroup
