#include "TovekSMService/store/SettingTable.h"

#include "TovekSMService/store/StoreDatabase.h"
#include "TovekSMService/store/Transaction.h"

namespace norvane {

QString SettingTable::value(const QString &name, const QString &absent) const
{
    return m_database
        .row("SELECT value FROM setting WHERE name = ?", {name},
             [](const Statement &row) { return row.value(0).toString(); })
        .value_or(absent);
}

void SettingTable::write(const QString &name, const QString &value)
{
    m_database.write("INSERT INTO setting (name, value) VALUES (?, ?) "
                     "ON CONFLICT (name) DO UPDATE SET value = excluded.value",
                     {name, notNull(value)});
}

} // namespace norvane
