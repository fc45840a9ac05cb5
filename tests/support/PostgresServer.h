#pragma once

#include "support/PostgresClient.h"
#include "support/ReservedPort.h"

#include <QMap>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace norvane {

/// A PostgreSQL server with a data folder of its own, which nobody else sees. It ends with the
/// object, or with the test program if that is killed; the thread that starts it must last as long
/// as it does. Where the tests run as root, it runs as the user "postgres".
class PostgresServer
{
public:
    /// What has been committed is safe from a server that is killed in both cases, and from a
    /// machine that loses its power where it is flushed.
    enum class Durability { Unflushed, Flushed };
    enum class Listen {
        SocketOnly,
        SocketAndLoopback ///< and on 127.0.0.1, where each role needs its password
    };
    using Rows = PostgresClient::Rows;

    /// Sets up the data folder and starts the server.
    explicit PostgresServer(Durability durability = Durability::Unflushed,
                            Listen listen = Listen::SocketOnly);
    ~PostgresServer();
    PostgresServer(const PostgresServer &) = delete;
    PostgresServer &operator=(const PostgresServer &) = delete;

    /// Returns when the server takes connections.
    /// @return false if it doesn't come up; the log tells why
    bool start();
    /// Cuts all connections, rolls back what they had open, and shuts down in order.
    bool stop();
    /// Ends the server as a crash would: it has to recover at its next start.
    bool killNow();
    bool restart() { return stop() && start(); }
    bool isRunning() const { return m_process.state() == QProcess::Running; }
    /// The process that all others of the server descend from.
    qint64 processId() const { return m_process.processId(); }

    /// A setting of the configuration file, in force from the next start.
    void setSetting(const QString &name, const QString &value) { m_settings[name] = value; }

    /// Gives the server a certificate of its own, for "localhost" and 127.0.0.1, in force from the
    /// next start.
    /// @return the file that a client checks it with
    QString setUpTls();

    /// Makes an empty database, in place of one that has the name and whoever is connected to it.
    /// @return how to connect to it
    QString freshDatabase(const QString &name);

    /// For libpq, by the socket and as the role that may do everything.
    QString connection(const QString &database = defaultDatabase()) const;
    /// The part of it that isn't the address, for other ways to the server.
    static QString login(const QString &database = defaultDatabase());
    /// By 127.0.0.1, without role and password.
    QString loopbackConnection(const QString &database = defaultDatabase()) const;
    QString socketPath() const;
    int port() const;

    /// Runs one or several statements on a connection of its own.
    /// @return the rows of the last one
    /// @throws std::runtime_error with what the server says
    Rows sql(const QString &statements, const QString &database = defaultDatabase()) const;

    QString logPath() const { return m_folder.filePath(QStringLiteral("log")); }

private:
    static QString defaultDatabase() { return QStringLiteral("postgres"); }

    void setUpFolder();
    bool isReady() const;
    bool signalAndWait(int signal);
    void run(const QString &program, const QStringList &arguments) const;
    QString dataFolder() const { return m_folder.filePath(QStringLiteral("data")); }

    QTemporaryDir m_folder;
    QMap<QString, QString> m_settings;
    const std::unique_ptr<ReservedPort> m_port; ///< none where there is the socket alone
    QProcess m_process;
};

} // namespace norvane
