#include "NorvaneHistory/BusHistorySource.h"
#include "NorvaneHistory/HistoryLanguage.h"
#include "NorvaneHistory/HistoryWindow.h"
#include "contract/EngineStartLimits.h"
#include "foundation/EngineLauncher.h"
#include "foundation/Globals.h"
#include "foundation/PlatformHelpers.h"
#include "foundation/platform/LinuxPlatform.h"
#include "foundation/ui/Application.h"
#include "foundation/ui/EngineWaitNotice.h"
#include "foundation/ui/FormSetUp.h"
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

} // namespace

} // namespace norvane

using namespace norvane;

int main(int argc, char **argv)
{
    // The program has no command line, and the toolkit's own options are none of its operators'.
    int nameAlone = qMin(argc, 1);
    Application application(nameAlone, argv);
    QCoreApplication::setApplicationName(u"NorvaneHistory"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(NORVANE_VERSION));
    QGuiApplication::setDesktopFileName(u"com.tovek.norvanehistory"_s);
    applyLook();

    WidgetMessageBoxes boxes;
    installMessageBoxes(&boxes);
    const LinuxPlatform platform;
    const PlatformHelpers helpers(platform);
    if (!HistoryLanguage::load(helpers))
        return EXIT_FAILURE;
    QTranslator translator;
    if (translator.load(u"qtbase_"_s + HistoryLanguage::toolkitName(goLocalize->LanguageID()),
                        QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&translator);

    EngineWaitNotice notice(quietStart);
    ProcessEngineLauncher launcher(QDBusConnection::sessionBus(),
                                   helpers.programFolder() + u"/TovekSMService"_s,
                                   Bus::engineStartLimit, &notice);
    BusHistorySource source(QDBusConnection::sessionBus(), launcher);
    HistoryWindow window(source, OutputChoices::ofToolkit());
    CenterForm(&window);
    window.show();
    // The window is there first: the engine's start may take a while.
    QMetaObject::invokeMethod(&source, &HistorySource::connectToEngine, Qt::QueuedConnection);
    return Application::exec();
}
