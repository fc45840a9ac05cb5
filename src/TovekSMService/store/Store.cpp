#include "TovekSMService/store/Store.h"

namespace norvane {

Store::Store(const QString &file, Opening opening) : m_database(file)
{
    if (opening == Opening::Now)
        open();
}

void Store::open()
{
    close();
    try {
        m_database.open();
    } catch (const StoreFailure &) {
        if (m_database.access() == StoreDatabase::Access::Reading)
            m_queue.load();
        throw;
    }
    m_queue.load();
}

void Store::close()
{
    m_queue.forget();
    m_database.close();
}

} // namespace norvane
