#pragma once

#include "TovekSMService/store/Statement.h"
#include "TovekSMService/store/StoreDatabase.h"

#include <QSqlDatabase>
#include <QString>

namespace norvane {

/// The engine's own SQLite file. What was written has reached the disk when the call returns.
class SqliteDatabase : public StoreDatabase
{
public:
    explicit SqliteDatabase(const QString &file);
    ~SqliteDatabase() override;

    /// Opens the file anew, making it and its schema where there is none. Where that fails for the
    /// disk and not for the file, it is open for reading afterwards if it can be.
    [[nodiscard]] StoreResult<> open();
    /// Opens the file as a second connection to one that is open, which makes and mends nothing.
    [[nodiscard]] StoreResult<> openBeside();
    void close();
    Kind kind() const override { return Kind::File; }
    Access access() const override { return m_access; }
    Reopening reopening() const override { return Reopening::ByHost; }
    QString file() const { return m_file; }

    StoreResult<> probe() override;
    StoreResult<bool> mayDoChores() override { return true; }
    /// Lets the ids of messages and outcomes to come begin here at least: no id of a store that was
    /// set aside is to come again while someone may remember it.
    [[nodiscard]] StoreResult<> beginIdsAt(qint64 id);

private:
    StoreResult<> begin() override;
    StoreResult<> beginLook() override;
    StoreResult<> commit() override;
    void rollBack() override;
    StoreResult<> carryOut(const char *text, const QVariantList &values) override;
    StoreResult<int> carryOutAndCount(const char *text, const QVariantList &values) override;
    StoreResult<qint64> carryOutInsert(const char *text, const QVariantList &values) override;
    StoreResult<> query(const char *text, const QVariantList &values,
                        const Take &take) const override;

    StoreResult<> openForWriting();
    StoreResult<> openForReading();
    StoreResult<> openFile(const QString &name, const QString &options);

    QString m_file;
    QString m_connection;
    QSqlDatabase m_database;
    mutable Statements m_statements;
    Access m_access = Access::None;
};

} // namespace norvane
