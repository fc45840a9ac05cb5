#pragma once

#include "TovekSMService/dispatch/RunPace.h"
#include "TovekSMService/dispatch/SendingRun.h"
#include "TovekSMService/time/Stopwatch.h"
#include "TovekSMService/time/Timer.h"

#include <QList>
#include <QObject>

namespace norvane {

struct DispatcherTimings;

/// Decides how many messages leave with one commit, from the pace at which the device took those of
/// the last runs, and when the rest of a run has waited for the device for too long.
class PacedRun : public QObject
{
    Q_OBJECT

public:
    /// @param time  must outlive this object
    PacedRun(const DispatcherTimings &timings, TimeSource &time);

    /// Of the next run, in messages.
    int maxLength() const { return m_pace.length(); }
    void start(const QList<LeavingMessage> &messages);
    bool hasNext() const { return m_run.hasNext(); }
    LeavingMessage takeNext() { return m_run.takeNext(); }
    void recordTaken(const SendingRun::Taken &taken);
    /// @return what was taken, and what was not handed over
    SendingRun end();
    /// What has ended is committed. A run that was started meanwhile followed with that commit.
    void noteCommitted() { m_committing.invalidate(); }
    void forgetPace() { m_pace.forget(); }

Q_SIGNALS:
    /// The device has become slow: what has not been handed over is to wait again.
    void late();

private:
    const int m_lateMs;
    SendingRun m_run;
    RunPace m_pace;
    int m_length = 0;
    Stopwatch m_elapsed;
    Stopwatch m_committing; ///< runs from the end of a run until that is committed
    Timer m_late;           ///< runs until the rest of the run is late
};

} // namespace norvane
