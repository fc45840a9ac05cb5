#pragma once

#include <QString>

namespace norvane {

/// Why something that an administrator asked for was not done.
struct AdminFailure
{
    QString text; ///< as it is printed
};

/// Prints the failure on standard error.
/// @return the program's exit code
int report(const AdminFailure &failure);

} // namespace norvane
