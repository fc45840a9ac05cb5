#include "NorvaneSMS/console/frmSMSClient.h"

#include "NorvaneSMS/console/BulkTemplate.h"
#include "NorvaneSMS/console/ConsoleDesign.h"
#include "NorvaneSMS/console/DeviceTestRun.h"
#include "NorvaneSMS/console/QueueGrid.h"
#include "NorvaneSMS/console/SendRoute.h"
#include "NorvaneSMS/console/TerminalView.h"
#include "NorvaneSMS/device/frmDeviceConfig.h"
#include "NorvaneSMS/engine/EventTexts.h"
#include "NorvaneSMS/import/frmImport.h"
#include "common/FailureNumbers.h"
#include "foundation/Globals.h"
#include "foundation/MessageBoxes.h"
#include "foundation/TextId.h"
#include "foundation/ui/FatalReport.h"
#include "foundation/ui/FormSetUp.h"
#include "foundation/ui/ImageControl.h"
#include "foundation/ui/MessageEdit.h"
#include "foundation/ui/PendingInput.h"
#include "foundation/ui/PhoneEdit.h"
#include "foundation/ui/PictureButton.h"
#include "foundation/ui/WaitPointer.h"

#include <QCloseEvent>
#include <QDateEdit>
#include <QLabel>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

void showMessage(const QString &text, MessageBoxes::Icon icon)
{
    messageBoxes().show(text, icon, MessageBoxes::Buttons::Ok, boxTitle());
}

bool agreed(const QString &question)
{
    return messageBoxes().show(question, MessageBoxes::Icon::None, MessageBoxes::Buttons::YesNo,
                               boxTitle()) == MessageBoxes::Answer::Yes;
}

} // namespace

frmSMSClient::frmSMSClient(ConsoleEnvironment environment)
    : m_environment(std::move(environment)), m_ui(this),
      m_queue(m_ui, m_environment.locale, moSMSManager, [this] { SetGridHeaders(); }),
      m_sent(m_ui, m_environment.locale, m_environment.now), m_device(m_ui),
      m_pollingTick(moSMSManager, m_environment.queueAccess,
                    [this](const QString &folder) {
                        return !m_unloaded && mbServerMode && msQueueFolder == folder;
                    }),
      m_sizer(this), m_deviceConfig(std::make_unique<frmDeviceConfig>(
                         this, *this, m_environment.settings, m_environment.folders)),
      moImportSMSPooling([this](qint32 milliseconds) { moImportSMSPooling_Timer(milliseconds); })
{
    setObjectName(u"frmSMSClient"_s);
    setWindowTitle(ConsoleDesign::designTitle);
    connectControls();
}

frmSMSClient::~frmSMSClient() = default;

void frmSMSClient::connectControls()
{
    using FatalReport::guarded;
    using This = frmSMSClient;
    connect(m_ui.txtMessage, &MessageEdit::changed, this, guarded(this, &This::txtMessage_Change));

    const auto pressed = [this](PictureButton *button, void (This::*handler)()) {
        connect(button, &QPushButton::clicked, this, guarded(this, handler));
    };
    pressed(m_ui.btnSend, &This::btnSend_Click);
    pressed(m_ui.btnImport, &This::btnImport_Click);
    pressed(m_ui.btnStart, &This::btnStart_Click);
    pressed(m_ui.btnStop, &This::btnStop_Click);
    pressed(m_ui.btnClearQueue, &This::btnClearQueue_Click);
    pressed(m_ui.btnDeviceConfig, &This::btnDeviceConfig_Click);
    pressed(m_ui.btnTestDevice, &This::btnTestDevice_Click);

    QueueGrid *const grid = m_ui.grdQueue;
    connect(grid, &QueueGrid::beforeEdit, this, guarded(this, &This::grdQueue_BeforeEdit));
    connect(grid, &QueueGrid::afterEdit, this, guarded(this, &This::grdQueue_AfterEdit));
    connect(grid, &QueueGrid::deletePressed, this, guarded(this, &This::grdQueue_DeletePressed));
}

void frmSMSClient::connectEngine()
{
    using FatalReport::guarded;
    using This = frmSMSClient;
    SMSManager *const engine = moSMSManager.get();
    const auto on = [this, engine](auto raised, auto handler) {
        connect(engine, raised, this, guarded(this, handler));
    };
    on(&SMSManager::DeviceInfo, &This::moSMSManager_DeviceInfo);
    on(&SMSManager::EngineStatus, &This::moSMSManager_EngineStatus);
    on(&SMSManager::SMSQueueChanged, &This::moSMSManager_SMSQueueChanged);
    on(&SMSManager::SMSSent, &This::moSMSManager_SMSSent);
    on(&SMSManager::SMSSentFailed, &This::moSMSManager_SMSSentFailed);
    on(&SMSManager::WarningError, &This::moSMSManager_WarningError);
}

