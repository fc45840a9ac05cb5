#include "NorvaneSMS/console/MessageEdit.h"
#include "NorvaneSMS/console/PhoneEdit.h"
#include "NorvaneSMS/console/frmSMSClient.h"
#include "NorvaneSMS/queue/Normalisation.h"
#include "NorvaneSMS/queue/QueueFileWriter.h"
#include "foundation/Globals.h"
#include "foundation/MessageBoxes.h"

#include <QDateEdit>
#include <QLabel>

void frmSMSClient::txtMessage_Change()
{
    m_ui.lblSMSChars->setText(
        GS(3760027, m_ui.txtMessage->textLength(), qint32{MessageEdit::MaxLength}));
}

QDateTime frmSMSClient::deliveryMoment() const
{
    return {m_ui.dtDeliveryDate->date(), m_ui.tmDeliveryDate->time(), Qt::UTC};
}

void frmSMSClient::startIfStopped()
{
    if (moSMSManager->GetEngineStatus() == SMSManager::Stopped)
        moSMSManager->StartEngine();
}

void frmSMSClient::btnSend_Click()
{
    const QString phone = m_ui.txtPhone->text();
    const QString message = m_ui.txtMessage->text();
    if (phone.isEmpty())
        return;
    if (mbServerMode) {
        moSMSManager->AddSMS(phone, NormalizeSMSText(false, message + msMessageFooter),
                             deliveryMoment());
        startIfStopped();
    } else {
        if (!moFileSystem->FolderExists(msQueueFolder)) {
            messageBoxes().show(GS(3760050), MessageBoxes::Icon::Exclamation,
                                MessageBoxes::Buttons::Ok, boxTitle());
            return;
        }
        WriteSMSFile(phone, deliveryMoment(), message, msQueueFolder, m_environment.queueAccess);
    }
    // The writer has told what went wrong and not whether anything did.
    messageBoxes().show(GS(3760052), MessageBoxes::Icon::Information, MessageBoxes::Buttons::Ok,
                        boxTitle());
}

void frmSMSClient::btnStart_Click()
{
    moSMSManager->StartEngine();
}

void frmSMSClient::btnStop_Click()
{
    const qint32 waiting = moSMSManager->GetQueueSize();
    if (waiting < 1 ||
        messageBoxes().show(GS(3760017, waiting), MessageBoxes::Icon::None,
                            MessageBoxes::Buttons::YesNo, boxTitle()) == MessageBoxes::Answer::Yes)
        moSMSManager->StopEngine();
}

void frmSMSClient::btnClearQueue_Click()
{
    if (moSMSManager->GetQueueSize() < 1)
        return;
    if (messageBoxes().show(GS(3760016), MessageBoxes::Icon::None, MessageBoxes::Buttons::YesNo,
                            boxTitle()) == MessageBoxes::Answer::Yes)
        moSMSManager->ClearQueue();
}
