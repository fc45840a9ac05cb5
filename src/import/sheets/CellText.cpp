#include "import/sheets/CellText.h"

#include <QByteArray>
#include <QDateTime>

#include <cmath>

namespace CellText {
namespace {

constexpr int Digits = 15;
constexpr qint64 SecondsOfDay = 86400;

/// The digits of `value` without their trailing zeros, and the power of ten of the first one.
struct Decimal
{
    bool negative;
    QByteArray digits;
    int power;
};

Decimal decimal(double value)
{
    const QByteArray written = QByteArray::number(std::abs(value), 'e', Digits - 1);
    const qsizetype mark = written.indexOf('e');
    QByteArray digits = written.first(mark);
    digits.remove(1, 1);
    while (digits.size() > 1 && digits.endsWith('0'))
        digits.chop(1);
    return {value < 0, digits, written.mid(mark + 1).toInt()};
}

QByteArray withExponent(const Decimal &number)
{
    const QByteArray fraction = number.digits.mid(1);
    return number.digits.first(1) + (fraction.isEmpty() ? "" : "." + fraction) + "E+" +
           QByteArray::number(number.power);
}

QByteArray withoutExponent(const Decimal &number)
{
    if (number.power < 0)
        return "0." + QByteArray(-number.power - 1, '0') + number.digits;
    const qsizetype whole = number.power + 1;
    if (number.digits.size() <= whole)
        return number.digits + QByteArray(whole - number.digits.size(), '0');
    return number.digits.first(whole) + '.' + number.digits.mid(whole);
}

} // namespace

QString ofNumber(double value)
{
    if (!std::isfinite(value))
        return {};
    const Decimal number = decimal(value);
    const QByteArray text = number.power >= Digits ? withExponent(number) : withoutExponent(number);
    return QLatin1String(number.negative ? "-" : "") + QString::fromLatin1(text);
}

QString ofBoolean(bool value)
{
    return value ? QStringLiteral("True") : QStringLiteral("False");
}

QString ofDateTime(int year, int month, int day, int hour, int minute, double second)
{
    const QDate date(year, month, day);
    const QTime time(hour, minute, static_cast<int>(second));
    if (!date.isValid())
        return {};
    const QString text = date.toString(QStringLiteral("yyyy-MM-dd"));
    if (!time.isValid() || time == QTime(0, 0))
        return text;
    return text + time.toString(QStringLiteral(" HH:mm:ss"));
}

QString ofSerial(double days, bool from1904)
{
    constexpr double most = 2958466; // 10000-01-01 of the calendar that counts from 1900
    if (!(days >= 0 && days < most))
        return ofNumber(days);
    const qint64 seconds = std::llround(days * SecondsOfDay);
    const QTime time = QTime(0, 0).addSecs(static_cast<int>(seconds % SecondsOfDay));
    const qint64 day = seconds / SecondsOfDay;
    if (day == 0)
        return time.toString(QStringLiteral("HH:mm:ss"));
    // The calendar that counts from 1900 has a 29th of February in that year.
    const QDate start = from1904   ? QDate(1904, 1, 1)
                        : day < 60 ? QDate(1899, 12, 31)
                                   : QDate(1899, 12, 30);
    const QDate date = start.addDays(day);
    if (date.year() > 9999)
        return ofNumber(days);
    return ofDateTime(date.year(), date.month(), date.day(), time.hour(), time.minute(),
                      time.second());
}

bool isDateFormat(qsizetype identifier, const QString &code)
{
    if (code.isEmpty())
        return (identifier >= 14 && identifier <= 22) || (identifier >= 27 && identifier <= 36) ||
               (identifier >= 45 && identifier <= 47) || (identifier >= 50 && identifier <= 58);
    QChar closing;
    for (qsizetype i = 0; i < code.size(); ++i) {
        const QChar character = code.at(i);
        if (!closing.isNull()) {
            if (character == closing)
                closing = QChar();
        } else if (character == u'"') {
            closing = u'"';
        } else if (character == u'[') {
            // "[h]" counts hours; colours, places and conditions say nothing.
            if (i + 1 < code.size() && QStringView(u"hmsHMS").contains(code.at(i + 1)) &&
                code.indexOf(u']', i) <= i + 3 && code.indexOf(u']', i) > 0)
                return true;
            closing = u']';
        } else if (character == u'\\' || character == u'_' || character == u'*') {
            ++i;
        } else if (character == u';') {
            break; // what follows is for negative numbers
        } else if (QStringView(u"ymdhs").contains(character.toLower())) {
            return true;
        }
    }
    return false;
}

} // namespace CellText
