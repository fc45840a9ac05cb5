#include "harness/Scenarios.h"

#include <QFile>

#include <atomic>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int fullLimit = 1'200'000; // ms
constexpr int pageSize = 4096;
constexpr int mostPagesLeft = 30;
constexpr int cyclesOfItsOwn = 20;

/// A small file system in a folder, seen by this process and its children alone.
class SmallDisk
{
public:
    explicit SmallDisk(QString folder) : m_folder(std::move(folder))
    {
        m_isThere = ::mount("norvane", QFile::encodeName(m_folder).constData(), "tmpfs", 0,
                            "size=8m,mode=0700") == 0;
    }

    ~SmallDisk()
    {
        if (m_isThere)
            ::umount2(QFile::encodeName(m_folder).constData(), MNT_DETACH);
    }

    SmallDisk(const SmallDisk &) = delete;
    SmallDisk &operator=(const SmallDisk &) = delete;

    bool isThere() const { return m_isThere; }

    qint64 freePages() const
    {
        struct statvfs state = {};
        ::statvfs(QFile::encodeName(m_folder).constData(), &state);
        return static_cast<qint64>(state.f_bavail * state.f_frsize / pageSize);
    }

    /// Fills it up but for so many pages.
    void fill(int pagesLeft) const
    {
        const int file = ::open(filler().constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        const qint64 pages = freePages() - pagesLeft;
        if (file >= 0 && pages > 0)
            m_filled = ::posix_fallocate(file, 0, pages * pageSize) == 0;
        ::close(file);
    }

    void makeRoom() const { ::unlink(filler().constData()); }
    bool isFilled() const { return m_filled; }

private:
    QByteArray filler() const { return QFile::encodeName(m_folder) + "/filler"; }

    QString m_folder;
    bool m_isThere = false;
    mutable std::atomic<bool> m_filled = false;
};

bool ownMounts()
{
    return ::unshare(CLONE_NEWNS) == 0 &&
           ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

void runCycle(World &world, const SmallDisk &disk, int cycle)
{
    const int pagesLeft = cycle % mostPagesLeft;
    Trap trap;
    trap.moment = Trap::Moment::BeforeByte;
    trap.isHere = [](const Place &place) { return place.stage == Stage::Command; };
    trap.act = [&disk, pagesLeft] { disk.fill(pagesLeft); };
    world.line.set(std::move(trap));
    world.queue({Shape::OnePart, Shape::TwoParts, Shape::ThreeParts, Shape::Unicode, Shape::Short});
    const bool met = eventually(
        [&] { return (disk.isFilled() && disk.freePages() == 0) || world.isDone(); }, fullLimit);
    if (!met)
        world.stuck(u"a full disk with %1 pages left"_s.arg(pagesLeft));
    if (world.sandbox.call("GetEngineStatus").arguments().value(0).toInt() != 1)
        world.stuck(u"an answer with %1 pages left"_s.arg(pagesLeft));
    disk.makeRoom();
    if (!eventually([&] { return world.isDone(); }, drainLimit))
        world.stuck(u"the end of the queue with %1 pages left"_s.arg(pagesLeft));
}

} // namespace

std::optional<Tally> runSmallDisk(const RunOptions &options)
{
    // Before the world and its threads are made, which are to see the same mounts.
    if (!ownMounts())
        return std::nullopt;
    World world(options);
    const SmallDisk disk(world.sandbox.path(u"data"_s));
    if (!disk.isThere())
        return std::nullopt;
    int cycles = 0;
    const int wanted = options.cycles > 0 ? options.cycles : cyclesOfItsOwn;
    const bool begun = world.begin();
    for (int cycle = 0; begun && cycle < wanted; ++cycle) {
        if (!options.isMine(cycle))
            continue;
        ++cycles;
        runCycle(world, disk, cycle);
    }
    return world.close(cycles);
}

} // namespace norvane
