#pragma once

#include "TovekSMService/store/Store.h"

#include <QVariantMap>

namespace norvane {

class Dispatcher;

/// The engine's state for a monitor, as names and values that a bus can carry. What isn't known is
/// left out.
///
/// - status: 1 running, 0 stopped; queue: messages waiting; oldestDue: the delivery date of the
///   first, as text
/// - parameter, manufacturer, model, imei, network: the device; signal, battery: percent
/// - errorCode, errorText, errorAt: the last warning; failureCode, failureAt: the last failed
///   message
/// - delivered, undelivered: messages of the outcome log of which the network says that they are on
///   the phone, or that they won't be or that it doesn't know; unread: received messages
/// - trouble: what keeps the engine from its work, as words
/// - listeners: consoles that the events are raised to; of an engine on the bus
namespace EngineState {

/// The last warning, and when it was raised ("yyyy-MM-ddTHH:mm:ss").
struct LastError
{
    qint32 code = 0;
    QString text;
    QString at;
};

QVariantMap ofRunning(const Store &store, const Dispatcher &dispatcher,
                      const std::optional<LastError> &lastError);

/// What a store alone tells, with no engine.
[[nodiscard]] StoreResult<QVariantMap> ofStore(const Store &store);

} // namespace EngineState

} // namespace norvane
