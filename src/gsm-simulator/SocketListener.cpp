#include "gsm-simulator/SocketListener.h"

#include <QFile>
#include <QSocketNotifier>

#include <cerrno>
#include <cstring>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

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

} // namespace

SocketListener::SocketListener(QObject *parent) : QObject(parent) {}

SocketListener::~SocketListener()
{
    close();
}

QString SocketListener::open(const QString &path, int backlog)
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
    if (!isBound || ::listen(m_listener, backlog) != 0) {
        const QString failure = systemError(name);
        close();
        return failure;
    }
    m_notifier = std::make_unique<QSocketNotifier>(m_listener, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &SocketListener::clientWaiting);
    return {};
}

void SocketListener::close()
{
    m_notifier.reset();
    if (m_listener >= 0)
        ::close(m_listener);
    m_listener = -1;
    if (!m_path.isEmpty())
        ::unlink(m_path.constData());
    m_path.clear();
}

void SocketListener::setAccepting(bool accepting)
{
    if (m_notifier)
        m_notifier->setEnabled(accepting);
}

int SocketListener::accept()
{
    return ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
}

} // namespace simulator

} // namespace norvane
