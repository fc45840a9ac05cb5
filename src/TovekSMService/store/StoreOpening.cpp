#include "TovekSMService/store/Store.h"

#include "TovekSMService/store/StoreSchema.h"
#include "TovekSMService/store/Transaction.h"

#include <QFile>
#include <QFileInfo>
#include <QUrl>
#include <QUuid>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Makes the file, before anything is written to it, with the rights of its owner alone.
void makeForOwner(const QString &file)
{
    // One that is there isn't opened: closing it would give up this process's locks on it, the
    // database library's too.
    QFile made(file);
    if (!made.exists() && !made.open(QIODevice::ReadWrite))
        throw StoreFailure(StoreFailure::Kind::ReadOnly, file + u": "_s + made.errorString());
    made.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
}

void refuseDamaged(const QSqlDatabase &database)
{
    QSqlQuery check = prepared(database, u"PRAGMA quick_check(1)"_s);
    execute(check);
    const QString found = check.next() ? check.value(0).toString() : QString();
    if (found != "ok"_L1)
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
        openFile(m_file, u"QSQLITE_BUSY_TIMEOUT=50"_s);
        StoreSchema::refuseLater(m_database);
        execute(m_database, u"PRAGMA journal_mode = WAL"_s);
        refuseDamaged(m_database);
        execute(m_database, u"PRAGMA synchronous = FULL"_s);
        // Fewer of the moments in which the log is brought into the file; 16 MB of it are no
        // burden.
        execute(m_database, u"PRAGMA wal_autocheckpoint = 4000"_s);
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
    if (QFileInfo(m_file + u"-wal"_s).size() > 0)
        return;
    try {
        openFile(QString::fromLatin1(QUrl::fromLocalFile(m_file).toEncoded()) + u"?immutable=1"_s,
                 u"QSQLITE_OPEN_URI;QSQLITE_OPEN_READONLY"_s);
        StoreSchema::refuseOther(m_database);
        countRows();
        m_access = Access::Reading;
    } catch (const StoreFailure &) {
        close();
    }
}

void Store::openFile(const QString &name, const QString &options)
{
    m_database = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_connection);
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
    QSqlQuery query = prepared(m_database, u"SELECT COUNT(*) FROM message"_s);
    execute(query);
    m_size = query.next() ? query.value(0).toInt() : 0;
}

} // namespace norvane
