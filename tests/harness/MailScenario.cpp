#include "harness/MailWatch.h"
#include "harness/Scenarios.h"

#include <QDeadlineTimer>

#include <array>
#include <csignal>
#include <utility>
#include <vector>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using std::chrono::milliseconds;
using Moment = Trap::Moment;
using Rest = Trap::Rest;

constexpr int cyclesOfDevice = 8;
constexpr int maxCommit = 6'000; // microseconds

enum class Way { Routed, Stored };

/// A device, and how its network reports.
struct Device
{
    Way way;
    std::vector<const char *> options;
    /// ms; an engine that starts again is usually ready later.
    int ackTimeout = 150;
};

const std::vector<Device> &devices()
{
    static const std::vector<Device> all = {
        {Way::Routed, {}},
        {Way::Stored, {}},
        {Way::Routed, {"--report", "twice", "--report-delay", "30"}},
        {Way::Stored, {"--memory-size", "SM:4,SR:3", "--report", "twice"}},
        {Way::Routed, {"--report-delay", "40", "--report-first", "48", "--memory-size", "SM:3"}},
        {Way::Stored,
         {"--memories", "ME", "--report-delay", "60", "--report-first", "48", "--report-order",
          "reversed"}},
        // The next engine is there before the device has waited in vain, and stops routing.
        {Way::Routed, {"--report-delay", "40"}, 900},
    };
    return all;
}

QStringList optionsOf(const Device &device)
{
    QStringList options{u"--report-ways"_s,     device.way == Way::Routed ? u"cds"_s : u"cdsi"_s,
                        u"--ack-timeout"_s,     u"300"_s,
                        u"--redeliver-after"_s, u"200"_s};
    for (const char *const option : device.options)
        options << QLatin1String(option);
    return options;
}

enum class At { Inside, End };

/// A place of the dialogue at which the engine is killed or the line is cut.
struct MailStep
{
    MailLine line;
    At at = At::End;
    Moment moment = Moment::AfterByte;
    int maxDelay = 0; ///< microseconds, a random delay up to this
};

constexpr std::array mailSteps = std::to_array<MailStep>({
    {MailLine::Indication, At::Inside},
    {MailLine::Indication},
    {MailLine::Read, At::End, Moment::BeforeByte},
    {MailLine::Read},
    {MailLine::Entry, At::Inside},
    {MailLine::Entry, At::Inside},
    {MailLine::Entry},
    {MailLine::ReadResult},
    {MailLine::ReadResult, At::End, Moment::AfterByte, maxCommit},
    {MailLine::Delete, At::End, Moment::BeforeByte},
    {MailLine::Delete},
    {MailLine::DeleteResult, At::End, Moment::BeforeByte},
    {MailLine::DeleteResult},
    {MailLine::Other}, // any byte
    {MailLine::Other},
    // What follows is there only where reports are routed.
    {MailLine::Report, At::Inside},
    {MailLine::Report},
    {MailLine::Report, At::End, Moment::AfterByte, maxCommit},
    {MailLine::Acknowledge, At::End, Moment::BeforeByte},
    {MailLine::Acknowledge},
    {MailLine::AcknowledgeResult, At::End, Moment::BeforeByte},
    {MailLine::AcknowledgeResult},
});
constexpr int stepsOfEveryWay = 15;

Trap anyByte(World &world)
{
    constexpr int longestDialogue = 3'000; // bytes
    Trap trap;
    trap.isHere = [left = world.random(0, longestDialogue)](const Place &) mutable {
        return left-- <= 0;
    };
    return trap;
}

/// @return the place, without what is to happen there
Trap trapOf(World &world, Way way)
{
    constexpr int longestEntry = 60; // bytes, and shorter than any
    constexpr int longestLine = 14;
    const int available = way == Way::Routed ? static_cast<int>(mailSteps.size()) : stepsOfEveryWay;
    const MailStep step = mailSteps.at(static_cast<std::size_t>(world.random(0, available - 1)));
    if (step.line == MailLine::Other)
        return anyByte(world);
    Trap trap;
    trap.moment = step.moment;
    trap.delay = std::chrono::microseconds(world.random(0, step.maxDelay));
    const int offset =
        world.random(0, step.line == MailLine::Indication ? longestLine : longestEntry);
    const int number = world.random(0, 2);
    trap.isHere = [step, offset, number, watch = MailWatch()](const Place &place) mutable {
        const MailPlace here = watch.read(place.from, place.byte);
        return here.line == step.line && here.number >= number &&
               (step.at == At::End ? here.isLast : here.offset >= offset);
    };
    return trap;
}

