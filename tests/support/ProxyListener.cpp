#include "support/ProxyListener.h"

#include <QFile>

#include <cstring>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int backlog = 64;
constexpr int socketPort = 5432; // which the name of a socket ends with

bool bindToPath(int descriptor, const QString &path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(path);
    if (name.size() >= static_cast<qsizetype>(sizeof address.sun_path))
        return false;
    std::memcpy(address.sun_path, name.constData(), static_cast<std::size_t>(name.size()));
    return ::bind(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
}

bool bindToLoopback(int descriptor, int port)
{
    const int reusable = 1;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
    address.sin_port = ::htons(static_cast<quint16>(port));
    return ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &reusable, sizeof reusable) == 0 &&
           ::bind(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
}

} // namespace

ProxyListener::ProxyListener(Kind kind)
    : m_folder(u"/tmp/norvane-pp-XXXXXX"_s),
      m_port(kind == Kind::Loopback ? std::make_unique<ReservedPort>() : nullptr),
      m_descriptor(
          ::socket(m_port ? AF_INET : AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
{
    const bool isBound = m_port ? bindToLoopback(m_descriptor, m_port->number())
                                : bindToPath(m_descriptor, socketPath());
    if (!isBound || ::listen(m_descriptor, backlog) != 0)
        qFatal("the proxy can't listen");
}

ProxyListener::~ProxyListener()
{
    ::close(m_descriptor);
}

QString ProxyListener::socketPath() const
{
    return m_folder.filePath(u".s.PGSQL.%1"_s.arg(socketPort));
}

QString ProxyListener::address() const
{
    return m_port ? u"host=127.0.0.1 port=%1"_s.arg(m_port->number())
                  : u"host=%1 port=%2"_s.arg(m_folder.path()).arg(socketPort);
}

int ProxyListener::accept() const
{
    const int client = ::accept4(m_descriptor, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    const int immediately = 1;
    if (client >= 0 && m_port)
        ::setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &immediately, sizeof immediately);
    return client;
}

void ProxyListener::setRefusing(bool refusing)
{
    if (refusing == m_isRefusing)
        return;
    m_isRefusing = refusing;
    bool isDone = false;
    if (m_port)
        isDone = refusing ? ::shutdown(m_descriptor, SHUT_RDWR) == 0
                          : ::listen(m_descriptor, backlog) == 0;
    else
        isDone = refusing ? QFile::rename(socketPath(), hiddenPath())
                          : QFile::rename(hiddenPath(), socketPath());
    if (!isDone)
        qFatal("the proxy can't change its address");
}

} // namespace norvane
