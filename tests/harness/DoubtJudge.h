#pragma once

#include "harness/Ledger.h"
#include "harness/QueueDatabase.h"

#include <QHash>
#include <QSet>

namespace norvane {

class SharingEngine;

/// Judges the messages that are left in doubt (-39). One may be if its engine was killed while a
/// part was leaving and had not written down at home what became of it, or if others took over from
/// an engine that was silent. And one that its device took whole is to be corrected, unless its
/// engine was killed before it knew.
class DoubtJudge
{
public:
    /// @param database, problems  must outlive this object
    DoubtJudge(QueueDatabase &database, Tally &problems)
        : m_database(database), m_problems(problems)
    {}

    void beginCycle();
    /// The engine looks silent from here on, until the cycle ends.
    void noteSilent(const SharingEngine &engine);
    /// What the engine has written down at home.
    /// @return how much that is, or -1 where its file can't be read
    int noteKept(const SharingEngine &engine);
    /// The engine was killed, and was not started since.
    /// @return false where its file or the database can't be read
    bool noteKilled(const SharingEngine &engine);
    /// Reports the messages in doubt that may not be, and that the database can't be asked.
    void judge();

    /// Whether the engine could not know what became of the message.
    bool isExcused(const QString &phone) const { return m_excused.contains(phone); }

private:
    QueueDatabase &m_database;
    Tally &m_problems;
    QSet<QString> m_silent;            ///< engines, of the cycle
    QSet<QString> m_kept;              ///< ids of messages, of the cycle
    QHash<QString, qint64> m_lastDead; ///< the last epoch of a process that was killed
    QSet<QString> m_judged;            ///< ids of outcomes
    QSet<QString> m_excused;
};

} // namespace norvane