void frmSMSClient::Form_Load()
{
    m_ui.imgLogo[0]->hide();
    m_ui.imgLogo[1]->show();
    moFileSystem = std::make_unique<FileSystem>();
    mbServerMode = m_environment.settings.serverMode();
    LocalizeForm();
    SetGridHeaders();
    ApplyOperationMode();
    SetWindowLimits();
    CenterForm(this);
    RefreshEngineState();
    m_sizer.watch();
}

void frmSMSClient::LocalizeForm()
{
    SetWindowTitle();
    for (const ConsoleDesign::Caption &caption : ConsoleDesign::captions())
        m_ui.setCaption(caption.control, GS(caption.textId));
    for (const ConsoleDesign::Caption &name : ConsoleDesign::names())
        m_ui.setAccessibleName(name.control, GS(name.textId));
    m_sent.setFailedWord(GS(TextId::FailedWord));
}

void frmSMSClient::SetWindowTitle()
{
    setWindowTitle(GS(ConsoleDesign::windowTitle));
}

void frmSMSClient::SetGridHeaders()
{
    m_queue.setHeaders(
        {GS(TextId::DeliveryDateColumn), GS(TextId::PhoneColumn), GS(TextId::MessageColumn)});
    m_sent.setHeaders(
        {GS(TextId::SentAtColumn), GS(TextId::PhoneColumn), GS(TextId::MessageColumn)});
    m_ui.setColumnWidths();
}

void frmSMSClient::ApplyOperationMode()
{
    msQueueFolder = m_environment.settings.queueFolder();
    mbServerMode = m_environment.settings.serverMode();
    if (mbServerMode) {
        moSMSManager = m_environment.createEngine();
        connectEngine();
        moImportSMSPooling.start();
    } else {
        if (moSMSManager) {
            moSMSManager->StopEngine();
            moSMSManager.reset();
        }
        moImportSMSPooling.stop();
    }
    m_ui.setServerEnabled(mbServerMode);
}

void frmSMSClient::SetWindowLimits()
{
    m_sizer.setMode(mbServerMode);
}

void frmSMSClient::RefreshEngineState()
{
    if (moSMSManager) {
        m_queue.show(moSMSManager->GetQueueSize());
        ShowEngineStatus(moSMSManager->GetEngineStatus());
    }
    const QDateTime now = m_environment.now();
    m_ui.dtDeliveryDate->setDate(now.date());
    m_ui.tmDeliveryDate->setTime(now.time());
}

void frmSMSClient::resizeEvent(QResizeEvent *)
{
    Form_Resize();
}

void frmSMSClient::Form_Resize()
{
    const QSizeF twipsPerPixel = m_ui.twipsPerPixel();
    const auto inner = QSizeF(width() * twipsPerPixel.width(), height() * twipsPerPixel.height());
    const auto innerWidth = static_cast<float>(inner.width());
    const auto innerHeight = static_cast<float>(inner.height());
    resizeConsole(m_layout, innerWidth, innerHeight);
    m_ui.place(m_layout, innerWidth, innerHeight);
}

void frmSMSClient::closeEvent(QCloseEvent *event)
{
    if (!std::exchange(m_unloaded, true))
        Form_Unload();
    event->accept();
}

void frmSMSClient::Form_Unload()
{
    moFileSystem.reset();
    moSMSManager.reset();
    moImportSMSPooling.stop();
    m_sizer.unwatch();
    m_environment.releaseGlobals();
}

void frmSMSClient::txtMessage_Change()
{
    m_ui.lblSMSChars->setText(
        GS(TextId::CharacterCount, m_ui.txtMessage->textLength(), qint32{MessageEdit::maxLength}));
}

QDateTime frmSMSClient::deliveryMoment() const
{
    return {m_ui.dtDeliveryDate->date(), m_ui.tmDeliveryDate->time(), Qt::UTC};
}

SendRoute frmSMSClient::sendRoute() const
{
    return {mbServerMode ? moSMSManager.get() : nullptr,
            {moFileSystem.get(), msQueueFolder, m_environment.queueAccess}};
}

void frmSMSClient::btnSend_Click()
{
    const QString phone = m_ui.txtPhone->text();
    if (phone.isEmpty())
        return;
    // The writer of a drop file shows its failures itself and doesn't report them.
    if (sendRoute().send(phone, m_ui.txtMessage->text(), msMessageFooter, deliveryMoment()) ==
        SendRoute::Outcome::HandedOn)
        showMessage(GS(TextId::MessageQueued), MessageBoxes::Icon::Information);
    else
        showMessage(GS(TextId::FolderNotAccessible), MessageBoxes::Icon::Exclamation);
}

void frmSMSClient::btnImport_Click()
{
    // After a failure at any step, the dialog stays loaded until the button is pressed again.
    try {
        moImport = std::make_unique<frmImport>(m_environment.importing, this);
        moImport->Form_Load();
        const bool success =
            moImport->ShowImport() && moImport->ImportData().getCount() >= 1 &&
            sendList(BulkList(m_ui.txtMessage->text() + msMessageFooter, moImport->ImportData()));
        moImport.reset();
        if (success)
            showMessage(GS(TextId::MessagesQueued), MessageBoxes::Icon::Information);
    } catch (...) {
        showMessage(Failure::fromException(std::current_exception()).shown(),
                    MessageBoxes::Icon::Critical);
    }
}

