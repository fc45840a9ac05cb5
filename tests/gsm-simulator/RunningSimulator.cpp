#include "gsm-simulator/RunningSimulator.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QJsonDocument>

#include <array>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

RunningSimulator::RunningSimulator(const QStringList &options)
{
    m_process.setProgram(QStringLiteral(NORVANE_BIN_DIR "/gsm-simulator"));
    m_process.setArguments(QStringList{u"--link"_s, link(), u"--log"_s, logPath()} + options);
    m_process.start();
    const QDeadlineTimer deadline(hangMs);
    while (!m_process.canReadLine() && !deadline.hasExpired()) {
        if (!m_process.waitForReadyRead(static_cast<int>(deadline.remainingTime())))
            break;
    }
    m_ready = m_process.readLine() == "ready " + link().toLocal8Bit() + '\n';
}

RunningSimulator::~RunningSimulator()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.terminate();
    if (!m_process.waitForFinished(hangMs)) {
        m_process.kill();
        m_process.waitForFinished(hangMs);
    }
}

QList<QJsonObject> RunningSimulator::messages() const
{
    QList<QJsonObject> found;
    QFile file(logPath());
    if (file.open(QIODevice::ReadOnly)) {
        while (!file.atEnd())
            found += QJsonDocument::fromJson(file.readLine()).object();
    }
    return found;
}

PortClient::PortClient(const QString &path)
    : m_port(
          ::open(QFile::encodeName(path).constData(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK))
{}

PortClient::~PortClient()
{
    close();
}

void PortClient::close()
{
    if (m_port >= 0)
        ::close(m_port);
    m_port = -1;
}

void PortClient::write(const QByteArray &bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        pollfd ready{m_port, POLLOUT, 0};
        if (::poll(&ready, 1, hangMs) != 1)
            return;
        const ssize_t length = ::write(m_port, bytes.constData() + done,
                                       static_cast<std::size_t>(bytes.size() - done));
        if (length <= 0)
            return;
        done += length;
    }
}

QByteArray PortClient::readUntil(const QByteArray &end, int milliseconds)
{
    const QDeadlineTimer deadline(milliseconds);
    while (!m_read.contains(end)) {
        pollfd ready{m_port, POLLIN, 0};
        if (::poll(&ready, 1, static_cast<int>(deadline.remainingTime())) != 1)
            break;
        std::array<char, 4096> buffer{};
        const ssize_t length = ::read(m_port, buffer.data(), buffer.size());
        if (length <= 0) {
            m_hungUp = true;
            break;
        }
        m_read.append(buffer.data(), length);
    }
    const qsizetype at = m_read.indexOf(end);
    const QByteArray taken = m_read.left(at < 0 ? m_read.size() : at + end.size());
    m_read.remove(0, taken.size());
    return taken;
}

QByteArray PortClient::ask(const QByteArray &command)
{
    write(command + '\r');
    return readUntil("\r\nOK\r\n");
}

QByteArray PortClient::submitHello()
{
    write("AT+CMGS=23\r");
    readUntil("> ");
    write("0011000B916407281553F80000AA0AE8329BFD4697D9EC37\x1A");
    return readUntil("\r\nOK\r\n");
}

} // namespace norvane
