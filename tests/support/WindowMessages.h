#pragma once

#include "foundation/platform/MessageWindows.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace norvane {

/// Runs the event loop until every message has been taken that was sent to a hidden window by now.
inline void processWindowMessages()
{
    static int received = 0;
    static int sent = 0;
    static const WindowHandle last = [] {
        int error = 0;
        const WindowHandle window = MessageWindows::create(error);
        MessageWindows::setProcedure(
            window, [](WindowHandle, quint32, quint64, qint64) -> qint64 { return ++received; });
        return window;
    }();
    const int mine = ++sent;
    MessageWindows::post(last, 0, 0, 0);
    EXPECT_TRUE(waitUntil([mine] { return received >= mine; }));
}

} // namespace norvane
