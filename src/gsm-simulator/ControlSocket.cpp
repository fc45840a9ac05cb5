#include "gsm-simulator/ControlSocket.h"

#include <QFile>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

constexpr std::size_t maxClients = 16;

QString systemError(const QByteArray &path)
{
    return QFile::decodeName(path) + u": "_s + QString::fromLocal8Bit(std::strerror(errno));
}

sockaddr_un addressOf(const QByteArray &path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
    return address;
}

const sockaddr *generic(const sockaddr_un &address)
{
    return reinterpret_cast<const sockaddr *>(&address);
}

/// Whether a socket stands there that nobody listens at any more.
bool isAbandoned(const QByteArray &path)
{
    struct stat status
    {};
    if (::lstat(path.constData(), &status) != 0 || !S_ISSOCK(status.st_mode))
        return false;
    const int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_un address = addressOf(path);
    const bool refused =
        ::connect(probe, generic(address), sizeof address) != 0 && errno == ECONNREFUSED;
    ::close(probe);
    return refused;
}

bool isOurUser(int socket)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == ::geteuid();
}

/// Answers are short: a client that doesn't read them is let go.
bool sendLine(int socket, const QByteArray &line)
{
    const QByteArray bytes = line + '\n';
    return ::send(socket, bytes.constData(), static_cast<std::size_t>(bytes.size()),
                  MSG_NOSIGNAL | MSG_DONTWAIT) == bytes.size();
}

} // namespace

ControlSocket::ControlSocket(Handler handler, QObject *parent)
    : QObject(parent), m_handler(std::move(handler))
{}

ControlSocket::~ControlSocket()
{
    close();
}

QString ControlSocket::open(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    if (name.size() >= static_cast<qsizetype>(sizeof(sockaddr_un::sun_path)))
        return path + u": the path is too long for a socket"_s;
    if (isAbandoned(name))
        ::unlink(name.constData());
    m_listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const sockaddr_un address = addressOf(name);
    constexpr mode_t ownerOnly = 0177;
    const mode_t before = ::umask(ownerOnly);
    const bool isBound = ::bind(m_listener, generic(address), sizeof address) == 0;
    ::umask(before);
    if (isBound)
        m_path = name;
    if (!isBound || ::listen(m_listener, maxClients) != 0) {
        const QString failure = systemError(name);
        close();
        return failure;
    }
    m_notifier = std::make_unique<QSocketNotifier>(m_listener, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &ControlSocket::accept);
    return {};
}

void ControlSocket::close()
{
    m_notifier.reset();
    while (!m_clients.empty())
        drop(m_clients.begin()->first);
    if (m_listener >= 0)
        ::close(m_listener);
    m_listener = -1;
    if (!m_path.isEmpty())
        ::unlink(m_path.constData());
    m_path.clear();
}

void ControlSocket::accept()
{
    const int socket = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (socket < 0)
        return;
    if (m_clients.size() >= maxClients || !isOurUser(socket)) {
        ::close(socket);
        return;
    }
    Client &client = m_clients[socket];
    client.notifier = std::make_unique<QSocketNotifier>(socket, QSocketNotifier::Read);
    connect(client.notifier.get(), &QSocketNotifier::activated, this,
            [this, socket] { read(socket); });
}

void ControlSocket::read(int socket)
{
    Client &client = m_clients.at(socket);
    std::array<char, 16384> buffer{};
    const ssize_t length = ::read(socket, buffer.data(), buffer.size());
    if (length < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (length <= 0) {
        drop(socket);
        return;
    }
    client.input.append(buffer.data(), length);
    if (!answerLines(socket, client))
        drop(socket);
}

/// @return whether the client may stay
bool ControlSocket::answerLines(int socket, Client &client)
{
    qsizetype start = 0;
    for (qsizetype end = client.input.indexOf('\n'); end >= 0;
         end = client.input.indexOf('\n', start)) {
        const QByteArray answer = m_handler(client.input.mid(start, end - start));
        if (!sendLine(socket, answer))
            return false;
        start = end + 1;
    }
    client.input.remove(0, start);
    if (client.input.size() <= maxLineLength)
        return true;
    sendLine(socket, "error the line is too long"_ba);
    return false;
}

/// Within a client's own notification its notifier has to outlive the call.
void ControlSocket::drop(int socket)
{
    Client &client = m_clients.at(socket);
    client.notifier->setEnabled(false);
    client.notifier.release()->deleteLater();
    ::close(socket);
    m_clients.erase(socket);
}

} // namespace simulator

} // namespace norvane
