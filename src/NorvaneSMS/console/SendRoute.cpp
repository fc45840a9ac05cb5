#include "NorvaneSMS/console/SendRoute.h"

#include "NorvaneSMS/queue/QueueFileWriter.h"
#include "foundation/FileSystem.h"
#include "foundation/Normalisation.h"

namespace norvane {

SendRoute::Outcome SendRoute::send(const QString &phone, const QString &text, const QString &footer,
                                   const QDateTime &deliveryDate) const
{
    if (m_engine) {
        m_engine->AddSMS(phone, NormalizeSMSText(false, text + footer), deliveryDate);
        startIfStopped();
        return Outcome::HandedOn;
    }
    if (!hasFolder())
        return Outcome::FolderMissing;
    WriteSMSFile(phone, deliveryDate, text, m_client.queueFolder, m_client.access);
    return Outcome::HandedOn;
}

SendRoute::Outcome SendRoute::sendList(const SMSList &list, const QDateTime &deliveryDate) const
{
    if (m_engine) {
        m_engine->AddSMSList(list, deliveryDate);
        startIfStopped();
        return Outcome::HandedOn;
    }
    if (!hasFolder())
        return Outcome::FolderMissing;
    WriteSMSFileBulk(list, deliveryDate, m_client.queueFolder, m_client.access);
    return Outcome::HandedOn;
}

void SendRoute::startIfStopped() const
{
    if (m_engine->GetEngineStatus() == SMSManager::stopped)
        m_engine->StartEngine();
}

bool SendRoute::hasFolder() const
{
    return m_client.files->FolderExists(m_client.queueFolder);
}

} // namespace norvane
