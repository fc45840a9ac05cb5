#include "TovekSMService/bus/ReportAcknowledgements.h"

namespace norvane {

void ReportAcknowledgements::removeCaller(const QString &caller)
{
    m_acknowledgers.remove(caller);
    m_pending.remove(caller);
}

bool ReportAcknowledgements::raisedToAll(qint64 report)
{
    bool isHandled = false;
    for (auto listener = m_pending.begin(); listener != m_pending.end(); ++listener) {
        if (m_acknowledgers.contains(listener.key()))
            listener->insert(report);
        else
            isHandled = true;
    }
    return isHandled;
}

bool ReportAcknowledgements::raisedTo(const QString &listener, qint64 report)
{
    if (!m_acknowledgers.contains(listener))
        return true;
    m_pending[listener].insert(report);
    return false;
}

bool ReportAcknowledgements::isPending(const QString &listener, qint64 report) const
{
    return m_pending.value(listener).contains(report);
}

bool ReportAcknowledgements::acknowledge(const QString &caller, qint64 report)
{
    const auto listener = m_pending.constFind(caller);
    if (listener == m_pending.cend() || !listener->contains(report))
        return false;
    for (QSet<qint64> &reports : m_pending)
        reports.remove(report);
    return true;
}

} // namespace norvane
