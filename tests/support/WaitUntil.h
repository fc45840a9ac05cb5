#pragma once

#include <functional>

namespace norvane {

/// Milliseconds that only a hang takes, on the slowest machine: the limit of whoever waits for
/// another program. Shorter than a test's own limit, so that the test tells where it hung.
constexpr int hangMs = 20 * 60'000;

/// Runs the event loop until `condition` holds: for what happens in other programs and threads,
/// whose time no test can turn. It is looked at after each event and every few milliseconds.
/// @return whether it holds; false is a hang
bool waitUntil(const std::function<bool()> &condition);

} // namespace norvane
