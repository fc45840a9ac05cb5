#include "gsm-simulator/Reception.h"

#include "gsm-simulator/MessageLines.h"
#include "gsm-simulator/ModemState.h"

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

/// What +CNMI sets, by its place.
enum Indication : std::size_t { Mode = 0, Deliveries = 1, StatusReports = 3 };

int indication(const ModemState &modem, Indication which)
{
    return modem.profile.indications.at(which);
}

bool keepsBack(const ModemState &modem)
{
    return indication(modem, Mode) == 0;
}

bool wantsAcknowledgement(const ModemState &modem)
{
    return modem.profile.service == 1;
}

} // namespace

QByteArrayList Reception::receive(ModemState &modem)
{
    QByteArrayList lines;
    if (!keepsBack(modem))
        lines = std::exchange(m_buffered, {});
    if (modem.isRegistered()) {
        drain(ServiceCentre::Messages, modem, lines);
        drain(ServiceCentre::Reports, modem, lines);
    }
    return lines;
}

void Reception::drain(ServiceCentre::Lane lane, ModemState &modem, QByteArrayList &lines)
{
    const QDateTime now = modem.settings.clock();
    const ReceptionSettings &settings = modem.settings.reception;
    modem.network.setWaiting(lane, false);
    while (const std::optional<ServiceCentre::Item> item = modem.network.take(lane, now)) {
        switch (offer(*item, modem, lines)) {
        case Outcome::Taken:
            break;
        case Outcome::Routed:
            if (wantsAcknowledgement(modem))
                m_awaited = {lane, *item, now.addMSecs(settings.acknowledgementTimeout.count())};
            break;
        case Outcome::NotNow:
            modem.network.giveBack(lane, *item, {});
            modem.network.setWaiting(lane, true);
            return;
        case Outcome::Full:
            modem.network.giveBack(lane, *item, now.addMSecs(settings.redeliverAfter.count()));
            return;
        }
    }
}

Reception::Outcome Reception::offer(const ServiceCentre::Item &item, ModemState &modem,
                                    QByteArrayList &lines)
{
    const auto read = readReceived(item.tpdu);
    const auto *pdu = std::get_if<ReceivedPdu>(&read);
    if (pdu == nullptr)
        return Outcome::Taken; // the network hands out nothing of the kind
    return pdu->type == ReceivedPdu::Type::Deliver ? offerMessage(item.tpdu, *pdu, modem, lines)
                                                   : offerReport(item.tpdu, *pdu, modem, lines);
}

Reception::Outcome Reception::offerMessage(const QByteArray &tpdu, const ReceivedPdu &pdu,
                                           ModemState &modem, QByteArrayList &lines)
{
    constexpr int forSim = 2;
    constexpr int forTerminal = 3;
    const int target = indication(modem, Deliveries);
    const int messageClass = messageClassOf(pdu.dataCodingScheme);
    const bool stays = messageClass == forSim || isStoredWaitingIndication(pdu.dataCodingScheme);
    if ((target == 2 && !stays) || (target == 3 && messageClass == forTerminal))
        return route(deliveryLine(tpdu, pdu, modem.profile), modem, lines);

    MessageMemory *memory = messageClass == forSim ? modem.memories.find("SM"_ba) : nullptr;
    if (memory == nullptr)
        memory = modem.memories.find(modem.profile.memories.at(2));
    const std::optional<int> place = memory->store(tpdu);
    if (!place)
        return Outcome::Full;
    if (target != 0)
        indicate("+CMTI: \"" + memory->name() + "\"," + QByteArray::number(*place), modem, lines);
    return Outcome::Taken;
}

Reception::Outcome Reception::offerReport(const QByteArray &tpdu, const ReceivedPdu &pdu,
                                          ModemState &modem, QByteArrayList &lines)
{
    switch (indication(modem, StatusReports)) {
    case 1:
        return route(reportLine(tpdu, pdu, modem.profile), modem, lines);
    case 2: {
        MessageMemory *memory = modem.memories.find(modem.settings.reception.reportMemory);
        const std::optional<int> place = memory->store(tpdu);
        if (!place)
            return Outcome::Full;
        indicate("+CDSI: \"" + memory->name() + "\"," + QByteArray::number(*place), modem, lines);
        return Outcome::Taken;
    }
    default:
        return Outcome::NotNow;
    }
}

/// The terminal gets the next one when it has acknowledged the one before.
Reception::Outcome Reception::route(const QByteArray &line, ModemState &modem,
                                    QByteArrayList &lines)
{
    if (keepsBack(modem) || isAwaiting())
        return Outcome::NotNow;
    lines += line;
    return Outcome::Routed;
}

void Reception::indicate(const QByteArray &line, ModemState &modem, QByteArrayList &lines)
{
    constexpr qsizetype maxBuffered = 20;
    if (!keepsBack(modem)) {
        lines += line;
        return;
    }
    if (m_buffered.size() == maxBuffered)
        m_buffered.removeFirst();
    m_buffered += line;
}

void Reception::expire(ModemState &modem)
{
    if (!wantsAcknowledgement(modem))
        m_awaited.reset(); // the modem acknowledges by itself
    if (!m_awaited || modem.settings.clock() < m_awaited->deadline)
        return;
    modem.profile.indications.at(Deliveries) = 0;
    modem.profile.indications.at(StatusReports) = 0;
    giveBack(modem);
}

bool Reception::acknowledge(ModemState &modem, Acknowledgement acknowledgement)
{
    if (!m_awaited || !wantsAcknowledgement(modem))
        return false;
    if (acknowledgement == Acknowledgement::Negative) {
        giveBack(modem);
    } else {
        m_awaited.reset();
    }
    return true;
}

void Reception::giveBack(ModemState &modem)
{
    const qint64 pause = modem.settings.reception.redeliverAfter.count();
    modem.network.giveBack(m_awaited->lane, m_awaited->item,
                           modem.settings.clock().addMSecs(pause));
    m_awaited.reset();
}

std::optional<QDateTime> Reception::deadline() const
{
    return m_awaited ? std::optional(m_awaited->deadline) : std::nullopt;
}

} // namespace simulator

} // namespace norvane
