#include "NorvaneSMS/engine/Estimate.h"

#include "common/FailureNumbers.h"

#include <cstdlib>
#include <limits>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

qint64 wholeSeconds(const QDateTime &moment)
{
    return moment.date().toJulianDay() * 86'400 + moment.time().msecsSinceStartOfDay() / 1000;
}

template <typename Narrow>
Narrow narrowed(qint64 value)
{
    if (value < std::numeric_limits<Narrow>::min() || value > std::numeric_limits<Narrow>::max())
        Failure::raise(Failure::Overflow, u"moSMSManager_SMSSent"_s);
    return static_cast<Narrow>(value);
}

} // namespace

QDateTime Estimate::zeroDate()
{
    return {QDate(1899, 12, 30), QTime(0, 0), Qt::UTC};
}

qint32 Estimate::secondsField(const QDateTime &lastEvent, const QDateTime &now)
{
    // A clock that was set back gives a negative difference; its time of day has no sign.
    return static_cast<qint32>(std::llabs(wholeSeconds(now) - wholeSeconds(lastEvent)) % 60);
}

QTime Estimate::remaining(qint32 seconds, qint32 queueCount)
{
    const qint32 product = narrowed<qint32>(qint64{seconds} * queueCount);
    const qint16 narrow = narrowed<qint16>(product);
    return QTime(0, 0).addSecs(std::abs(narrow));
}

} // namespace norvane
