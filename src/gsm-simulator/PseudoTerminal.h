#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <memory>

class QSocketNotifier;

namespace norvane {

namespace simulator {

/// The modem's end of a pseudo-terminal, and the link under which clients find the other end.
/// Clients may come and go: as on a real port, what the modem says while nobody has the port open
/// is lost, and a client leaves neither its exclusive mode nor its unread bytes to the next one.
class PseudoTerminal : public QObject
{
    Q_OBJECT

public:
    explicit PseudoTerminal(QObject *parent = nullptr);
    ~PseudoTerminal() override;

    /// Opens the terminal and makes `link` a symbolic link to it. A link to a terminal that stands
    /// there is replaced in one step, anything else is left alone.
    /// @return what went wrong, empty if nothing
    QString open(const QString &link);

    /// Hangs up and removes the link, unless it has become somebody else's.
    void close();

    void write(const QByteArray &bytes);

    /// Stops taking bytes from the client, who then meets a full line, or goes on.
    void setReading(bool reading);

    /// Bytes that the client hasn't taken yet.
    qsizetype unreadByClient() const;

Q_SIGNALS:
    void received(const QByteArray &bytes);

    /// The last client has closed the port.
    void abandoned();

private:
    QString openTerminal();
    QString makeLink(const QString &link);
    void watchClients();
    void readClient();
    void writeMore();
    void countClients();
    void forgetClient();

    int m_master = -1;
    int m_slave = -1;
    int m_watch = -1;
    int m_clients = 0;
    bool m_reading = true;
    QByteArray m_slaveName;
    QByteArray m_link;
    QByteArray m_unwritten;
    std::unique_ptr<QSocketNotifier> m_readNotifier;
    std::unique_ptr<QSocketNotifier> m_writeNotifier;
    std::unique_ptr<QSocketNotifier> m_watchNotifier;
};

} // namespace simulator

} // namespace norvane
