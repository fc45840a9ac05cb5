#pragma once

#include "TovekSMService/store/StoreFailure.h"

#include <QString>

namespace norvane {

class StoreDatabase;

/// The named values that are kept beside the queue.
class SettingTable
{
public:
    /// @param database  must outlive this object
    explicit SettingTable(StoreDatabase &database) : m_database(database) {}

    [[nodiscard]] StoreResult<QString> value(const QString &name, const QString &absent = {}) const;
    [[nodiscard]] StoreResult<> write(const QString &name, const QString &value);

private:
    StoreDatabase &m_database;
};

} // namespace norvane
