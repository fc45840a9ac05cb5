#pragma once

#include "TovekSMService/admin/AdminFailure.h"
#include "TovekSMService/store/EngineName.h"
#include "common/Result.h"
#include "contract/BusTypes.h"

#include <QDBusMessage>
#include <QVariantMap>

namespace norvane {

/// The engine of a name that runs, over the bus. It is never started by a call.
class RunningEngine
{
public:
    explicit RunningEngine(const EngineName &name) : m_busName(name.busName()) {}

    bool isThere() const;

    [[nodiscard]] Result<QDBusMessage, AdminFailure> call(const char *operation,
                                                          const QVariantList &arguments = {}) const
    {
        return callOn(Bus::interfaceName, operation, arguments);
    }
    /// An operation of the second interface.
    [[nodiscard]] Result<QDBusMessage, AdminFailure>
    callMessages(const char *operation, const QVariantList &arguments = {}) const
    {
        return callOn(Bus::messagesInterfaceName, operation, arguments);
    }

    template <typename Value>
    [[nodiscard]] Result<Value, AdminFailure> ask(const char *operation) const
    {
        return call(operation).map([](const QDBusMessage &answer) {
            return qdbus_cast<Value>(answer.arguments().value(0));
        });
    }

    [[nodiscard]] Result<QList<QueueRow>, AdminFailure> queue() const;
    [[nodiscard]] Result<QVariantMap, AdminFailure> state() const
    {
        return ask<QVariantMap>("GetState");
    }

private:
    Result<QDBusMessage, AdminFailure> callOn(const char *interface, const char *operation,
                                              const QVariantList &arguments) const;

    QString m_busName;
};

} // namespace norvane
