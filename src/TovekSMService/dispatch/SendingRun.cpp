#include "TovekSMService/dispatch/SendingRun.h"

#include "contract/ErrorCodes.h"

#include <algorithm>

namespace norvane {

const SubmitPart &LeavingMessage::part() const
{
    return parts.at(std::min<qsizetype>(message.partsSent, parts.size() - 1));
}

void SendingRun::keep(MessageQueue &queue) const
{
    for (const Taken &taken : m_taken)
        queue.finish(taken.message.id, ErrorCode::ok, taken.reference, taken.at, true);
    for (const LeavingMessage &left : m_ahead)
        queue.cancelPart(left.message.id);
}

} // namespace norvane
