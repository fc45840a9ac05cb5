#include "TovekSMService/store/ReceivedMessages.h"

#include "TovekSMService/store/FilteredPage.h"
#include "TovekSMService/store/StoreDatabase.h"

#include <cstring>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

#define NORVANE_RECEIVED_PART                                                                      \
    "SELECT id, sim, phone, reference, wide, total, number, sent_at, text FROM received_part "

// The text of a part stands as UTF-16: half of a surrogate pair may be all that is there of a
// character, and would be lost in a text of the database.
QByteArray unitsOf(const QString &text)
{
    return {reinterpret_cast<const char *>(text.utf16()), text.size() * 2};
}

QString textOf(const QByteArray &units)
{
    QString text(units.size() / 2, Qt::Uninitialized);
    std::memcpy(text.data(), units.constData(), static_cast<std::size_t>(text.size()) * 2);
    return text;
}

ReceivedPart partOf(const StoreRow &row)
{
    return {row.value(0).toLongLong(),
            {row.value(1).toString(), row.value(2).toString(), row.value(3).toInt(),
             row.value(4).toInt() != 0, row.value(5).toInt()},
            row.value(6).toInt(),
            row.value(7).toString(),
            textOf(row.value(8).toByteArray())};
}

ReceivedMessage messageOf(const StoreRow &row)
{
    return {row.value(0).toLongLong(), row.value(1).toString(), row.value(2).toString(),
            row.value(3).toString(),   row.value(4).toString(), row.value(5).toInt() != 0};
}

} // namespace

StoreResult<std::optional<qint64>>
ReceivedMessages::addPart(const QByteArray &digest, const ReceivedPart &part, const QString &at)
{
    using Id = std::optional<qint64>;
    return m_database.together([&]() -> StoreResult<Id> {
        const auto known =
            m_database.row("SELECT id FROM received_part WHERE digest = ?", {digest},
                           [](const StoreRow &row) { return row.value(0).toLongLong(); });
        if (!known)
            return failed(known.error());
        if (*known)
            return Id();
        return m_database
            .insert("INSERT INTO received_part (digest, at, sim, phone, reference, wide, total, "
                    "number, sent_at, text) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                    {digest, at, part.group.sim, part.group.phone, part.group.reference,
                     part.group.isWide ? 1 : 0, part.group.total, part.number, part.sentAt,
                     unitsOf(part.text)})
            .map([](qint64 id) { return Id(id); });
    });
}

StoreResult<QList<ReceivedPart>> ReceivedMessages::waiting(const ReceivedGroup &group) const
{
    return m_database.rows(
        NORVANE_RECEIVED_PART
        "WHERE message_id IS NULL AND phone = ? AND reference = ? AND wide = ? "
        "AND total = ? AND sim = ? ORDER BY id",
        {group.phone, group.reference, group.isWide ? 1 : 0, group.total, group.sim}, partOf);
}

StoreResult<QList<ReceivedPart>> ReceivedMessages::waitingSince(const QString &before,
                                                                int max) const
{
    return m_database.rows(NORVANE_RECEIVED_PART
                           "WHERE message_id IS NULL AND at < ? ORDER BY id LIMIT ?",
                           {before, max}, partOf);
}

StoreResult<qint64> ReceivedMessages::addMessage(const ReceivedMessage &message,
                                                 const QList<qint64> &parts)
{
    return m_database.together([&]() -> StoreResult<qint64> {
        const StoreResult<qint64> id =
            m_database.insert("INSERT INTO received (at, sent_at, phone, text) VALUES (?, ?, ?, ?)",
                              {message.at, message.sentAt, message.phone, message.text});
        if (!id)
            return id;
        for (const qint64 part : parts) {
            // The message has the text now.
            const StoreResult<> kept =
                m_database.write("UPDATE received_part SET message_id = ?, text = ? WHERE id = ?",
                                 {*id, QByteArray(""), part});
            if (!kept)
                return failed(kept.error());
        }
        return id;
    });
}

StoreResult<QList<ReceivedMessage>> ReceivedMessages::list(const MessageFilter &filter,
                                                           qint64 offset, qint64 limit) const
{
    return m_database.rows(
        "SELECT id, at, sent_at, phone, text, read FROM received " NORVANE_FILTERED_PAGE,
        filteredPage(filter, offset, limit), messageOf);
}

StoreResult<> ReceivedMessages::markRead(const QList<qint64> &ids)
{
    return m_database.together([&]() -> StoreResult<> {
        for (const qint64 id : ids) {
            const StoreResult<> marked =
                m_database.write("UPDATE received SET read = 1 WHERE id = ?", {id});
            if (!marked)
                return marked;
        }
        return {};
    });
}

StoreResult<int> ReceivedMessages::unread() const
{
    return m_database
        .row("SELECT COUNT(*) FROM received WHERE read = 0", {},
             [](const StoreRow &row) { return row.value(0).toInt(); })
        .map([](std::optional<int> count) { return count.value_or(0); });
}

StoreResult<int> ReceivedMessages::prune(const QString &before, int max)
{
#define NORVANE_OLD "(SELECT id FROM received WHERE read = 1 AND at < ? ORDER BY at, id LIMIT ?)"
    return m_database.together([&] {
        return m_database
            .write("DELETE FROM received_part WHERE message_id IN " NORVANE_OLD, {before, max})
            .and_then([&] {
                // The search index is rid of them later.
                return m_database.write("INSERT INTO received_forgotten (id, phone, text) "
                                        "SELECT id, phone, text FROM received "
                                        "WHERE id IN " NORVANE_OLD,
                                        {before, max});
            })
            .and_then([&] {
                return m_database.writeAndCount("DELETE FROM received WHERE id IN " NORVANE_OLD,
                                                {before, max});
            });
    });
#undef NORVANE_OLD
}

} // namespace norvane
