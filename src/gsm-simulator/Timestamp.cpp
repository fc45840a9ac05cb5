#include "gsm-simulator/Timestamp.h"

#include <cstdlib>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

constexpr int zoneSign = 0x08;

char swapped(int value)
{
    return static_cast<char>(value % 10 * 16 + value / 10);
}

int zoneOf(const QByteArray &octets)
{
    return swappedDecimal(static_cast<char>(octets.at(6) & ~zoneSign));
}

} // namespace

int swappedDecimal(char octet)
{
    const int tens = octet & 0x0F;
    const int ones = (octet >> 4) & 0x0F;
    return tens > 9 || ones > 9 ? -1 : tens * 10 + ones;
}

QByteArray timestampOctets(const QDateTime &time)
{
    constexpr int quarterOfAnHour = 900;
    const QDate date = time.date();
    const QTime clock = time.time();
    QByteArray octets;
    for (const int value : {date.year() % 100, date.month(), date.day(), clock.hour(),
                            clock.minute(), clock.second()})
        octets += swapped(value);
    const int quarters = time.offsetFromUtc() / quarterOfAnHour;
    octets += static_cast<char>(swapped(std::abs(quarters)) | (quarters < 0 ? zoneSign : 0));
    return octets;
}

bool isTimestamp(const QByteArray &octets)
{
    struct Range
    {
        int low;
        int high;
    };
    static constexpr Range ranges[] = {{0, 99}, {1, 12}, {1, 31}, {0, 23}, {0, 59}, {0, 59}};
    for (int i = 0; i < 6; ++i) {
        const int value = swappedDecimal(octets.at(i));
        if (value < ranges[i].low || value > ranges[i].high)
            return false;
    }
    return zoneOf(octets) >= 0;
}

QByteArray timestampText(const QByteArray &octets)
{
    static constexpr char separators[] = "//,::";
    QByteArray text;
    for (int i = 0; i < 6; ++i) {
        text += QByteArray::number(swappedDecimal(octets.at(i))).rightJustified(2, '0');
        if (i < 5)
            text += separators[i];
    }
    text += (octets.at(6) & zoneSign) != 0 ? '-' : '+';
    return text + QByteArray::number(zoneOf(octets)).rightJustified(2, '0');
}

} // namespace simulator

} // namespace norvane
