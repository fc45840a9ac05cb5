#pragma once

#include "NorvaneSMS/engine/EngineWait.h"
#include "foundation/ui/WaitPointer.h"

#include <QWidget>

#include <memory>
#include <optional>

namespace norvane {

/// What an operator sees of a start of the engine that takes its time, as behind an engine that is
/// still finishing its last message: the wait pointer, and, where the console has no window yet, a
/// small one with a word about it.
class EngineWaitNotice : public EngineWait
{
public:
    /// @param quietFor  how long a start may take until it is worth a word, in milliseconds
    explicit EngineWaitNotice(int quietFor) : m_quietFor(quietFor) {}

    void waiting(qint64 milliseconds) override;
    void ended() override;

private:
    void show();

    const int m_quietFor;
    std::optional<WaitPointer> m_pointer;
    std::unique_ptr<QWidget> m_window;
};

} // namespace norvane
