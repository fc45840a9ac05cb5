#pragma once

#include "NorvaneSMS/console/ConsoleControls.h"
#include "NorvaneSMS/console/ConsoleEnvironment.h"
#include "NorvaneSMS/console/ConsoleLayout.h"
#include "NorvaneSMS/console/DevicePane.h"
#include "NorvaneSMS/console/PollingTick.h"
#include "NorvaneSMS/console/PollingTimer.h"
#include "NorvaneSMS/console/QueuePane.h"
#include "NorvaneSMS/console/SentPane.h"
#include "NorvaneSMS/console/WindowSizer.h"
#include "NorvaneSMS/device/DeviceSettingsKeeper.h"
#include "contract/SMSManager.h"
#include "foundation/FileSystem.h"

#include <QWidget>

#include <memory>

namespace norvane {

class SendRoute;
class frmDeviceConfig;
class frmImport;

/// The console's window. It owns everything long-lived: on a server the engine object and the timer
/// that the queue folder is polled by.
class frmSMSClient : public QWidget, public DeviceSettingsKeeper
{
    Q_OBJECT

public:
    explicit frmSMSClient(ConsoleEnvironment environment);
    ~frmSMSClient() override;

    /// Brings the console up: captions, mode, engine, size, state. To be called once, before the
    /// window is shown.
    /// @throws NumberedFailure for any step that fails
    void Form_Load();

    /// Puts the stored mode and queue folder into effect.
    void ApplyOperationMode();
    /// Gives the window the size and the limits of its mode, and centres it.
    void SetWindowLimits();
    void SetWindowTitle();

    DeviceSettings GetDeviceSettings() override;
    bool SetDeviceSettings(const DeviceSettings &settings) override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    // Load and unload
    void connectControls();
    void connectEngine();
    void LocalizeForm();
    void SetGridHeaders();
    void RefreshEngineState();
    void Form_Resize();
    void Form_Unload();

    // Controls
    void txtMessage_Change();
    void btnSend_Click();
    void btnImport_Click();
    void btnStart_Click();
    void btnStop_Click();
    void btnClearQueue_Click();
    void btnDeviceConfig_Click();
    void btnTestDevice_Click();
    void grdQueue_BeforeEdit(int row, int column, bool &cancel);
    void grdQueue_AfterEdit();
    void grdQueue_DeletePressed();
    QDateTime deliveryMoment() const;
    SendRoute sendRoute() const;
    /// @return true if the list was handed on; if not, a message box has shown why
    bool sendList(const SMSList &list);
    void testDevice();

    // Engine events
    void moSMSManager_DeviceInfo(const QString &Manufacturer, const QString &Model,
                                 const QString &IMEI, const QString &NetworkInfo,
                                 qint32 BatteryLevel, qint32 SignalLevel, const QString &FirmWare,
                                 const QString &Time, const QString &SMSCNumber,
                                 const QString &Hardware);
    void moSMSManager_EngineStatus(qint32 status);
    void moSMSManager_SMSQueueChanged(qint32 currentSize);
    void moSMSManager_SMSSent(const QString &phone, const QString &Message, qint32 QueueCount);
    void moSMSManager_SMSSentFailed(const QString &phone, const QString &Message, qint32 errorCode);
    void moSMSManager_WarningError(qint32 errCode, const QString &ExtraInfo);
    void ShowEngineStatus(qint32 status);

    void moImportSMSPooling_Timer(qint32 lMilliseconds);

    ConsoleEnvironment m_environment;
    ConsoleControls m_ui;
    ConsoleLayout m_layout;
    QueuePane m_queue;
    SentPane m_sent;
    DevicePane m_device;
    PollingTick m_pollingTick;
    WindowSizer m_sizer;
    std::unique_ptr<frmDeviceConfig> m_deviceConfig;
    bool m_unloaded = false;

    std::unique_ptr<FileSystem> moFileSystem;
    std::unique_ptr<SMSManager> moSMSManager;
    PollingTimer moImportSMSPooling;
    std::unique_ptr<frmImport> moImport;
    bool mbServerMode = false;
    QString msQueueFolder;
    QString msMessageFooter;
};

} // namespace norvane
