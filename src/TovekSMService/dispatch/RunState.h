#pragma once

namespace norvane {

/// What was asked of the engine: kept by the dispatcher, read by what it puts together.
struct RunState
{
    bool running = false;
    bool finishing = false;
};

} // namespace norvane
