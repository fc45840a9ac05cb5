#pragma once

#include "TovekSMService/history/TextIndex.h"

#include "TovekSMService/history/HistoryFixture.h"
#include "TovekSMService/history/InboxPages.h"
#include "TovekSMService/history/IndexMark.h"
#include "support/TurnedTime.h"

namespace norvane {

/// A store with its search indexes.
class TextIndexFixture : public HistoryFixture
{
protected:
    using Ids = QList<qint64>;

    TextIndexFixture()
    {
        done(m_index.prepare());
        done(m_inboxIndex.prepare());
    }

    /// Until there is nothing more to index, with the time that a shared database asks for.
    void index(int maxRows = 1000)
    {
        for (int look = 0; look < 3; ++look) {
            while (given(m_index.step(maxRows)) > 0 || given(m_inboxIndex.step(maxRows)) > 0) {
            }
            m_time.pass(TextIndex::settleMs);
        }
    }

    qint64 mark(HistoryTable table = HistoryTable::Outcomes)
    {
        return given(IndexMark(m_store->database(), table).value());
    }

    /// More outcomes than are looked at one by one.
    void addMany(int rows, const QString &text, const QString &phone = u"600"_s)
    {
        addMany(rows, [&](int row) {
            return m_store->database().write(
                "INSERT INTO outcome (message_id, delivery_date, phone, text, code, at, "
                "reported) VALUES (?, '', ?, ?, 1, '2026-01-01', 1)",
                {1000 + row, phone, text});
        });
    }
    /// More received messages than that.
    void receiveMany(int rows, const QString &text, const QString &phone = u"600"_s)
    {
        addMany(rows, [&](int) {
            return m_store->database().write("INSERT INTO received (at, sent_at, phone, text) "
                                             "VALUES ('2026-01-01', '', ?, ?)",
                                             {phone, text});
        });
    }

    /// An outcome.
    qint64 keep(const QString &text, const QString &phone = u"8"_s)
    {
        return leave(u"2025-01-01"_s, 1, DeliveryState::None, phone, text);
    }
    /// A received message.
    qint64 receive(const QString &text, const QString &phone = u"8"_s)
    {
        return given(
            m_store->received().addMessage({0, u"2025-01-01"_s, {}, phone, text, false}, {}));
    }

    Ids inbox(const QString &text, bool isUnreadOnly = false)
    {
        const QueryLimit limit(TimeSource::system());
        Ids ids;
        for (const ReceivedMessage &message :
             given(InboxPages(m_store->database(), limit)
                       .page({{}, {}, text, isUnreadOnly}, {}, {}, 1000))
                 .rows)
            ids.append(message.id);
        return ids;
    }

    TurnedTime m_time;
    TextIndex m_index{m_store->database(), HistoryTable::Outcomes, m_time};
    TextIndex m_inboxIndex{m_store->database(), HistoryTable::Received, m_time};

private:
    void addMany(int rows, const std::function<StoreResult<>(int)> &add)
    {
        done(m_store->database().together([&] {
            StoreResult<> added;
            for (int row = 0; added && row < rows; ++row)
                added = add(row);
            return added;
        }));
    }
};

} // namespace norvane
