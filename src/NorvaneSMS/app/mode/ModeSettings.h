#pragma once

#include "foundation/StoredSettings.h"

#include <QString>

namespace norvane {

/// The two settings that the console stores: what this workstation is, and the queue folder.
class ModeSettings
{
public:
    /// @param settings       the per-user store; must outlive this object
    /// @param programFolder  the queue folder of a console that was never configured
    ModeSettings(StoredSettings &settings, const QString &programFolder);

    /// "ServerMode", true when absent.
    /// @throws NumberedFailure 13 when the stored text is no Boolean
    bool serverMode() const;
    void saveServerMode(bool server);

    /// Rewrites a "ServerMode" that is no Boolean as "True", without a message.
    void repairServerMode();

    /// "QueueFolder", the program's own folder when absent; not checked in any way.
    QString queueFolder() const;
    void saveQueueFolder(const QString &folder);

private:
    StoredSettings &m_settings;
    QString m_programFolder;
};

} // namespace norvane
