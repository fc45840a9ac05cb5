#pragma once

#include "TovekSMService/store/Settlement.h"
#include "TovekSMService/store/StoreFailure.h"

#include <QList>

namespace norvane {

class DeliveryReports;
class MessageQueue;

/// Puts into the queue what became of messages of which parts were leaving.
class Settler
{
public:
    /// @param queue, reports  must outlive this object
    Settler(MessageQueue &queue, DeliveryReports &reports) : m_queue(queue), m_reports(reports) {}

    /// To be run in a transaction. What was settled before is settled again without a trace.
    /// @return the outcome of each that failed, 0 of the others
    [[nodiscard]] StoreResult<QList<qint64>> settle(const QList<Settlement> &settlements);

private:
    StoreResult<> settleSent(const QList<Settlement> &settlements);
    StoreResult<> keepAttempt(const Settlement &settlement);
    StoreResult<qint64> settleOther(const Settlement &settlement);

    MessageQueue &m_queue;
    DeliveryReports &m_reports;
};

} // namespace norvane
