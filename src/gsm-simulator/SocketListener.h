#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <memory>

class QSocketNotifier;

namespace norvane {

namespace simulator {

/// A stream socket in the file system that nobody but the user of this process may connect to.
class SocketListener : public QObject
{
    Q_OBJECT

public:
    explicit SocketListener(QObject *parent = nullptr);
    ~SocketListener() override;

    /// Listens at `path`. A socket there that nobody listens at is replaced, anything else is left
    /// alone.
    /// @param backlog  clients that may wait to be accepted
    /// @return what went wrong, empty if nothing
    QString open(const QString &path, int backlog);

    /// Stops listening and removes the socket.
    void close();

    /// Whether clients that connect are told of by clientWaiting(), or left waiting.
    void setAccepting(bool accepting);

    /// The socket of the client that waits, which doesn't block, or -1 if there is none.
    int accept();

Q_SIGNALS:
    void clientWaiting();

private:
    int m_listener = -1;
    QByteArray m_path;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace simulator

} // namespace norvane
