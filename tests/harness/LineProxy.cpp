#include "harness/LineProxy.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace norvane {

namespace {

using std::chrono::milliseconds;

constexpr int idleTimeout = 1000;  // ms
constexpr int writeTimeout = 2000; // ms for a reader that doesn't read

void closeDescriptor(int &descriptor)
{
    if (descriptor >= 0)
        ::close(descriptor);
    descriptor = -1;
}

void writeAll(int descriptor, const QByteArray &bytes)
{
    qsizetype done = 0;
    while (descriptor >= 0 && done < bytes.size()) {
        pollfd ready{descriptor, POLLOUT, 0};
        if (::poll(&ready, 1, writeTimeout) != 1)
            return;
        const ssize_t length = ::write(descriptor, bytes.constData() + done,
                                       static_cast<std::size_t>(bytes.size() - done));
        if (length <= 0)
            return;
        done += length;
    }
}

} // namespace

LineProxy::LineProxy(QString link, std::function<void(const QByteArray &)> beforeSend)
    : m_link(std::move(link)), m_beforeSend(std::move(beforeSend)),
      m_wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    m_thread = std::thread([this] { run(); });
}

LineProxy::~LineProxy()
{
    m_stop = true;
    wake();
    m_thread.join();
    closeAll();
    closeDescriptor(m_wake);
}

void LineProxy::wake() const
{
    const quint64 one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_wake, &one, sizeof one);
}

