#include "TovekSMService/admin/AdminFailure.h"
#include "TovekSMService/admin/CommandLine.h"
#include "TovekSMService/admin/ExitCodes.h"
#include "TovekSMService/admin/Queries.h"
#include "TovekSMService/host/EngineHost.h"
#include "TovekSMService/host/LogLevelSetting.h"
#include "TovekSMService/log/Categories.h"
#include "TovekSMService/modem/at/QtSerialPortLine.h"
#include "TovekSMService/platform/EndSignals.h"
#include "TovekSMService/platform/FileRights.h"
#include "TovekSMService/platform/LeftThreads.h"
#include "TovekSMService/store/EngineFolder.h"
#include "TovekSMService/time/Clock.h"

#include <QCoreApplication>

#include <cstdlib>
#include <memory>

using namespace Qt::StringLiterals;

namespace norvane {

namespace {

constexpr char noGlib[] = "QT_NO_GLIB";

/// Is the engine until it is to end.
/// @return the program's exit code
int serve(const CommandLine &commandLine)
{
    if (!commandLine.logLevel)
        EngineLog::setLevel(
            LogLevelSetting::load(commandLine.name).value_or(EngineLog::Level::Info));

    const SystemClock clock;
    EngineHost host(commandLine.name, clock, std::make_unique<QtSerialPortLine>());
    // A wish to end that comes while the engine is coming up is followed once it is.
    const EndSignals signals;
    QObject::connect(&signals, &EndSignals::endWanted, &host, &EngineHost::end);
    switch (host.start()) {
    case EngineHost::Start::Running:
        break;
    case EngineHost::Start::AlreadyThere:
        qCInfo(logHost) << "another engine of this user is up";
        return ExitCode::done;
    case EngineHost::Start::StoreTooNew:
        return ExitCode::storeTooNew;
    case EngineHost::Start::Failed:
        return ExitCode::failed;
    }
    qCInfo(logHost).noquote() << "up, version" << QCoreApplication::applicationVersion();
    const int result = QCoreApplication::exec();
    qCInfo(logHost) << "ends";
    return result;
}

} // namespace

} // namespace norvane

using namespace norvane;

int main(int argc, char **argv)
{
    keepFilesToOwner();
    // The device's line is waited for by poll() alone: GLib's loop costs two more calls of the
    // kernel with each write. What the engine starts, and its other threads, may have either.
    const bool isOurs = !qEnvironmentVariableIsSet(noGlib);
    if (isOurs)
        qputenv(noGlib, "1");
    QCoreApplication application(argc, argv);
    if (isOurs)
        qunsetenv(noGlib);
    QCoreApplication::setApplicationName(u"TovekSMService"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(NORVANE_VERSION));
    const auto commandLine = CommandLine::parse(QCoreApplication::arguments());
    if (!commandLine)
        return report(commandLine.error());
    EngineLog::install(commandLine->logLevel.value_or(EngineLog::Level::Info),
                       EngineFolder(commandLine->name).logFile());
    if (commandLine->isQuery)
        return carryOut(*commandLine);
    const int result = serve(*commandLine);
    // What a thread that was left behind works with isn't taken apart under it.
    if (LeftThreads::areAny())
        std::_Exit(result);
    return result;
}
