#pragma once

#include "gsm-simulator/ModemPort.h"
#include "gsm-simulator/SocketListener.h"

#include <QString>

#include <memory>

namespace norvane {

namespace simulator {

/// A socket in the file system as the modem's port. It has one client at a time; others that
/// connect wait until that one has gone.
class ModemSocket : public ModemPort
{
    Q_OBJECT

public:
    explicit ModemSocket(QObject *parent = nullptr);
    ~ModemSocket() override;

    /// Listens at `path`. A socket there that nobody listens at is replaced, anything else is left
    /// alone.
    /// @return what went wrong, empty if nothing
    QString open(const QString &path);

    void close() override;

protected:
    bool findClient() override { return m_client >= 0; }
    ssize_t writeSome(int descriptor, const QByteArray &bytes) override;
    int countUnderway() const override;
    void handleHangUp() override;

private:
    void accept();
    void watchForHangUp();
    void dropClient();

    SocketListener m_listener;
    int m_client = -1;
    int m_watch = -1;
    std::unique_ptr<QSocketNotifier> m_watchNotifier;
};

} // namespace simulator

} // namespace norvane
