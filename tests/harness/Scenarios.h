#pragma once

#include "harness/World.h"

#include <optional>

namespace norvane {

/// Ends the engine as a crash does, at every step of handing a part to the device, and starts it
/// again.
Tally runKill(const RunOptions &options);

/// Cuts the line at every byte of handing a message to the device; the engine lives on.
Tally runCut(const RunOptions &options);

/// Ends the engine, or cuts the line, while messages and status reports come in.
Tally runMail(const RunOptions &options);

/// The disk is full from each write on that sending needs, and has room again afterwards.
Tally runFullDisk(const RunOptions &options);

/// Ends the engine, the modem manager or the device while the manager is sending.
/// @return nothing where there is no modem manager
std::optional<Tally> runManaged(const RunOptions &options);

/// Ends, stops and cuts off engines that share a queue, and their database.
Tally runEngines(const RunOptions &options);

/// A small disk that is really full.
/// @return nothing where this process may not mount one
std::optional<Tally> runSmallDisk(const RunOptions &options);

/// Noise, talk that nobody asked for, slow and lost answers, refusals, and a device that goes.
Tally runWeather(const RunOptions &options);

} // namespace norvane
