#pragma once

#include <QString>

namespace norvane {

class StoreDatabase;

/// The named values that are kept beside the queue.
class SettingTable
{
public:
    /// @param database  must outlive this object
    explicit SettingTable(StoreDatabase &database) : m_database(database) {}

    /// @throws StoreFailure
    QString value(const QString &name, const QString &absent = {}) const;
    /// @throws StoreFailure
    void write(const QString &name, const QString &value);

private:
    StoreDatabase &m_database;
};

} // namespace norvane
