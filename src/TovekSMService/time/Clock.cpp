#include "TovekSMService/time/Clock.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString textOf(const QDateTime &moment)
{
    return moment.toString(u"yyyy-MM-ddTHH:mm:ss"_s);
}

} // namespace

QDateTime momentOf(const QString &date)
{
    const QDate day = QDate::fromString(date.left(10), Qt::ISODate);
    const QTime time = QTime::fromString(date.mid(11));
    return day.isValid() && time.isValid() ? QDateTime(day, time, Qt::UTC) : QDateTime();
}

QString Clock::wallClockText() const
{
    return textOf(wallClock());
}

QString Clock::wallClockText(qint64 seconds) const
{
    return textOf(wallClock().addSecs(seconds));
}

QDateTime SystemClock::wallClock() const
{
    const qint64 second = QDateTime::currentSecsSinceEpoch();
    if (second != m_second) {
        const QDateTime now = QDateTime::fromSecsSinceEpoch(second);
        m_wallClock = QDateTime(now.date(), now.time(), Qt::UTC);
        m_second = second;
    }
    return m_wallClock;
}

} // namespace norvane
