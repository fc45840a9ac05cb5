#include "gsm-simulator/PseudoTerminal.h"

#include <QFile>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

QString systemError(const char *what)
{
    return QString::fromLatin1(what) + u": "_s + QString::fromLocal8Bit(std::strerror(errno));
}

/// Where a symbolic link leads, empty if `path` is none.
QByteArray linkTarget(const QByteArray &path)
{
    QByteArray target(PATH_MAX, '\0');
    const ssize_t length =
        ::readlink(path.constData(), target.data(), static_cast<std::size_t>(target.size()));
    return length < 0 ? QByteArray() : target.left(length);
}

bool makeRaw(int terminal)
{
    termios settings{};
    if (::tcgetattr(terminal, &settings) != 0)
        return false;
    ::cfmakeraw(&settings);
    return ::tcsetattr(terminal, TCSANOW, &settings) == 0;
}

void closeDescriptor(int &descriptor)
{
    if (descriptor >= 0)
        ::close(descriptor);
    descriptor = -1;
}

} // namespace

PseudoTerminal::PseudoTerminal(QObject *parent) : ModemPort(parent) {}

PseudoTerminal::~PseudoTerminal()
{
    close();
}

QString PseudoTerminal::open(const QString &link)
{
    QString failure = openTerminal();
    if (failure.isEmpty()) {
        watchClients(); // before anybody can know of the terminal
        failure = makeLink(link);
    }
    if (!failure.isEmpty()) {
        close();
        return failure;
    }
    attach(m_master);
    return {};
}

QString PseudoTerminal::openTerminal()
{
    m_master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0)
        return systemError("no pseudo-terminal");
    std::array<char, 128> name{};
    if (::ptsname_r(m_master, name.data(), name.size()) != 0)
        return systemError("no pseudo-terminal");
    m_slaveName = QByteArray(name.data());
    // Held open, so that a client that closes it isn't the last one: the line would hang up.
    m_slave = ::open(m_slaveName.constData(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (m_slave < 0 || !makeRaw(m_slave))
        return systemError(m_slaveName.constData());
    return {};
}

QString PseudoTerminal::makeLink(const QString &link)
{
    const QByteArray path = QFile::encodeName(link);
    struct stat found
    {};
    if (::lstat(path.constData(), &found) == 0 && !linkTarget(path).startsWith("/dev/pts/"))
        return link + u": exists and is no link to a terminal"_s;
    const QByteArray fresh = path + '.' + QByteArray::number(::getpid());
    ::unlink(fresh.constData());
    if (::symlink(m_slaveName.constData(), fresh.constData()) != 0)
        return systemError(path.constData());
    if (::rename(fresh.constData(), path.constData()) != 0) {
        const QString failure = systemError(path.constData());
        ::unlink(fresh.constData());
        return failure;
    }
    m_link = path;
    return {};
}

void PseudoTerminal::close()
{
    detach();
    m_watchNotifier.reset();
    if (!m_link.isEmpty() && linkTarget(m_link) == m_slaveName)
        ::unlink(m_link.constData());
    m_link.clear();
    closeDescriptor(m_watch);
    closeDescriptor(m_slave);
    closeDescriptor(m_master);
}

void PseudoTerminal::watchClients()
{
    m_watch = ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    if (m_watch < 0 ||
        ::inotify_add_watch(m_watch, m_slaveName.constData(), IN_OPEN | IN_CLOSE) < 0) {
        closeDescriptor(m_watch); // then somebody is taken to be there always
        return;
    }
    m_watchNotifier = std::make_unique<QSocketNotifier>(m_watch, QSocketNotifier::Read);
    connect(m_watchNotifier.get(), &QSocketNotifier::activated, this,
            &PseudoTerminal::countClients);
}

void PseudoTerminal::countClients()
{
    if (m_watch < 0)
        return;
    alignas(inotify_event) std::array<char, 4096> buffer{};
    bool closed = false;
    ssize_t length = 0;
    while ((length = ::read(m_watch, buffer.data(), buffer.size())) > 0) {
        for (std::size_t at = 0; at < static_cast<std::size_t>(length);) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + at, sizeof event);
            if ((event.mask & IN_OPEN) != 0)
                ++m_clients;
            if ((event.mask & IN_CLOSE) != 0) {
                --m_clients;
                closed = true;
            }
            at += sizeof event + event.len;
        }
    }
    if (closed && m_clients <= 0)
        forgetClient();
}

void PseudoTerminal::forgetClient()
{
    m_clients = 0;
    dropUnwritten();
    ::ioctl(m_slave, TIOCNXCL);
    ::tcflush(m_master, TCOFLUSH);
    ::tcflush(m_slave, TCIFLUSH);
    Q_EMIT abandoned();
}

bool PseudoTerminal::findClient()
{
    countClients();
    return m_watch < 0 || m_clients != 0;
}

ssize_t PseudoTerminal::writeSome(int descriptor, const QByteArray &bytes)
{
    return ::write(descriptor, bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

int PseudoTerminal::countUnderway() const
{
    int waiting = 0;
    if (m_slave < 0 || ::ioctl(m_slave, FIONREAD, &waiting) != 0)
        waiting = 0;
    return waiting;
}

} // namespace simulator

} // namespace norvane
