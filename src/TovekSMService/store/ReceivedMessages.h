#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "contract/Messages.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace norvane {

class StoreDatabase;

/// Which long message a received part belongs to.
struct ReceivedGroup
{
    QString sim;
    QString phone; ///< of the sender
    int reference = 0;
    bool isWide = false; ///< the reference has 16 bits
    int total = 1;
};

/// A part of a long message that was received, or a message of one part.
struct ReceivedPart
{
    qint64 id = 0;
    ReceivedGroup group;
    int number = 1;
    QString sentAt; ///< of the network, ISO 8601 with its zone; empty where it made no sense
    QString text;
};

/// What was received, and the parts of what isn't whole yet.
class ReceivedMessages
{
public:
    /// @param database  must outlive this object
    explicit ReceivedMessages(StoreDatabase &database) : m_database(database) {}

    /// Keeps a part as one that belongs to no message yet.
    /// @param digest  by which it is known when the device gives it again
    /// @param at      "yyyy-MM-ddTHH:mm:ss"
    /// @return its id, nothing if it came before
    [[nodiscard]] StoreResult<std::optional<qint64>>
    addPart(const QByteArray &digest, const ReceivedPart &part, const QString &at);
    /// The parts of a long message that wait for the others, in the order in which they came.
    [[nodiscard]] StoreResult<QList<ReceivedPart>> waiting(const ReceivedGroup &group) const;
    /// Parts from before this moment that wait for others, `max` at most, the oldest first.
    [[nodiscard]] StoreResult<QList<ReceivedPart>> waitingSince(const QString &before,
                                                                int max) const;
    /// Makes a message of parts.
    /// @return its id
    [[nodiscard]] StoreResult<qint64> addMessage(const ReceivedMessage &message,
                                                 const QList<qint64> &parts);

    /// The latest first.
    [[nodiscard]] StoreResult<QList<ReceivedMessage>> list(const MessageFilter &filter,
                                                           qint64 offset, qint64 limit) const;
    [[nodiscard]] StoreResult<> markRead(const QList<qint64> &ids);
    [[nodiscard]] StoreResult<int> unread() const;

    /// Forgets the oldest of the messages that came before this moment and are read, and what is
    /// known of their parts.
    /// @param max  messages to forget in this step
    /// @return how many were forgotten
    [[nodiscard]] StoreResult<int> prune(const QString &before, int max);

private:
    StoreDatabase &m_database;
};

} // namespace norvane
