#include "TovekSMService/store/SqliteDatabase.h"

#include "TovekSMService/store/SettingTable.h"
#include "TovekSMService/store/Sql.h"
#include "TovekSMService/store/StoreSchema.h"

#include <QFile>
#include <QFileInfo>
#include <QUrl>
#include <QUuid>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Makes the file, before anything is written to it, with the rights of its owner alone.
StoreResult<> makeForOwner(const QString &file)
{
    // One that is there isn't opened: closing it would give up this process's locks on it, the
    // database library's too.
    QFile made(file);
    if (!made.exists() && !made.open(QIODevice::ReadWrite))
        return failed(
            StoreFailure(StoreFailure::Kind::ReadOnly, file + u": "_s + made.errorString()));
    made.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    return {};
}

StoreResult<> refuseDamaged(const QSqlDatabase &database)
{
    StoreResult<QSqlQuery> check = prepared(database, u"PRAGMA quick_check(1)"_s);
    if (!check)
        return failed(check.error());
    if (StoreResult<> ran = execute(*check); !ran)
        return ran;
    const QString found = check->next() ? check->value(0).toString() : QString();
    if (found != "ok"_L1)
        return failed(StoreFailure(StoreFailure::Kind::Corrupt, found));
    return {};
}

bool isOfTheFileItself(StoreFailure::Kind kind)
{
    return kind == StoreFailure::Kind::Corrupt || kind == StoreFailure::Kind::TooNew;
}

} // namespace

SqliteDatabase::SqliteDatabase(const QString &file)
    : m_file(file), m_connection(QUuid::createUuid().toString(QUuid::WithoutBraces))
{}

SqliteDatabase::~SqliteDatabase()
{
    close();
}

StoreResult<> SqliteDatabase::open()
{
    close();
    StoreResult<> opened = openForWriting();
    if (opened) {
        m_access = Access::Whole;
        return opened;
    }
    close();
    if (isOfTheFileItself(opened.error().kind()))
        return opened;
    if (openForReading())
        m_access = Access::Reading;
    else
        close();
    return opened;
}

StoreResult<> SqliteDatabase::openForWriting()
{
    const auto run = [this](const QString &statement) {
        return [this, statement] { return execute(m_database, statement); };
    };
    return makeForOwner(m_file)
        .and_then([this] { return openFile(m_file, u"QSQLITE_BUSY_TIMEOUT=50"_s); })
        .and_then([this] { return StoreSchema::refuseLater(m_database); })
        .and_then(run(u"PRAGMA journal_mode = WAL"_s))
        .and_then([this] { return refuseDamaged(m_database); })
        .and_then(run(u"PRAGMA synchronous = FULL"_s))
        // Fewer of the moments in which the log is brought into the file; 16 MB of it are no
        // burden.
        .and_then(run(u"PRAGMA wal_autocheckpoint = 4000"_s))
        .and_then([this] { return StoreSchema::migrate(m_database); });
}

StoreResult<> SqliteDatabase::openBeside()
{
    close();
    if (!QFile::exists(m_file))
        return failed(StoreFailure(StoreFailure::Kind::ReadOnly, u"there is no store yet"_s));
    const StoreResult<> opened =
        openFile(m_file, u"QSQLITE_BUSY_TIMEOUT=50"_s)
            .and_then([this] { return StoreSchema::refuseOther(m_database); })
            // What it writes can be made anew.
            .and_then([this] { return execute(m_database, u"PRAGMA synchronous = NORMAL"_s); });
    if (opened)
        m_access = Access::Whole;
    else
        close();
    return opened;
}

StoreResult<> SqliteDatabase::openForReading()
{
    if (QFileInfo(m_file + u"-wal"_s).size() > 0)
        return failed(StoreFailure(StoreFailure::Kind::ReadOnly,
                                   u"what is in the log only would not be seen"_s));
    const QString name =
        QString::fromLatin1(QUrl::fromLocalFile(m_file).toEncoded()) + u"?immutable=1"_s;
    return openFile(name, u"QSQLITE_OPEN_URI;QSQLITE_OPEN_READONLY"_s).and_then([this] {
        return StoreSchema::refuseOther(m_database);
    });
}

StoreResult<> SqliteDatabase::openFile(const QString &name, const QString &options)
{
    m_database = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_connection);
    m_database.setDatabaseName(name);
    // A lock is waited for by the callers' timers, not here, where it would hold up everything.
    m_database.setConnectOptions(options);
    if (!m_database.open())
        return failed(StoreFailure(m_database.lastError()));
    m_statements.setDatabase(m_database);
    return {};
}

void SqliteDatabase::close()
{
    m_access = Access::None;
    if (!m_database.isValid())
        return;
    m_statements.drop();
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connection);
}

StoreResult<> SqliteDatabase::begin()
{
    return beginTransaction(m_database);
}

StoreResult<> SqliteDatabase::beginLook()
{
    return execute(m_database, u"BEGIN"_s);
}

StoreResult<> SqliteDatabase::commit()
{
    return commitTransaction(m_database);
}

void SqliteDatabase::rollBack()
{
    rollBackTransaction(m_database);
}

StoreResult<> SqliteDatabase::carryOut(const char *text, const QVariantList &values)
{
    return Statement(m_statements, text).run(values);
}

StoreResult<int> SqliteDatabase::carryOutAndCount(const char *text, const QVariantList &values)
{
    Statement statement(m_statements, text);
    return statement.run(values).map([&] { return statement.changedRows(); });
}

StoreResult<qint64> SqliteDatabase::carryOutInsert(const char *text, const QVariantList &values)
{
    Statement statement(m_statements, text);
    return statement.run(values).map([&] { return statement.lastId(); });
}

StoreResult<> SqliteDatabase::query(const char *text, const QVariantList &values,
                                    const Take &take) const
{
    Statement statement(m_statements, text);
    if (const StoreResult<> ran = statement.run(values); !ran)
        return ran;
    StoreResult<bool> isRow = statement.next();
    for (; isRow && *isRow && take(statement); isRow = statement.next()) {
    }
    return isRow.map([](bool) {});
}

StoreResult<> SqliteDatabase::probe()
{
    const QString name = u"probe"_s;
    SettingTable settings(*this);
    return together([&] {
        return settings.value(name).and_then([&](const QString &last) {
            return settings.write(name, last == "even"_L1 ? u"odd"_s : u"even"_s);
        });
    });
}

StoreResult<> SqliteDatabase::beginIdsAt(qint64 id)
{
    const auto beginIn = [this, id](QLatin1String table) {
        return write("DELETE FROM sqlite_sequence WHERE name = ? AND seq < ?", {table, id})
            .and_then([=, this] {
                return write("INSERT INTO sqlite_sequence (name, seq) SELECT ?, ? WHERE NOT EXISTS "
                             "(SELECT 1 FROM sqlite_sequence WHERE name = ?)",
                             {table, id, table});
            });
    };
    return together(
        [&] { return beginIn("message"_L1).and_then([&] { return beginIn("outcome"_L1); }); });
}

} // namespace norvane
