#include "TovekSMService/modem/at/PortParameter.h"

#include "TovekSMService/platform/SerialDevices.h"

#include <QRegularExpression>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int defaultBaud = 9600;

std::optional<QString> deviceOf(const QString &name)
{
    if (name.contains(u'/'))
        return name.contains(QChar::Null) ? std::nullopt : std::optional(name);

    static const QRegularExpression port(u"\\ACOM([0-9]{1,5})\\z"_s,
                                         QRegularExpression::CaseInsensitiveOption);
    const int number = port.match(name).captured(1).toInt(); // 0 without a match
    if (number < 1)
        return std::nullopt;
    return SerialDevices::pathOfPort(number);
}

std::optional<int> baudOf(const QString &text)
{
    static const QRegularExpression digits(u"\\A[0-9]+\\z"_s);
    bool fits = false;
    const int baud = text.toInt(&fits);
    if (!fits || baud < 1 || !digits.match(text).hasMatch())
        return std::nullopt;
    return baud;
}

} // namespace

std::optional<PortParameter> parsePortParameter(const QString &text)
{
    const qsizetype comma = text.lastIndexOf(u',');
    const std::optional<QString> device = deviceOf(text.left(comma).trimmed());
    const std::optional<int> baud =
        comma < 0 ? std::optional(defaultBaud) : baudOf(text.mid(comma + 1).trimmed());
    if (!device || !baud)
        return std::nullopt;
    return PortParameter{*device, *baud};
}

} // namespace norvane
