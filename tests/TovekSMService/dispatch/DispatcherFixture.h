#pragma once

#include "TovekSMService/Noon.h"
#include "TovekSMService/dispatch/Dispatcher.h"

#include "TovekSMService/modem/device/ModemFixture.h"
#include "TovekSMService/store/OtherConnection.h"
#include "TovekSMService/store/StoreResults.h"

#include <QTemporaryDir>

namespace norvane {

using namespace Qt::StringLiterals;

/// A wall clock that stands still until it is set.
class SetClock : public Clock
{
public:
    explicit SetClock(TimeSource &time = TimeSource::system()) : m_time(time) {}

    QDateTime wallClock() const override { return now; }
    TimeSource &time() const override { return m_time; }

    QDateTime now = {QDate(2024, 5, 1), QTime(12, 0), Qt::UTC};

private:
    TimeSource &m_time;
};

/// A device's refusal.
inline QByteArray cmsError(int number)
{
    return "\r\n+CMS ERROR: " + QByteArray::number(number) + "\r\n";
}

/// Notes the program's log while it is in scope.
class NotedLog
{
public:
    NotedLog();
    NotedLog(const NotedLog &) = delete;
    NotedLog &operator=(const NotedLog &) = delete;
    ~NotedLog();

    qsizetype count(const QString &words) const;
};

/// A dispatcher over a real store and a modem at a fake line.
class DispatcherFixture : public ModemFixture
{
protected:
    explicit DispatcherFixture(const ModemTimings &modemTimings = patientTimings());
    ~DispatcherFixture() override;

    /// The device answers at once, and its slowness is no failure.
    static ModemTimings patientTimings();

    QString file() const { return m_folder.filePath(u"queue.sqlite"_s); }

    /// Begins anew with what the store keeps, as the engine does when it comes up.
    void makeDispatcher();

    /// Queues a message, as a console does.
    void add(const QString &phone, const QString &text = u"text"_s, const QString &date = noon());

    /// Starts and waits until the device is ready.
    void startReady();
    /// Lets everything happen that waits for nothing but its turn.
    void takeTurns() { m_time.settle(); }

    /// How often a part was asked to be sent.
    qsizetype submissions() const;
    qsizetype count(const QString &event) const { return m_events.count(event); }
    bool has(const QString &event) const { return m_events.contains(event); }
    /// The events without those that tell that the queue changed.
    QStringList eventsButQueue() const;
    /// The phone and text of each part that the device took.
    QStringList taken() const;
    /// A text of this many parts: with a 16-bit reference, one holds 152 characters.
    static QString longText(int parts);
    /// Sets the device settings' parameter and protocol.
    void configure(const QString &parameter, qint32 protocol = 1);
    /// What is on disk.
    QVariant onDisk(const QString &query) const;

    QTemporaryDir m_folder;
    SetClock m_clock{m_time};
    double m_random = 0;
    DispatcherTimings m_timings;
    RetryTimes m_retryTimes;
    EngineSettings m_settings;
    /// Answers to the submissions to come, before the line's own again.
    QList<QByteArray> m_submitAnswers;
    /// Runs when a part is asked to be sent, before the payload.
    std::function<void()> m_onSubmission;
    QStringList m_events;
    int m_encodings = 0; ///< messages encoded since the test began
    /// The failures and warnings that were raised, by number.
    QList<qint64> m_reports;
    /// Whether each of them is handled at once.
    bool m_handlesReports = true;
    std::unique_ptr<Store> m_store;
    std::unique_ptr<Dispatcher> m_dispatcher;
};

} // namespace norvane
