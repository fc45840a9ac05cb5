#pragma once

#include "TovekSMService/admin/OutcomeReport.h"
#include "TovekSMService/log/EngineLog.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace norvane {

/// What an administrator asks of the engine's executable.
struct CommandLine
{
    bool status = false;
    bool json = false; ///< the status for a monitor
    bool queue = false;
    bool report = false;
    QString since; ///< a moment of the outcome log, empty for its beginning
    OutcomeReport::Format format = OutcomeReport::Format::Text;
    std::optional<QString> device;
    std::optional<QString> pin;
    std::optional<QString> backup;
    std::optional<EngineLog::Level> logLevel;

    /// Whether there is something to do other than to run the engine.
    bool isQuery() const { return status || queue || report || device || pin || backup; }

    /// Reads the arguments; ends the program for --help, --version and errors.
    static CommandLine parse(const QStringList &arguments);
};

} // namespace norvane
