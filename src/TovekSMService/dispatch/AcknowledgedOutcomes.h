#pragma once

#include "TovekSMService/time/Timer.h"

#include <QList>
#include <QObject>
#include <QSet>

namespace norvane {

class Outcomes;

/// Failures that a console has handled. That is noted in the store afterwards: an engine that ends
/// in between tells them once more, where the other order could leave them untold for ever.
class AcknowledgedOutcomes : public QObject
{
    Q_OBJECT

public:
    /// @param outcomes, time  must outlive this object
    /// @param retryMs      between two tries to note it
    AcknowledgedOutcomes(Outcomes &outcomes, int retryMs, TimeSource &time = TimeSource::system(),
                         QObject *parent = nullptr);

    void add(qint64 outcome);
    /// Whether it was handled and that is not noted yet.
    bool contains(qint64 outcome) const { return m_unnoted.contains(outcome); }

private:
    void note();

    Outcomes &m_outcomes;
    const int m_retryMs;
    QSet<qint64> m_unnoted;
    Timer m_timer;
};

} // namespace norvane
