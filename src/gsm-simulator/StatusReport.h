#pragma once

#include "gsm-simulator/Address.h"

#include <QByteArray>
#include <QDateTime>

namespace norvane {

namespace simulator {

/// What the network says of a message that it has accepted (3GPP TS 23.040, 9.2.2.3).
struct StatusReport
{
    int reference = 0;    ///< of the message, as +CMGS gave it
    Address recipient;    ///< as the message named it
    QDateTime submitted;  ///< when the service centre got the message
    QDateTime discharged; ///< when what `status` tells happened
    int status = 0;       ///< TP-ST: 0 delivered, 32 to 63 still trying, others failed
};

/// The SMS-STATUS-REPORT.
QByteArray reportTpdu(const StatusReport &report);

} // namespace simulator

} // namespace norvane
