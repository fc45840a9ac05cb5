#include "TovekSMService/dispatch/SendingRun.h"

#include <algorithm>

namespace norvane {

const SubmitPart &LeavingMessage::part() const
{
    return parts.at(std::min<qsizetype>(message.partsSent, parts.size() - 1));
}

QList<Settlement> SendingRun::settlements() const
{
    QList<Settlement> settlements;
    for (const Taken &taken : m_taken) {
        Settlement sent;
        sent.message = taken.message.id;
        sent.fate = Settlement::Fate::Sent;
        sent.epoch = taken.message.epoch;
        sent.partsSent = taken.message.partsSent;
        sent.phone = taken.message.phone;
        sent.text = taken.message.text;
        sent.networkReference = taken.reference;
        sent.at = taken.at;
        sent.part = taken.lastPart;
        settlements.append(sent);
    }
    for (const LeavingMessage &left : m_ahead) {
        Settlement returned;
        returned.message = left.message.id;
        returned.epoch = left.message.epoch;
        settlements.append(returned);
    }
    return settlements;
}

} // namespace norvane
