#pragma once

#include "NorvaneSMS/console/ConsoleControls.h"
#include "NorvaneSMS/console/ConsoleEnvironment.h"
#include "NorvaneSMS/console/ConsoleLayout.h"
#include "NorvaneSMS/device/DeviceSettingsKeeper.h"
#include "contract/SMSManager.h"
#include "foundation/FileSystem.h"

#include <QWidget>

#include <memory>
#include <optional>

class CTimerMM;
class clsCollection;
class frmImport;
class QueueGridModel;
class SentGridModel;
class WindowHook;
class frmDeviceConfig;

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
    /// @throws NumberedFailure whatever goes wrong on the way
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

    // Bulk send
    void btnImport_Click();
    /// The messages that the template gives for the imported recipients that have a phone.
    /// @throws NumberedFailure 6 for more than a list holds
    SMSList listOf(const clsCollection &recipients) const;
    /// Hands the list to the engine or, on a client, writes it to a drop file.
    /// @return whether it was handed on
    bool queueList(const SMSList &list);

    // The queue's grid. Rows count from 1.
    void connectQueueGrid();
    void grdQueue_BeforeEdit(int row, int column, bool &cancel);
    void grdQueue_AfterEdit();
    void grdQueue_DeletePressed();
    void deleteRows(const QList<int> &rows);
    /// Removes `rows` but the one that the engine is sending.
    /// @return whether all of them went
    bool removeButInProgress(const QList<int> &rows);
    void removeFromGrid(const QList<int> &rows);
    /// Whether `row` is the message that the engine is sending.
    bool isInProgress(int row);
    /// Carries what was changed in the grid to the engine.
    void handBackQueue();

    // The device
    void connectDeviceButtons();
    void btnDeviceConfig_Click();
    void btnTestDevice_Click();
    void testDevice();
    void showBeforeBlocking();
    void showTestResult(bool answered);

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
    std::unique_ptr<frmDeviceConfig> m_deviceConfig;
    bool m_queueHeld = false;              ///< changes of the queue wait
    std::optional<qint32> m_heldQueueSize; ///< of the last one that does
    bool m_unloaded = false;

    std::unique_ptr<FileSystem> moFileSystem;
    std::unique_ptr<SMSManager> moSMSManager;
    std::shared_ptr<CTimerMM> moImportSMSPooling;
    std::unique_ptr<frmImport> moImport;
    bool mbServerMode = false;
    bool mbImporting = false;
    QString msQueueFolder;
    QString msMessageFooter;
    QDateTime mdLastEvent;
};
