#include "TovekSMService/store/KeptSettlements.h"

#include "TovekSMService/store/StoreDatabase.h"

#include <QCborArray>
#include <QCborValue>

namespace norvane {

namespace {

QCborValue valueOf(const std::optional<int> &number)
{
    return number ? QCborValue(*number) : QCborValue();
}

std::optional<int> numberOf(const QCborValue &value)
{
    return value.isInteger() ? std::optional(static_cast<int>(value.toInteger())) : std::nullopt;
}

QCborValue valueOf(const std::optional<SentPart> &part)
{
    if (!part)
        return {};
    return QCborArray{part->message, part->number, part->total, valueOf(part->reference),
                      part->phone,   part->sim,    part->at};
}

std::optional<SentPart> partOf(const QCborValue &value)
{
    if (!value.isArray())
        return std::nullopt;
    const QCborArray fields = value.toArray();
    return SentPart{fields.at(0).toInteger(),
                    static_cast<int>(fields.at(1).toInteger()),
                    static_cast<int>(fields.at(2).toInteger()),
                    numberOf(fields.at(3)),
                    fields.at(4).toString(),
                    fields.at(5).toString(),
                    fields.at(6).toString()};
}

QByteArray contentsOf(const Settlement &settlement)
{
    return QCborValue(QCborArray{settlement.message, static_cast<int>(settlement.fate),
                                 settlement.epoch, settlement.phone, settlement.text,
                                 settlement.code, valueOf(settlement.networkReference),
                                 settlement.at, settlement.partsSent, settlement.attempts,
                                 settlement.nextAttempt, valueOf(settlement.part)})
        .toCbor();
}

Settlement settlementOf(const StoreRow &row)
{
    const QCborArray fields = QCborValue::fromCbor(row.value(0).toByteArray()).toArray();
    return {fields.at(0).toInteger(),
            static_cast<Settlement::Fate>(fields.at(1).toInteger()),
            fields.at(2).toInteger(),
            fields.at(3).toString(),
            fields.at(4).toString(),
            static_cast<qint32>(fields.at(5).toInteger()),
            numberOf(fields.at(6)),
            fields.at(7).toString(),
            static_cast<int>(fields.at(8).toInteger()),
            static_cast<int>(fields.at(9).toInteger()),
            fields.at(10).toString(),
            partOf(fields.at(11))};
}

} // namespace

StoreResult<> KeptSettlements::keep(const QList<Settlement> &settlements)
{
    return m_database.together([&] {
        StoreResult<> kept = m_database.write("DELETE FROM kept_settlement");
        for (auto each = settlements.cbegin(); kept && each != settlements.cend(); ++each)
            kept = m_database.write("INSERT INTO kept_settlement (contents) VALUES (?)",
                                    {contentsOf(*each)});
        return kept;
    });
}

StoreResult<QList<Settlement>> KeptSettlements::all() const
{
    return m_database.rows("SELECT contents FROM kept_settlement ORDER BY id", {}, settlementOf);
}

} // namespace norvane
