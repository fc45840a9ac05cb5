#pragma once

#include "TovekSMService/store/Store.h"
#include "TovekSMService/time/Clock.h"

#include <QString>

#include <memory>

namespace norvane {

/// A store that is open, in the kind of place that the test program is linked for.
/// @param file   of what is the engine's own; a store that is opened again by the same name holds
///               what it held
/// @param clock  must outlive the store
std::unique_ptr<Store> openTestStore(const QString &file, const Clock &clock);
std::unique_ptr<Store> openTestStore(const QString &file);

} // namespace norvane
