#include "support/ReservedPort.h"

#include <QtGlobal>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace norvane {

ReservedPort::ReservedPort() : m_descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    const int reusable = 1;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto *const generic = reinterpret_cast<sockaddr *>(&address);
    if (::setsockopt(m_descriptor, SOL_SOCKET, SO_REUSEADDR, &reusable, sizeof reusable) != 0 ||
        ::bind(m_descriptor, generic, length) != 0 ||
        ::getsockname(m_descriptor, generic, &length) != 0)
        qFatal("no free port");
    m_number = ::ntohs(address.sin_port);
}

ReservedPort::~ReservedPort()
{
    ::close(m_descriptor);
}

} // namespace norvane
