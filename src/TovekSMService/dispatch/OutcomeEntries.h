#pragma once

#include "TovekSMService/dispatch/Outbox.h"
#include "TovekSMService/dispatch/Settler.h"
#include "TovekSMService/store/MessageQueue.h"

#include <QList>

#include <functional>

namespace norvane {

class Clock;
class SendingRun;

/// Makes the outbox's entries of what became of messages: what is written of them, and who hears of
/// it behind the commit.
class OutcomeEntries
{
public:
    /// @param queue, reports, clock, outbox  must outlive this object and its entries
    OutcomeEntries(MessageQueue &queue, DeliveryReports &reports, const Clock &clock,
                   Outbox &outbox)
        : m_queue(queue), m_settler(queue, reports), m_clock(clock), m_outbox(outbox)
    {}

    Settlement settlementOf(const StoredMessage &message, Settlement::Fate fate) const;
    /// @param delay  until the next attempt, in seconds
    Settlement postponed(const StoredMessage &message, Settlement::Fate fate, int attempts,
                         qint64 delay) const;

    /// @param report  gets the outcomes of those that failed, as Settler::settle() gives them
    Outbox::Entry entryOf(QList<Settlement> settlements,
                          const std::function<void(const QList<qint64> &outcomes)> &report);
    Outbox::Entry entryOf(const SendingRun &run);
    /// Of a message of which a part was leaving.
    Outbox::Entry entryOfFailed(const StoredMessage &message, qint32 code);
    /// Of a message that can't leave. Where others finished it meanwhile, they report it.
    Outbox::Entry entryOfUnsendable(const StoredMessage &message, qint32 code);
    /// What an earlier run of the program kept at home.
    Outbox::Entry entryOfKept(const QList<Settlement> &settlements);
    /// What the last run of the program left in the middle, as failed.
    Outbox::Entry entryOfInterrupted();

private:
    /// A message that the last run of the program left in the middle, and the failure that it is
    /// now.
    struct Interrupted
    {
        StoredMessage message;
        qint64 outcome = 0;
    };

    StoreResult<QList<Interrupted>> finishInterrupted();

    MessageQueue &m_queue;
    Settler m_settler;
    const Clock &m_clock;
    Outbox &m_outbox;
};

} // namespace norvane
