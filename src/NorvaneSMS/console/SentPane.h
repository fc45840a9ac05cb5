#pragma once

#include <QDateTime>
#include <QLocale>
#include <QStringList>

#include <functional>

namespace norvane {

class ConsoleControls;
class SentGridModel;

/// What became of the messages of this run of the program, as the console shows it: the grid, how
/// many they are, and how long the rest of the queue will take.
class SentPane
{
public:
    using Clock = std::function<QDateTime()>;

    SentPane(const ConsoleControls &controls, const QLocale &locale, Clock now);

    void setHeaders(const QStringList &headers);
    /// The word that screen readers add to a failed message.
    void setFailedWord(const QString &word);

    /// @param queueCount messages that still wait
    /// @throws NumberedFailure 6 for an estimate that is too long; the message stands in the grid
    ///         then
    void addSent(const QString &phone, const QString &message, qint32 queueCount);
    void addFailed(const QString &phone, const QString &message);
    /// Restarts the interval that the estimate is based on.
    void noteEvent();

private:
    void showEstimate(qint32 queueCount);

    const ConsoleControls &m_controls;
    SentGridModel *m_rows; ///< belongs to the grid
    QLocale m_locale;
    Clock m_now;
    QDateTime mdLastEvent;
};

} // namespace norvane
