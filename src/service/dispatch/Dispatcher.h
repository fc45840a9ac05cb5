#pragma once

#include "service/dispatch/Clock.h"
#include "service/dispatch/DispatcherTimings.h"
#include "service/dispatch/RetryPolicy.h"
#include "service/modem/Modem.h"
#include "service/store/Store.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <optional>

/// Decides what the device does next: sends what is due, in the order of delivery date and
/// queueing, opens the device while the engine is started, and tests it on request.
///
/// One thing is on its way at a time. work() is the only place that begins something, and is run
/// after every change. What a step's outcome must leave in the store is tried again until it is
/// there, and no other message begins before.
class Dispatcher : public QObject
{
    Q_OBJECT

public:
    struct Warning
    {
        qint32 code = 0;
        QString text;

        bool operator==(const Warning &) const = default;
    };
    using TestAnswer = std::function<void(qint32)>;

    /// @param store, modem, clock  must outlive this object
    Dispatcher(Store &store, Modem &modem, const Clock &clock, const RetryPolicy &retries,
               const DispatcherTimings &timings = {}, QObject *parent = nullptr);

    /// The first step after the program's start: reports what the last run left in the middle, and
    /// starts if the engine was started.
    /// @throws StoreFailure
    void resume();

    qint32 status() const { return m_running ? 1 : 0; }
    /// @throws StoreFailure; the status is as it was then
    void start();
    /// @throws StoreFailure; the status is as it was then
    void stop();
    /// Puts the stored device settings in force, as start() does where they are other ones: the
    /// device is closed and opened anew.
    /// @throws StoreFailure; nothing has changed then
    void applySettings();
    /// Asks the device when its turn comes, and gives 1 or the code of what stands in the way,
    /// within the time limit.
    void testDevice(TestAnswer answer);

    /// The queue was changed from outside.
    void noticeQueueChange();
    /// Tells that an edit or a deletion came after its message had begun to be sent.
    void warnTooLate();
    /// Raises a warning, or keeps it until someone listens.
    void warn(qint32 code, const QString &text);

    /// Whether someone listens to the events. What nobody hears is kept.
    void setHeard(bool heard) { m_heard = heard; }
    QList<Warning> takeUnheardWarnings();
    const std::optional<DeviceDetails> &knownDevice() const { return m_knownDevice; }

    /// Ends as soon as the part in progress, if any, is finished and on disk.
    void finish();

    /// Looks for what is to be done; harmless at any time.
    void work();

Q_SIGNALS:
    void statusChanged(int status);
    void deviceInfo(const DeviceDetails &details);
    void queueChanged();
    void sent(const QString &phone, const QString &text, int queueCount);
    void sendingFailed(const QString &phone, const QString &text, int code);
    void warning(int code, const QString &text);
    /// Comes after finish(), when nothing is on its way any more.
    void finished();

private:
    /// What is being sent.
    struct Current
    {
        StoredMessage message;
        QList<SubmitPart> parts;
    };

    // The device
    void useDevice();
    void leaveAll();
    void openDevice();
    void closeDevice();
    void releaseMessages();
    void onReady(const DeviceDetails &details);
    void onFailed(const ModemFailure &failure);
    void onTested(bool ok, int code, const DeviceDetails &details);
    void answerTests(qint32 result);
    void tryDeviceLater(qint32 code, const QString &text);
    void endTrouble();
    bool mayOpen() const;

    // Sending
    void sendFirst();
    void sendPart(const StoredMessage &message);
    std::optional<QList<SubmitPart>> encoded(StoredMessage &message);
    void waitForFirst();
    void onPartAccepted(int reference);
    void onPartFailed(const SendFailure &failure);
    void failMessage(const StoredMessage &message, qint32 code);
    void reportInterrupted();
    void settle(const std::function<void()> &step);
    void trySettling();

    Store &m_store;
    Modem &m_modem;
    const Clock &m_clock;
    RetryPolicy m_retries;
    const DispatcherTimings m_timings;

    bool m_running = false;
    bool m_heard = false;
    bool m_finishing = false;
    std::optional<DeviceSettings> m_inForce; ///< as of the last start or applySettings()
    bool m_applySettings = false;
    bool m_release = false; ///< messages in progress are to wait again, as the engine was stopped
    bool m_working = false; ///< work() is on the stack

    std::optional<Current> m_current;
    std::function<void()> m_unsettled; ///< an outcome that isn't on disk yet
    QTimer m_settleAgain;
    QTimer m_wake; ///< runs until the first message may be due

    int m_deviceFailures = 0; ///< in a row
    qint32 m_warnedCode = 0;  ///< told of the present trouble with the device
    QTimer m_openAgain;
    QTimer m_steady; ///< runs while the device is ready and its trouble not yet forgotten

    QList<TestAnswer> m_tests;
    QTimer m_testLimit;

    std::optional<DeviceDetails> m_knownDevice;
    QList<Warning> m_unheardWarnings;
};
