#pragma once

#include <QString>

#include <optional>

class QDateTime;

namespace norvane {

/// A store that can't be read any more: it is kept beside the new one, and told of until a console
/// has heard it, whatever ends the engine meanwhile.
namespace DamagedStore {

/// Gives the store's file, with its log, the name "queue.sqlite.damaged-yyyyMMddTHHmmss".
/// @param now     the wall clock
/// @param reason  what is wrong with it
/// @return whether the name is free for a new store now
bool setAside(const QString &storeFile, const QDateTime &now, const QString &reason);

/// Finishes a setAside() that was cut short. A store must not be opened without its log: what was
/// sent of late would wait in it again.
void finishMove(const QString &storeFile);

/// What no console has heard yet.
std::optional<QString> unacknowledged(const QString &folder);
void markAcknowledged(const QString &folder);

} // namespace DamagedStore

} // namespace norvane
