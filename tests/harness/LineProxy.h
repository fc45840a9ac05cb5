#pragma once

#include "harness/DialogueWatch.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace norvane {

/// What a line does when the talk has come to a certain place.
struct Trap
{
    enum class Moment { BeforeByte, AfterByte };
    /// What becomes of the bytes that are on their way then.
    enum class Rest {
        Arrives,
        Lost,      ///< until flow() is called
        Late,      ///< the device's are held back until the engine speaks again
        Swallowed, ///< the device's are lost until the engine speaks again
    };

    std::function<bool(const Place &)> isHere;
    Moment moment = Moment::AfterByte;
    Rest rest = Rest::Arrives;
    std::chrono::microseconds delay{0}; ///< from the place to the act
    std::function<void()> act;          ///< in the line's own thread
};

/// A line between an engine and a device that can be listened to, held up and cut at any byte. It
/// is a pseudo-terminal for the engine and a client for the device, and lives in a thread of its
/// own.
class LineProxy
{
public:
    /// @param link        the engine's device, a symbolic link
    /// @param beforeSend  is given each payload before the byte that sends it is passed on
    LineProxy(QString link, std::function<void(const QByteArray &payload)> beforeSend);
    ~LineProxy();
    LineProxy(const LineProxy &) = delete;
    LineProxy &operator=(const LineProxy &) = delete;

    /// Joins the engine's end to a device, in place of a line that was cut before.
    /// @return false when there is no such device
    bool plugIn(const QString &device);
    /// Both ends hang up, and what is underway is lost.
    void cut();

    /// Sets a trap in place of the one before. Submissions are counted from here.
    void set(Trap trap);
    void disarm();
    /// Waits until the trap has acted.
    bool waitForAct(std::chrono::milliseconds limit);
    /// The engine is another one: bytes flow again, and what was left in the line is dropped unless
    /// it was to arrive.
    void flow();
    /// Holds back what the device says.
    void holdDevice(std::chrono::milliseconds time);

    /// Submissions whose last byte was passed on.
    int submissions() const { return m_submissions; }
    /// Bytes of the longest submission so far, from the command to the end of the answer.
    int longestSubmission() const { return m_longest; }

private:
    using Clock = std::chrono::steady_clock;

    void run();
    void step();
    int timeout() const;
    void passOn(From from);
    void forward(From from, const QByteArray &bytes);
    void releaseHeld();
    void spring();
    void actIfDue();
    bool openEngineEnd();
    void closeAll();
    void wake() const;

    const QString m_link;
    const std::function<void(const QByteArray &)> m_beforeSend;
    mutable std::recursive_mutex m_mutex;
    std::condition_variable_any m_acted;
    std::atomic<bool> m_stop = false;
    std::atomic<int> m_submissions = 0;
    std::atomic<int> m_longest = 0;
    int m_length = 0;

    int m_wake = -1;
    int m_engine = -1; ///< the far end of the engine's terminal
    int m_slave = -1;  ///< its near end, held open so that an engine's end doesn't hang it up
    int m_device = -1;

    DialogueWatch m_watch;
    Trap m_trap;
    bool m_armed = false;
    bool m_sprung = false;
    bool m_hasActed = false;
    bool m_discarding = false;
    bool m_late = false;
    bool m_swallowing = false; ///< what is held back is lost
    QByteArray m_held;         ///< what the device said and the engine is to get late
    Clock::time_point m_actAt;
    Clock::time_point m_holdUntil;
    std::thread m_thread;
};

} // namespace norvane
