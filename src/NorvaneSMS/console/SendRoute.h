#pragma once

#include "NorvaneSMS/queue/QueueAccess.h"
#include "contract/SMSManager.h"

#include <QString>

#include <utility>

namespace norvane {

class FileSystem;

/// Where the operator's messages go: to the engine, which is started if it is stopped, or, on a
/// client, into a drop file.
class SendRoute
{
public:
    enum class Outcome {
        HandedOn, ///< or the writer has shown why it can't write its drop file
        FolderMissing,
    };

    struct Client
    {
        const FileSystem *files;
        QString queueFolder;
        QueueAccess access;
    };

    /// @param engine null on a client
    SendRoute(SMSManager *engine, Client client) : m_engine(engine), m_client(std::move(client)) {}

    /// @param footer put behind the text of a message that goes to the engine
    /// @throws NumberedFailure as any operation of the engine
    Outcome send(const QString &phone, const QString &text, const QString &footer,
                 const QDateTime &deliveryDate) const;
    Outcome sendList(const SMSList &list, const QDateTime &deliveryDate) const;

private:
    void startIfStopped() const;
    bool hasFolder() const;

    SMSManager *m_engine;
    Client m_client;
};

} // namespace norvane