bool LineProxy::plugIn(const QString &device)
{
    const std::lock_guard lock(m_mutex);
    closeAll();
    m_device =
        ::open(QFile::encodeName(device).constData(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    const bool plugged = m_device >= 0 && openEngineEnd();
    if (!plugged)
        closeAll();
    m_discarding = false;
    m_late = false;
    m_held.clear();
    wake();
    return plugged;
}

bool LineProxy::openEngineEnd()
{
    m_engine = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    std::array<char, 128> name{};
    if (m_engine < 0 || ::grantpt(m_engine) != 0 || ::unlockpt(m_engine) != 0 ||
        ::ptsname_r(m_engine, name.data(), name.size()) != 0)
        return false;
    m_slave = ::open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    termios settings{};
    if (m_slave < 0 || ::tcgetattr(m_slave, &settings) != 0)
        return false;
    ::cfmakeraw(&settings);
    const QByteArray link = QFile::encodeName(m_link);
    ::unlink(link.constData());
    return ::tcsetattr(m_slave, TCSANOW, &settings) == 0 &&
           ::symlink(name.data(), link.constData()) == 0;
}

void LineProxy::closeAll()
{
    if (m_engine >= 0)
        ::unlink(QFile::encodeName(m_link).constData());
    for (int *const descriptor : {&m_slave, &m_engine, &m_device})
        closeDescriptor(*descriptor);
    m_watch.forget();
}

void LineProxy::cut()
{
    const std::lock_guard lock(m_mutex);
    closeAll();
    wake();
}

void LineProxy::set(Trap trap)
{
    const std::lock_guard lock(m_mutex);
    m_trap = std::move(trap);
    m_armed = true;
    m_sprung = false;
    m_hasActed = false;
    m_watch.begin();
}

void LineProxy::disarm()
{
    const std::lock_guard lock(m_mutex);
    m_armed = false;
    m_sprung = false;
}

bool LineProxy::waitForAct(milliseconds limit)
{
    std::unique_lock lock(m_mutex);
    return m_acted.wait_for(lock, limit, [this] { return m_hasActed; });
}

void LineProxy::flow()
{
    const std::lock_guard lock(m_mutex);
    m_watch.forget();
    if (m_slave >= 0) {
        ::ioctl(m_slave, TIOCNXCL);
        if (m_discarding) {
            ::tcflush(m_engine, TCIOFLUSH);
            ::tcflush(m_slave, TCIOFLUSH);
            ::tcflush(m_device, TCIFLUSH);
        }
    }
    m_discarding = false;
    wake();
}

void LineProxy::holdDevice(milliseconds time)
{
    const std::lock_guard lock(m_mutex);
    m_holdUntil = Clock::now() + time;
    wake();
}

void LineProxy::run()
{
    while (!m_stop)
        step();
}

/// Milliseconds until something is to be done without a byte; rounded down, so that what is due
/// within one is waited for actively and not late.
int LineProxy::timeout() const
{
    const Clock::time_point now = Clock::now();
    Clock::time_point next = now + milliseconds(idleTimeout);
    if (m_sprung)
        next = std::min(next, m_actAt);
    if (m_holdUntil > now)
        next = std::min(next, m_holdUntil + milliseconds(1));
    return static_cast<int>(
        std::chrono::duration_cast<milliseconds>(std::max(next - now, Clock::duration(0))).count());
}

void LineProxy::step()
{
    std::array<pollfd, 3> ends{};
    int limit = 0;
    {
        const std::lock_guard lock(m_mutex);
        const bool held = m_late || m_holdUntil > Clock::now();
        ends = {{{m_wake, POLLIN, 0}, {m_engine, POLLIN, 0}, {held ? -1 : m_device, POLLIN, 0}}};
        limit = timeout();
    }
    ::poll(ends.data(), ends.size(), limit);
    const std::lock_guard lock(m_mutex);
    quint64 count = 0;
    [[maybe_unused]] const ssize_t length = ::read(m_wake, &count, sizeof count);
    actIfDue();
    // The descriptors may be others by now; what isn't readable gives nothing.
    if (ends[1].fd == m_engine && ends[1].revents != 0)
        passOn(From::Engine);
    if (ends[2].fd >= 0 && ends[2].fd == m_device && ends[2].revents != 0)
        passOn(From::Device);
}

void LineProxy::passOn(From from)
{
    int &end = from == From::Engine ? m_engine : m_device;
    std::array<char, 4096> buffer{};
    const ssize_t length = ::read(end, buffer.data(), buffer.size());
    if (length < 0 && errno == EAGAIN)
        return;
    if (length <= 0) {
        closeAll(); // the device has gone, and the engine's end goes with it
        return;
    }
    if (from == From::Engine)
        releaseHeld();
    if (!m_discarding)
        forward(from, QByteArray(buffer.data(), length));
}

/// The engine speaks again.
void LineProxy::releaseHeld()
{
    const QByteArray held = std::exchange(m_held, {});
    if (!std::exchange(m_late, false))
        return;
    if (m_swallowing)
        ::tcflush(m_device, TCIFLUSH);
    else
        writeAll(m_engine, held);
}

void LineProxy::forward(From from, const QByteArray &bytes)
{
    const int end = from == From::Engine ? m_device : m_engine;
    QByteArray passing;
    const auto isCut = [&] {
        return m_discarding || (from == From::Engine ? m_device : m_engine) != end;
    };
    const auto flush = [&] {
        if (m_late && from == From::Device)
            m_held += std::exchange(passing, {});
        else if (!isCut())
            writeAll(end, std::exchange(passing, {}));
    };
    for (const Place &place : m_watch.read(from, bytes)) {
        if (isCut())
            return;
        const bool here = m_armed && !m_sprung && m_trap.isHere(place);
        if (here && m_trap.moment == Trap::Moment::BeforeByte) {
            flush();
            spring();
            if (isCut())
                return;
        }
        if (place.stage == Stage::Payload && place.isLast) {
            m_beforeSend(place.payload);
            ++m_submissions;
        }
        m_length = place.stage == Stage::Command && place.offset == 0 ? 1 : m_length + 1;
        if (place.stage == Stage::Answer && place.isLast)
            m_longest = std::max<int>(m_longest, m_length);
        passing += place.byte;
        if (here && m_trap.moment == Trap::Moment::AfterByte) {
            flush();
            spring();
        }
    }
    flush();
}

void LineProxy::spring()
{
    m_sprung = true;
    m_actAt = Clock::now() + m_trap.delay;
    if (m_trap.delay.count() == 0)
        actIfDue();
}

void LineProxy::actIfDue()
{
    if (!m_armed || !m_sprung || m_hasActed || Clock::now() < m_actAt)
        return;
    m_discarding = m_trap.rest == Trap::Rest::Lost;
    m_swallowing = m_trap.rest == Trap::Rest::Swallowed;
    m_late = m_swallowing || m_trap.rest == Trap::Rest::Late;
    if (m_trap.act)
        m_trap.act();
    m_armed = false;
    m_hasActed = true;
    m_acted.notify_all();
}

} // namespace norvane
