#include "gsm-simulator/ModemPort.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>

#include <unistd.h>

namespace norvane {

namespace simulator {

namespace {

/// Beyond this the client has to read before the modem listens to it again.
constexpr qsizetype maxUnwritten = 65536;

} // namespace

ModemPort::ModemPort(QObject *parent) : QObject(parent) {}

ModemPort::~ModemPort() = default;

void ModemPort::dismiss(std::unique_ptr<QSocketNotifier> &notifier)
{
    if (!notifier)
        return;
    notifier->setEnabled(false);
    notifier.release()->deleteLater();
}

void ModemPort::attach(int descriptor)
{
    m_descriptor = descriptor;
    m_readNotifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
    m_writeNotifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Write);
    m_readNotifier->setEnabled(m_reading);
    m_writeNotifier->setEnabled(false);
    connect(m_readNotifier.get(), &QSocketNotifier::activated, this, &ModemPort::readClient);
    connect(m_writeNotifier.get(), &QSocketNotifier::activated, this, &ModemPort::writeMore);
}

void ModemPort::detach()
{
    dismiss(m_readNotifier);
    dismiss(m_writeNotifier);
    m_unwritten.clear();
    m_descriptor = -1;
}

void ModemPort::dropUnwritten()
{
    m_unwritten.clear();
    if (m_writeNotifier)
        m_writeNotifier->setEnabled(false);
}

void ModemPort::setReading(bool reading)
{
    m_reading = reading;
    if (m_readNotifier)
        m_readNotifier->setEnabled(m_reading && m_unwritten.size() < maxUnwritten);
}

qsizetype ModemPort::unreadByClient() const
{
    return m_unwritten.size() + countUnderway();
}

void ModemPort::readClient()
{
    findClient();
    std::array<char, 16384> buffer;
    const ssize_t length = ::read(m_descriptor, buffer.data(), buffer.size());
    if (length > 0)
        Q_EMIT received(QByteArray(buffer.data(), length));
    else if (length == 0 || (errno != EAGAIN && errno != EINTR))
        handleHangUp();
}

void ModemPort::readToTheEnd()
{
    while (m_descriptor >= 0)
        readClient();
}

void ModemPort::write(const QByteArray &bytes)
{
    if (m_descriptor < 0 || bytes.isEmpty() || !findClient())
        return;
    const bool wasWaiting = !m_unwritten.isEmpty();
    m_unwritten += bytes;
    if (!wasWaiting)
        writeMore();
}

void ModemPort::writeMore()
{
    while (!m_unwritten.isEmpty()) {
        const ssize_t length = writeSome(m_descriptor, m_unwritten);
        if (length < 0 && errno == EINTR)
            continue;
        if (length < 0 && errno != EAGAIN) {
            handleHangUp();
            return;
        }
        if (length <= 0)
            break;
        m_unwritten.remove(0, length);
    }
    m_writeNotifier->setEnabled(!m_unwritten.isEmpty());
    setReading(m_reading);
}

} // namespace simulator

} // namespace norvane
