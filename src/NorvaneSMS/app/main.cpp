#include "NorvaneSMS/app/modSMSClient.h"
#include "NorvaneSMS/console/frmSMSClient.h"
#include "NorvaneSMS/device/DocumentsFolder.h"
#include "NorvaneSMS/device/WidgetFolderBrowser.h"
#include "NorvaneSMS/engine/SMSManagerProxy.h"
#include "NorvaneSMS/import/readers/HelperConnection.h"
#include "contract/EngineStartLimits.h"
#include "foundation/StoredSettings.h"
#include "foundation/platform/LinuxPlatform.h"
#include "foundation/ui/Application.h"
#include "foundation/ui/EngineWaitNotice.h"
#include "foundation/ui/FatalReport.h"
#include "foundation/ui/Look.h"
#include "foundation/ui/WidgetMessageBoxes.h"

#include <QDBusConnection>
#include <QLibraryInfo>
#include <QTranslator>

#include <cstdlib>

using namespace Qt::StringLiterals;

namespace norvane {

namespace {

constexpr int quietStart = 1500; // ms until a slow start of the engine is shown

QDateTime wallClock()
{
    const QDateTime now = QDateTime::currentDateTime();
    const QTime time = now.time();
    return {now.date(), QTime(time.hour(), time.minute(), time.second()), Qt::UTC};
}

/// The toolkit's own words, on the buttons of message boxes, in the console's language.
void translateToolkit(QTranslator &translator)
{
    if (translator.load(QLocale(QLocale::Spanish), u"qtbase"_s, u"_"_s,
                        QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&translator);
}

ConsoleEnvironment makeEnvironment(StoredSettings &settings, EngineWait &notice,
                                   const QString &programFolder, const FolderBrowsing &folders)
{
    return {[launcher = std::shared_ptr<EngineLauncher>(), &notice, programFolder]() mutable {
                if (!launcher)
                    launcher = std::make_shared<ProcessEngineLauncher>(
                        QDBusConnection::sessionBus(), programFolder + u"/TovekSMService"_s,
                        Bus::engineStartLimit, &notice);
                return std::make_unique<SMSManagerProxy>(*launcher);
            },
            modSMSClient::ReleaseGlobals,
            wallClock,
            ModeSettings(settings, programFolder),
            QLocale::system(),
            QueueAccess{},
            folders,
            {[programFolder] {
                 return std::make_unique<HelperConnection>(programFolder +
                                                           u"/NorvaneSheetReader"_s);
             },
             programFolder}};
}

} // namespace

} // namespace norvane

using namespace norvane;

int main(int argc, char **argv)
{
    // The program has no command line, and the toolkit's own options are none of its operators'.
    int nameAlone = qMin(argc, 1);
    Application application(nameAlone, argv);
    QCoreApplication::setApplicationName(u"NorvaneSMS"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(NORVANE_VERSION));
    applyLook();
    QTranslator translator;
    translateToolkit(translator);

    WidgetMessageBoxes boxes;
    installMessageBoxes(&boxes);
    const LinuxPlatform platform;
    PlatformHelpers helpers(platform);
    IniStoredSettings settings;

    WidgetFolderBrowser folderBrowser;
    const FolderBrowsing folders{&folderBrowser, [&platform] {
                                     FileSystem files;
                                     return GetDocumentsFolder(platform, files);
                                 }};

    EngineWaitNotice notice(quietStart);
    std::unique_ptr<frmSMSClient> console;
    try {
        console = modSMSClient::Main(
            helpers, makeEnvironment(settings, notice, helpers.programFolder(), folders));
    } catch (...) {
        FatalReport::report(std::current_exception());
    }
    if (!console)
        return EXIT_SUCCESS;
    return Application::exec();
}