bool frmSMSClient::sendList(const SMSList &list)
{
    const bool handedOn =
        sendRoute().sendList(list, deliveryMoment()) == SendRoute::Outcome::HandedOn;
    if (!handedOn)
        showMessage(GS(TextId::FolderNotAccessible), MessageBoxes::Icon::Exclamation);
    return handedOn;
}

void frmSMSClient::btnStart_Click()
{
    moSMSManager->StartEngine();
}

void frmSMSClient::btnStop_Click()
{
    const qint32 waiting = moSMSManager->GetQueueSize();
    if (waiting < 1 || agreed(GS(TextId::StopEngineQuestion, waiting)))
        moSMSManager->StopEngine();
}

void frmSMSClient::btnClearQueue_Click()
{
    if (moSMSManager->GetQueueSize() < 1)
        return;
    if (agreed(GS(TextId::ClearQueueQuestion)))
        moSMSManager->ClearQueue();
}

void frmSMSClient::grdQueue_BeforeEdit(int row, int column, bool &cancel)
{
    cancel = true; // also when the engine fails
    cancel = !m_queue.allowsEdit(row, column);
}

void frmSMSClient::grdQueue_AfterEdit()
{
    if (moSMSManager) // an edit that the end of the window cuts short is dropped
        m_queue.handBack();
}

void frmSMSClient::grdQueue_DeletePressed()
{
    m_queue.deleteSelected();
}

DeviceSettings frmSMSClient::GetDeviceSettings()
{
    return mbServerMode ? moSMSManager->GetDeviceSettings() : DeviceSettings();
}

bool frmSMSClient::SetDeviceSettings(const DeviceSettings &settings)
{
    ApplyOperationMode();
    return mbServerMode && moSMSManager->SetDeviceSettings(settings);
}

void frmSMSClient::btnDeviceConfig_Click()
{
    if (!m_deviceConfig->ShowForm())
        return;
    SetWindowLimits();
    SetWindowTitle();
    if (mbServerMode)
        moSMSManager->ApplySettings();
}

void frmSMSClient::btnTestDevice_Click()
{
    testDevice();
    // Presses during the test come from an operator who saw no reaction; they don't request another
    // test. If the test fails, the fatal report blocks them, and no tick may run before it.
    dropPendingInput();
}

void frmSMSClient::testDevice()
{
    const WaitPointer pointer;
    DeviceTestRun run(*moSMSManager);
    run.stopEngine();
    m_device.showTesting();
    m_device.showTested(run.test());
    run.restartEngine();
}

void frmSMSClient::moSMSManager_DeviceInfo(const QString &Manufacturer, const QString &Model,
                                           const QString &IMEI, const QString &NetworkInfo,
                                           qint32 BatteryLevel, qint32 SignalLevel,
                                           const QString &FirmWare, const QString &Time,
                                           const QString &SMSCNumber, const QString &Hardware)
{
    m_device.showDetails({Manufacturer, Model, IMEI, NetworkInfo, BatteryLevel, SignalLevel,
                          FirmWare, Time, SMSCNumber, Hardware});
    m_sent.noteEvent();
}

void frmSMSClient::moSMSManager_EngineStatus(qint32 status)
{
    ShowEngineStatus(status);
}

void frmSMSClient::ShowEngineStatus(qint32 status)
{
    const bool running = status == SMSManager::running;
    m_ui.imgEngineStatus[1]->setVisible(running);
    m_ui.imgEngineStatus[0]->setVisible(!running);
    m_ui.btnStart->setEnabled(!running);
    m_ui.btnStop->setEnabled(running);
    m_ui.lblEngineStatus->setText(EventTexts::engineStatus(status));
}

void frmSMSClient::moSMSManager_SMSQueueChanged(qint32 currentSize)
{
    m_queue.onChanged(currentSize);
}

void frmSMSClient::moSMSManager_SMSSent(const QString &phone, const QString &Message,
                                        qint32 QueueCount)
{
    m_ui.txtTerm->appendLine(EventTexts::sentLine(phone));
    m_sent.addSent(phone, Message, QueueCount);
}

void frmSMSClient::moSMSManager_SMSSentFailed(const QString &phone, const QString &Message,
                                              qint32 errorCode)
{
    m_ui.txtTerm->appendLine(EventTexts::failedLine(phone, errorCode));
    m_sent.addFailed(phone, Message);
}

void frmSMSClient::moSMSManager_WarningError(qint32 errCode, const QString &ExtraInfo)
{
    m_ui.txtTerm->appendLine(EventTexts::warningLine(errCode, ExtraInfo));
}

void frmSMSClient::moImportSMSPooling_Timer(qint32 /*lMilliseconds*/)
{
    if (m_pollingTick.run(*moFileSystem, msQueueFolder, msMessageFooter) ==
        PollingTick::Outcome::FolderMissing)
        m_ui.txtTerm->appendLine(GS(TextId::FolderNotAccessible));
}

} // namespace norvane
