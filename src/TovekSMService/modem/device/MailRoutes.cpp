#include "TovekSMService/modem/device/MailRoutes.h"

#include "TovekSMService/modem/codec/AnswerParsers.h"

#include <algorithm>
#include <initializer_list>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The first of the values, in the order of preference, that the device has.
int firstOf(std::initializer_list<int> preferred, const QList<int> &values)
{
    const auto *const found = std::find_if(preferred.begin(), preferred.end(),
                                           [&values](int value) { return values.contains(value); });
    return found == preferred.end() ? -1 : *found;
}

} // namespace

MailRoutes MailRoutes::bestOf(const QList<QByteArray> &lines)
{
    const QList<QList<int>> values = AnswerParsers::valueLists(lines, "+CNMI");
    return {firstOf({2, 1, 3, 0}, values.value(0)), firstOf({1, 2, 3}, values.value(1)),
            firstOf({2, 1}, values.value(3)), std::max(firstOf({0, 1}, values.value(4)), 0)};
}

QList<MailRoutes> MailRoutes::candidates()
{
    return {{2, 1, 2}, {2, 1, 1}, {2, 1, -1}, {1, 1, -1}};
}

bool MailRoutes::areIn(const QList<QByteArray> &lines) const
{
    const QList<QByteArray> inForce = AnswerParsers::fields(lines, "+CNMI");
    const auto isInForce = [&inForce](qsizetype place, int value) {
        return value < 0 || inForce.value(place) == QByteArray::number(value);
    };
    return isInForce(0, mode) && isInForce(1, message) && isInForce(3, report);
}

QByteArray MailRoutes::command() const
{
    if (mode < 0)
        return {};
    QByteArray text = "AT+CNMI=" + QByteArray::number(mode);
    text += ',' + QByteArray::number(std::max(message, 0));
    if (report >= 0)
        text += ",0," + QByteArray::number(report) + ',' + QByteArray::number(buffer);
    return text;
}

} // namespace norvane
