#pragma once

#include "gsm-simulator/ModemPort.h"

#include <QByteArray>
#include <QString>

#include <memory>

class QSocketNotifier;

namespace norvane {

namespace simulator {

/// A pseudo-terminal as the modem's port, and the link under which clients find their end of it. A
/// client doesn't leave its exclusive mode to the next one.
class PseudoTerminal : public ModemPort
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
    void close() override;

protected:
    bool findClient() override;
    ssize_t writeSome(int descriptor, const QByteArray &bytes) override;
    int countUnderway() const override;
    void handleHangUp() override {}

private:
    QString openTerminal();
    QString makeLink(const QString &link);
    void watchClients();
    void countClients();
    void forgetClient();

    int m_master = -1;
    int m_slave = -1;
    int m_watch = -1;
    int m_clients = 0;
    QByteArray m_slaveName;
    QByteArray m_link;
    std::unique_ptr<QSocketNotifier> m_watchNotifier;
};

} // namespace simulator

} // namespace norvane
