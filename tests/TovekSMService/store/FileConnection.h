#pragma once

#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QVariant>

namespace norvane {

/// A second connection to an engine's own file.
class FileConnection
{
public:
    explicit FileConnection(const QString &file);
    FileConnection(const FileConnection &) = delete;
    FileConnection &operator=(const FileConnection &) = delete;
    ~FileConnection();

    QString file() const { return m_database.databaseName(); }
    /// Runs a statement, and fails the test if that can't be done.
    /// @return its rows, each as a list of its columns
    QList<QVariantList> rows(const QString &statement);

private:
    QString m_name;
    QSqlDatabase m_database;
};

/// Runs a statement on the one connection that a store has open: for settings that a connection
/// keeps to itself, like the most pages that a file may have.
void runOnStoreConnection(const QString &file, const QString &statement);
/// Lets the store's file grow no further, as if the disk were full, and lets it grow again.
void fillDisk(const QString &file);
void freeDisk(const QString &file);

} // namespace norvane
