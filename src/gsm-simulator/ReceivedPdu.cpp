#include "gsm-simulator/ReceivedPdu.h"

#include "gsm-simulator/Timestamp.h"

namespace norvane {

namespace simulator {

namespace {

constexpr int typeMask = 0x03;
constexpr int headerIndicator = 0x40;

std::optional<PduFault> readTimestamp(OctetReader &reader, QByteArray &timestamp)
{
    timestamp = reader.octets(timestampLength);
    if (reader.failed())
        return PduFault::Truncated;
    return isTimestamp(timestamp) ? std::nullopt : std::optional(PduFault::BadTimestamp);
}

std::optional<PduFault> readDeliver(OctetReader &reader, ReceivedPdu &pdu)
{
    if (const auto fault = readAddress(reader, pdu.address))
        return fault;
    pdu.protocol = reader.octet();
    pdu.dataCodingScheme = reader.octet();
    if (const auto fault = readTimestamp(reader, pdu.timestamp))
        return fault;
    const std::optional<Coding> coding = codingOf(pdu.dataCodingScheme);
    if (!coding)
        return PduFault::BadCoding;
    UserData &data = pdu.userData;
    data.coding = *coding;
    data.hasHeader = (pdu.firstOctet & headerIndicator) != 0;
    if (const auto fault = readUserData(reader, data))
        return fault;
    if (data.length > data.maxLength())
        return PduFault::BadUserData;
    return headerOctetsOf(data) ? std::nullopt : std::optional(PduFault::BadHeader);
}

std::optional<PduFault> readReport(OctetReader &reader, ReceivedPdu &pdu)
{
    pdu.reference = reader.octet();
    if (const auto fault = readAddress(reader, pdu.address))
        return fault;
    if (const auto fault = readTimestamp(reader, pdu.timestamp))
        return fault;
    if (const auto fault = readTimestamp(reader, pdu.discharged))
        return fault;
    pdu.status = reader.octet();
    return reader.failed() ? std::optional(PduFault::Truncated) : std::nullopt;
}

} // namespace

std::variant<ReceivedPdu, PduFault> readReceived(const QByteArray &tpdu)
{
    constexpr int deliver = 0x00;
    constexpr int statusReport = 0x02;
    constexpr qsizetype maxLength = 164;
    if (tpdu.size() > maxLength)
        return PduFault::WrongLength;
    OctetReader reader(tpdu);
    ReceivedPdu pdu;
    pdu.firstOctet = reader.octet();
    if (reader.failed())
        return PduFault::Truncated;
    std::optional<PduFault> fault = PduFault::BadType;
    if ((pdu.firstOctet & typeMask) == deliver) {
        fault = readDeliver(reader, pdu);
    } else if ((pdu.firstOctet & typeMask) == statusReport) {
        pdu.type = ReceivedPdu::Type::StatusReport;
        fault = readReport(reader, pdu);
    }
    if (fault)
        return *fault;
    return pdu;
}

int messageClassOf(int dataCodingScheme)
{
    constexpr int hasClass = 0x10;
    const int group = (dataCodingScheme >> 4) & 0x0F;
    const bool general = group <= 0x07 && (dataCodingScheme & hasClass) != 0;
    return general || group == 0x0F ? dataCodingScheme & 0x03 : -1;
}

bool isStoredWaitingIndication(int dataCodingScheme)
{
    const int group = (dataCodingScheme >> 4) & 0x0F;
    return group == 0x0D || group == 0x0E;
}

} // namespace simulator

} // namespace norvane
