#pragma once

#include "TovekSMService/store/FileConnection.h"

#include <QList>
#include <QVariant>

namespace norvane {

/// A second connection to a store's file, as another program would have one: to look at what is on
/// disk, to hold the lock for writing, and to prepare files.
class OtherConnection
{
public:
    explicit OtherConnection(const QString &file) : m_file(file) {}

    /// Runs a statement, and fails the test if that can't be done.
    void run(const QString &statement);
    /// The rows of a query, each as a list of its columns.
    QList<QVariantList> rows(const QString &query);
    /// The first column of a query's first row.
    QVariant value(const QString &query);

    /// Lets everything fail that does this to the table ("INSERT", "UPDATE") where the condition
    /// on OLD and NEW holds, and lets it be done again.
    void refuse(const QString &event, const QString &table, const QString &condition = {});
    void allow(const QString &table);

    /// Takes the lock for writing, and gives it back.
    void lock();
    void unlock();

    /// Everything that the file holds, to be compared; without the search index, which an engine at
    /// rest fills, and can make anew.
    QList<QVariantList> contents();

private:
    FileConnection m_file;
};

} // namespace norvane
