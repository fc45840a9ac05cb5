#pragma once

#include <QList>
#include <QMap>
#include <QRandomGenerator>

#include <optional>

namespace norvane {

/// Which messages of the queue were added, changed or removed of late, by revision, so that a
/// console that knows the queue of one revision can be told what is different in the present one.
class QueueJournal
{
public:
    /// Notes of messages that are kept. Whoever has missed more fetches the whole queue.
    static constexpr qsizetype maxNotes = 20'000;

    quint64 revision() const { return m_revision; }

    /// Notes that these messages aren't what they were.
    void note(const QList<qint64> &ids);
    /// Notes that any message may not be what it was.
    void noteAll();

    /// The messages that were noted since `revision`, each once; nothing if that isn't known.
    std::optional<QList<qint64>> since(quint64 revision) const;

private:
    /// Begins anywhere, so that a revision of an engine that ended isn't taken for one of this.
    quint64 m_revision = (QRandomGenerator::system()->generate64() >> 1) + 1;
    quint64 m_oldest = m_revision; ///< since() knows from here on
    QMap<quint64, QList<qint64>> m_notes;
    qsizetype m_count = 0; ///< of messages in all notes
};

} // namespace norvane
