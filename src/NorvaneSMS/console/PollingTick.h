#pragma once

#include "NorvaneSMS/queue/QueueAccess.h"
#include "contract/SMSManager.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace norvane {

class FileSystem;

/// A tick of the polling: hands the drop files of the queue folder to the engine. Events are
/// processed between the files.
class PollingTick
{
public:
    enum class Outcome {
        Done,
        Skipped, ///< another tick is going on, or has failed, or the program is about to end
        FolderMissing,
    };

    /// Whether a folder is the one that this console polls, which may change between two files.
    using IsPolled = std::function<bool(const QString &folder)>;

    /// @param engine the console's, which may be replaced between two files
    PollingTick(const std::unique_ptr<SMSManager> &engine, const QueueAccess &access,
                IsPolled isPolled);

    /// @param folder        as it is polled now
    /// @param messageFooter put behind each message
    /// @throws NumberedFailure for a file that can't be taken away. All later ticks are skipped
    ///         then.
    Outcome run(const FileSystem &files, QString folder, const QString &messageFooter);

private:
    void importFolder(const QString &folder, const QString &messageFooter);
    void importFiles(const QStringList &files, const QString &folder, const QString &messageFooter);

    const std::unique_ptr<SMSManager> &m_engine;
    QueueAccess m_access;
    IsPolled m_isPolled;
    bool mbImporting = false; ///< stays as a tick that fails leaves it
};

} // namespace norvane
