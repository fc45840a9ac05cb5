#include "harness/DiskControl.h"
#include "harness/Scenarios.h"

#include <QDir>
#include <QFile>

#include <new>

#include <sys/mman.h>
#include <sys/mount.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int mostBatches = 5;
constexpr int refusalLimit = 1'200'000; // ms

/// The engine's disk as the harness steers it.
class SteeredDisk
{
public:
    explicit SteeredDisk(Sandbox &sandbox)
    {
        QFile file(sandbox.path(u"disk"_s));
        if (!file.open(QIODevice::ReadWrite) || !file.resize(sizeof(DiskControl)))
            return;
        void *const memory = ::mmap(nullptr, sizeof(DiskControl), PROT_READ | PROT_WRITE,
                                    MAP_SHARED, file.handle(), 0);
        if (memory == MAP_FAILED)
            return;
        m_control = new (memory) DiskControl;
        sandbox.setVariable(QLatin1String(diskControlVariable), file.fileName());
        sandbox.setVariable(QLatin1String(diskFolderVariable), sandbox.storeFolder());
        sandbox.setVariable(u"LD_PRELOAD"_s, QStringLiteral(NORVANE_FULL_DISK));
        // The sanitizer's own library would rather be the first.
        sandbox.setVariable(u"ASAN_OPTIONS"_s, u"verify_asan_link_order=0"_s);
    }

    ~SteeredDisk()
    {
        if (m_control != nullptr)
            ::munmap(m_control, sizeof(DiskControl));
    }

    SteeredDisk(const SteeredDisk &) = delete;
    SteeredDisk &operator=(const SteeredDisk &) = delete;

    bool isThere() const { return m_control != nullptr; }
    DiskControl &operator*() const { return *m_control; }
    DiskControl *operator->() const { return m_control; }

private:
    DiskControl *m_control = nullptr;
};

QList<Shape> shapesOfCycle()
{
    return {Shape::OnePart, Shape::TwoParts, Shape::Short};
}

/// Sends undisturbed, and counts the writes from the first command to the end.
int measure(World &world, const SteeredDisk &disk)
{
    Trap trap;
    trap.isHere = [](const Place &place) { return place.stage == Stage::Command; };
    trap.act = [&disk] { disk->written = 0; };
    world.line.set(std::move(trap));
    world.queue(shapesOfCycle());
    const bool done = eventually([&] { return world.isDone(); }, drainLimit);
    return done ? static_cast<int>(disk->written) : 0;
}

/// While the disk is full: the engine answers, and a crash and a start change nothing.
void lookAtFullDisk(World &world, int write)
{
    constexpr int everyFourth = 4;
    if (world.sandbox.call("GetEngineStatus").arguments().value(0).toInt() != 1)
        world.stuck(u"an answer while full from write %1 on"_s.arg(write));
    if (write % everyFourth != everyFourth - 1)
        return;
    world.sandbox.kill();
    world.sandbox.start();
    world.sandbox.waitForBus(); // which it may refuse
}

void runCycle(World &world, const SteeredDisk &disk, int write)
{
    disk->refused = 0;
    disk->half = write % 2 == 1;
    Trap trap;
    trap.moment = Trap::Moment::BeforeByte;
    trap.isHere = [](const Place &place) { return place.stage == Stage::Command; };
    trap.act = [&disk, write] { disk->room = write; };
    world.line.set(std::move(trap));
    // The same work doesn't take as many writes each time: what is done before is followed by more.
    bool met = false;
    for (int more = 0; !met && more < mostBatches; ++more) {
        world.queue(shapesOfCycle());
        eventually([&] { return disk->refused > 0 || world.isDone(); }, refusalLimit);
        met = disk->refused > 0;
    }
    if (!met)
        world.stuck(u"a refusal of write %1"_s.arg(write));
    lookAtFullDisk(world, write);
    disk->room = -1;
    if (!world.sandbox.isUp())
        world.sandbox.start();
    world.sandbox.waitForBus();
    if (!eventually([&] { return world.isDone(); }, drainLimit))
        world.stuck(u"the end of the queue after write %1"_s.arg(write));
}

/// A message for which there is no room is the caller's still.
void refuseMessage(World &world, const SteeredDisk &disk)
{
    disk->refused = 0;
    disk->room = 0;
    world.queue({Shape::Short});
    if (disk->refused == 0)
        world.stuck(u"a write for a message"_s);
    disk->room = -1;
}

} // namespace

Tally runFullDisk(const RunOptions &options)
{
    World world(options);
    const SteeredDisk disk(world.sandbox);
    int cycles = 0;
    const int writes = disk.isThere() && world.begin() ? measure(world, disk) : 0;
    if (writes == 0)
        world.stuck(u"a write to the steered disk"_s);
    const int wanted = options.cycles > 0 ? std::min(options.cycles, writes) : writes;
    for (int write = 0; write < wanted; ++write) {
        if (!options.isMine(write))
            continue;
        ++cycles;
        runCycle(world, disk, write);
    }
    if (options.lane == 0)
        refuseMessage(world, disk);
    return world.close(cycles);
}

} // namespace norvane
