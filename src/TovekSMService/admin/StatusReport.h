#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>

namespace norvane {

/// The engine's state for a monitor: an object of JSON with the same members whatever the state,
/// null where something isn't known, and the exit code for it.
struct StatusReport
{
    QByteArray json;
    int exitCode = 0;

    /// Of an engine that answered. @param state  as EngineState tells it
    static StatusReport ofRunning(const QVariantMap &state);
    /// Without an engine. @param state  of its store
    static StatusReport ofNone(const QVariantMap &state);
    /// Of an engine that doesn't answer, or a store that can't be read.
    static StatusReport fromFault(const QString &fault);
};

} // namespace norvane
