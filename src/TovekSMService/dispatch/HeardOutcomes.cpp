#include "TovekSMService/dispatch/HeardOutcomes.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/store/Store.h"

HeardOutcomes::HeardOutcomes(Store &store, int retryMs, TimeSource &time, QObject *parent)
    : QObject(parent), m_store(store), m_retryMs(retryMs), m_timer(time)
{
    connect(&m_timer, &Timer::timeout, this, &HeardOutcomes::note);
}

void HeardOutcomes::add(qint64 outcome)
{
    m_unnoted.insert(outcome);
    if (!m_timer.isActive())
        m_timer.start(0);
}

void HeardOutcomes::note()
{
    try {
        m_store.markReported(m_unnoted.values());
        m_unnoted.clear();
    } catch (const StoreFailure &failure) {
        qCWarning(logDispatch) << "what was handled could not be noted:" << failure.text();
        m_timer.start(m_retryMs);
    }
}