void queueSome(World &world)
{
    constexpr std::array shapes = {Shape::Short, Shape::TwoParts, Shape::Unicode, Shape::Short,
                                   Shape::ThreeParts};
    QList<Shape> some;
    for (int i = 0; i < 2; ++i)
        some.append(shapes.at(static_cast<std::size_t>(world.random(0, shapes.size() - 1))));
    world.queue(some);
}

void deliverSome(World &world)
{
    constexpr int longestDelay = 40; // ms
    constexpr std::array shapes = {MailShape::Short, MailShape::Unicode, MailShape::TwoParts,
                                   MailShape::ThreeParts, MailShape::ThreeUnicodeParts};
    const int messages = world.random(1, 3);
    for (int i = 0; i < messages; ++i)
        world.deliver(shapes.at(static_cast<std::size_t>(world.random(0, shapes.size() - 1))),
                      milliseconds(world.random(0, longestDelay)));
}

/// Gives the engine work until the trap has acted.
void workUntilAct(World &world, int cycle)
{
    constexpr milliseconds lookInterval{20};
    const QDeadlineTimer deadline(drainLimit);
    deliverSome(world);
    if (world.sandbox.waitForBus())
        queueSome(world);
    deliverSome(world);
    while (!world.line.waitForAct(lookInterval)) {
        if (deadline.hasExpired()) {
            world.stuck(u"the place of cycle %1 (%2)"_s.arg(cycle).arg(world.remains()));
            return;
        }
        if (world.isSilent()) {
            queueSome(world);
            deliverSome(world);
        }
    }
}

void killOnce(World &world, int cycle, Trap trap)
{
    trap.rest =
        std::array{Rest::Arrives, Rest::Lost, Rest::Late}.at(static_cast<std::size_t>(cycle % 3));
    trap.act = [pid = static_cast<pid_t>(world.sandbox.pid())] {
        if (pid > 0) // 0, of an engine that didn't come up, would be the whole group
            ::kill(pid, SIGKILL);
    };
    world.line.set(std::move(trap));
    workUntilAct(world, cycle);
    world.line.disarm();
    world.sandbox.kill();
    world.line.flow();
}

/// The engine lives on, and opens the device again.
void cutOnce(World &world, int cycle, Trap trap)
{
    trap.act = [&world] { world.line.cut(); };
    world.line.set(std::move(trap));
    workUntilAct(world, cycle);
    world.line.disarm();
    if (world.sandbox.queueSize() < 0)
        world.stuck(u"an engine that lives on after the cut of cycle %1"_s.arg(cycle));
    if (!world.line.plugIn(world.device().link()))
        world.stuck(u"the line after cycle %1"_s.arg(cycle));
}

/// Lets everything come in that is underway.
void drain(World &world)
{
    if (!world.sandbox.isUp())
        world.sandbox.start();
    if (!eventually([&] { return world.isSilent(); }, drainLimit))
        world.stuck(u"the end of what was left: "_s + world.remains());
}

bool changeDevice(World &world, const Device &device)
{
    drain(world);
    world.sandbox.kill();
    if (world.plugInAnother(optionsOf(device)))
        return true;
    world.stuck(u"another device"_s);
    return false;
}

void runCycle(World &world, int cycle, Way way)
{
    constexpr int oneOf = 4; // cycles is a cut
    Trap trap = trapOf(world, way);
    if (!world.sandbox.isUp())
        world.sandbox.start();
    if (world.random(1, oneOf) == 1)
        cutOnce(world, cycle, std::move(trap));
    else
        killOnce(world, cycle, std::move(trap));
}

} // namespace

Tally runMail(const RunOptions &options)
{
    World world(options);
    int cycles = 0;
    auto device = static_cast<std::size_t>(options.lane) % devices().size();
    if (world.begin(optionsOf(devices().at(device)))) {
        for (int cycle = 0; cycle < options.cycles; ++cycle) {
            if (!options.isMine(cycle))
                continue;
            if (cycles > 0 && cycles % cyclesOfDevice == 0) {
                device = (device + 1) % devices().size();
                if (!changeDevice(world, devices().at(device)))
                    break;
            }
            ++cycles;
            runCycle(world, cycle, devices().at(device).way);
        }
        drain(world);
    }
    return world.close(cycles, Reports::HandedOver);
}

} // namespace norvane
