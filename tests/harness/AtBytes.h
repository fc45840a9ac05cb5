#pragma once

#include <QByteArray>

namespace norvane {

inline constexpr char lineEnd = '\r';
inline constexpr char endOfPayload = 0x1A;
inline constexpr char leavePrompt = 0x1B;

/// Whether a line of the device ends the answer to a command.
inline bool isFinalResult(const QByteArray &line)
{
    return line == "OK" || line == "ERROR" || line.startsWith("+CMS ERROR:") ||
           line.startsWith("+CME ERROR:");
}

} // namespace norvane
