#include "harness/Scenarios.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Sends one message undisturbed.
/// @return the bytes from its first command to its last answer, 0 when it was not sent
int measure(World &world, const QList<Shape> &shapes)
{
    auto bytes = std::make_shared<std::atomic<int>>(0);
    Trap trap;
    trap.isHere = [bytes](const Place &place) {
        if (place.submission >= 0)
            ++*bytes;
        return false;
    };
    world.line.set(std::move(trap));
    world.queue(shapes);
    const bool done = eventually([&] { return world.isDone(); }, drainLimit);
    world.line.disarm();
    return done ? bytes->load() : 0;
}

void runCycle(World &world, const QList<Shape> &shapes, int byte)
{
    Trap trap;
    trap.moment = Trap::Moment::BeforeByte;
    trap.isHere = [left = byte](const Place &place) mutable {
        return place.submission >= 0 && left-- == 0;
    };
    trap.act = [&world] { world.line.cut(); };
    world.line.set(std::move(trap));
    world.queue(shapes);
    if (!world.line.waitForAct(trapLimit))
        world.stuck(u"byte %1"_s.arg(byte));
    world.line.disarm();
    if (world.sandbox.queueSize() < 0)
        world.stuck(u"an engine that lives on after a cut at byte %1"_s.arg(byte));
    if (!world.line.plugIn(world.device().link()))
        world.stuck(u"the line after byte %1"_s.arg(byte));
    // The engine comes back by itself, and the next message goes its way as if nothing had been.
    world.queue({Shape::Short});
    const bool done = eventually([&] { return world.isDone(); }, drainLimit);
    if (!done)
        world.stuck(u"the end of the queue after a cut at byte %1"_s.arg(byte));
}

} // namespace

Tally runCut(const RunOptions &options)
{
    const QList<Shape> shapes =
        options.patient ? QList{Shape::TwoParts, Shape::Short} : QList{Shape::Short};
    World world(options);
    int cycles = 0;
    const int bytes = world.begin() ? measure(world, shapes) : 0;
    if (bytes == 0)
        world.stuck(u"a message without disturbance"_s);
    const int wanted = options.cycles > 0 ? std::min(options.cycles, bytes) : bytes;
    for (int cycle = 0; cycle < wanted; ++cycle) {
        if (!options.isMine(cycle))
            continue;
        ++cycles;
        runCycle(world, shapes, cycle);
    }
    return world.close(cycles);
}

} // namespace norvane
