#pragma once

#include "gsm-simulator/ReceivedPdu.h"

#include <QByteArray>

namespace norvane {

namespace simulator {

struct Profile;
struct StoredMessage;

// How a received message stands in answers and indications (3GPP TS 27.005, 3.4), in PDU mode or
// text mode as the profile says. What has two lines is joined by a line end.

/// +CMT.
QByteArray deliveryLine(const QByteArray &tpdu, const ReceivedPdu &pdu, const Profile &profile);

/// +CDS.
QByteArray reportLine(const QByteArray &tpdu, const ReceivedPdu &pdu, const Profile &profile);

/// One entry of +CMGL.
QByteArray listEntry(int place, const StoredMessage &message, const Profile &profile);

/// +CMGR.
QByteArray readEntry(const StoredMessage &message, const Profile &profile);

} // namespace simulator

} // namespace norvane
