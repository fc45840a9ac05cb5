#include "harness/Scenarios.h"

#include <array>
#include <csignal>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Moment = Trap::Moment;
using Rest = Trap::Rest;

constexpr int longestOpening = 400;  // bytes, and longer than what leads to the first submission
constexpr int longestCommit = 6'000; // microseconds
constexpr int payloadMiddle = 20;
constexpr int referenceMiddle = 5;

/// A place in the submission at which the engine is killed.
struct Step
{
    const char *name;
    Stage stage;
    int offset; ///< -1: the last byte of the stage
    Moment moment;
    int maxDelay = 0; ///< microseconds, a random delay up to this
};

constexpr std::array<Step, 15> steps = {{
    {"before the command", Stage::Command, 0, Moment::BeforeByte},
    {"in the command", Stage::Command, 4, Moment::AfterByte},
    {"after the command", Stage::Command, -1, Moment::AfterByte},
    {"before the prompt", Stage::Prompt, 0, Moment::BeforeByte},
    {"in the prompt", Stage::Prompt, 1, Moment::AfterByte},
    {"after the prompt", Stage::Prompt, -1, Moment::AfterByte},
    {"before the part", Stage::Payload, 0, Moment::BeforeByte},
    {"in the part", Stage::Payload, payloadMiddle, Moment::AfterByte},
    {"before the byte that sends", Stage::Payload, -1, Moment::BeforeByte},
    {"after the byte that sends", Stage::Payload, -1, Moment::AfterByte},
    {"before the answer", Stage::Answer, 0, Moment::BeforeByte},
    {"in the reference", Stage::Answer, referenceMiddle, Moment::AfterByte},
    {"after the reference", Stage::Answer, -2, Moment::AfterByte},
    {"after the answer", Stage::Answer, -1, Moment::AfterByte},
    {"in the commit", Stage::Answer, -1, Moment::AfterByte, longestCommit},
}};

// Beside the steps: at any byte of a submission, and at any byte of opening the device.
constexpr int kinds = static_cast<int>(steps.size()) + 2;

bool isAt(const Step &step, int submission, const Place &place)
{
    if (place.stage != step.stage || place.submission != submission)
        return false;
    switch (step.offset) {
    case -1:
        return place.isLast;
    case -2:
        return place.endsReference;
    default:
        return place.offset == step.offset;
    }
}

Trap trapOf(World &world, int cycle)
{
    const int kind = cycle % kinds;
    const int submission = world.random(0, 3);
    Trap trap;
    trap.rest = std::array{Rest::Arrives, Rest::Lost, Rest::Late}.at(
        static_cast<std::size_t>(cycle / kinds % 3));
    if (kind < static_cast<int>(steps.size())) {
        const Step &step = steps.at(static_cast<std::size_t>(kind));
        trap.moment = step.moment;
        trap.delay = std::chrono::microseconds(world.random(0, step.maxDelay));
        trap.isHere = [step, submission](const Place &place) {
            return isAt(step, submission, place);
        };
    } else if (kind == static_cast<int>(steps.size())) {
        const int max = std::max(world.line.longestSubmission(), 1);
        trap.isHere = [submission, left = world.random(0, max)](const Place &place) mutable {
            return place.submission >= submission && left-- == 0;
        };
    } else {
        trap.isHere = [left = world.random(0, longestOpening)](const Place &) mutable {
            return left-- == 0;
        };
    }
    return trap;
}

QList<Shape> someShapes(World &world)
{
    QList<Shape> shapes;
    for (int i = 0; i < 3; ++i)
        shapes.append(std::array{Shape::OnePart, Shape::TwoParts, Shape::Short, Shape::Unicode,
                                 Shape::ThreeParts}
                          .at(static_cast<std::size_t>(world.random(0, 4))));
    return shapes;
}

void runCycle(World &world, int cycle)
{
    Trap trap = trapOf(world, cycle);
    trap.act = [pid = static_cast<pid_t>(world.sandbox.pid())] {
        if (pid > 0) // 0, of an engine that didn't come up, would be the whole group
            ::kill(pid, SIGKILL);
    };
    world.line.set(std::move(trap));
    if (world.sandbox.waitForBus())
        world.queue(someShapes(world));
    if (!world.line.waitForAct(trapLimit))
        world.stuck(u"the place of cycle %1"_s.arg(cycle));
    world.line.disarm();
    world.sandbox.kill();
    world.line.flow();
}

} // namespace

Tally runKill(const RunOptions &options)
{
    World world(options);
    int cycles = 0;
    if (world.begin()) {
        for (int cycle = 0; cycle < options.cycles; ++cycle) {
            if (!options.isMine(cycle))
                continue;
            ++cycles;
            if (!world.sandbox.isUp())
                world.sandbox.start();
            runCycle(world, cycle);
        }
    }
    return world.close(cycles);
}

} // namespace norvane
