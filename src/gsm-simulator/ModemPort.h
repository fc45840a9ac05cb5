#pragma once

#include <QByteArray>
#include <QObject>

#include <memory>

#include <sys/types.h>

class QSocketNotifier;

namespace norvane {

namespace simulator {

/// The modem's end of the line to its client. Clients may come and go: what the modem says while
/// there is none is lost, and a client leaves none of its unread bytes to the next one.
class ModemPort : public QObject
{
    Q_OBJECT

public:
    explicit ModemPort(QObject *parent = nullptr);
    ~ModemPort() override;

    /// Hangs up and removes what clients find the port by.
    virtual void close() = 0;

    void write(const QByteArray &bytes);

    /// Stops taking bytes from the client, who then meets a full line, or goes on.
    void setReading(bool reading);

    /// Bytes that the client hasn't taken yet.
    qsizetype unreadByClient() const;

Q_SIGNALS:
    void received(const QByteArray &bytes);

    /// The last client has closed the port.
    void abandoned();

protected:
    /// Reads and writes at `descriptor`, which doesn't block, until detach().
    void attach(int descriptor);
    void detach();
    void dropUnwritten();

    /// Reads what is left of a client that has gone, even while the line is stopped.
    void readToTheEnd();

    /// Looks whether there is a client at this moment.
    virtual bool findClient() = 0;

    virtual ssize_t writeSome(int descriptor, const QByteArray &bytes) = 0;

    /// Bytes between both ends of the line, on their way to the client.
    virtual int countUnderway() const = 0;

    /// The line has ended at the client's side.
    virtual void handleHangUp() = 0;

    /// Lets a notifier go, which has to outlive the call within its own notification.
    static void dismiss(std::unique_ptr<QSocketNotifier> &notifier);

private:
    void readClient();
    void writeMore();

    int m_descriptor = -1;
    bool m_reading = true;
    QByteArray m_unwritten;
    std::unique_ptr<QSocketNotifier> m_readNotifier;
    std::unique_ptr<QSocketNotifier> m_writeNotifier;
};

} // namespace simulator

} // namespace norvane
