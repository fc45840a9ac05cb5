#include "TovekSMService/modem/at/PtyModem.h"

#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

namespace norvane {

PtyModem::PtyModem() : m_master(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
{
    if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0)
        qFatal("no pseudo-terminal");
    m_path = QString::fromLocal8Bit(::ptsname(m_master));
    m_notifier = std::make_unique<QSocketNotifier>(m_master, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &PtyModem::onReadable);
}

PtyModem::~PtyModem()
{
    unplug();
}

void PtyModem::unplug()
{
    m_notifier.reset();
    if (m_master >= 0)
        ::close(std::exchange(m_master, -1));
}

void PtyModem::say(const QByteArray &bytes)
{
    if (::write(m_master, bytes.constData(), static_cast<size_t>(bytes.size())) != bytes.size())
        qFatal("the pseudo-terminal doesn't take the bytes");
}

void PtyModem::onReadable()
{
    char buffer[4096];
    const ssize_t count = ::read(m_master, buffer, sizeof buffer);
    if (count <= 0) {
        // Nobody has the near end open: readable without end.
        m_notifier->setEnabled(false);
        return;
    }
    heard.append(buffer, count);
    m_pending.append(buffer, count);
    answer();
}

void PtyModem::answer()
{
    if (m_forever) {
        if (m_pending.startsWith("AT+CMGS=") && m_pending.endsWith('\r')) {
            m_pending.clear();
            say("\r\n> ");
        } else if (m_pending.endsWith('\x1A')) {
            m_pending.clear();
            ++submissions;
            say("\r\n+CMGS: 1\r\n\r\nOK\r\n");
        }
        return;
    }
    if (!m_turns.isEmpty() && m_pending.endsWith(m_turns.first().hears)) {
        m_pending.clear();
        say(m_turns.takeFirst().says);
    }
}

} // namespace norvane
