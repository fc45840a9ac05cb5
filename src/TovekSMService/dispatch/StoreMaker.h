#pragma once

#include "TovekSMService/store/Store.h"

#include <memory>

namespace norvane {

class Clock;
class EngineFolder;
class EngineName;
struct EngineSettings;

/// The store that the settings ask for, with the queue in the engine's own file or in a database.
/// Nothing of it is open yet.
/// @param clock  must outlive the store
std::unique_ptr<Store> makeStore(const EngineSettings &settings, const EngineName &name,
                                 const EngineFolder &folder, const Clock &clock);

/// Opens the database of a store that is shared, and waits for it.
[[nodiscard]] StoreResult<> openShared(Store &store, const EngineSettings &settings);

} // namespace norvane
