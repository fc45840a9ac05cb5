#pragma once

#include "TovekSMService/modem/at/FailureTable.h"
#include "common/Result.h"

#include <QMetaType>
#include <QString>

namespace norvane {

/// What is known of a device and its SIM. What the device doesn't tell stays empty, or -1.
struct DeviceDetails
{
    QString manufacturer;
    QString model;
    QString imei;
    /// Operator and registration, "Norvane Mobile (home)".
    QString networkInfo;
    QString firmware;
    /// The device's clock as it tells it.
    QString time;
    QString smsc;
    QString hardware;
    /// The SIM's ICCID, else the device's IMEI.
    QString simId;
    /// Percent.
    int battery = -1;
    /// Percent of the scale of +CSQ (0 to 31).
    int signal = -1;

    bool operator==(const DeviceDetails &) const = default;
};

/// Why the device can't be used.
struct ModemFailure
{
    /// The engine's code.
    int code = -1;
    /// For logs and as further information: technical, English, without the PIN.
    QString text;
    /// Only the operator can help, as with a SIM that asks for a PIN or PUK that isn't known:
    /// trying again is no use before the settings change.
    bool needsOperator = false;
};

/// Whether a step with the device has come to a good end.
using ModemResult = Result<void, ModemFailure>;

/// What is to be sent behind a part, as far as it is known.
enum class Followers { None, Some };

/// Whether the network was asked to report what becomes of a part.
enum class ReportRequest { None, Asked };

/// Why a part wasn't sent, or may not have been.
struct SendFailure
{
    SendProblem problem = SendProblem::NotSent;
    /// The number behind +CMS ERROR or +CME ERROR, -1 without one.
    int number = -1;
    QString text;
    FailureRule rule;
    /// The payload had left: the network may have the part although no answer says so.
    bool mayBeDelivered = false;
};

} // namespace norvane

Q_DECLARE_METATYPE(norvane::DeviceDetails)
Q_DECLARE_METATYPE(norvane::ReportRequest)
Q_DECLARE_METATYPE(norvane::ModemFailure)
Q_DECLARE_METATYPE(norvane::SendFailure)
