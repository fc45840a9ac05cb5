#pragma once

#include <QString>

namespace norvane {

/// Why the platform doesn't give what it was asked for.
struct PlatformFailure
{
    enum class Kind {
        HeldByAnother, ///< another program has it, exclusively or locked
        NotPermitted,
        Gone,
        Stuck, ///< a driver has not come back yet
        Other,
    };

    Kind kind = Kind::Other;
    QString text; ///< the system's message; may be empty

    /// @param error  as the system's functions leave it in `errno`
    static PlatformFailure ofErrno(int error);
};

} // namespace norvane
