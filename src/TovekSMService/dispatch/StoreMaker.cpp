#include "TovekSMService/dispatch/StoreMaker.h"

#include "TovekSMService/dispatch/EngineSettings.h"
#include "TovekSMService/store/EngineFolder.h"
#include "TovekSMService/store/EngineName.h"
#include "TovekSMService/store/PostgresDatabase.h"
#include "TovekSMService/time/Clock.h"

#include <QFileInfo>
#include <QSysInfo>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// By which the others know the engine, where the settings give no name.
QString defaultName(const QString &host, const EngineName &name, const EngineFolder &folder)
{
    const QString engine = host + u':' + QFileInfo(folder.path()).owner();
    return name.isNamed() ? engine + u':' + name.text() : engine;
}

} // namespace

std::unique_ptr<Store> makeStore(const EngineSettings &settings, const EngineName &name,
                                 const EngineFolder &folder, const Clock &clock)
{
    const auto now = [&clock](qint64 seconds) { return clock.wallClockText(seconds); };
    if (settings.queueDatabase.isEmpty())
        return std::make_unique<Store>(folder.storeFile(), now);
    const QString host = QSysInfo::machineHostName();
    const SharedStore shared = {
        settings.queueDatabase,
        {settings.queueName.isEmpty() ? defaultName(host, name, folder) : settings.queueName,
         host + u':' + folder.path(),
         QString::fromLatin1(QSysInfo::machineUniqueId()) + u':' + folder.path()},
        settings.sameSender,
        now,
        settings.queueRefusal};
    return std::make_unique<Store>(folder.storeFile(), shared, clock.time());
}

StoreResult<> openShared(Store &store, const EngineSettings &settings)
{
    if (!store.isShared())
        return {};
    if (!settings.queueRefusal.isEmpty())
        return failed(StoreFailure(StoreFailure::Kind::Other, settings.queueRefusal));
    return store.sharedDatabase()->open();
}

} // namespace norvane
