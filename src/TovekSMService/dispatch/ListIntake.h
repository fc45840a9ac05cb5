#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "contract/SMSList.h"

#include <QList>
#include <QString>

namespace norvane {

class Clock;
class OptOuts;
class Outbox;
class Store;

/// Queues the messages of a list. Those to somebody who has opted out never wait: they fail at
/// once.
class ListIntake
{
public:
    /// @param store, optOuts, clock, outbox  must outlive this object
    ListIntake(Store &store, OptOuts &optOuts, const Clock &clock, Outbox &outbox)
        : m_store(store), m_optOuts(optOuts), m_clock(clock), m_outbox(outbox)
    {}

    /// All of them are in the store when it returns, or none. What failed is reported, with one
    /// warning for the list.
    /// @param token  see MessageQueue::once()
    [[nodiscard]] StoreResult<> add(const QString &token, const QList<SMSList::Entry> &list,
                                    const QString &deliveryDate);

private:
    /// A message that isn't sent, and its outcome.
    struct Refused
    {
        SMSList::Entry entry;
        qint64 outcome = 0;
    };

    StoreResult<QList<Refused>> keep(const QList<SMSList::Entry> &list,
                                     const QString &deliveryDate);
    StoreResult<QList<Refused>> refuse(const QList<SMSList::Entry> &entries,
                                       const QString &deliveryDate);
    void report(const QList<Refused> &refused);

    Store &m_store;
    OptOuts &m_optOuts;
    const Clock &m_clock;
    Outbox &m_outbox;
};

} // namespace norvane
