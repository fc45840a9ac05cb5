#pragma once

#include "TovekSMService/admin/AdminFailure.h"
#include "TovekSMService/admin/ReportLines.h"
#include "TovekSMService/log/EngineLog.h"
#include "TovekSMService/store/EngineName.h"
#include "common/Result.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace norvane {

/// What an administrator asks of the engine's executable.
struct CommandLine
{
    /// What is to be done with the list of those who want no campaigns.
    enum class OptOutTask { List, Add, Remove };
    /// Where the waiting messages are to be moved.
    enum class QueueTarget { Database, File };

    EngineName name;      ///< the engine that everything else is for
    bool isQuery = false; ///< there is something to do other than to run the engine
    bool status = false;
    bool json = false; ///< the status for a monitor
    bool queue = false;
    bool report = false;
    bool inbox = false;
    QString since; ///< a moment of what is listed, empty for its beginning
    ReportLines::Format format = ReportLines::Format::Text;
    std::optional<OptOutTask> optOut;
    QString optOutPhone; ///< that is added or removed
    std::optional<QString> device;
    std::optional<QString> pin;
    std::optional<QString> backup;
    bool engines = false;          ///< list those that share the queue
    std::optional<QString> retire; ///< the name of one that won't come back
    std::optional<QueueTarget> moveQueue;
    std::optional<EngineLog::Level> logLevel;

    /// Reads the arguments; ends the program for --help and --version.
    /// @param arguments  with the program's name first
    [[nodiscard]] static Result<CommandLine, AdminFailure> parse(const QStringList &arguments);
};

} // namespace norvane
