#include "TovekSMService/dispatch/SendingRun.h"

#include "contract/ErrorCodes.h"

#include <algorithm>

namespace norvane {

const SubmitPart &LeavingMessage::part() const
{
    return parts.at(std::min<qsizetype>(message.partsSent, parts.size() - 1));
}

StoreResult<> SendingRun::keep(MessageQueue &queue, DeliveryReports &reports) const
{
    for (const Taken &taken : m_taken) {
        const StoreResult<qint64> outcome =
            queue.finish(taken.message.id, ErrorCode::ok, taken.reference, taken.at, true);
        if (!outcome)
            return failed(outcome.error());
        if (StoreResult<> kept = reports.keepLastSent(taken.message.id, taken.lastPart); !kept)
            return kept;
    }
    for (const LeavingMessage &left : m_ahead) {
        if (StoreResult<> cancelled = queue.cancelPart(left.message.id); !cancelled)
            return cancelled;
    }
    return {};
}

} // namespace norvane
