#pragma once

#include "TovekSMService/history/HistoryPages.h"

#include "TovekSMService/history/QueryLimit.h"
#include "TovekSMService/store/StoreFixture.h"
#include "support/Printing.h"

namespace norvane {

/// A store with messages of given moments.
class HistoryFixture : public StoreFixture
{
protected:
    /// A message that waits.
    qint64 wait(const QString &queuedAt, const QString &phone = u"600"_s,
                const QString &text = u"text"_s)
    {
        const qint64 id = add(noon(), phone, text);
        OtherConnection(file()).run(
            u"UPDATE message SET queued_at = '%1' WHERE id = %2"_s.arg(queuedAt).arg(id));
        return id;
    }

    /// A message that left the queue.
    qint64 leave(const QString &at, qint32 code = 1, DeliveryState delivery = DeliveryState::None,
                 const QString &phone = u"600"_s, const QString &text = u"text"_s,
                 const QString &deliveredAt = {})
    {
        const qint64 id = add(noon(), phone, text);
        done(m_store->queue().finish(id, code, code == 1 ? std::optional(7) : std::nullopt, at,
                                     true));
        if (delivery != DeliveryState::None) {
            EXPECT_TRUE(given(m_store->outcomes().setDelivery(id, delivery, deliveredAt)));
        }
        return id;
    }

    /// A message that was in doubt as it was carried into a database, without an id there.
    /// @return its id in the history
    qint64 leaveWithoutId(const QString &at)
    {
        OtherConnection other(file());
        other.run(u"INSERT INTO outcome (message_id, delivery_date, phone, text, code, at, "
                  "reported, queued_at) VALUES (0, '', '600', 'text', -39, '%1', 1, "
                  "'2025-12-31T00:00:00')"_s.arg(at));
        return -other.value(u"SELECT max(id) FROM outcome"_s).toLongLong();
    }

    HistoryPage page(const HistoryFilter &filter = {}, const HistoryCursor &after = {},
                     const std::optional<HistoryCursor> &until = {}, int maxRows = 1000)
    {
        const QueryLimit limit(TimeSource::system());
        return given(HistoryPages(m_store->database(), limit).page(filter, after, until, maxRows));
    }

    static QList<qint64> idsOf(const HistoryPage &page)
    {
        QList<qint64> ids;
        for (const HistoryRow &row : page.rows)
            ids.append(row.id);
        return ids;
    }

    QList<qint64> found(const QString &text)
    {
        HistoryFilter filter;
        filter.text = text;
        return idsOf(page(filter));
    }
};

} // namespace norvane
