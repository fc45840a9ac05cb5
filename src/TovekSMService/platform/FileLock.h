#pragma once

#include <QString>

namespace norvane {

/// A lock that is held through an open file: the system releases it when its holder ends, however
/// that comes about.
class FileLock
{
public:
    /// @param file  made where it doesn't exist; it stays when the lock is released
    explicit FileLock(const QString &file);
    FileLock(const FileLock &) = delete;
    FileLock &operator=(const FileLock &) = delete;
    ~FileLock();

    /// Whether the file could be made or opened, without which there is no lock.
    bool isUsable() const { return m_handle >= 0; }

    /// @return whether the lock is held now
    bool tryLock();

private:
    int m_handle = -1;
};

} // namespace norvane
