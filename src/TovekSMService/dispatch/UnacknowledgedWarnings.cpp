#include "TovekSMService/dispatch/UnacknowledgedWarnings.h"

#include <algorithm>

namespace norvane {

qint64 UnacknowledgedWarnings::add(const Warning &warning)
{
    const auto same = std::find_if(m_entries.cbegin(), m_entries.cend(),
                                   [&](const Entry &entry) { return entry.warning == warning; });
    if (same != m_entries.cend())
        return same->report;
    if (m_entries.size() >= maxWarnings)
        return 0;
    m_entries.append({--m_lastReport, warning});
    return m_lastReport;
}

std::optional<UnacknowledgedWarnings::Warning> UnacknowledgedWarnings::remove(qint64 report)
{
    const auto entry = std::find_if(m_entries.cbegin(), m_entries.cend(),
                                    [&](const Entry &each) { return each.report == report; });
    if (entry == m_entries.cend())
        return std::nullopt;
    const Warning warning = entry->warning;
    m_entries.erase(entry);
    return warning;
}

} // namespace norvane
