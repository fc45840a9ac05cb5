#pragma once

#include "NorvaneSMS/app/mode/ModeSettings.h"
#include "NorvaneSMS/device/FolderBrowser.h"
#include "NorvaneSMS/import/ImportEnvironment.h"
#include "NorvaneSMS/queue/QueueAccess.h"
#include "contract/SMSManager.h"

#include <QDateTime>
#include <QLocale>

#include <functional>
#include <memory>

namespace norvane {

/// What the console needs from above and can't make itself.
struct ConsoleEnvironment
{
    /// A new engine object; fails with a NumberedFailure when none can be had.
    std::function<std::unique_ptr<SMSManager>()> createEngine;
    /// The last step of the console's end.
    std::function<void()> releaseGlobals;
    /// The wall clock: a moment without a zone, in Qt::UTC.
    std::function<QDateTime()> now;
    ModeSettings settings;
    QLocale locale;
    QueueAccess queueAccess = {};
    /// How the device dialog lets a folder be chosen.
    FolderBrowsing folders = {};
    ImportEnvironment importing = {};
};

} // namespace norvane
