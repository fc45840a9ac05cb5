#pragma once

#include "TovekSMService/store/StoreFailure.h"

namespace norvane {

class PostgresConnection;

namespace PostgresSchema {

/// The version that this program writes, kept in the table schema_version.
inline constexpr int latestVersion = 3;

/// Brings the database to this version, one program at a time. Fails with TooNew for a later one.
[[nodiscard]] StoreResult<> migrate(PostgresConnection &connection);

} // namespace PostgresSchema

} // namespace norvane
