#include "harness/StoreReader.h"

#include <QCborArray>
#include <QCborValue>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QUuid>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A connection for one look, in whatever thread it is.
class Look
{
public:
    explicit Look(const QString &file) : m_name(QUuid::createUuid().toString())
    {
        m_database = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_name);
        m_database.setDatabaseName(file);
        m_database.setConnectOptions(u"QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=5000"_s);
        m_open = m_database.open();
    }

    ~Look()
    {
        m_database = QSqlDatabase();
        QSqlDatabase::removeDatabase(m_name);
    }

    Look(const Look &) = delete;
    Look &operator=(const Look &) = delete;

    /// @return a query without result when it can't be carried out
    QSqlQuery ask(const QString &statement, const QVariantList &values = {}) const
    {
        QSqlQuery query(m_database);
        query.setForwardOnly(true);
        if (!m_open || !query.prepare(statement))
            return query;
        for (const QVariant &value : values)
            query.addBindValue(value);
        query.exec();
        return query;
    }

private:
    QString m_name;
    QSqlDatabase m_database;
    bool m_open = false;
};

} // namespace

std::optional<bool> StoreReader::isLeaving(const QByteArray &partHash) const
{
    const Look look(m_file);
    QSqlQuery query =
        look.ask(u"SELECT COUNT(*) FROM message WHERE state = 1 AND part_hash = ?"_s, {partHash});
    if (!query.next())
        return std::nullopt;
    return query.value(0).toInt() == 1;
}

bool StoreReader::read(Account &account) const
{
    constexpr int delivered = 2; // in the column of that name
    const Look look(m_file);
    QSqlQuery waiting = look.ask(u"SELECT phone, state, parts_sent FROM message"_s);
    if (!waiting.isActive())
        return false;
    while (waiting.next())
        account.waiting.append(
            {waiting.value(0).toString(), waiting.value(1).toInt(), waiting.value(2).toInt()});
    QSqlQuery outcomes = look.ask(u"SELECT phone, code, delivery FROM outcome ORDER BY id"_s);
    if (!outcomes.isActive())
        return false;
    while (outcomes.next())
        account.outcomes.append({outcomes.value(0).toString(), outcomes.value(1).toInt(),
                                 outcomes.value(2).toInt() == delivered});
    QSqlQuery mail = look.ask(u"SELECT phone, text FROM received ORDER BY id"_s);
    if (!mail.isActive())
        return false;
    while (mail.next())
        account.mailKept.append({mail.value(0).toString(), mail.value(1).toString()});
    return true;
}

int StoreReader::due(const QString &moment) const
{
    const Look look(m_file);
    QSqlQuery query = look.ask(u"SELECT COUNT(*) FROM message WHERE due <= ?"_s, {moment});
    return query.next() ? query.value(0).toInt() : -1;
}

std::optional<QList<qint64>> StoreReader::kept() const
{
    const Look look(m_file);
    QSqlQuery query = look.ask(u"SELECT contents FROM kept_settlement"_s);
    if (!query.isActive())
        return std::nullopt;
    QList<qint64> ids;
    while (query.next())
        ids.append(QCborValue::fromCbor(query.value(0).toByteArray()).toArray().at(0).toInteger());
    return ids;
}

QString StoreReader::check() const
{
    const Look look(m_file);
    QSqlQuery query = look.ask(u"PRAGMA integrity_check"_s);
    return query.next() ? query.value(0).toString() : u"the store can't be read"_s;
}

} // namespace norvane
