#pragma once

#include <QSqlDatabase>

namespace norvane {

namespace StoreSchema {

/// The version that this program writes, kept in the database's user_version.
inline constexpr int latestVersion = 2;

/// To be called before anything that writes to the file.
/// @throws StoreFailure; TooNew for a database of a later version
void refuseLater(const QSqlDatabase &database);

/// For a database that can't be brought to this version.
/// @throws StoreFailure for a database of any other version
void refuseOther(const QSqlDatabase &database);

/// Brings a database of an earlier version, or an empty one, to this version, each step in a
/// transaction of its own.
/// @throws StoreFailure
void migrate(const QSqlDatabase &database);

} // namespace StoreSchema

} // namespace norvane
