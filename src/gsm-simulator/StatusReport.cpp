#include "gsm-simulator/StatusReport.h"

#include "gsm-simulator/Timestamp.h"

namespace norvane {

namespace simulator {

QByteArray reportTpdu(const StatusReport &report)
{
    constexpr char statusReport = 0x02;
    constexpr char noMoreMessages = 0x04;
    QByteArray tpdu;
    tpdu += statusReport | noMoreMessages;
    tpdu += static_cast<char>(report.reference);
    tpdu += addressField(report.recipient).value_or(QByteArray::fromHex("0081"));
    tpdu += timestampOctets(report.submitted);
    tpdu += timestampOctets(report.discharged);
    return tpdu + static_cast<char>(report.status);
}

} // namespace simulator

} // namespace norvane
