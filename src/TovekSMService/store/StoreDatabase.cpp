#include "TovekSMService/store/StoreDatabase.h"

#include "TovekSMService/store/SettingTable.h"
#include "TovekSMService/store/StoreSchema.h"
#include "TovekSMService/store/Transaction.h"

#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
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

StoreDatabase::StoreDatabase(const QString &file)
    : m_file(file), m_connection(QUuid::createUuid().toString(QUuid::WithoutBraces))
{}

StoreDatabase::~StoreDatabase()
{
    close();
}

void StoreDatabase::open()
{
    close();
    try {
        openForWriting();
        m_access = Access::Whole;
    } catch (const StoreFailure &failure) {
        close();
        if (!isOfTheFileItself(failure.kind()))
            openForReading();
        throw;
    }
}

void StoreDatabase::openForWriting()
{
    makeForOwner(m_file);
    openFile(m_file, u"QSQLITE_BUSY_TIMEOUT=50"_s);
    StoreSchema::refuseLater(m_database);
    execute(m_database, u"PRAGMA journal_mode = WAL"_s);
    refuseDamaged(m_database);
    execute(m_database, u"PRAGMA synchronous = FULL"_s);
    // Fewer of the moments in which the log is brought into the file; 16 MB of it are no burden.
    execute(m_database, u"PRAGMA wal_autocheckpoint = 4000"_s);
    StoreSchema::migrate(m_database);
}

void StoreDatabase::openForReading()
{
    // What has not been brought from the log into the file would not be seen.
    if (QFileInfo(m_file + u"-wal"_s).size() > 0)
        return;
    try {
        openFile(QString::fromLatin1(QUrl::fromLocalFile(m_file).toEncoded()) + u"?immutable=1"_s,
                 u"QSQLITE_OPEN_URI;QSQLITE_OPEN_READONLY"_s);
        StoreSchema::refuseOther(m_database);
        m_access = Access::Reading;
    } catch (const StoreFailure &) {
        close();
    }
}

void StoreDatabase::openFile(const QString &name, const QString &options)
{
    m_database = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_connection);
    m_database.setDatabaseName(name);
    // A lock is waited for by the callers' timers, not here, where it would hold up everything.
    m_database.setConnectOptions(options);
    if (!m_database.open())
        throw StoreFailure(m_database.lastError());
    m_statements.setDatabase(m_database);
}

void StoreDatabase::close()
{
    m_access = Access::None;
    if (!m_database.isValid())
        return;
    m_statements.drop();
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connection);
}

void StoreDatabase::together(const std::function<void()> &operations)
{
    if (m_isTogether) {
        operations();
        return;
    }
    Transaction transaction(m_database);
    m_isTogether = true;
    const auto end = qScopeGuard([this] {
        m_isTogether = false;
        for (const std::function<void()> &undo : std::exchange(m_undo, {}))
            undo();
    });
    operations();
    transaction.commit();
    m_undo.clear();
}

void StoreDatabase::onRollback(const std::function<void()> &undo)
{
    if (m_isTogether)
        m_undo.append(undo);
}

int StoreDatabase::write(const char *text, const QVariantList &values)
{
    int rows = 0;
    together([&] {
        Statement query = statement(text);
        query.run(values);
        rows = query.changedRows();
    });
    return rows;
}

void StoreDatabase::probe()
{
    const QString name = u"probe"_s;
    SettingTable settings(*this);
    together([&] {
        const bool isEven = settings.value(name) == "even"_L1;
        settings.write(name, isEven ? u"odd"_s : u"even"_s);
    });
}

void StoreDatabase::beginIdsAt(qint64 id)
{
    together([&] {
        for (const auto table : {"message"_L1, "outcome"_L1}) {
            write("DELETE FROM sqlite_sequence WHERE name = ? AND seq < ?", {table, id});
            write("INSERT INTO sqlite_sequence (name, seq) SELECT ?, ? WHERE NOT EXISTS "
                  "(SELECT 1 FROM sqlite_sequence WHERE name = ?)",
                  {table, id, table});
        }
    });
}

} // namespace norvane
