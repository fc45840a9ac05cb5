#pragma once

#include <QString>

namespace norvane {

/// The moment at which a test's clock stands, as the store has it.
inline QString noon()
{
    return QStringLiteral("2024-05-01T12:00:00");
}

} // namespace norvane
