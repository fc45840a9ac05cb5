#pragma once

#include "contract/QueueRecordSet.h"

#include <QDBusMessage>
#include <QVariantMap>

#include <stdexcept>

namespace norvane {

/// A call that the running engine didn't answer.
class CallFailed : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The engine that runs, over the bus. It is never started by a call; a call that fails throws
/// CallFailed.
class RunningEngine
{
public:
    static bool isThere();

    QDBusMessage call(const char *operation, const QVariantList &arguments = {}) const;

    template <typename Value>
    Value ask(const char *operation) const
    {
        return qdbus_cast<Value>(call(operation).arguments().value(0));
    }

    QList<QueueRow> queue() const;
    QVariantMap state() const { return ask<QVariantMap>("GetState"); }
};

} // namespace norvane
