#pragma once

#include <QDateTime>
#include <QTime>

namespace norvane {

/// The estimate of remaining time, taken from the last interval alone.
///
/// Moments are wall-clock dates and times (QDateTime in Qt::UTC), cut to whole seconds.

namespace Estimate {

/// The moment that the console's record of the last event starts at.
QDateTime zeroDate();

/// The seconds field, 0 to 59, of the difference between two moments: 75 seconds give 15.
qint32 secondsField(const QDateTime &lastEvent, const QDateTime &now);

/// The time of day that `seconds` for each of `queueCount` messages comes to.
/// @throws NumberedFailure 6 when the product doesn't fit into a signed 16-bit number
QTime remaining(qint32 seconds, qint32 queueCount);

} // namespace Estimate

} // namespace norvane
