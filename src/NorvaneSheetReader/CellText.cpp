#include "NorvaneSheetReader/CellText.h"

#include <QByteArray>
#include <QDateTime>

#include <algorithm>
#include <cmath>

namespace norvane {

using namespace Qt::StringLiterals;

namespace CellText {
namespace {

constexpr int significantDigits = 15;
constexpr qint64 secondsOfDay = 86400;

/// The digits of `value` without their trailing zeros, and the power of ten of the first one.
struct Decimal
{
    bool negative;
    QByteArray digits;
    int power;
};

Decimal decimal(double value)
{
    const QByteArray written = QByteArray::number(std::abs(value), 'e', significantDigits - 1);
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

/// On the days 0 of the programs there is no date.
QString ofDateTime(const QDateTime &moment)
{
    const bool isDay = moment.date() > QDate(1899, 12, 31) || moment.date() < QDate(1899, 12, 30);
    const QString time = moment.toString(u"HH:mm:ss"_s);
    if (!isDay)
        return time;
    const QString day = moment.toString(u"yyyy-MM-dd"_s);
    return moment.time() == QTime(0, 0) ? day : day + u' ' + time;
}

Kind kindOfBuiltIn(qsizetype identifier)
{
    const auto isIn = [&](qsizetype first, qsizetype last) {
        return identifier >= first && identifier <= last;
    };
    if (isIn(18, 21) || isIn(32, 33) || isIn(45, 47))
        return Kind::Time;
    return isIn(14, 22) || isIn(27, 36) || isIn(50, 58) ? Kind::Date : Kind::Number;
}

/// What of a format writes a number: its first section, without literal text, colours, places and
/// conditions. "[h]", which counts hours, is left as an "h".
QString writingPartOf(const QString &code)
{
    QString writing;
    for (qsizetype i = 0; i < code.size() && code.at(i) != u';'; ++i) {
        const QChar character = code.at(i).toLower();
        if (character == u'"' || character == u'[') {
            const qsizetype end = code.indexOf(character == u'[' ? u']' : u'"', i + 1);
            if (end < 0)
                break;
            const QString within = code.mid(i + 1, end - i - 1).toLower();
            if (character == u'[' && (within == u"h" || within == u"hh" || within == u"m" ||
                                      within == u"mm" || within == u"s" || within == u"ss"))
                writing += within.at(0) == u'm' ? u'h' : within.at(0);
            i = end;
        } else if (character == u'\\' || character == u'_' || character == u'*') {
            ++i;
        } else {
            writing += character;
        }
    }
    return writing;
}

Kind kindOfCode(const QString &code)
{
    const QString writing = writingPartOf(code);
    // "m" is minutes beside hours or seconds, and else months; "mmm" is always the month's name.
    if (writing.contains(u'y') || writing.contains(u'd') || writing.contains(u"mmm"_s))
        return Kind::Date;
    if (writing.contains(u'h') || writing.contains(u's'))
        return Kind::Time;
    return writing.contains(u'm') ? Kind::Date : Kind::Number;
}

} // namespace

QString ofNumber(double value)
{
    if (!std::isfinite(value))
        return {};
    const Decimal number = decimal(value);
    const QByteArray text =
        number.power >= significantDigits ? withExponent(number) : withoutExponent(number);
    return QLatin1String(number.negative ? "-" : "") + QString::fromLatin1(text);
}

QString ofBoolean(bool value)
{
    return value ? u"True"_s : u"False"_s;
}

/// The time of day of a moment, to the second, without its zone.
QString clockOf(const QString &moment)
{
    const auto isZone = [](QChar c) { return c == u'Z' || c == u'+' || c == u'-'; };
    const QString clock = moment.mid(11, 8);
    return QString(clock.cbegin(),
                   std::find_if(clock.cbegin(), clock.cend(), isZone) - clock.cbegin());
}

QString ofMoment(const QString &moment)
{
    // Local time has hours that there aren't, and others twice.
    const QTime time = QTime::fromString(clockOf(moment), Qt::ISODate);
    QDateTime rounded(QDate::fromString(moment.left(10), Qt::ISODate),
                      time.isValid() ? time : QTime(0, 0), Qt::UTC);
    if (!rounded.isValid())
        return {};
    const bool hasFraction = moment.size() > 20 && (moment.at(19) == u'.' || moment.at(19) == u',');
    if (hasFraction && moment.at(20) >= u'5' && moment.at(20) <= u'9')
        rounded = rounded.addSecs(1);
    return ofDateTime(rounded);
}

QString ofDuration(double seconds)
{
    constexpr double limit = 1e14; // three million years
    if (!(std::abs(seconds) < limit))
        return ofNumber(seconds / secondsOfDay);
    const qint64 whole = std::llround(std::abs(seconds));
    return u"%1%2:%3:%4"_s.arg(seconds < 0 && whole > 0 ? u"-" : u"")
        .arg(whole / 3600, 2, 10, QChar(u'0'))
        .arg(whole / 60 % 60, 2, 10, QChar(u'0'))
        .arg(whole % 60, 2, 10, QChar(u'0'));
}

QString ofDays(double days, Kind kind, bool from1904)
{
    if (kind == Kind::Number)
        return ofNumber(days);
    if (kind == Kind::Time)
        return ofDuration(days * secondsOfDay);
    constexpr double limit = 2958466; // 10000-01-01 of the calendar that counts from 1900
    if (!(days >= 0 && days < limit))
        return ofNumber(days);
    const qint64 seconds = std::llround(days * secondsOfDay);
    const qint64 day = seconds / secondsOfDay;
    // The calendar that counts from 1900 has a 29th of February in that year.
    const QDate start = from1904   ? QDate(1904, 1, 1)
                        : day < 60 ? QDate(1899, 12, 31)
                                   : QDate(1899, 12, 30);
    const QDateTime moment(start.addDays(day),
                           QTime(0, 0).addSecs(static_cast<int>(seconds % secondsOfDay)), Qt::UTC);
    return moment.date().year() > 9999 ? ofNumber(days) : ofDateTime(moment);
}

Kind kindOf(qsizetype identifier, const QString &code)
{
    return code.isEmpty() ? kindOfBuiltIn(identifier) : kindOfCode(code);
}

} // namespace CellText

} // namespace norvane
