#pragma once

#include "TovekSMService/store/StoreFailure.h"

#include <QSqlDatabase>

namespace norvane {

namespace StoreSchema {

/// The version that this program writes, kept in the database's user_version.
inline constexpr int latestVersion = 6;

/// To be called before anything that writes to the file. Fails with TooNew for a database of a
/// later version.
[[nodiscard]] StoreResult<> refuseLater(const QSqlDatabase &database);

/// For a database that can't be brought to this version: fails for one of any other version.
[[nodiscard]] StoreResult<> refuseOther(const QSqlDatabase &database);

/// Brings a database of an earlier version, or an empty one, to this version, each step in a
/// transaction of its own.
[[nodiscard]] StoreResult<> migrate(const QSqlDatabase &database);

} // namespace StoreSchema

} // namespace norvane
