#include "NorvaneSMS/console/ConsoleFixture.h"

#include "NorvaneSMS/console/TerminalView.h"
#include "foundation/CTimerMM.h"
#include "foundation/Globals.h"
#include "foundation/ui/CaptionedFrame.h"

#include <QLabel>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

ConsoleFixture::ConsoleFixture()
{
    goStartUpData = std::make_unique<clsStartUpData>();
    goLocalize = std::make_unique<cls_Localize>();
    EXPECT_TRUE(
        goLocalize->Init(QStringLiteral(NORVANE_LANGUAGE_DIR "/NorvaneSMS_ESN.XML"), u"ESN"_s));
}

ConsoleFixture::~ConsoleFixture()
{
    if (console)
        console->close();
    console.reset();
    // Timers that were replaced while they ran.
    const MTimerMM::Registry running =
        MTimerMM::mcolTimers ? *MTimerMM::mcolTimers : MTimerMM::Registry();
    for (const MTimerMM::CObjData &entry : running)
        entry.Owner->setEnabled(false);
    goLocalize.reset();
    goStartUpData.reset();
}

void ConsoleFixture::storeMode(bool server)
{
    settings.values.insert(u"Norvane/SMS/ServerMode"_s, server ? u"True"_s : u"False"_s);
}

void ConsoleFixture::storeQueueFolder(const QString &folder)
{
    settings.values.insert(u"Norvane/SMS/QueueFolder"_s, folder);
}

ConsoleEnvironment ConsoleFixture::environment()
{
    return {[this] {
                auto made = std::make_unique<RecordingEngine>(script);
                m_engines.append(made.get());
                QObject::connect(made.get(), &QObject::destroyed,
                                 [this, gone = made.get()] { m_engines.removeAll(gone); });
                return made;
            },
            [this] {
                script.calls.append(u"ReleaseGlobals"_s);
                if (inReleaseGlobals)
                    inReleaseGlobals();
            },
            [this] { return now; },
            ModeSettings(settings, u"/program"_s),
            locale,
            {&streams, &waiting},
            FolderBrowsing{&folders, [] { return u"/documents/Norvane"_s; }},
            importing};
}

void ConsoleFixture::make()
{
    console = std::make_unique<frmSMSClient>(environment());
}

void ConsoleFixture::load()
{
    make();
    console->Form_Load();
}

void ConsoleFixture::loadAsServer()
{
    storeMode(true);
    load();
    script.calls.clear();
}

void ConsoleFixture::loadAsClient()
{
    storeMode(false);
    load();
    script.calls.clear();
}

void ConsoleFixture::show()
{
    console->show();
    ASSERT_TRUE(console->isVisible());
    QCoreApplication::processEvents();
}

QString ConsoleFixture::terminal() const
{
    return control<TerminalView>("txtTerm")->text();
}

QString ConsoleFixture::text(const char *label) const
{
    return control<QLabel>(label)->text();
}

QString ConsoleFixture::caption(const char *frame) const
{
    return control<CaptionedFrame>(frame)->caption();
}

QStringList ConsoleFixture::takeCalls()
{
    return std::exchange(script.calls, {});
}

} // namespace norvane
