#pragma once

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
    enum class Outcome {
        Held,          ///< by this object
        HeldByAnother, ///< another program has it, exclusively or locked
        NotPermitted,
        Gone,
        Stuck, ///< the driver has not come back yet, from this attempt or an earlier one
        Failed,
    };

    /// Opens a device as the system's `open` does: a handle, or -1 with the reason in `errno`. Is
    /// called on another thread.
    using Opener = std::function<int(const QByteArray &path)>;

    DeviceClaim() : DeviceClaim(openPlainly) {}
    explicit DeviceClaim(Opener opener);
    DeviceClaim(const DeviceClaim &) = delete;
    DeviceClaim &operator=(const DeviceClaim &) = delete;
    ~DeviceClaim();

    /// @param path    of the device itself
    /// @param limitMs how long to wait for the driver
    Outcome take(const QString &path, int limitMs);
    void release();

    /// The system's message about the last failure; may be empty.
    QString errorText() const { return m_errorText; }

    static int openPlainly(const QByteArray &path);

private:
    struct Attempt;

    Outcome judge(const QString &path, int handle, int error);

    const Opener m_opener;
    std::shared_ptr<Attempt> m_attempt; ///< the last one, while it isn't over
    int m_handle = -1;
    QString m_errorText;
};

} // namespace norvane
