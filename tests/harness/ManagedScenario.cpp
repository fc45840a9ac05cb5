#include "harness/Scenarios.h"
#include "support/ModemManagerDaemon.h"

#include <array>
#include <thread>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using std::chrono::microseconds;

constexpr auto deviceName = "device"_L1;
constexpr int latency = 15; // ms, that the network takes for a part

/// When something ends.
enum class Instant {
    AnyTime,      ///< from the call that queues on
    InSubmission, ///< while the network has a part, and the manager waits for the answer
    BehindSubmission,
};

/// What ends.
enum class Victim { Engine, Manager, Device };

/// Lets a random time go by: this is no waiting for a result.
void letPass(World &world, int maxMs)
{
    constexpr int microsecondsOfOne = 1000;
    std::this_thread::sleep_for(microseconds(world.random(0, maxMs * microsecondsOfOne)));
}

int countOf(ControlClient &device, const char *what)
{
    const QByteArray answer = device.ask(QByteArray("count ") + what);
    return answer.startsWith("ok ") ? answer.mid(3).toInt() : 0;
}

/// Looks often, as what is looked for lasts some milliseconds.
bool soon(const std::function<bool()> &condition)
{
    constexpr microseconds betweenLooks{200};
    const QDeadlineTimer deadline(trapLimit);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        std::this_thread::sleep_for(betweenLooks);
    }
    return true;
}

/// @param sent  parts that the network had before something was queued
void waitFor(World &world, Instant instant, ControlClient &device, int sent)
{
    constexpr int longestStart = 60; // ms, until a message is on its way
    constexpr int longestCommit = 6;
    if (instant == Instant::AnyTime) {
        letPass(world, longestStart);
        return;
    }
    const bool isBehind = instant == Instant::BehindSubmission;
    sent += world.random(0, 2) + (isBehind ? 1 : 0);
    const bool isHere = soon([&] {
        return countOf(device, "sent") >= sent && (isBehind || countOf(device, "submitting") == 1);
    });
    if (!isHere)
        world.stuck(u"a submission: "_s + world.remains());
    letPass(world, isBehind ? longestCommit : latency);
}

void queueThree(World &world)
{
    constexpr std::array shapes = {Shape::Short, Shape::OnePart, Shape::TwoParts, Shape::ThreeParts,
                                   Shape::Unicode};
    QList<Shape> some;
    for (int i = 0; i < 3; ++i)
        some.append(shapes.at(static_cast<std::size_t>(world.random(0, shapes.size() - 1))));
    world.queue(some);
}

/// The engine may end a moment later, while it deals with what has gone.
void endSomething(World &world, ModemManagerDaemon &daemon, Victim victim)
{
    constexpr int longestNotice = 20; // ms
    if (victim == Victim::Manager && !daemon.kill())
        world.stuck(u"the manager's end"_s);
    if (victim == Victim::Device)
        world.device().process().kill();
    if (victim != Victim::Engine && world.random(0, 1) == 0)
        return;
    if (victim != Victim::Engine)
        letPass(world, longestNotice);
    world.sandbox.kill();
}

/// A device whose port is closed leaves a submission that was begun, by the line that says so. A
/// socket has no such line.
void endEntry(World &world)
{
    PortClient(world.device().socketPath()).write("\x1B");
}

bool bringBack(World &world, ModemManagerDaemon &daemon, Victim victim)
{
    switch (victim) {
    case Victim::Manager:
        endEntry(world);
        return daemon.restart();
    case Victim::Device:
        return daemon.detach(deviceName) && world.device().restart() &&
               !daemon.attach(deviceName, world.device().socketPath()).isEmpty();
    default:
        return true;
    }
}

void runCycle(World &world, ModemManagerDaemon &daemon, int cycle)
{
    constexpr std::array victims = {Victim::Engine, Victim::Manager, Victim::Engine, Victim::Device,
                                    Victim::Engine};
    const Victim victim = victims.at(static_cast<std::size_t>(cycle) % victims.size());
    if (!world.sandbox.isUp())
        world.sandbox.start();
    ControlClient device(world.device().controlPath());
    const int sent = countOf(device, "sent");
    if (!world.sandbox.waitForBus())
        world.stuck(u"the engine of cycle %1"_s.arg(cycle));
    queueThree(world);
    waitFor(world, static_cast<Instant>(world.random(0, 2)), device, sent);
    endSomething(world, daemon, victim);
    if (!bringBack(world, daemon, victim))
        world.stuck(u"the manager or the device after cycle %1"_s.arg(cycle));
    // An engine that lives on would wait for its next attempt to open the device.
    if (victim != Victim::Engine && world.sandbox.isUp())
        world.sandbox.call("ApplySettings");
}

} // namespace

std::optional<Tally> runManaged(const RunOptions &options)
{
    if (!ModemManagerDaemon::isInstalled())
        return std::nullopt;
    ModemManagerDaemon daemon;
    World world(options);
    world.sandbox.setVariable(u"DBUS_SYSTEM_BUS_ADDRESS"_s, daemon.address());
    world.sandbox.writeSettings("[Sending]\nFirstDelay=1\nLongestDelay=2\n");
    int cycles = 0;
    if (!world.plugInSocket({u"--latency"_s, QString::number(latency)}) ||
        daemon.attach(deviceName, world.device().socketPath()).isEmpty()) {
        world.stuck(u"the device"_s);
    } else if (world.startEngine(u"ModemManager"_s)) {
        for (int cycle = 0; cycle < options.cycles; ++cycle) {
            if (!options.isMine(cycle))
                continue;
            ++cycles;
            runCycle(world, daemon, cycle);
        }
    }
    return world.close(cycles);
}

} // namespace norvane
