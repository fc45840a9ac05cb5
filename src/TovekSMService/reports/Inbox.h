#pragma once

#include "TovekSMService/modem/codec/IncomingPdu.h"
#include "TovekSMService/store/ReceivedMessages.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace norvane {

class Store;

/// Keeps what somebody sent to us: puts the parts of long messages together, and shows what isn't
/// whole after a day as it is.
class Inbox
{
public:
    /// The word that stands for the notification of a picture message.
    static constexpr QStringView pictureWord = u"MMS";
    /// What stands for a part that didn't come.
    static constexpr QStringView missingPart = u"[...]";

    /// @param store  must outlive this object
    explicit Inbox(Store &store) : m_store(store) {}

    /// Keeps a message or a part of one. One that came before changes nothing.
    /// @param pdu      as the device gave it
    /// @param message  that was read from it; nothing if it can't be read: then the PDU is the text
    /// @param now      "yyyy-MM-ddTHH:mm:ss"
    /// @return the message that is whole now, if any
    [[nodiscard]] StoreResult<std::optional<ReceivedMessage>>
    take(const QByteArray &pdu, const std::optional<DeliverPdu> &message, const QString &sim,
         const QString &now);

    /// Shows, as they are, the messages whose first part came before this moment; the longest ago
    /// first, one with each call.
    /// @return nothing when there is none left
    [[nodiscard]] StoreResult<std::optional<ReceivedMessage>> showIncomplete(const QString &before,
                                                                             const QString &now);

private:
    StoreResult<std::optional<ReceivedMessage>> complete(const ReceivedPart &part,
                                                         const QString &now);
    StoreResult<ReceivedMessage> show(const QList<ReceivedPart> &parts, const QString &now);

    Store &m_store;
};

} // namespace norvane
