#pragma once

#include <QByteArray>
#include <QList>

namespace norvane {

/// How a device hands over what the network sends to it: the modes of +CNMI (3GPP TS 27.005,
/// 3.4.1). A mode of -1 isn't known.
struct MailRoutes
{
    int mode = -1;    ///< 2 where the device has it
    int message = -1; ///< 1 stored and announced, 2 routed to us
    int report = -1;  ///< 2 stored and announced, 1 routed to us
    int buffer = 0;   ///< what becomes of what waits in the device: 0 handed over, 1 dropped

    bool operator==(const MailRoutes &) const = default;

    /// What is best of what the device says that it has (the lines of the answer to AT+CNMI=?):
    /// stored before routed, as what is stored waits for us.
    static MailRoutes bestOf(const QList<QByteArray> &lines);
    /// What is tried, in this order, with a device that doesn't say what it has.
    static QList<MailRoutes> candidates();

    /// Whether something would come that has to be acknowledged where the service asks for it.
    bool routes() const { return message == 2 || report == 1; }
    /// Whether these are the modes in force (the lines of the answer to AT+CNMI?).
    bool areIn(const QList<QByteArray> &lines) const;
    /// "AT+CNMI=2,1,0,2,0", as far as the modes are known; empty where not even the first is.
    QByteArray command() const;
};

} // namespace norvane
