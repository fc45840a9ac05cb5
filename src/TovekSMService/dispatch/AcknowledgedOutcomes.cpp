#include "TovekSMService/dispatch/AcknowledgedOutcomes.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/store/Outcomes.h"

namespace norvane {

AcknowledgedOutcomes::AcknowledgedOutcomes(Outcomes &outcomes, int retryMs, TimeSource &time,
                                           QObject *parent)
    : QObject(parent), m_outcomes(outcomes), m_retryMs(retryMs), m_timer(time)
{
    connect(&m_timer, &Timer::timeout, this, &AcknowledgedOutcomes::note);
}

void AcknowledgedOutcomes::add(qint64 outcome)
{
    m_unnoted.insert(outcome);
    if (!m_timer.isActive())
        m_timer.start(0);
}

void AcknowledgedOutcomes::note()
{
    if (const StoreResult<> noted = m_outcomes.markReported(m_unnoted.values()); !noted) {
        qCWarning(logDispatch) << "what was handled could not be noted:" << noted.error().text();
        m_timer.start(m_retryMs);
        return;
    }
    m_unnoted.clear();
}

} // namespace norvane
