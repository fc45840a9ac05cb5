#pragma once

#include <atomic>
#include <cstdint>

namespace norvane {

/// What an engine with the shim of FullDisk.cpp shares with the harness: a file of this content,
/// mapped by both.
struct DiskControl
{
    /// How many more writes find room; below 0: all of them.
    std::atomic<std::int64_t> room = -1;
    std::atomic<std::int64_t> written = 0;
    std::atomic<std::int64_t> refused = 0;
    /// The first write without room puts down half of its bytes, as a disk does that fills up in
    /// the middle of it.
    std::atomic<bool> half = false;
};

inline constexpr char diskControlVariable[] = "NORVANE_DISK_CONTROL";
inline constexpr char diskFolderVariable[] = "NORVANE_DISK_FOLDER";

} // namespace norvane
