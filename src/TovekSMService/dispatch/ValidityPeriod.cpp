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

} // namespace norvane
