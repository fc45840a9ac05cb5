#pragma once

namespace norvane {

/// Tables of messages that grow with time: they have an index of their moments, and one of their
/// texts.
enum class HistoryTable { Outcomes, Received };

} // namespace norvane
