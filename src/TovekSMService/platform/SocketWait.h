#pragma once

namespace norvane {

/// Waits until the socket can be read, or written too.
/// @param ms  for so long at most
/// @return false when the time is over before
bool waitForSocket(int socket, bool forWriting, int ms);

} // namespace norvane
