#include "TovekSMService/dispatch/ListIntake.h"

#include "TovekSMService/dispatch/Outbox.h"
#include "TovekSMService/reports/OptOuts.h"
#include "TovekSMService/store/Store.h"
#include "TovekSMService/time/Clock.h"
#include "contract/ErrorCodes.h"

namespace norvane {

using namespace Qt::StringLiterals;

StoreResult<> ListIntake::add(const QString &token, const QList<SMSList::Entry> &list,
                              const QString &deliveryDate)
{
    QList<Refused> refused;
    return m_store.queue()
        .once(token,
              [&] {
                  return m_store.database()
                      .together([&] { return keep(list, deliveryDate); })
                      .map([&](const QList<Refused> &kept) { refused = kept; });
              })
        .map([&] { report(refused); });
}

StoreResult<QList<ListIntake::Refused>> ListIntake::keep(const QList<SMSList::Entry> &list,
                                                         const QString &deliveryDate)
{
    return m_optOuts.keys().and_then([&](const QSet<QString> &optedOut) {
        QList<SMSList::Entry> wanted;
        QList<SMSList::Entry> unwanted;
        for (const SMSList::Entry &entry : list) {
            const bool isUnwanted =
                !optedOut.isEmpty() && optedOut.contains(m_optOuts.keyOf(entry.phone));
            (isUnwanted ? unwanted : wanted).append(entry);
        }
        return m_store.queue().add(wanted, deliveryDate).and_then([&] {
            return refuse(unwanted, deliveryDate);
        });
    });
}

StoreResult<QList<ListIntake::Refused>> ListIntake::refuse(const QList<SMSList::Entry> &entries,
                                                           const QString &deliveryDate)
{
    QList<Refused> refused;
    for (const SMSList::Entry &entry : entries) {
        const StoreResult<qint64> outcome =
            m_store.queue().refuse({deliveryDate, entry.phone, entry.message, 0},
                                   ErrorCode::callBarred, m_clock.wallClockText());
        if (!outcome)
            return failed(outcome.error());
        refused.append({entry, *outcome});
    }
    return refused;
}

void ListIntake::report(const QList<Refused> &refused)
{
    for (const Refused &each : refused) {
        StoredMessage message;
        message.phone = each.entry.phone;
        message.text = each.entry.message;
        m_outbox.reportFailed(message, each.outcome, ErrorCode::callBarred);
    }
    if (!refused.isEmpty())
        m_outbox.warn(
            ErrorCode::callBarred,
            u"%1 of the list's messages were not sent: their recipients have opted out"_s.arg(
                refused.size()));
}

} // namespace norvane
