#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "contract/Messages.h"

#include <QString>

#include <functional>

namespace norvane {

/// Where lists of what became of messages, and of what was received, are read from.
class ReportSource
{
public:
    virtual ~ReportSource() = default;

    /// Hands out the outcomes from `since` on ("yyyy-MM-ddTHH:mm:ss", or the beginning of it), in
    /// their order.
    [[nodiscard]] virtual StoreResult<>
    outcomes(const QString &since, const std::function<void(const OutcomeRow &)> &take) const = 0;
    /// Hands out the messages received from `since` on, in their order.
    [[nodiscard]] virtual StoreResult<>
    received(const QString &since,
             const std::function<void(const ReceivedMessage &)> &take) const = 0;

protected:
    static constexpr char outcomesSince[] =
        "SELECT message_id, at, delivery_date, phone, text, code, network_reference, delivery, "
        "CASE WHEN delivery = 2 THEN delivered_at ELSE '' END FROM outcome WHERE at >= ? "
        "ORDER BY id";
    static constexpr char receivedSince[] =
        "SELECT id, at, sent_at, phone, text, read FROM received WHERE at >= ? ORDER BY id";

    template <typename Row>
    static OutcomeRow outcomeOf(const Row &row)
    {
        return {row.value(0).toLongLong(), row.value(1).toString(),
                row.value(2).toString(),   row.value(3).toString(),
                row.value(4).toString(),   row.value(5).toInt(),
                row.value(6).toString(),   static_cast<DeliveryState>(row.value(7).toInt()),
                row.value(8).toString()};
    }
    template <typename Row>
    static ReceivedMessage receivedOf(const Row &row)
    {
        return {row.value(0).toLongLong(), row.value(1).toString(), row.value(2).toString(),
                row.value(3).toString(),   row.value(4).toString(), row.value(5).toInt() != 0};
    }
};

} // namespace norvane
