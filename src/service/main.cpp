#include "service/ipc/CommandLine.h"
#include "service/ipc/EngineHost.h"
#include "service/platform/EndSignals.h"
#include "service/platform/FileRights.h"

#include <QCoreApplication>

#include <cstdlib>

int main(int argc, char **argv)
{
    keepFilesToOwner();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("TovekSMService"));
    QCoreApplication::setApplicationVersion(QStringLiteral(NORVANE_VERSION));
    qSetMessagePattern(QStringLiteral("%{time yyyy-MM-dd HH:mm:ss.zzz} %{type} %{message}"));

    const CommandLine commandLine = CommandLine::parse(QCoreApplication::arguments());
    if (commandLine.isQuery())
        return carryOut(commandLine);

    EngineHost host;
    // A wish to end that comes while the engine is coming up is followed once it is.
    const EndSignals signals;
    QObject::connect(&signals, &EndSignals::endWanted, &host, &EngineHost::end);
    switch (host.start()) {
    case EngineHost::Start::Running:
        break;
    case EngineHost::Start::AlreadyThere:
        qInfo() << "another engine of this user is up";
        return EXIT_SUCCESS;
    case EngineHost::Start::Failed:
        return EXIT_FAILURE;
    }
    return QCoreApplication::exec();
}
