#include "NorvaneSMS/console/TerminalView.h"
#include "NorvaneSMS/console/frmSMSClient.h"
#include "NorvaneSMS/device/frmDeviceConfig.h"
#include "foundation/Globals.h"
#include "foundation/ui/CaptionedFrame.h"
#include "foundation/ui/FatalReport.h"
#include "foundation/ui/PendingInput.h"
#include "foundation/ui/PictureButton.h"
#include "foundation/ui/WaitPointer.h"

#include <QLabel>

void frmSMSClient::connectDeviceButtons()
{
    using FatalReport::guarded;
    connect(m_ui.btnDeviceConfig, &QPushButton::clicked, this,
            guarded(this, &frmSMSClient::btnDeviceConfig_Click));
    connect(m_ui.btnTestDevice, &QPushButton::clicked, this,
            guarded(this, &frmSMSClient::btnTestDevice_Click));
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
    // The presses of an operator to whom nothing seems to happen are no wish for another test.
    // Where the test fails, the fatal report blocks them, and no tick may run in front of it.
    dropPendingInput();
}

void frmSMSClient::testDevice()
{
    const WaitPointer pointer;
    const bool wasRunning = moSMSManager->GetEngineStatus() == SMSManager::Running;
    moSMSManager->DeliverPendingEvents();
    if (wasRunning) {
        moSMSManager->StopEngine();
        moSMSManager->DeliverPendingEvents();
    }
    m_ui.txtTerm->setText(QString());
    m_ui.fraCommunication->setCaption(GS(3760087));
    showBeforeBlocking();
    // Events that arrived before the answer belong before what follows: the success text stands
    // behind the details of the device.
    const qint32 result = moSMSManager->TestDevice();
    moSMSManager->DeliverPendingEvents();
    showTestResult(result == SMSManager::DeviceAnswered);
    m_ui.fraCommunication->setCaption(GS(3760090));
    m_ui.txtTerm->viewport()->repaint();
    if (wasRunning) {
        moSMSManager->StartEngine();
        moSMSManager->DeliverPendingEvents();
    }
}

void frmSMSClient::showBeforeBlocking()
{
    // What the operator sees for as long as the call takes: no event loop draws it.
    m_ui.fraCommunication->repaint();
    m_ui.txtTerm->viewport()->repaint();
}

void frmSMSClient::showTestResult(bool answered)
{
    if (!answered) {
        m_ui.lblDeviceStatus->setText(GS(3760088));
        return;
    }
    m_ui.txtTerm->append(GS(3760018));
    m_ui.lblDeviceStatus->setText(GS(3760019));
}
