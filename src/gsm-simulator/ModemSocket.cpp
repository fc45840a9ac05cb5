#include "gsm-simulator/ModemSocket.h"

#include <linux/sockios.h>
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
    if (m_client >= 0)
        ::close(m_client);
    m_client = -1;
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
