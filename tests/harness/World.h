#pragma once

#include "gsm-simulator/RunningSimulator.h"
#include "harness/LineProxy.h"
#include "harness/Sandbox.h"
#include "harness/StoreReader.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <random>

namespace norvane {

// What only a hang takes.
inline constexpr int drainLimit = 1'200'000; ///< ms, until an engine has sent everything
inline constexpr std::chrono::milliseconds trapLimit{1'200'000};

/// What a run is asked to do. A run may be one of several lanes, which share its cycles.
struct RunOptions
{
    QString scenario;
    int cycles = 0; ///< 0: as many as the scenario has of its own
    int lanes = 1;
    int lane = 0;
    quint32 seed = 1;
    bool patient = false; ///< with the cases that take minutes

    /// Whether the cycle of this number is this lane's.
    bool isMine(int cycle) const { return cycle % lanes == lane; }
};

enum class Shape { Short, OnePart, TwoParts, ThreeParts, Unicode };

/// What somebody sends to the device.
enum class MailShape { Short, Unicode, TwoParts, ThreeParts, ThreeUnicodeParts };

/// An engine, a simulated device and the line between them; and the account of what was queued.
class World
{
public:
    explicit World(const RunOptions &options);

    Sandbox sandbox;
    LineProxy line;

    /// Plugs in a device, stores where it is, and starts the engine.
    bool begin(const QStringList &simulatorOptions = {});
    /// Plugs in a device by its socket, where a modem manager is to find it.
    bool plugInSocket(const QStringList &simulatorOptions);
    /// Stores where the device is, and starts the engine.
    bool startEngine(const QString &deviceParameter);
    /// A device that follows one that has ended.
    bool plugInAnother(const QStringList &simulatorOptions);
    RunningSimulator &device() { return *m_device; }
    bool deviceHasGone();

    /// Queues messages that are due, in one call.
    void queue(const QList<Shape> &shapes);
    /// Hands a message to the network, which hands it to the device. The parts of a long one come
    /// in any order, and one of them twice.
    void deliver(MailShape shape, std::chrono::milliseconds delay);
    /// Whether nothing is due, nor left in the device's memories or in the network.
    bool isSilent() const;
    /// What is left where, for a fault's text.
    QString remains() const;
    /// Whether nothing waits any more.
    bool isDone() const { return sandbox.queueSize() == 0; }
    /// Notes something that was waited for and did not come.
    void stuck(const QString &what);

    int random(int least, int max);

    /// Lets the engine finish what is due, ends it, and counts.
    /// @param reports  whether all of them have been handed over
    Tally close(int cycles, Reports reports = Reports::MayBeUnderway);

private:
    void checkCommitted(const QByteArray &payload);
    QueuedMessage makeMessage(Shape shape);
    QList<int> someOrder(int parts);
    QByteArray askDevice(const QByteArray &command) const;
    void collectReceived();
    void hearFailures(Account &account);

    const RunOptions m_options;
    std::unique_ptr<RunningSimulator> m_device;
    Account m_account;
    Tally m_problems;
    std::atomic<int> m_uncommitted = 0;
    int m_made = 0;
    int m_mailMade = 0;
    std::mt19937 m_random;
};

/// A text of that shape that no other number has.
QString textOf(Shape shape, int number);
/// What an answer to a call says of the messages that it was to queue.
Queued howQueued(const QDBusMessage &answer);
/// The moment as the engine reads it.
QString engineMoment(int secondsFromNow);

} // namespace norvane
