#pragma once

#include "TovekSMService/time/Stopwatch.h"
#include "TovekSMService/time/Timer.h"

#include <QObject>
#include <QSet>

namespace norvane {

/// Spaces the reports of queue changes: the first is made at once, the next one when every listener
/// has fetched the queue since the last and 100 ms have passed, and the last change is always
/// reported. A listener that doesn't fetch holds the others up for a second at most.
class QueueChangePacer : public QObject
{
    Q_OBJECT

public:
    static constexpr int minInterval = 100;
    static constexpr int maxWait = 1000;

    /// @param time  must outlive this object
    explicit QueueChangePacer(TimeSource &time = TimeSource::system(), QObject *parent = nullptr);

    void listenerCame(const QString &listener);
    void listenerLeft(const QString &listener);
    void listenerFetched(const QString &listener);

    void queueChanged();

Q_SIGNALS:
    /// It is time to report the present size.
    void report();

private:
    void consider();

    QSet<QString> m_listeners;
    QSet<QString> m_fetching; ///< listeners that haven't fetched since the last report
    Stopwatch m_sinceReport;
    Timer m_again;
    bool m_pending = false;
};

} // namespace norvane
