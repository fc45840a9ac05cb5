#pragma once

#include "gsm-simulator/ReceivedPdu.h"
#include "gsm-simulator/ServiceCentre.h"

#include <QByteArrayList>
#include <QDateTime>

#include <optional>

namespace norvane {

namespace simulator {

struct ModemState;

/// The modem's side of what comes from the network: routes it to the terminal or stores it, as
/// +CNMI says (3GPP TS 27.005, 3.4.1), and waits for the terminal's acknowledgement.
class Reception
{
public:
    enum class Acknowledgement { Positive, Negative };

    /// Takes from the network what is due.
    /// @return the lines that the terminal gets of it, without their frame
    QByteArrayList receive(ModemState &modem);

    /// What the terminal hasn't acknowledged in time goes back to the network, and nothing is
    /// routed any more.
    void expire(ModemState &modem);

    /// +CNMA.
    /// @return whether one was expected
    bool acknowledge(ModemState &modem, Acknowledgement acknowledgement);

    bool isAwaiting() const { return m_awaited.has_value(); }

    /// Whether an item of that lane is with the terminal and not acknowledged.
    bool isAwaiting(ServiceCentre::Lane lane) const { return m_awaited && m_awaited->lane == lane; }

    /// Forgets the indications that +CNMI kept back.
    void clearBuffer() { m_buffered.clear(); }

    /// When an acknowledgement is due that hasn't come.
    std::optional<QDateTime> deadline() const;

private:
    enum class Outcome { Taken, Routed, NotNow, Full };

    struct Awaited
    {
        ServiceCentre::Lane lane;
        ServiceCentre::Item item;
        QDateTime deadline;
    };

    void drain(ServiceCentre::Lane lane, ModemState &modem, QByteArrayList &lines);
    Outcome offer(const ServiceCentre::Item &item, ModemState &modem, QByteArrayList &lines);
    Outcome offerMessage(const QByteArray &tpdu, const ReceivedPdu &pdu, ModemState &modem,
                         QByteArrayList &lines);
    Outcome offerReport(const QByteArray &tpdu, const ReceivedPdu &pdu, ModemState &modem,
                        QByteArrayList &lines);
    Outcome route(const QByteArray &line, ModemState &modem, QByteArrayList &lines);
    void indicate(const QByteArray &line, ModemState &modem, QByteArrayList &lines);
    void giveBack(ModemState &modem);

    std::optional<Awaited> m_awaited;
    QByteArrayList m_buffered;
};

} // namespace simulator

} // namespace norvane
