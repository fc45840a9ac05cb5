#include "TovekSMService/platform/DeviceClaim.h"

#include "TovekSMService/platform/SerialDevices.h"

#include <QFile>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

/// What the thread that opens and the one that waits for it have in common.
struct DeviceClaim::Attempt
{
    Attempt() = default;
    Attempt(const Attempt &) = delete;
    Attempt &operator=(const Attempt &) = delete;
    ~Attempt()
    {
        if (opened && opened->has_value())
            ::close(opened->value());
    }

    std::mutex mutex;
    std::condition_variable changed;
    /// Nothing while the driver is at it. A handle belongs to this object until it is taken out.
    std::optional<Result<int, PlatformFailure>> opened;
};

DeviceClaim::DeviceClaim(Opener opener) : m_opener(std::move(opener)) {}

DeviceClaim::~DeviceClaim()
{
    release();
}

Result<int, PlatformFailure> DeviceClaim::openPlainly(const QByteArray &path)
{
    const int handle = ::open(path.constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (handle < 0)
        return failed(PlatformFailure::ofErrno(errno));
    return handle;
}

Result<void, PlatformFailure> DeviceClaim::take(const QString &path, int limitMs)
{
    release();
    const PlatformFailure stuck{PlatformFailure::Kind::Stuck, u"its driver doesn't answer"_s};
    if (m_attempt) {
        const std::lock_guard lock(m_attempt->mutex);
        if (!m_attempt->opened)
            return failed(stuck);
    }
    m_attempt = std::make_shared<Attempt>();
    try {
        std::thread([attempt = m_attempt, opener = m_opener, name = QFile::encodeName(path)] {
            const Result<int, PlatformFailure> opened = opener(name);
            const std::lock_guard lock(attempt->mutex);
            attempt->opened = opened;
            attempt->changed.notify_all();
        }).detach();
    } catch (const std::system_error &error) {
        m_attempt.reset();
        return failed(
            PlatformFailure{PlatformFailure::Kind::Other, QString::fromLocal8Bit(error.what())});
    }

    std::unique_lock lock(m_attempt->mutex);
    if (!m_attempt->changed.wait_for(lock, std::chrono::milliseconds(limitMs),
                                     [this] { return m_attempt->opened.has_value(); }))
        return failed(stuck);
    const Result<int, PlatformFailure> opened = *std::exchange(m_attempt->opened, std::nullopt);
    lock.unlock();
    m_attempt.reset();
    if (!opened)
        return failed(opened.error());
    return keep(path, *opened);
}

Result<void, PlatformFailure> DeviceClaim::keep(const QString &path, int handle)
{
    // An administrator's account gets past another program's exclusive use. The mark alone says
    // nothing: that of a killed program stays while the far end of a pseudo-terminal is there.
    int exclusive = 0;
    const bool isExclusive = ::ioctl(handle, TIOCGEXCL, &exclusive) == 0 && exclusive != 0 &&
                             SerialDevices::openerOf(path);
    const bool isLocked = ::flock(handle, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    if (isExclusive || isLocked) {
        ::close(handle);
        return failed(PlatformFailure{PlatformFailure::Kind::HeldByAnother, {}});
    }
    m_handle = handle;
    return {};
}

void DeviceClaim::release()
{
    if (m_handle >= 0)
        ::close(std::exchange(m_handle, -1));
}

} // namespace norvane
