#include "console/ConsoleDesign.h"
#include "console/MessageEdit.h"
#include "console/PhoneEdit.h"
#include "console/frmSMSClient.h"
#include "foundation/Globals.h"
#include "foundation/MessageBoxes.h"
#include "queue/Normalisation.h"

#include <QDateEdit>
#include <QLabel>

namespace {

QString boxTitle()
{
    return GS(0, QStringLiteral("Norvane SMS"));
}

} // namespace

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
    if (m_ui.txtPhone->text().isEmpty())
        return;
    if (!mbServerMode)
        return; // a client has no way to the server yet, and says nothing rather than that it had
    moSMSManager->AddSMS(m_ui.txtPhone->text(),
                         NormalizeSMSText(false, m_ui.txtMessage->text() + msMessageFooter),
                         deliveryMoment());
    startIfStopped();
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
