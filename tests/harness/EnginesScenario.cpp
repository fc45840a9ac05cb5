#include "harness/Fleet.h"
#include "harness/Scenarios.h"

#include <QSet>

#include <array>
#include <thread>

namespace norvane {

namespace {

using std::chrono::microseconds;

/// What happens to an engine or to the database.
enum class Deed {
    Kill,           ///< and start it again
    KillUntilTaken, ///< and start it when others have taken over
    KillTwice,      ///< the second time before it can hand over what it kept at home
    Freeze,
    FreezeUntilTaken,
    Hold, ///< its connection, silently
    HoldUntilTaken,
    HoldBeginning, ///< in the middle, and go on when it has another connection
    Cut,
    KillDatabase,
    StopDatabase, ///< in order
};

constexpr std::array deedNames = {"kill"_L1,
                                  "kill until taken"_L1,
                                  "kill twice"_L1,
                                  "freeze"_L1,
                                  "freeze until taken"_L1,
                                  "hold"_L1,
                                  "hold until taken"_L1,
                                  "hold beginning"_L1,
                                  "cut"_L1,
                                  "kill the database"_L1,
                                  "stop the database"_L1};

/// Lets a random time go by: this is no waiting for a result.
void letPass(Fleet &fleet, int maxMs)
{
    constexpr int microsecondsOfOne = 1000;
    std::this_thread::sleep_for(microseconds(fleet.random(0, maxMs * microsecondsOfOne)));
}

/// The connection breaks at some message: at the end of a statement in most cases, which may be a
/// commit.
void setTrap(Fleet &fleet, int index)
{
    constexpr int longestTalk = 40; // messages, of which a few are the ends of statements
    constexpr int ends = 14;
    const QByteArray endOfStatement("S\0\0\0\4", 5);
    const bool isAtEnd = fleet.random(0, 3) > 0;
    PostgresTrap trap;
    trap.message = fleet.random(1, isAtEnd ? ends : longestTalk);
    trap.containing = isAtEnd ? endOfStatement : QByteArray();
    trap.moment = static_cast<PostgresTrap::Moment>(fleet.random(0, 2));
    trap.act = fleet.random(0, 7) == 0 ? PostgresTrap::Act::Hold : PostgresTrap::Act::Cut;
    fleet.note(u"[%1 %2 at %3 %4, moment %5]"_s.arg(
        fleet.engine(index).name(), trap.act == PostgresTrap::Act::Hold ? u"hold"_s : u"cut"_s,
        isAtEnd ? u"end"_s : u"message"_s, QString::number(trap.message),
        QString::number(static_cast<int>(trap.moment))));
    fleet.engine(index).setTrap(trap);
}

void disturb(Fleet &fleet)
{
    constexpr int longestDelay = 10'000; // microseconds
    for (int index = 0; index < Fleet::size; ++index) {
        if (fleet.random(0, 1) == 0)
            setTrap(fleet, index);
        if (fleet.random(0, 3) == 0)
            fleet.engine(index).proxy.setDelay(microseconds(fleet.random(0, longestDelay)));
    }
}

void queueSome(Fleet &fleet)
{
    constexpr std::array shapes = {Shape::Short, Shape::OnePart, Shape::TwoParts, Shape::ThreeParts,
                                   Shape::Unicode};
    const int calls = fleet.random(2, 5);
    for (int call = 0; call < calls; ++call) {
        QList<Shape> some;
        const int messages =
            std::array{1, 1, 2, 5}.at(static_cast<std::size_t>(fleet.random(0, 3)));
        for (int i = 0; i < messages; ++i)
            some.append(shapes.at(static_cast<std::size_t>(fleet.random(0, shapes.size() - 1))));
        fleet.queue(fleet.random(0, Fleet::size - 1), some);
    }
}

void harm(Fleet &fleet, int index, Deed deed)
{
    constexpr int longestPause = 150; // ms
    SharingEngine &engine = fleet.engine(index);
    fleet.note(engine.name() + u": "_s + deedNames.at(static_cast<std::size_t>(deed)) + u';');
    switch (deed) {
    case Deed::Kill:
    case Deed::KillUntilTaken:
        fleet.kill(index);
        break;
    case Deed::KillTwice:
        fleet.killTwice(index);
        break;
    case Deed::Freeze:
    case Deed::FreezeUntilTaken:
        engine.freeze();
        break;
    case Deed::Hold:
    case Deed::HoldUntilTaken:
        engine.proxy.hold();
        break;
    case Deed::HoldBeginning:
        fleet.holdBeginning(index);
        break;
    case Deed::Cut:
        engine.proxy.cut();
        break;
    case Deed::KillDatabase:
        fleet.server.killNow();
        break;
    case Deed::StopDatabase:
        fleet.server.stop();
        break;
    }
    letPass(fleet, longestPause);
}

bool isUntilTaken(Deed deed)
{
    return deed == Deed::KillUntilTaken || deed == Deed::FreezeUntilTaken ||
           deed == Deed::HoldUntilTaken;
}

Deed someDeed(Fleet &fleet)
{
    constexpr std::array deeds = {
        Deed::Kill,      Deed::Kill,         Deed::KillUntilTaken, Deed::KillTwice,
        Deed::KillTwice, Deed::KillTwice,    Deed::Freeze,         Deed::FreezeUntilTaken,
        Deed::Hold,      Deed::Hold,         Deed::HoldUntilTaken, Deed::HoldBeginning,
        Deed::Cut,       Deed::KillDatabase, Deed::StopDatabase};
    return deeds.at(static_cast<std::size_t>(fleet.random(0, deeds.size() - 1)));
}

/// Whether it needs an engine that is well.
bool isOfHealthy(Deed deed)
{
    return isUntilTaken(deed) || deed == Deed::KillTwice || deed == Deed::HoldBeginning;
}

/// One engine that is given up in a cycle at most: others must be left to take over.
void runCycle(Fleet &fleet)
{
    constexpr int longestStart = 60; // ms, until a message is on its way
    disturb(fleet);
    queueSome(fleet);
    const int deeds = fleet.random(1, 2);
    int given = -1;
    QSet<int> harmed;
    for (int i = 0; i < deeds; ++i) {
        const int victim = fleet.random(0, Fleet::size - 1);
        const Deed deed = someDeed(fleet);
        if (given >= 0 && (isUntilTaken(deed) || victim == given))
            continue;
        if (isOfHealthy(deed) && harmed.contains(victim))
            continue;
        letPass(fleet, longestStart);
        if (isUntilTaken(deed)) {
            fleet.waitForPart(victim);
            given = victim;
        }
        harmed.insert(victim);
        harm(fleet, victim, deed);
    }
    if (given >= 0) {
        fleet.letGo(given);
        fleet.waitForTakeover(given);
        queueSome(fleet); // that it could begin, were its epoch not over
    }
    fleet.recover();
}

} // namespace

Tally runEngines(const RunOptions &options)
{
    Fleet fleet(options);
    int cycles = 0;
    if (fleet.begin()) {
        for (int cycle = 0; cycle < options.cycles; ++cycle) {
            if (!options.isMine(cycle))
                continue;
            ++cycles;
            fleet.beginCycle(cycle);
            runCycle(fleet);
            if (fleet.isStuck())
                break;
        }
    }
    return fleet.close(cycles);
}

} // namespace norvane
