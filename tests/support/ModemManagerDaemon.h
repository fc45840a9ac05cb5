#pragma once

#include <QDBusConnection>
#include <QMap>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>
#include <QThread>

#include <memory>

namespace norvane {

using namespace Qt::StringLiterals;

class PermissionAuthority;

/// ModemManager itself, on a bus of its own that plays the system's bus. Its modems are simulated
/// ones, found by their sockets. All of it ends with the object.
class ModemManagerDaemon
{
public:
    enum class Permission { Granted, Denied };

    static bool isInstalled();

    /// Starts the bus and the daemon and waits until the daemon has its name.
    ModemManagerDaemon();
    ~ModemManagerDaemon();
    ModemManagerDaemon(const ModemManagerDaemon &) = delete;
    ModemManagerDaemon &operator=(const ModemManagerDaemon &) = delete;

    bool isRunning() const;

    /// The bus, for DBUS_SYSTEM_BUS_ADDRESS of other programs.
    QString address() const { return m_address; }
    QDBusConnection connection() const { return QDBusConnection(m_address); }

    /// What the daemon has noted, each command to a modem among it.
    QString logPath() const { return m_folder.filePath(u"log"_s); }

    /// Lets the daemon find a modem and waits until that is on the bus. A modem that was detached
    /// comes back.
    /// @param name    of the device, which the bus shows as /virtual/NAME
    /// @param socket  where a simulator listens
    /// @return the path of its object; empty if none appears
    QString attach(const QString &name, const QString &socket);

    /// Takes a modem away, as pulling its plug does, and waits until it has left the bus.
    /// @return whether it has
    bool detach(const QString &name);

    /// The path of a modem's object, empty while there is none.
    QString modemPath(const QString &name) const;

    /// Ends the daemon as a crash would and waits until the bus has noticed.
    bool kill();

    /// Starts the daemon again, after kill() or in the middle of its work, and attaches what was
    /// attached.
    bool restart();

    /// What everybody who asks the daemon for something is from now on.
    void setPermission(Permission permission);

private:
    bool startBus();
    bool startDaemon();
    bool setProfile(const QString &name, const QString &socket) const;
    bool inhibit(const QString &name, bool inhibited) const;
    bool waitForModem(const QString &name, bool present) const;

    struct Device
    {
        QString socket;
        bool isAttached = true;
    };

    QTemporaryDir m_folder;
    QProcess m_bus;
    QProcess m_daemon;
    QString m_address;
    QMap<QString, Device> m_devices; ///< by their names
    QThread m_authorityThread;
    std::unique_ptr<PermissionAuthority> m_authority;
};

} // namespace norvane
