#include "TovekSMService/store/StoreDatabase.h"

namespace norvane {

void StoreDatabase::endTogether(bool isKept)
{
    m_isTogether = false;
    const QList<std::function<void()>> undo = std::exchange(m_undo, {});
    if (isKept)
        return;
    for (const std::function<void()> &each : undo)
        each();
}

void StoreDatabase::onRollback(const std::function<void()> &undo)
{
    if (m_isTogether)
        m_undo.append(undo);
}

StoreResult<> StoreDatabase::write(const char *text, const QVariantList &values)
{
    return together([&] { return carryOut(text, values); });
}

StoreResult<int> StoreDatabase::writeAndCount(const char *text, const QVariantList &values)
{
    return together([&] { return carryOutAndCount(text, values); });
}

StoreResult<qint64> StoreDatabase::insert(const char *text, const QVariantList &values)
{
    return together([&] { return carryOutInsert(text, values); });
}

} // namespace norvane
