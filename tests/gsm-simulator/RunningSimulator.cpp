#include "gsm-simulator/RunningSimulator.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QJsonDocument>

#include <array>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

int connectTo(const QByteArray &name)
{
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, name.constData(), sizeof address.sun_path - 1);
    if (::connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0)
        return socket;
    ::close(socket);
    return -1;
}

int openPort(const QByteArray &name)
{
    struct stat status
    {};
    if (::stat(name.constData(), &status) != 0 || !S_ISSOCK(status.st_mode))
        return ::open(name.constData(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    const int socket = connectTo(name);
    ::fcntl(socket, F_SETFL, O_NONBLOCK);
    return socket;
}

} // namespace

RunningSimulator::RunningSimulator(const QStringList &options, Port port)
    : m_port(port == Port::Terminal ? link() : socketPath())
{
    m_process.setProgram(QStringLiteral(NORVANE_BIN_DIR "/gsm-simulator"));
    m_process.setArguments(QStringList{port == Port::Terminal ? u"--link"_s : u"--socket"_s, m_port,
                                       u"--log"_s, logPath(), u"--control"_s, controlPath()} +
                           options);
    start();
}

void RunningSimulator::start()
{
    m_process.start();
    const QDeadlineTimer deadline(hangMs);
    while (!m_process.canReadLine() && !deadline.hasExpired()) {
        if (!m_process.waitForReadyRead(static_cast<int>(deadline.remainingTime())))
            break;
    }
    m_ready = m_process.readLine() == "ready " + m_port.toLocal8Bit() + '\n';
}

bool RunningSimulator::restart()
{
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(hangMs))
        return false;
    start();
    return m_ready;
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

PortClient::PortClient(const QString &path) : m_port(openPort(QFile::encodeName(path))) {}

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

ControlClient::ControlClient(const QString &path) : m_socket(connectTo(QFile::encodeName(path))) {}

ControlClient::~ControlClient()
{
    if (m_socket >= 0)
        ::close(m_socket);
}

bool ControlClient::write(const QByteArray &bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t length = ::send(m_socket, bytes.constData() + done,
                                      static_cast<std::size_t>(bytes.size() - done), MSG_NOSIGNAL);
        if (length <= 0)
            return false;
        done += length;
    }
    return true;
}

QByteArray ControlClient::readLine()
{
    while (!m_read.contains('\n')) {
        pollfd ready{m_socket, POLLIN, 0};
        if (::poll(&ready, 1, hangMs) != 1)
            break;
        std::array<char, 4096> buffer{};
        const ssize_t length = ::read(m_socket, buffer.data(), buffer.size());
        if (length <= 0)
            break;
        m_read.append(buffer.data(), length);
    }
    const qsizetype end = m_read.indexOf('\n');
    const QByteArray line = m_read.left(end < 0 ? m_read.size() : end);
    m_read.remove(0, line.size() + 1);
    return line;
}

QByteArray ControlClient::ask(const QByteArray &command)
{
    return write(command + '\n') ? readLine() : QByteArray();
}

} // namespace norvane
