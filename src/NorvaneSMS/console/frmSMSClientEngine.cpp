#include "NorvaneSMS/console/SentGridModel.h"
#include "NorvaneSMS/console/TerminalView.h"
#include "NorvaneSMS/console/frmSMSClient.h"
#include "NorvaneSMS/engine/Estimate.h"
#include "NorvaneSMS/engine/EventTexts.h"
#include "foundation/Globals.h"
#include "foundation/ui/CaptionedFrame.h"
#include "foundation/ui/FatalReport.h"
#include "foundation/ui/ImageControl.h"
#include "foundation/ui/PictureButton.h"

#include <QLabel>

void frmSMSClient::connectEngine()
{
    using FatalReport::guarded;
    SMSManager *const engine = moSMSManager.get();
    connect(engine, &SMSManager::DeviceInfo, this,
            guarded(this, &frmSMSClient::moSMSManager_DeviceInfo));
    connect(engine, &SMSManager::EngineStatus, this,
            guarded(this, &frmSMSClient::moSMSManager_EngineStatus));
    connect(engine, &SMSManager::SMSQueueChanged, this,
            guarded(this, &frmSMSClient::moSMSManager_SMSQueueChanged));
    connect(engine, &SMSManager::SMSSent, this, guarded(this, &frmSMSClient::moSMSManager_SMSSent));
    connect(engine, &SMSManager::SMSSentFailed, this,
            guarded(this, &frmSMSClient::moSMSManager_SMSSentFailed));
    connect(engine, &SMSManager::WarningError, this,
            guarded(this, &frmSMSClient::moSMSManager_WarningError));
}

void frmSMSClient::moSMSManager_DeviceInfo(const QString &Manufacturer, const QString &Model,
                                           const QString &IMEI, const QString &NetworkInfo,
                                           qint32 BatteryLevel, qint32 SignalLevel,
                                           const QString &FirmWare, const QString &Time,
                                           const QString &SMSCNumber, const QString &Hardware)
{
    m_ui.txtTerm->setText(
        EventTexts::terminalText({Manufacturer, Model, IMEI, NetworkInfo, BatteryLevel, SignalLevel,
                                  FirmWare, Time, SMSCNumber, Hardware}));
    m_ui.lblDeviceStatus->setText(EventTexts::deviceStatus(Manufacturer, Model));
    mdLastEvent = m_environment.now();
}

void frmSMSClient::moSMSManager_EngineStatus(qint32 status)
{
    ShowEngineStatus(status);
}

void frmSMSClient::ShowEngineStatus(qint32 status)
{
    const bool running = status == SMSManager::Running;
    m_ui.imgEngineStatus[1]->setVisible(running);
    m_ui.imgEngineStatus[0]->setVisible(!running);
    m_ui.btnStart->setEnabled(!running);
    m_ui.btnStop->setEnabled(running);
    m_ui.lblEngineStatus->setText(EventTexts::engineStatus(status));
}

void frmSMSClient::moSMSManager_SMSSent(const QString &phone, const QString &Message,
                                        qint32 QueueCount)
{
    m_ui.txtTerm->appendLine(EventTexts::sentLine(phone));
    m_sentRows->add({EventTexts::sentMoment(m_environment.now(), m_environment.locale), phone,
                     Message, SentGridModel::Outcome::Sent});
    m_ui.fraSentDetails->setCaption(EventTexts::sentCaption(m_sentRows->rowCount()));
    showEstimate(QueueCount);
    mdLastEvent = m_environment.now();
}

void frmSMSClient::showEstimate(qint32 QueueCount)
{
    const qint32 seconds = Estimate::secondsField(mdLastEvent, m_environment.now());
    const QTime remaining = Estimate::remaining(seconds, QueueCount);
    m_ui.lblEstimated->setText(GS(3760053, EventTexts::timeText(remaining, m_environment.locale)));
}

void frmSMSClient::moSMSManager_SMSSentFailed(const QString &phone, const QString &Message,
                                              qint32 errorCode)
{
    m_ui.txtTerm->appendLine(EventTexts::failedLine(phone, errorCode));
    m_sentRows->add({EventTexts::failedMoment(m_environment.now()), phone, Message,
                     SentGridModel::Outcome::Failed});
}

void frmSMSClient::moSMSManager_WarningError(qint32 errCode, const QString &ExtraInfo)
{
    m_ui.txtTerm->appendLine(EventTexts::warningLine(errCode, ExtraInfo));
}
