#pragma once

#include "gsm-simulator/SocketListener.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <functional>
#include <map>
#include <memory>

class QSocketNotifier;

namespace norvane {

namespace simulator {

/// A socket in the file system where the user of this process, and no other, writes commands line
/// by line and reads an answer to each.
class ControlSocket : public QObject
{
    Q_OBJECT

public:
    /// Answers a command; both without a line end.
    using Handler = std::function<QByteArray(const QByteArray &line)>;

    /// Bytes of a line beyond which a client is refused and let go.
    static constexpr qint64 maxLineLength = 65'536;

    explicit ControlSocket(Handler handler, QObject *parent = nullptr);
    ~ControlSocket() override;

    /// Listens at `path`. A socket there that nobody listens at is replaced, anything else is left
    /// alone.
    /// @return what went wrong, empty if nothing
    QString open(const QString &path);

    /// Lets all clients go and removes the socket.
    void close();

private:
    struct Client
    {
        QByteArray input;
        std::unique_ptr<QSocketNotifier> notifier;
    };

    void accept();
    void read(int socket);
    bool answerLines(int socket, Client &client);
    void drop(int socket);

    Handler m_handler;
    SocketListener m_listener;
    std::map<int, Client> m_clients; ///< by their sockets
};

} // namespace simulator

} // namespace norvane
