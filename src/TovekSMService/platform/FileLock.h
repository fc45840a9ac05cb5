#pragma once

#include "TovekSMService/platform/PlatformFailure.h"
#include "common/Result.h"

#include <QString>

#include <memory>

namespace norvane {

/// A lock that is held through an open file: the system releases it when its holder ends, however
/// that comes about.
class FileLock
{
public:
    /// Opens the file of a lock, which isn't held yet.
    /// @param file  made where it doesn't exist; it stays when the lock is released
    [[nodiscard]] static Result<std::unique_ptr<FileLock>, PlatformFailure>
    open(const QString &file);
    FileLock(const FileLock &) = delete;
    FileLock &operator=(const FileLock &) = delete;
    ~FileLock();

    /// @return whether the lock is held now
    [[nodiscard]] bool tryLock();

private:
    explicit FileLock(int handle) : m_handle(handle) {}

    const int m_handle;
};

} // namespace norvane
