#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

#include <chrono>

namespace norvane {

namespace {

constexpr std::chrono::milliseconds betweenLooks{10};

} // namespace

bool waitUntil(const std::function<bool()> &condition)
{
    const QDeadlineTimer deadline(hangMs);
    QTimer looks;
    looks.start(betweenLooks);
    while (!condition()) {
        if (deadline.hasExpired())
            return condition();
        // Sleeps in between: what is waited for may need the processor.
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

} // namespace norvane
