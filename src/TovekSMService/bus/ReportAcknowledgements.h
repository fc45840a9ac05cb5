#pragma once

#include <QHash>
#include <QSet>
#include <QString>

namespace norvane {

/// Which reports (failed messages and warnings, by number) were raised to which listener, and who
/// has yet to acknowledge them.
///
/// A listener that never acknowledges is one of a version that knows nothing of it, or a script: a
/// report counts as handled when it is raised to it.
class ReportAcknowledgements
{
public:
    /// From now on the caller acknowledges what it handles.
    void addAcknowledger(const QString &caller) { m_acknowledgers.insert(caller); }
    void addListener(const QString &listener) { m_pending[listener]; }
    /// Whether or not it listens.
    void removeCaller(const QString &caller);

    qsizetype listeners() const { return m_pending.size(); }

    // Both return whether the report counts as handled by being raised.
    bool raisedToAll(qint64 report);
    bool raisedTo(const QString &listener, qint64 report);

    /// Whether `listener` has the report and has not acknowledged it.
    bool isPending(const QString &listener, qint64 report) const;
    /// @return false for a report that was not raised to `caller`, or is acknowledged already
    bool acknowledge(const QString &caller, qint64 report);

private:
    QSet<QString> m_acknowledgers;
    QHash<QString, QSet<qint64>> m_pending; ///< of each listener
};

} // namespace norvane
