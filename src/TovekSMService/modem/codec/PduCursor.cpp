#include "TovekSMService/modem/codec/PduCursor.h"

#include "TovekSMService/modem/codec/Hexadecimal.h"

#include "TovekSMService/modem/codec/GsmAlphabet.h"

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// 3GPP TS 23.040, 9.1.2.5: an address value has at most 10 octets.
constexpr int maxSemiOctets = 20;

constexpr int typeOfNumberMask = 0x70;
constexpr int internationalNumber = 0x10;
constexpr int alphanumeric = 0x50;

/// Two decimal digits in swapped semi-octets; -1 if they are none.
int swappedDecimal(quint8 octet)
{
    const int tens = octet & 0x0F;
    const int ones = octet >> 4;
    return tens > 9 || ones > 9 ? -1 : tens * 10 + ones;
}

/// The zone in seconds: quarters of an hour with a sign bit.
int zoneSeconds(quint8 octet)
{
    constexpr int sign = 0x08;
    constexpr int quarter = 15 * 60;
    const int quarters = (octet & 0x07) * 10 + (octet >> 4);
    return ((octet & sign) != 0 ? -quarters : quarters) * quarter;
}

QString digitsOf(const QByteArray &value, int count)
{
    // 3GPP TS 23.040, 9.1.2.3.
    static constexpr QStringView digits = u"0123456789*#abc";
    QString text;
    for (int i = 0; i < count; ++i) {
        const auto pair = static_cast<quint8>(value.at(i / 2));
        const int digit = i % 2 == 0 ? pair & 0x0F : pair >> 4;
        if (digit < digits.size())
            text += digits.at(digit);
    }
    return text;
}

} // namespace

PduCursor::PduCursor(const QByteArray &hex)
{
    if (hex.size() % 2 != 0 || (!hex.isEmpty() && !isHexadecimal(hex))) {
        fail(PduFailure::NotHexadecimal);
        return;
    }
    m_octets = QByteArray::fromHex(hex);
    octets(octet());
}

void PduCursor::fail(PduFailure failure)
{
    if (!m_failure)
        m_failure = failure;
}

quint8 PduCursor::octet()
{
    const QByteArray one = octets(1);
    return one.isEmpty() ? 0 : static_cast<quint8>(one.front());
}

QByteArray PduCursor::octets(qsizetype count)
{
    if (m_failure || count > m_octets.size() - m_position) {
        fail(PduFailure::TooShort);
        return {};
    }
    const QByteArray found = m_octets.mid(m_position, count);
    m_position += count;
    return found;
}

QByteArray PduCursor::rest()
{
    return octets(m_octets.size() - m_position);
}

QString PduCursor::address()
{
    const int semiOctets = octet();
    const int type = octet();
    if (semiOctets > maxSemiOctets)
        fail(PduFailure::BadAddress);
    const QByteArray value = octets((semiOctets + 1) / 2);
    if (m_failure)
        return {};
    if ((type & typeOfNumberMask) == alphanumeric)
        return GsmAlphabet::fromSeptets(GsmAlphabet::unpack(value, semiOctets * 4 / 7));
    const QString digits = digitsOf(value, semiOctets);
    return (type & typeOfNumberMask) == internationalNumber ? u'+' + digits : digits;
}

QDateTime PduCursor::timestamp()
{
    constexpr int firstYear = 90; // of the century before: nothing was sent earlier
    const QByteArray value = octets(7);
    if (m_failure)
        return {};
    const auto field = [&value](int index) {
        return swappedDecimal(static_cast<quint8>(value.at(index)));
    };
    const QDate date((field(0) >= firstYear ? 1900 : 2000) + field(0), field(1), field(2));
    const QTime time(field(3), field(4), field(5));
    if (field(0) < 0 || !date.isValid() || !time.isValid())
        return {};
    return QDateTime(date, time, Qt::OffsetFromUTC, zoneSeconds(static_cast<quint8>(value.at(6))));
}

} // namespace norvane
