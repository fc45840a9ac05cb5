#pragma once

#include "NorvaneSMS/console/ConsoleEnvironment.h"
#include "foundation/PlatformHelpers.h"

#include <QString>

#include <memory>

namespace norvane {

class frmSMSClient;

/// The application module: the program's entry, and the only place that creates and releases what
/// the whole application shares.
namespace modSMSClient {

/// Fills the environment snapshot and opens the language file.
/// @param language  code of the language; empty for that of the environment snapshot
/// @return false if there is no usable language file, which a message box has shown
bool LoadLocalization(PlatformHelpers &helpers, QString language);

/// Everything from the program's entry to the console on the screen.
/// @return the console, or null when there is no usable language file
/// @throws NumberedFailure whatever else goes wrong
std::unique_ptr<frmSMSClient> Main(PlatformHelpers &helpers, ConsoleEnvironment environment);

/// Releases the environment snapshot and the language object.
void ReleaseGlobals();

} // namespace modSMSClient

} // namespace norvane
