#include "TovekSMService/store/OptOutList.h"

#include "TovekSMService/store/StoreDatabase.h"

namespace norvane {

StoreResult<> OptOutList::add(const OptOut &optOut)
{
    return m_database.write("INSERT INTO opt_out (phone, at) VALUES (?, ?) ON CONFLICT DO NOTHING",
                            {optOut.phone, optOut.at});
}

StoreResult<> OptOutList::remove(const QString &phone)
{
    return m_database.write("DELETE FROM opt_out WHERE phone = ?", {phone});
}

StoreResult<QList<OptOut>> OptOutList::all() const
{
    return m_database.rows("SELECT phone, at FROM opt_out ORDER BY id", {},
                           [](const StoreRow &row) {
                               return OptOut{row.value(0).toString(), row.value(1).toString()};
                           });
}

} // namespace norvane
