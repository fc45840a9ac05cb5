#include "TovekSMService/dispatch/ValidityPeriod.h"

#include <algorithm>

namespace norvane {

namespace {

constexpr int hour = 60;
constexpr int day = 24 * hour;
constexpr int week = 7 * day;
constexpr int max = 63 * week;

} // namespace

std::optional<quint8> relativeValidity(int minutes)
{
    if (minutes <= 0)
        return std::nullopt;
    int value = 0;
    if (minutes >= 5 * week)
        value = std::min(minutes, max) / week + 192;
    else if (minutes >= 2 * day)
        value = std::min(minutes / day, 30) + 166;
    else if (minutes > 12 * hour)
        value = std::min((minutes - 12 * hour) / 30, 24) + 143;
    else
        value = std::max(minutes / 5, 1) - 1;
    return static_cast<quint8>(value);
}

int validityMinutes(quint8 period)
{
    if (period <= 143)
        return (period + 1) * 5;
    if (period <= 167)
        return 12 * hour + (period - 143) * 30;
    if (period <= 196)
        return (period - 166) * day;
    return (period - 192) * week;
}

} // namespace norvane
