#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "contract/Messages.h"

#include <QList>
#include <QString>

#include <functional>
#include <optional>

namespace norvane {

class StoreDatabase;

/// What became of a message.
struct Outcome
{
    qint64 id = 0;
    QString phone;
    QString text;
    qint32 code = 0; ///< 1 sent, else the error code
};

/// When a message failed last, and why.
struct LastFailure
{
    QString at; ///< "yyyy-MM-ddTHH:mm:ss"
    qint32 code = 0;
};

/// What became of messages.
class Outcomes
{
public:
    /// @param database  must outlive this object
    explicit Outcomes(StoreDatabase &database) : m_database(database) {}

    /// Of outcomes that several engines leave: the id of the one whose failures
    /// unreportedFailures() gives.
    void setReporter(const std::function<int()> &reporter) { m_reporter = reporter; }

    /// Keeps the outcome of a message that is in the queue.
    /// @param networkReference  of the last part, for a message that was sent
    /// @param at                the moment, "yyyy-MM-ddTHH:mm:ss"
    /// @return the outcome's id
    [[nodiscard]] StoreResult<qint64> keep(qint64 message, qint32 code,
                                           std::optional<int> networkReference, const QString &at,
                                           bool reported);

    /// Puts on a message that was sent what the network says became of it.
    /// @param at  "yyyy-MM-ddTHH:mm:ss"; empty while nothing is known
    /// @return whether that is news
    [[nodiscard]] StoreResult<bool> setDelivery(qint64 message, DeliveryState state,
                                                const QString &at);

    /// The same for a message of which nothing is known yet.
    [[nodiscard]] StoreResult<> setPending(qint64 message);

    /// Failures that no console has heard of yet.
    [[nodiscard]] StoreResult<QList<Outcome>> unreportedFailures() const;
    [[nodiscard]] StoreResult<> markReported(const QList<qint64> &outcomes);

    /// Forgets the oldest of the outcomes before this moment, except those that no console has
    /// heard of.
    /// @param max  outcomes to forget in this step
    /// @return how many were forgotten
    [[nodiscard]] StoreResult<int> prune(const QString &before, int max);

    /// The latest first.
    [[nodiscard]] StoreResult<QList<OutcomeRow>> list(const MessageFilter &filter, qint64 offset,
                                                      qint64 limit) const;
    /// How many of the messages that were sent have become this by what the network says.
    [[nodiscard]] StoreResult<int> count(DeliveryState state) const;

    /// The last failure among the outcomes of late.
    [[nodiscard]] StoreResult<std::optional<LastFailure>> lastFailure() const;

private:
    StoreDatabase &m_database;
    std::function<int()> m_reporter; ///< empty: there is one engine
};

} // namespace norvane
