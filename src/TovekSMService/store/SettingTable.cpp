#include "TovekSMService/store/SettingTable.h"

#include "TovekSMService/store/StoreDatabase.h"

namespace norvane {

StoreResult<QString> SettingTable::value(const QString &name, const QString &absent) const
{
    return m_database
        .row("SELECT value FROM setting WHERE name = ?", {name},
             [](const StoreRow &row) { return row.value(0).toString(); })
        .map([&](const std::optional<QString> &value) { return value.value_or(absent); });
}

StoreResult<> SettingTable::write(const QString &name, const QString &value)
{
    return m_database.write("INSERT INTO setting (name, value) VALUES (?, ?) "
                            "ON CONFLICT (name) DO UPDATE SET value = excluded.value",
                            {name, value});
}

} // namespace norvane
