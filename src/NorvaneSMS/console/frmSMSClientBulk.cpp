#include "NorvaneSMS/console/BulkTemplate.h"
#include "NorvaneSMS/console/MessageEdit.h"
#include "NorvaneSMS/console/frmSMSClient.h"
#include "NorvaneSMS/import/frmImport.h"
#include "NorvaneSMS/queue/Normalisation.h"
#include "NorvaneSMS/queue/QueueFileWriter.h"
#include "common/FailureNumbers.h"
#include "foundation/Globals.h"
#include "foundation/MessageBoxes.h"

void frmSMSClient::btnImport_Click()
{
    // Wherever a failure strikes, the dialog stays loaded until the next press.
    try {
        moImport = std::make_unique<frmImport>(m_environment.importing, this);
        moImport->Form_Load();
        bool success = false;
        if (moImport->ShowImport() && moImport->ImportData().getCount() >= 1)
            success = queueList(listOf(moImport->ImportData()));
        moImport.reset();
        if (success)
            messageBoxes().show(GS(3760051), MessageBoxes::Icon::Information,
                                MessageBoxes::Buttons::Ok, boxTitle());
    } catch (...) {
        messageBoxes().show(Failure::fromException(std::current_exception()).shown(),
                            MessageBoxes::Icon::Critical, MessageBoxes::Buttons::Ok, boxTitle());
    }
}

SMSList frmSMSClient::listOf(const clsCollection &recipients) const
{
    SMSList list;
    const qint32 count = recipients.getCount();
    for (qint32 position = 1; position <= count; ++position) {
        const QString text = NormalizeSMSText(false, m_ui.txtMessage->text() + msMessageFooter);
        const QStringList fields = recipients.Item(position).toString().split(u'|');
        const QString message = FillTemplate(text, fields);
        const QString phone = CleanNumber(fields.first());
        if (!phone.isEmpty())
            list.Add(phone, message);
    }
    return list;
}

bool frmSMSClient::queueList(const SMSList &list)
{
    if (mbServerMode) {
        moSMSManager->AddSMSList(list, deliveryMoment());
        startIfStopped();
        return true;
    }
    if (!moFileSystem->FolderExists(msQueueFolder)) {
        messageBoxes().show(GS(3760050), MessageBoxes::Icon::Exclamation, MessageBoxes::Buttons::Ok,
                            boxTitle());
        return false;
    }
    WriteSMSFileBulk(list, deliveryMoment(), msQueueFolder, m_environment.queueAccess);
    return true;
}
