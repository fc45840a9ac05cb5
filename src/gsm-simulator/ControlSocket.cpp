#include "gsm-simulator/ControlSocket.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <utility>

#include <sys/socket.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

constexpr std::size_t maxClients = 16;

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
{
    connect(&m_listener, &SocketListener::clientWaiting, this, &ControlSocket::accept);
}

ControlSocket::~ControlSocket()
{
    close();
}

QString ControlSocket::open(const QString &path)
{
    return m_listener.open(path, static_cast<int>(maxClients));
}

void ControlSocket::close()
{
    m_listener.close();
    while (!m_clients.empty())
        drop(m_clients.begin()->first);
}

void ControlSocket::accept()
{
    const int socket = m_listener.accept();
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
