#pragma once

#include "foundation/EngineWait.h"
#include "foundation/ui/WaitPointer.h"

#include <QWidget>

#include <memory>
#include <optional>

namespace norvane {

/// What an operator sees while the engine starts slowly, for example because the engine before it
/// is still finishing its last message: the wait pointer and, if the console has no window yet, a
/// small window that says so.
class EngineWaitNotice : public EngineWait
{
public:
    /// @param quietFor  how long a start may take before the notice is shown, in milliseconds
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
