#include "TovekSMService/platform/SocketWait.h"

#include <cerrno>

#include <poll.h>

namespace norvane {

bool waitForSocket(int socket, bool forWriting, int ms)
{
    pollfd waited = {};
    waited.fd = socket;
    waited.events = static_cast<short>(forWriting ? POLLIN | POLLOUT : POLLIN);
    const int ready = ::poll(&waited, 1, ms);
    return ready > 0 || (ready < 0 && errno == EINTR);
}

} // namespace norvane
