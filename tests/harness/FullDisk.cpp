// Loaded into an engine before the system's library: a disk that is full from a chosen write on,
// for the files of one folder.

#include "harness/DiskControl.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string_view>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

using namespace norvane;

namespace {

DiskControl *control()
{
    static DiskControl *const shared = [] {
        const char *const path = std::getenv(diskControlVariable);
        const int file = path != nullptr ? ::open(path, O_RDWR | O_CLOEXEC) : -1;
        if (file < 0)
            return static_cast<DiskControl *>(nullptr);
        void *const memory =
            ::mmap(nullptr, sizeof(DiskControl), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        ::close(file);
        return memory == MAP_FAILED ? nullptr : static_cast<DiskControl *>(memory);
    }();
    return shared;
}

bool isOnDisk(int file)
{
    static const char *const folder = std::getenv(diskFolderVariable);
    if (folder == nullptr || control() == nullptr)
        return false;
    std::array<char, 64> link{};
    std::array<char, 4096> path{};
    std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", file);
    const ssize_t length = ::readlink(link.data(), path.data(), path.size());
    return length > 0 &&
           std::string_view(path.data(), static_cast<std::size_t>(length)).starts_with(folder);
}

enum class Room { All, Half, None };

Room takeRoom(int file)
{
    if (!isOnDisk(file))
        return Room::All;
    DiskControl &disk = *control();
    std::int64_t room = disk.room;
    while (room > 0 && !disk.room.compare_exchange_weak(room, room - 1)) {
    }
    if (room != 0) {
        ++disk.written;
        return Room::All;
    }
    const bool first = disk.refused++ == 0;
    return first && disk.half ? Room::Half : Room::None;
}

template <typename Function>
Function next(const char *name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

ssize_t noRoom()
{
    errno = ENOSPC;
    return -1;
}

template <typename Write>
ssize_t writeWithin(int file, size_t size, Write write)
{
    const Room room = takeRoom(file);
    if (room == Room::None || (room == Room::Half && size < 2))
        return noRoom();
    return write(room == Room::Half ? size / 2 : size);
}

} // namespace

extern "C" {

ssize_t write(int file, const void *bytes, size_t size)
{
    static const auto real = next<ssize_t (*)(int, const void *, size_t)>("write");
    return writeWithin(file, size, [&](size_t fitting) { return real(file, bytes, fitting); });
}

ssize_t pwrite(int file, const void *bytes, size_t size, off_t at)
{
    static const auto real = next<ssize_t (*)(int, const void *, size_t, off_t)>("pwrite");
    return writeWithin(file, size, [&](size_t fitting) { return real(file, bytes, fitting, at); });
}

ssize_t pwrite64(int file, const void *bytes, size_t size, off64_t at)
{
    static const auto real = next<ssize_t (*)(int, const void *, size_t, off64_t)>("pwrite64");
    return writeWithin(file, size, [&](size_t fitting) { return real(file, bytes, fitting, at); });
}

int fallocate64(int file, int mode, off64_t at, off64_t size)
{
    static const auto real = next<int (*)(int, int, off64_t, off64_t)>("fallocate64");
    return takeRoom(file) == Room::All ? real(file, mode, at, size) : static_cast<int>(noRoom());
}

int ftruncate64(int file, off64_t size)
{
    static const auto real = next<int (*)(int, off64_t)>("ftruncate64");
    const off64_t now = ::lseek64(file, 0, SEEK_END);
    if (size > now && takeRoom(file) != Room::All)
        return static_cast<int>(noRoom());
    return real(file, size);
}

} // extern "C"
