#include "service/store/Store.h"

#include "service/store/Transaction.h"

namespace {

QString messageColumns()
{
    return QStringLiteral("SELECT id, delivery_date, due, phone, text, attempts, parts_sent, "
                          "reference FROM message ");
}

StoredMessage messageOf(const QSqlQuery &query)
{
    StoredMessage message;
    message.id = query.value(0).toLongLong();
    message.deliveryDate = query.value(1).toString();
    message.dateIsOdd = query.value(2).toString().isEmpty();
    message.phone = query.value(3).toString();
    message.text = query.value(4).toString();
    message.attempts = query.value(5).toInt();
    message.partsSent = query.value(6).toInt();
    if (!query.value(7).isNull())
        message.reference = static_cast<quint16>(query.value(7).toUInt());
    return message;
}

} // namespace

std::optional<StoredMessage> Store::first() const
{
    QSqlQuery query =
        prepared(m_database, messageColumns() + QStringLiteral("ORDER BY due, id LIMIT 1"));
    execute(query);
    if (!query.next())
        return std::nullopt;
    return messageOf(query);
}

std::optional<QString> Store::firstDue() const
{
    QSqlQuery query =
        prepared(m_database, QStringLiteral("SELECT due FROM message ORDER BY due, id LIMIT 1"));
    execute(query);
    if (!query.next())
        return std::nullopt;
    return query.value(0).toString();
}

void Store::beginPart(qint64 id, std::optional<quint16> reference, const QByteArray &partHash)
{
    Transaction transaction(m_database);
    QSqlQuery query = prepared(
        m_database,
        QStringLiteral("UPDATE message SET state = 1, reference = ?, part_hash = ? WHERE id = ?"));
    query.bindValue(0, reference ? QVariant(*reference) : QVariant());
    query.bindValue(1, partHash);
    query.bindValue(2, id);
    execute(query);
    transaction.commit();
}

void Store::endPart(qint64 id, int partsSent)
{
    Transaction transaction(m_database);
    QSqlQuery query = prepared(
        m_database, QStringLiteral("UPDATE message SET state = 2, parts_sent = ? WHERE id = ?"));
    query.bindValue(0, partsSent);
    query.bindValue(1, id);
    execute(query);
    transaction.commit();
}

void Store::cancelPart(qint64 id)
{
    Transaction transaction(m_database);
    QSqlQuery query =
        prepared(m_database, QStringLiteral("UPDATE message SET state = 0 WHERE id = ?"));
    query.bindValue(0, id);
    execute(query);
    transaction.commit();
}

void Store::releaseBetweenParts()
{
    Transaction transaction(m_database);
    execute(m_database, QStringLiteral("UPDATE message SET state = 0 WHERE state = 2"));
    transaction.commit();
}

void Store::postpone(qint64 id, int attempts, const QString &nextAttempt)
{
    Transaction transaction(m_database);
    QSqlQuery query =
        prepared(m_database, QStringLiteral("UPDATE message SET state = 0, attempts = ?, "
                                            "delivery_date = ?, due = ? WHERE id = ?"));
    query.bindValue(0, attempts);
    query.bindValue(1, nextAttempt);
    query.bindValue(2, nextAttempt);
    query.bindValue(3, id);
    execute(query);
    transaction.commit();
}

void Store::finish(qint64 id, qint32 code, std::optional<int> networkReference, const QString &at,
                   bool reported)
{
    Transaction transaction(m_database);
    QSqlQuery keep = prepared(
        m_database, QStringLiteral("INSERT INTO outcome (message_id, delivery_date, phone, text, "
                                   "code, network_reference, at, reported) "
                                   "SELECT id, delivery_date, phone, text, ?, ?, ?, ? "
                                   "FROM message WHERE id = ?"));
    keep.bindValue(0, code);
    keep.bindValue(1, networkReference ? QVariant(*networkReference) : QVariant());
    keep.bindValue(2, at);
    keep.bindValue(3, reported ? 1 : 0);
    keep.bindValue(4, id);
    execute(keep);
    QSqlQuery remove = prepared(m_database, QStringLiteral("DELETE FROM message WHERE id = ?"));
    remove.bindValue(0, id);
    execute(remove);
    transaction.commit();
    m_size -= remove.numRowsAffected();
}

QList<StoredMessage> Store::interrupted() const
{
    QSqlQuery query =
        prepared(m_database, messageColumns() + QStringLiteral("WHERE state = 1 ORDER BY due, id"));
    execute(query);
    QList<StoredMessage> messages;
    while (query.next())
        messages.append(messageOf(query));
    return messages;
}

quint16 Store::nextReference()
{
    const QString name = QStringLiteral("concatenation_reference");
    const auto next = static_cast<quint16>(setting(name, QStringLiteral("0")).toUInt() + 1U);
    writeSetting(name, QString::number(next));
    return next;
}

QList<Outcome> Store::unreportedFailures() const
{
    QSqlQuery query =
        prepared(m_database, QStringLiteral("SELECT id, phone, text, code FROM outcome "
                                            "WHERE reported = 0 ORDER BY id"));
    execute(query);
    QList<Outcome> outcomes;
    while (query.next())
        outcomes.append({query.value(0).toLongLong(), query.value(1).toString(),
                         query.value(2).toString(), query.value(3).toInt()});
    return outcomes;
}

void Store::markReported(const QList<qint64> &outcomes)
{
    if (outcomes.isEmpty())
        return;
    Transaction transaction(m_database);
    QSqlQuery query =
        prepared(m_database, QStringLiteral("UPDATE outcome SET reported = 1 WHERE id = ?"));
    for (const qint64 id : outcomes) {
        query.bindValue(0, id);
        execute(query);
    }
    transaction.commit();
}
