#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "contract/DeliveryState.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace norvane {

class StoreDatabase;

/// A part that the network took, and that it was asked to report about.
struct SentPart
{
    qint64 message = 0;
    int number = 1;
    int total = 1;
    /// The network's, 0 to 255; nothing where the device gave none.
    std::optional<int> reference;
    QString phone; ///< as it was sent
    QString sim;
    QString at; ///< "yyyy-MM-ddTHH:mm:ss"
};

/// A part about which the network hasn't said its last word.
struct OpenPart
{
    qint64 id = 0;
    qint64 message = 0;
    int total = 1; ///< parts of the message
    QString phone;
};

/// What is known of a part.
struct PartState
{
    int number = 1;
    int total = 1;
    DeliveryState state = DeliveryState::Pending;
    std::optional<int> status; ///< TP-Status of the last report
    QString reportedAt;
};

/// The parts that left with the request for a status report, and the reports that came.
class SentParts
{
public:
    /// @param database  must outlive this object
    explicit SentParts(StoreDatabase &database) : m_database(database) {}

    [[nodiscard]] StoreResult<> add(const SentPart &part);
    /// Those of a SIM with that reference of which no final report has come, the latest first.
    [[nodiscard]] StoreResult<QList<OpenPart>> open(const QString &sim, int reference) const;
    /// The latest of them that went to this number, to the letter.
    [[nodiscard]] StoreResult<std::optional<OpenPart>> latestOpen(const QString &sim, int reference,
                                                                  const QString &phone) const;
    /// Keeps what a report says of a part.
    /// @param isFinal  whether no further report is expected
    [[nodiscard]] StoreResult<> setState(qint64 part, DeliveryState state, bool isFinal, int status,
                                         const QString &at);
    [[nodiscard]] StoreResult<QList<PartState>> ofMessage(qint64 message) const;
    /// Messages with pending parts that left before this moment, `max` at most.
    [[nodiscard]] StoreResult<QList<qint64>> overdue(const QString &before, int max) const;
    /// Gives up waiting for reports about the pending parts of a message. One that comes all the
    /// same still counts.
    [[nodiscard]] StoreResult<> giveUp(qint64 message, const QString &at);

    /// Keeps a report.
    /// @param digest  by which it is known when it comes again
    /// @param part    that it belongs to; where there is none the report itself is kept
    /// @return false if it came before
    [[nodiscard]] StoreResult<bool> keepReport(const QByteArray &digest, const QString &at,
                                               std::optional<qint64> part, const QByteArray &pdu);
    [[nodiscard]] StoreResult<bool> hasReport(const QByteArray &digest) const;

    /// Forgets parts whose outcomes were forgotten, and reports from before this moment.
    /// @param max  of each in this step
    /// @return how many parts or reports, whichever were more
    [[nodiscard]] StoreResult<int> prune(const QString &before, int max);

private:
    StoreDatabase &m_database;
};

} // namespace norvane
