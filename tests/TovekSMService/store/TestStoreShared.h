#pragma once

#include "TovekSMService/store/Store.h"
#include "TovekSMService/time/Clock.h"

#include "support/PostgresServer.h"

#include <memory>

namespace norvane {

/// The server of the test program.
PostgresServer &testServer();

/// The database that belongs to this store file: an empty one for a file that is new.
QString databaseOf(const QString &file);
/// How to connect to it.
QString connectionOf(const QString &file);

/// The store of one of several engines that share the database of `file`.
std::unique_ptr<Store> openStoreOf(const QString &engine, const QString &file, const Clock &clock,
                                   int sameSenderSeconds = 0);

} // namespace norvane
