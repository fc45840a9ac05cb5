#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace norvane {

/// Which messages became different, as one engine tells the others: ids and ranges of ids,
/// "7,9-12", or "*" where that would be too long.
namespace QueueNews {

/// What a notification of the server can carry, in bytes.
inline constexpr int maxBytes = 7900;

QString of(QList<qint64> ids);
QString ofAll();
/// What is no news of messages in the queue: of deliveries, received messages or opt-outs.
QString ofHistory();

/// @return the ids; nothing if any message may be different, and for what can't be read
std::optional<QList<qint64>> idsOf(const QString &news);

} // namespace QueueNews

} // namespace norvane
