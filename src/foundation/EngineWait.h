#pragma once

#include <QtGlobal>

namespace norvane {

/// Is notified of a slow start of the engine, on the thread that waits for it.
class EngineWait
{
public:
    EngineWait() = default;
    EngineWait(const EngineWait &) = delete;
    EngineWait &operator=(const EngineWait &) = delete;
    virtual ~EngineWait() = default;

    /// Called again and again while the start is waited for.
    /// @param milliseconds  since the wait began
    virtual void waiting(qint64 milliseconds) = 0;
    /// The engine is there, or has failed to come up.
    virtual void ended() = 0;
};

} // namespace norvane
