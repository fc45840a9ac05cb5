#include "TovekSMService/store/Store.h"

#include "TovekSMService/store/StoreSchema.h"
#include "TovekSMService/store/Transaction.h"

#include <QFile>
#include <QFileInfo>
#include <QUrl>
#include <QUuid>

namespace {

/// Makes the file, before anything is written to it, with the rights of its owner alone.
void makeForOwner(const QString &file)
{
    // One that is there isn't opened: closing it would give up this process's locks on it, the
    // database library's too.
    QFile made(file);
    if (!made.exists() && !made.open(QIODevice::ReadWrite))
        throw StoreFailure(StoreFailure::Kind::ReadOnly,
                           file + QStringLiteral(": ") + made.errorString());
    made.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
}

void refuseDamaged(const QSqlDatabase &database)
{
    QSqlQuery check = prepared(database, QStringLiteral("PRAGMA quick_check(1)"));
    execute(check);
    const QString found = check.next() ? check.value(0).toString() : QString();
    if (found != QLatin1String("ok"))
        throw StoreFailure(StoreFailure::Kind::Corrupt, found);
}

bool isOfTheFileItself(StoreFailure::Kind kind)
{
    return kind == StoreFailure::Kind::Corrupt || kind == StoreFailure::Kind::TooNew;
}

} // namespace

Store::Store(const QString &file, Opening opening)
    : m_file(file), m_connection(QUuid::createUuid().toString(QUuid::WithoutBraces))
{
    if (opening == Opening::Now)
        open();
}

Store::~Store()
{
    close();
}

void Store::open()
{
    close();
    try {
        makeForOwner(m_file);
        openFile(m_file, QStringLiteral("QSQLITE_BUSY_TIMEOUT=50"));
        StoreSchema::refuseLater(m_database);
        execute(m_database, QStringLiteral("PRAGMA journal_mode = WAL"));
        refuseDamaged(m_database);
        execute(m_database, QStringLiteral("PRAGMA synchronous = FULL"));
        // Fewer of the moments in which the log is brought into the file; 16 MB of it are no
        // burden.
        execute(m_database, QStringLiteral("PRAGMA wal_autocheckpoint = 4000"));
        StoreSchema::migrate(m_database);
        countRows();
        m_access = Access::Whole;
    } catch (const StoreFailure &failure) {
        close();
        if (!isOfTheFileItself(failure.kind()))
            openForReading();
        throw;
    }
}

void Store::openForReading()
{
    // What has not been brought from the log into the file would not be seen.
    if (QFileInfo(m_file + QStringLiteral("-wal")).size() > 0)
        return;
    try {
        openFile(QString::fromLatin1(QUrl::fromLocalFile(m_file).toEncoded()) +
                     QStringLiteral("?immutable=1"),
                 QStringLiteral("QSQLITE_OPEN_URI;QSQLITE_OPEN_READONLY"));
        StoreSchema::refuseOther(m_database);
        countRows();
        m_access = Access::Reading;
    } catch (const StoreFailure &) {
        close();
    }
}

void Store::openFile(const QString &name, const QString &options)
{
    m_database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection);
    m_database.setDatabaseName(name);
    // A lock is waited for by the callers' timers, not here, where it would hold up everything.
    m_database.setConnectOptions(options);
    if (!m_database.open())
        throw StoreFailure(m_database.lastError());
    m_statements.setDatabase(m_database);
}

void Store::close()
{
    m_access = Access::None;
    m_size = 0;
    m_journal.noteAll();
    if (!m_database.isValid())
        return;
    m_statements.drop();
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connection);
}

void Store::countRows()
{
    QSqlQuery query = prepared(m_database, QStringLiteral("SELECT COUNT(*) FROM message"));
    execute(query);
    m_size = query.next() ? query.value(0).toInt() : 0;
}
