#include "TovekSMService/store/Store.h"

#include "TovekSMService/store/StoreQueries.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

StoredMessage messageOf(const Statement &query)
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
    message.originalDate = query.value(8).toString();
    return message;
}

} // namespace

std::optional<StoredMessage> Store::first() const
{
    const QList<StoredMessage> messages = first(1);
    return messages.isEmpty() ? std::nullopt : std::optional(messages.constFirst());
}

QList<StoredMessage> Store::first(int max) const
{
    Statement query(m_statements, StoreQueries::first);
    query.run({max});
    QList<StoredMessage> messages;
    while (query.next())
        messages.append(messageOf(query));
    return messages;
}

std::optional<QString> Store::firstDue() const
{
    Statement query(m_statements, StoreQueries::firstDue);
    query.run();
    if (!query.next())
        return std::nullopt;
    return query.value(0).toString();
}

void Store::beginPart(qint64 id, std::optional<quint16> reference, const QByteArray &partHash)
{
    write(StoreQueries::beginPart, {reference ? QVariant(*reference) : QVariant(), partHash, id});
}

void Store::endPart(qint64 id, int partsSent)
{
    write(StoreQueries::endPart, {partsSent, id});
}

void Store::cancelPart(qint64 id)
{
    write(StoreQueries::cancelPart, {id});
}

void Store::releaseBetweenParts()
{
    write(StoreQueries::releaseBetweenParts, {});
}

void Store::holdPartlySent()
{
    write(StoreQueries::holdPartlySent, {});
}

void Store::postpone(qint64 id, int attempts, const QString &nextAttempt)
{
    write(StoreQueries::postpone, {attempts, nextAttempt, nextAttempt, id});
    m_journal.note({id});
}

int Store::write(const char *statement, const QVariantList &values)
{
    Transaction transaction(m_database, transactionKind());
    Statement query(m_statements, statement);
    query.run(values);
    const int rows = query.changedRows();
    transaction.commit();
    return rows;
}

qint64 Store::finish(qint64 id, qint32 code, std::optional<int> networkReference, const QString &at,
                     bool reported)
{
    Transaction transaction(m_database, transactionKind());
    Statement keep(m_statements, StoreQueries::keepOutcome);
    keep.run({code, networkReference ? QVariant(*networkReference) : QVariant(), at,
              reported ? 1 : 0, id});
    const qint64 outcome = keep.lastId();
    Statement remove(m_statements, StoreQueries::removeMessage);
    remove.run({id});
    const int removed = remove.changedRows();
    transaction.commit();
    m_size -= removed;
    m_journal.note({id});
    return outcome;
}

QList<StoredMessage> Store::interrupted() const
{
    Statement query(m_statements, StoreQueries::interrupted);
    query.run();
    QList<StoredMessage> messages;
    while (query.next())
        messages.append(messageOf(query));
    return messages;
}

quint16 Store::nextReference()
{
    const QString name = u"concatenation_reference"_s;
    const auto next = static_cast<quint16>(setting(name, u"0"_s).toUInt() + 1U);
    writeSetting(name, QString::number(next));
    return next;
}

QList<Outcome> Store::unreportedFailures() const
{
    Statement query(m_statements, StoreQueries::unreportedFailures);
    query.run();
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
    Transaction transaction(m_database, transactionKind());
    Statement mark(m_statements, "UPDATE outcome SET reported = 1 WHERE id = ?");
    for (const qint64 id : outcomes)
        mark.run({id});
    transaction.commit();
}

} // namespace norvane
