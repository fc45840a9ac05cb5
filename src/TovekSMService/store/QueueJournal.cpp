#include "TovekSMService/store/QueueJournal.h"

#include <QSet>

namespace norvane {

void QueueJournal::note(const QList<qint64> &ids)
{
    if (ids.isEmpty())
        return;
    if (ids.size() > maxNotes) {
        noteAll();
        return;
    }
    m_notes.insert(++m_revision, ids);
    m_count += ids.size();
    while (m_count > maxNotes) {
        m_oldest = m_notes.firstKey();
        m_count -= m_notes.take(m_oldest).size();
    }
}

void QueueJournal::noteAll()
{
    m_oldest = ++m_revision;
    m_notes.clear();
    m_count = 0;
}

std::optional<QList<qint64>> QueueJournal::since(quint64 revision) const
{
    if (revision < m_oldest || revision > m_revision)
        return std::nullopt;
    QSet<qint64> ids;
    for (auto note = m_notes.upperBound(revision); note != m_notes.cend(); ++note)
        ids.unite(QSet<qint64>(note->cbegin(), note->cend()));
    return QList<qint64>(ids.cbegin(), ids.cend());
}

} // namespace norvane
