#include "TovekSMService/platform/DeviceClaim.h"

#include "TovekSMService/platform/SerialDevices.h"

#include <QFile>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace norvane {

/// What the thread that opens and the one that waits for it have in common.
struct DeviceClaim::Attempt
{
    Attempt() = default;
    Attempt(const Attempt &) = delete;
    Attempt &operator=(const Attempt &) = delete;
    ~Attempt()
    {
        if (handle >= 0)
            ::close(handle);
    }

    std::mutex mutex;
    std::condition_variable changed;
    bool over = false;
    int handle = -1; ///< belongs to this object until it is taken out
    int error = 0;
};

DeviceClaim::DeviceClaim(Opener opener) : m_opener(std::move(opener)) {}

DeviceClaim::~DeviceClaim()
{
    release();
}

int DeviceClaim::openPlainly(const QByteArray &path)
{
    return ::open(path.constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
}

DeviceClaim::Outcome DeviceClaim::take(const QString &path, int limitMs)
{
    release();
    m_errorText.clear();
    if (m_attempt) {
        const std::lock_guard lock(m_attempt->mutex);
        if (!m_attempt->over)
            return Outcome::Stuck;
    }
    m_attempt = std::make_shared<Attempt>();
    try {
        std::thread([attempt = m_attempt, opener = m_opener, name = QFile::encodeName(path)] {
            const int handle = opener(name);
            const int error = errno;
            const std::lock_guard lock(attempt->mutex);
            attempt->handle = handle;
            attempt->error = error;
            attempt->over = true;
            attempt->changed.notify_all();
        }).detach();
    } catch (const std::system_error &error) {
        m_attempt.reset();
        m_errorText = QString::fromLocal8Bit(error.what());
        return Outcome::Failed;
    }

    std::unique_lock lock(m_attempt->mutex);
    if (!m_attempt->changed.wait_for(lock, std::chrono::milliseconds(limitMs),
                                     [this] { return m_attempt->over; }))
        return Outcome::Stuck;
    const int handle = std::exchange(m_attempt->handle, -1);
    const int error = m_attempt->error;
    lock.unlock();
    m_attempt.reset();
    return judge(path, handle, error);
}

DeviceClaim::Outcome DeviceClaim::judge(const QString &path, int handle, int error)
{
    if (handle < 0) {
        m_errorText = QString::fromLocal8Bit(std::strerror(error));
        switch (error) {
        case EBUSY:
            return Outcome::HeldByAnother;
        case EACCES:
        case EPERM:
            return Outcome::NotPermitted;
        case ENOENT:
        case ENODEV:
        case ENXIO:
            return Outcome::Gone;
        default:
            return Outcome::Failed;
        }
    }
    // An administrator's account gets past another program's exclusive use. The mark alone says
    // nothing: that of a killed program stays while the far end of a pseudo-terminal is there.
    int exclusive = 0;
    const bool isExclusive = ::ioctl(handle, TIOCGEXCL, &exclusive) == 0 && exclusive != 0 &&
                             SerialDevices::openerOf(path);
    const bool isLocked = ::flock(handle, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    if (isExclusive || isLocked) {
        ::close(handle);
        return Outcome::HeldByAnother;
    }
    m_handle = handle;
    return Outcome::Held;
}

void DeviceClaim::release()
{
    if (m_handle >= 0)
        ::close(std::exchange(m_handle, -1));
}

} // namespace norvane
