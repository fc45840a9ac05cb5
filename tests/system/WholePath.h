#pragma once

#include "NorvaneSMS/app/modSMSClient.h"
#include "NorvaneSMS/console/TerminalView.h"
#include "NorvaneSMS/console/frmSMSClient.h"
#include "NorvaneSMS/import/readers/HelperConnection.h"
#include "foundation/Globals.h"
#include "foundation/StoredSettings.h"
#include "foundation/ui/MessageEdit.h"
#include "support/RecordingMessageBoxes.h"
#include "system/EngineProcess.h"

#include <QDateEdit>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>

namespace norvane {

using namespace Qt::StringLiterals;

/// The console's window in this process, over the real engine process and a simulated device.
class WholePath : public EngineProcess
{
protected:
    WholePath()
    {
        // Each test begins with a console that was never configured.
        QFile::remove(qEnvironmentVariable("XDG_CONFIG_HOME") + u"/Norvane/settings.ini"_s);
    }
    void SetUp() override
    {
        plugIn();
        openConsole();
    }
    ~WholePath() override { closeConsole(); }

    void openConsole()
    {
        goLocalize = std::make_unique<cls_Localize>();
        ASSERT_TRUE(
            goLocalize->Init(QStringLiteral(NORVANE_LANGUAGE_DIR "/NorvaneSMS_ESN.XML"), u"ESN"_s));
        console = std::make_unique<frmSMSClient>(
            ConsoleEnvironment{[this] { return makeProxy(); },
                               modSMSClient::ReleaseGlobals,
                               [] {
                                   const QDateTime now = QDateTime::currentDateTime();
                                   return QDateTime(now.date(), now.time(), Qt::UTC);
                               },
                               ModeSettings(m_settings, queueFolder.path()),
                               QLocale::c(),
                               queueAccess,
                               {},
                               importing});
        console->Form_Load();
        console->show();
    }
    void closeConsole()
    {
        if (console)
            console->close();
        console.reset();
    }

    template <typename Control>
    Control *control(const char *name) const
    {
        return console->findChild<Control *>(QLatin1String(name));
    }
    QString label(const char *name) const { return control<QLabel>(name)->text(); }

    void send(const QString &phone, const QString &message)
    {
        control<QLineEdit>("txtPhone")->setText(phone);
        control<MessageEdit>("txtMessage")->setText(message);
        QTest::mouseClick(control<QPushButton>("btnSend"), Qt::LeftButton);
    }
    QString received(int index) const
    {
        return device->messages().at(index).value(u"text"_s).toString();
    }
    void waitForReceived(int count)
    {
        ASSERT_TRUE(eventually([&] { return device->messages().size() >= count; }));
    }

    std::unique_ptr<frmSMSClient> console;
    RecordingMessageBoxes boxes;
    const QTemporaryDir queueFolder;
    QueueAccess queueAccess;
    ImportEnvironment importing{[] {
        return std::make_unique<HelperConnection>(
            QStringLiteral(NORVANE_BIN_DIR "/NorvaneSheetReader"));
    }};

private:
    IniStoredSettings m_settings;
};

} // namespace norvane
