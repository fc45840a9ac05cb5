#pragma once

#include "common/platform/PlatformFiles.h"

#include <QString>

#include <chrono>

namespace norvane {

/// The per-user settings: texts addressed by application, section and key.
class StoredSettings
{
public:
    StoredSettings() = default;
    StoredSettings(const StoredSettings &) = delete;
    StoredSettings &operator=(const StoredSettings &) = delete;
    virtual ~StoredSettings() = default;

    /// @return `defaultValue` if the key was never stored
    /// @throws NumberedFailure if the settings can't be read
    virtual QString get(const QString &application, const QString &section, const QString &key,
                        const QString &defaultValue) const = 0;

    /// @throws NumberedFailure if the settings can't be read or written
    virtual void save(const QString &application, const QString &section, const QString &key,
                      const QString &value) = 0;
};

/// The settings in `$XDG_CONFIG_HOME/<application>/settings.ini`. Nothing is kept in memory: each
/// call sees what other processes have written, and a save leaves their other keys alone.
class IniStoredSettings : public StoredSettings
{
public:
    /// @param lockWait  how long a save waits for another process that is saving
    explicit IniStoredSettings(PlatformFiles &files = platformFiles(),
                               std::chrono::milliseconds lockWait = std::chrono::seconds(5));

    /// @throws NumberedFailure 75 for a file that is no settings text or is over a mebibyte, 5 for
    ///         names that can't be, 70, 61, 76 ... by the platform's error
    QString get(const QString &application, const QString &section, const QString &key,
                const QString &defaultValue) const override;

    /// Writes the file as a whole or not at all. The folder is made if it isn't there.
    /// @throws NumberedFailure as `get`; 70 also if another process keeps the file locked
    void save(const QString &application, const QString &section, const QString &key,
              const QString &value) override;

private:
    PlatformFiles &m_files;
    std::chrono::milliseconds m_lockWait;
};

} // namespace norvane
