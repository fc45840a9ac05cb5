#pragma once

namespace norvane {

/// Whether standard error leads to the system's journal, which keeps the time itself and takes a
/// line's level from a prefix.
bool standardErrorIsJournal();

} // namespace norvane
