#include "TovekSMService/store/SentParts.h"

#include "TovekSMService/store/StoreDatabase.h"

#include <algorithm>

namespace norvane {

namespace {

OpenPart openPartOf(const StoreRow &row)
{
    return {row.value(0).toLongLong(), row.value(1).toLongLong(), row.value(2).toInt(),
            row.value(3).toString()};
}

PartState stateOf(const StoreRow &row)
{
    return {row.value(0).toInt(), row.value(1).toInt(),
            static_cast<DeliveryState>(row.value(2).toInt()),
            row.value(3).isNull() ? std::nullopt : std::optional(row.value(3).toInt()),
            row.value(4).toString()};
}

} // namespace

StoreResult<> SentParts::add(const SentPart &part)
{
    return m_database.write(
        "INSERT INTO sent_part (message_id, number, total, reference, phone, sim, at, state) "
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?) ON CONFLICT DO NOTHING",
        {part.message, part.number, part.total,
         part.reference ? QVariant(*part.reference) : QVariant(), part.phone, part.sim, part.at,
         static_cast<int>(DeliveryState::Pending)});
}

StoreResult<QList<OpenPart>> SentParts::open(const QString &sim, int reference) const
{
    // A reference comes again with every 256th part.
    return m_database.rows("SELECT id, message_id, total, phone FROM sent_part WHERE final = 0 "
                           "AND reference = ? AND sim = ? ORDER BY id DESC",
                           {reference, sim}, openPartOf);
}

StoreResult<std::optional<OpenPart>> SentParts::latestOpen(const QString &sim, int reference,
                                                           const QString &phone) const
{
    return m_database.row("SELECT id, message_id, total, phone FROM sent_part WHERE final = 0 AND "
                          "reference = ? AND sim = ? AND phone = ? ORDER BY id DESC LIMIT 1",
                          {reference, sim, phone}, openPartOf);
}

StoreResult<> SentParts::setState(qint64 part, DeliveryState state, bool isFinal, int status,
                                  const QString &at)
{
    return m_database.write(
        "UPDATE sent_part SET state = ?, final = ?, status = ?, reported_at = ? WHERE id = ?",
        {static_cast<int>(state), isFinal ? 1 : 0, status, at, part});
}

StoreResult<QList<PartState>> SentParts::ofMessage(qint64 message) const
{
    return m_database.rows("SELECT number, total, state, status, reported_at FROM sent_part "
                           "WHERE message_id = ? ORDER BY id",
                           {message}, stateOf);
}

StoreResult<QList<qint64>> SentParts::overdue(const QString &before, int max) const
{
    return m_database.rows(
        "SELECT DISTINCT message_id FROM sent_part WHERE state = 1 AND at < ? LIMIT ?",
        {before, max}, [](const StoreRow &row) { return row.value(0).toLongLong(); });
}

StoreResult<> SentParts::giveUp(qint64 message, const QString &at)
{
    return m_database.write(
        "UPDATE sent_part SET state = ?, reported_at = ? WHERE message_id = ? AND state = 1",
        {static_cast<int>(DeliveryState::Unknown), at, message});
}

StoreResult<bool> SentParts::keepReport(const QByteArray &digest, const QString &at,
                                        std::optional<qint64> part, const QByteArray &pdu)
{
    return m_database
        .writeAndCount(
            "INSERT INTO status_report (digest, at, part_id, pdu) "
            "VALUES (?, ?, ?, ?) ON CONFLICT DO NOTHING",
            {digest, at, part ? QVariant(*part) : QVariant(), part ? QVariant() : QVariant(pdu)})
        .map([](int rows) { return rows > 0; });
}

StoreResult<bool> SentParts::hasReport(const QByteArray &digest) const
{
    return m_database
        .row("SELECT 1 FROM status_report WHERE digest = ?", {digest},
             [](const StoreRow &) { return true; })
        .map([](std::optional<bool> found) { return found.has_value(); });
}

StoreResult<int> SentParts::prune(const QString &before, int max)
{
    return m_database.together([&] {
        return m_database
            .writeAndCount(
                "DELETE FROM sent_part WHERE id IN (SELECT id FROM sent_part WHERE at < ? AND NOT "
                "EXISTS (SELECT 1 FROM outcome WHERE outcome.message_id = sent_part.message_id) "
                "AND NOT EXISTS (SELECT 1 FROM message WHERE message.id = sent_part.message_id) "
                "LIMIT ?)",
                {before, max})
            .and_then([&](int parts) {
                return m_database
                    .writeAndCount("DELETE FROM status_report WHERE digest IN "
                                   "(SELECT digest FROM status_report WHERE at < ? LIMIT ?)",
                                   {before, max})
                    .map([parts](int reports) { return std::max(parts, reports); });
            });
    });
}

} // namespace norvane
