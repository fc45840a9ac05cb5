#pragma once

#include "TovekSMService/time/Stopwatch.h"
#include "TovekSMService/time/Timer.h"

#include <QObject>

namespace norvane {

/// Spaces the reports of changes of the history: the first one is made at once, further ones when
/// 250 ms have passed since the last, and the last change is always reported.
class HistoryChangePacer : public QObject
{
    Q_OBJECT

public:
    static constexpr int minInterval = 250;

    /// @param time  must outlive this object
    explicit HistoryChangePacer(TimeSource &time = TimeSource::system(), QObject *parent = nullptr);

    void historyChanged();

Q_SIGNALS:
    /// It is time to report that something has changed.
    void report();

private:
    void consider();

    Stopwatch m_sinceReport;
    Timer m_again;
    bool m_pending = false;
};

} // namespace norvane
