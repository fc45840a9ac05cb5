#include "gsm-simulator/ModemSocket.h"

#include <QSocketNotifier>

#include <linux/sockios.h>
#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace norvane {

namespace simulator {

ModemSocket::ModemSocket(QObject *parent) : ModemPort(parent)
{
    connect(&m_listener, &SocketListener::clientWaiting, this, &ModemSocket::accept);
}

ModemSocket::~ModemSocket()
{
    close();
}

QString ModemSocket::open(const QString &path)
{
    constexpr int maxWaiting = 8;
    return m_listener.open(path, maxWaiting);
}

void ModemSocket::close()
{
    m_listener.close();
    dropClient();
}

void ModemSocket::accept()
{
    m_client = m_listener.accept();
    if (m_client < 0)
        return;
    m_listener.setAccepting(false);
    attach(m_client);
    watchForHangUp();
}

/// A client may go while the line is stopped and nobody reads: an epoll descriptor of its own is
/// readable from then on.
void ModemSocket::watchForHangUp()
{
    m_watch = ::epoll_create1(EPOLL_CLOEXEC);
    epoll_event event{};
    event.events = EPOLLRDHUP;
    ::epoll_ctl(m_watch, EPOLL_CTL_ADD, m_client, &event);
    m_watchNotifier = std::make_unique<QSocketNotifier>(m_watch, QSocketNotifier::Read);
    connect(m_watchNotifier.get(), &QSocketNotifier::activated, this, &ModemSocket::readToTheEnd);
}

void ModemSocket::handleHangUp()
{
    dropClient();
    Q_EMIT abandoned();
    m_listener.setAccepting(true);
}

void ModemSocket::dropClient()
{
    detach();
    dismiss(m_watchNotifier);
    for (int *descriptor : {&m_watch, &m_client}) {
        if (*descriptor >= 0)
            ::close(*descriptor);
        *descriptor = -1;
    }
}

ssize_t ModemSocket::writeSome(int descriptor, const QByteArray &bytes)
{
    return ::send(descriptor, bytes.constData(), static_cast<std::size_t>(bytes.size()),
                  MSG_NOSIGNAL);
}

int ModemSocket::countUnderway() const
{
    int waiting = 0;
    if (m_client < 0 || ::ioctl(m_client, SIOCOUTQ, &waiting) != 0)
        waiting = 0;
    return waiting;
}

} // namespace simulator

} // namespace norvane
