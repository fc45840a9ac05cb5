#pragma once

#include "support/WaitUntil.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

namespace norvane {

using namespace Qt::StringLiterals;

/// The program in a process of its own, ended with this object.
class RunningSimulator
{
public:
    enum class Port { Terminal, Socket };

    /// Starts it with a control socket and waits until it is ready.
    explicit RunningSimulator(const QStringList &options = {}, Port port = Port::Terminal);
    ~RunningSimulator();

    /// Starts it again where it was, with the same options, when it has ended.
    bool restart();

    bool isReady() const { return m_ready; }
    QString link() const { return m_folder.filePath(u"port"_s); }
    QString socketPath() const { return m_folder.filePath(u"socket"_s); }
    QString controlPath() const { return m_folder.filePath(u"control"_s); }
    QString logPath() const { return m_folder.filePath(u"log"_s); }
    QString folder() const { return m_folder.path(); }
    QProcess &process() { return m_process; }

    /// The lines of the log so far.
    QList<QJsonObject> messages() const;

private:
    void start();

    QTemporaryDir m_folder;
    QString m_port;
    QProcess m_process;
    bool m_ready = false;
};

/// A client on the modem's port, by the plain means of the system.
class PortClient
{
public:
    /// @param path  of a terminal or a socket
    explicit PortClient(const QString &path);
    ~PortClient();
    PortClient(const PortClient &) = delete;
    PortClient &operator=(const PortClient &) = delete;

    bool isOpen() const { return m_port >= 0; }
    int descriptor() const { return m_port; }
    void close();
    void write(const QByteArray &bytes);

    /// Reads to the first `end`, or until the line hangs up or the time is over. What comes after
    /// the end stays for the next reading.
    QByteArray readUntil(const QByteArray &end, int milliseconds = hangMs);

    /// Writes one command and reads to the end of its answer.
    QByteArray ask(const QByteArray &command);

    /// Submits one PDU that says "hellohello", and gives the answer.
    QByteArray submitHello();

    /// Whether the line has hung up.
    bool hasHungUp() const { return m_hungUp; }

private:
    int m_port = -1;
    QByteArray m_read;
    bool m_hungUp = false;
};

/// A client of a control socket.
class ControlClient
{
public:
    explicit ControlClient(const QString &path);
    ~ControlClient();
    ControlClient(const ControlClient &) = delete;
    ControlClient &operator=(const ControlClient &) = delete;

    bool isConnected() const { return m_socket >= 0; }
    bool write(const QByteArray &bytes);

    /// The next line without its end, or what there is when the other side ends the connection.
    QByteArray readLine();

    /// Writes one command and reads the answer to it.
    QByteArray ask(const QByteArray &command);

private:
    int m_socket = -1;
    QByteArray m_read;
};

} // namespace norvane
