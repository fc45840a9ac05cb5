#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QTemporaryDir>

namespace norvane {

/// A session bus of its own, which ends with the object.
class PrivateBus
{
public:
    /// @param activation  what an activation file for the engine's name runs; empty for no file
    explicit PrivateBus(const QString &activation = {});
    ~PrivateBus();

    PrivateBus(const PrivateBus &) = delete;
    PrivateBus &operator=(const PrivateBus &) = delete;

    QDBusConnection connection() const { return QDBusConnection(m_name); }
    /// For further connections.
    QString address() const { return m_name; }

private:
    QTemporaryDir m_folder;
    QProcess m_daemon;
    QString m_name;
    QByteArray m_formerAddress;
};

} // namespace norvane
