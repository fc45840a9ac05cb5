#include "TovekSMService/store/StoreReader.h"

#include "TovekSMService/store/StoreSchema.h"
#include "TovekSMService/store/Transaction.h"

#include <QFile>
#include <QUuid>

namespace norvane {

using namespace Qt::StringLiterals;

StoreReader::StoreReader(const QString &file)
    : m_connection(QUuid::createUuid().toString(QUuid::WithoutBraces))
{
    if (!QFile::exists(file))
        throw StoreFailure(StoreFailure::Kind::Other, u"there is no store yet: "_s + file);
    try {
        open(file);
    } catch (...) {
        m_database = QSqlDatabase();
        QSqlDatabase::removeDatabase(m_connection);
        throw;
    }
}

StoreReader::~StoreReader()
{
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connection);
}

void StoreReader::open(const QString &file)
{
    m_database = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_connection);
    m_database.setDatabaseName(file);
    m_database.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT=10000"_s);
    if (!m_database.open())
        throw StoreFailure(m_database.lastError());
    StoreSchema::refuseOther(m_database);
}

void StoreReader::outcomes(const QString &since,
                           const std::function<void(const OutcomeRow &)> &take) const
{
    QSqlQuery query =
        prepared(m_database, u"SELECT at, delivery_date, phone, text, code, network_reference "
                             "FROM outcome WHERE at >= ? ORDER BY id"_s);
    query.bindValue(0, notNull(since));
    execute(query);
    while (query.next())
        take({query.value(0).toString(), query.value(1).toString(), query.value(2).toString(),
              query.value(3).toString(), query.value(4).toInt(), query.value(5).toString()});
}

void StoreReader::copyTo(const QString &file) const
{
    QSqlQuery query = prepared(m_database, u"VACUUM INTO ?"_s);
    query.bindValue(0, file);
    execute(query);
}

} // namespace norvane
