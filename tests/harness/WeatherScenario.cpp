#include "harness/Scenarios.h"

#include <array>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int patientLimit = 2'400'000; // ms, and time limits of an answer

/// What one line and one device have to offer.
struct Weather
{
    const char *name;
    std::vector<const char *> options;
    int messages = 20;
    /// How long each prompt is held back, in milliseconds.
    int slowPrompt = 0;
    bool onlyOnePrompt = false;
    /// Every answer of this number is swallowed.
    int swallowEvery = 0;
    bool onlyPatient = false;
    /// The device ends and is followed by another as often as needed.
    bool goes = false;
};

const std::vector<Weather> &weathers()
{
    static const std::vector<Weather> all = {
        {"noise", {"--noise"}, 40},
        {"talk", {"--urc", "--urc-interval", "1"}, 40},
        {"noise, talk and slow answers",
         {"--noise", "--seed", "7", "--urc", "--urc-interval", "2", "--latency", "40"}},
        {"refused for good", {"--fail-every", "3", "--fail-code", "28"}},
        {"refused for now", {"--fail-every", "3", "--fail-code", "38"}},
        {"refused by the device", {"--fail-every", "7", "--fail-code", "300"}, 10},
        {"gone after a few", {"--drop-after", "3"}, 10, 0, false, 0, false, true},
        {"gone before the answer",
         {"--drop-after", "2", "--lose-answer"},
         10,
         0,
         false,
         0,
         false,
         true},
        {"slow line", {"--baud", "19200"}, 6},
        {"slow prompts", {}, 8, 400},
        // Beyond the engine's time limit for a prompt, which is 10 s.
        {"a prompt too late", {}, 4, 10'300, true},
        {"lost answers", {}, 4, 0, false, 3, true},
    };
    return all;
}

QStringList optionsOf(const Weather &weather)
{
    QStringList options;
    for (const char *const option : weather.options)
        options << QLatin1String(option);
    return options;
}

/// Holds back prompts. The trap is set again each time it has acted.
void slowDown(World &world, const Weather &weather)
{
    Trap trap;
    trap.isHere = [](const Place &place) { return place.stage == Stage::Command && place.isLast; };
    trap.act = [&world, &weather] {
        world.line.holdDevice(std::chrono::milliseconds(weather.slowPrompt));
    };
    world.line.set(std::move(trap));
}

void swallowAnswers(World &world, const Weather &weather)
{
    Trap trap;
    trap.rest = Trap::Rest::Swallowed;
    trap.isHere = [every = weather.swallowEvery](const Place &place) {
        return place.stage == Stage::Payload && place.isLast && (place.submission + 1) % every == 0;
    };
    world.line.set(std::move(trap));
}

void disturb(World &world, const Weather &weather)
{
    if (weather.slowPrompt > 0)
        slowDown(world, weather);
    else if (weather.swallowEvery > 0)
        swallowAnswers(world, weather);
}

bool isOver(World &world, const Weather &weather)
{
    if (weather.goes && world.deviceHasGone()) {
        if (!world.plugInAnother(optionsOf(weather)))
            world.stuck(u"another device"_s);
        world.sandbox.call("ApplySettings");
    }
    if (!weather.onlyOnePrompt && world.line.waitForAct(std::chrono::milliseconds(0)))
        disturb(world, weather);
    return StoreReader(world.sandbox.storeFile()).due(engineMoment(0)) == 0;
}

Tally run(const RunOptions &options, const Weather &weather)
{
    World world(options);
    // Short delays where the engine has them, so that a run is a short one.
    world.sandbox.writeSettings("[Sending]\nFirstDelay=1\nLongestDelay=2\nAnswerLimit=30\n");
    if (world.begin(optionsOf(weather))) {
        disturb(world, weather);
        QList<Shape> shapes;
        for (int i = 0; i < weather.messages; ++i)
            shapes.append(
                std::array{Shape::OnePart, Shape::TwoParts, Shape::Short, Shape::Unicode}.at(
                    static_cast<std::size_t>(i % 4)));
        world.queue(shapes);
        const int limit = weather.onlyPatient ? patientLimit : drainLimit;
        if (!eventually([&] { return isOver(world, weather); }, limit))
            world.stuck(u"the end in \"%1\""_s.arg(QLatin1String(weather.name)));
    }
    return world.close(1);
}

} // namespace

Tally runWeather(const RunOptions &options)
{
    Tally all;
    for (std::size_t i = 0; i < weathers().size(); ++i) {
        const Weather &weather = weathers().at(i);
        if (!options.isMine(static_cast<int>(i)) || (weather.onlyPatient && !options.patient))
            continue;
        const Tally tally = run(options, weather);
        all.addLine(tally.line());
        for (const QString &fault : tally.faults)
            all.faults << QLatin1String(weather.name) + u": "_s + fault;
    }
    return all;
}

} // namespace norvane
