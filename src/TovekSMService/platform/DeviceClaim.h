#pragma once

#include "TovekSMService/platform/PlatformFailure.h"
#include "common/Result.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>

namespace norvane {

/// A serial device kept from other programs, for as long as this object lives or until it is
/// released: opened without waiting for a carrier, and locked by the file lock that programs use
/// which leave no lock files. The device's driver is entered on a thread of its own, so that one
/// that never comes back costs the caller no more than the limit.
class DeviceClaim
{
public:
    /// Opens a device and gives its handle. Is called on another thread.
    using Opener = std::function<Result<int, PlatformFailure>(const QByteArray &path)>;

    DeviceClaim() : DeviceClaim(openPlainly) {}
    explicit DeviceClaim(Opener opener);
    DeviceClaim(const DeviceClaim &) = delete;
    DeviceClaim &operator=(const DeviceClaim &) = delete;
    ~DeviceClaim();

    /// @param path    of the device itself
    /// @param limitMs how long to wait for the driver, which may be stuck in an earlier attempt
    [[nodiscard]] Result<void, PlatformFailure> take(const QString &path, int limitMs);
    void release();

    [[nodiscard]] static Result<int, PlatformFailure> openPlainly(const QByteArray &path);

private:
    struct Attempt;

    Result<void, PlatformFailure> keep(const QString &path, int handle);

    const Opener m_opener;
    std::shared_ptr<Attempt> m_attempt; ///< the last one, while it isn't over
    int m_handle = -1;
};

} // namespace norvane
