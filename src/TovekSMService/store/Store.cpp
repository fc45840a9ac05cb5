#include "TovekSMService/store/Store.h"

namespace norvane {

StoreResult<> Store::open()
{
    close();
    StoreResult<> opened = m_database.open();
    if (m_database.access() == StoreDatabase::Access::None)
        return opened;
    if (const StoreResult<> loaded = m_queue.load(); !loaded) {
        close();
        return opened ? loaded : opened;
    }
    return opened;
}

void Store::close()
{
    m_queue.forget();
    m_database.close();
}

} // namespace norvane
