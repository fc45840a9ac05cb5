#include "TovekSMService/store/StoreReader.h"

#include "TovekSMService/store/Sql.h"
#include "TovekSMService/store/StoreSchema.h"

#include <QFile>
#include <QUuid>

namespace norvane {

using namespace Qt::StringLiterals;

StoreReader::StoreReader(const QString &file)
    : m_file(file), m_connection(QUuid::createUuid().toString(QUuid::WithoutBraces))
{}

StoreReader::~StoreReader()
{
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connection);
}

StoreResult<> StoreReader::open()
{
    if (!QFile::exists(m_file))
        return failed(
            StoreFailure(StoreFailure::Kind::Other, u"there is no store yet: "_s + m_file));
    m_database = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_connection);
    m_database.setDatabaseName(m_file);
    m_database.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT=10000"_s);
    if (!m_database.open())
        return failed(StoreFailure(m_database.lastError()));
    return StoreSchema::refuseOther(m_database);
}

StoreResult<> StoreReader::outcomes(const QString &since,
                                    const std::function<void(const OutcomeRow &)> &take) const
{
    return each(QString::fromLatin1(outcomesSince), since,
                [&take](const QSqlQuery &row) { take(outcomeOf(row)); });
}

StoreResult<> StoreReader::received(const QString &since,
                                    const std::function<void(const ReceivedMessage &)> &take) const
{
    return each(QString::fromLatin1(receivedSince), since,
                [&take](const QSqlQuery &row) { take(receivedOf(row)); });
}

StoreResult<> StoreReader::each(const QString &text, const QString &since,
                                const std::function<void(const QSqlQuery &)> &take) const
{
    return prepared(m_database, text).and_then([&](QSqlQuery query) {
        query.bindValue(0, boundText(since));
        return execute(query).map([&] {
            while (query.next())
                take(query);
        });
    });
}

StoreResult<> StoreReader::copyTo(const QString &file) const
{
    return prepared(m_database, u"VACUUM INTO ?"_s).and_then([&](QSqlQuery query) {
        query.bindValue(0, file);
        return execute(query);
    });
}

} // namespace norvane
