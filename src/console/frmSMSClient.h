#pragma once

#include "console/ConsoleControls.h"
#include "console/ConsoleEnvironment.h"
#include "engine/contract/SMSManager.h"
#include "foundation/FileSystem.h"
#include "foundation/ui/ConsoleLayout.h"

#include <QWidget>

#include <memory>

class CTimerMM;
class QueueGridModel;
class SentGridModel;
class WindowHook;

/// The console's window. It owns everything long-lived: on a server the engine object and the timer
/// that the queue folder is polled by.
class frmSMSClient : public QWidget
{
    Q_OBJECT

public:
    explicit frmSMSClient(ConsoleEnvironment environment);
    ~frmSMSClient() override;

    /// Brings the console up: captions, mode, engine, size, state. To be called once, before the
    /// window is shown.
    /// @throws NumberedFailure whatever goes wrong on the way
    void Form_Load();

    /// Puts the stored mode and queue folder into effect.
    void ApplyOperationMode();
    /// Gives the window the size and the limits of its mode, and centres it.
    void SetWindowLimits();
    void SetWindowTitle();

    /// The engine's record on a server, an empty record on a client.
    DeviceSettings GetDeviceSettings();
    /// Puts the stored mode into effect and then, on a server, hands `settings` to the engine.
    /// @return the engine's answer; false on a client
    bool SetDeviceSettings(const DeviceSettings &settings);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    // Load and unload
    void connectControls();
    void LocalizeForm();
    void SetGridHeaders();
    void RefreshEngineState();
    void Form_Resize();
    void Form_Unload();
    void enableByMode();
    void connectEngine();
    void startPooling();
    void releasePooling();

    // Controls
    void txtMessage_Change();
    void btnSend_Click();
    void btnStart_Click();
    void btnStop_Click();
    void btnClearQueue_Click();
    QDateTime deliveryMoment() const;
    void startIfStopped();

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
    void ShowQueueSize(qint32 count);
    void ShowEngineStatus(qint32 status);
    void bindQueue();
    void showEstimate(qint32 QueueCount);

    // Polling of the queue folder
    void moImportSMSPooling_Timer(qint32 lMilliseconds);
    /// Hands `files` to the engine, as long as the mode and the folder that they were found in
    /// hold.
    void importFiles(const QStringList &files, const QString &polledFolder);

    ConsoleEnvironment m_environment;
    ConsoleControls m_ui;
    ConsoleLayout m_layout;
    QueueGridModel *m_queueRows;
    SentGridModel *m_sentRows;
    std::unique_ptr<WindowHook> m_hook;
    bool m_unloaded = false;

    std::unique_ptr<FileSystem> moFileSystem;
    std::unique_ptr<SMSManager> moSMSManager;
    std::shared_ptr<CTimerMM> moImportSMSPooling;
    bool mbServerMode = false;
    bool mbImporting = false;
    QString msQueueFolder;
    QString msMessageFooter;
    QDateTime mdLastEvent;
};
