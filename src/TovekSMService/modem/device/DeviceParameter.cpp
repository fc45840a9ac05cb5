#include "TovekSMService/modem/device/DeviceParameter.h"

#include <QRegularExpression>

namespace norvane {

using namespace Qt::StringLiterals;

std::optional<DeviceParameter> parseDeviceParameter(const QString &text)
{
    // An IMEI has 15 digits (3GPP TS 23.003, 6.2.1).
    static const QRegularExpression manager(
        u"\\A\\s*ModemManager\\s*(?:,\\s*([0-9]{15})\\s*)?\\z"_s,
        QRegularExpression::CaseInsensitiveOption);
    if (const QRegularExpressionMatch match = manager.match(text); match.hasMatch())
        return ManagerParameter{match.captured(1)};
    const std::optional<PortParameter> port = parsePortParameter(text);
    return port ? std::optional<DeviceParameter>(*port) : std::nullopt;
}

} // namespace norvane
