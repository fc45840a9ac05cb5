#include "TovekSMService/reports/OptOuts.h"

#include "TovekSMService/reports/PhoneNumber.h"

namespace norvane {

StoreResult<bool> OptOuts::add(const QString &phone, const QString &at)
{
    const QString key = keyOf(phone);
    if (key.isEmpty())
        return false;
    return keys().and_then([&](const QSet<QString> &present) -> StoreResult<bool> {
        if (present.contains(key))
            return false;
        return m_list.add({phone.trimmed(), at}).map([] { return true; });
    });
}

StoreResult<bool> OptOuts::remove(const QString &phone)
{
    return all().and_then([&](const QList<OptOut> &present) -> StoreResult<bool> {
        bool isRemoved = false;
        for (const OptOut &each : present) {
            if (keyOf(each.phone) != keyOf(phone))
                continue;
            if (const StoreResult<> removed = m_list.remove(each.phone); !removed)
                return failed(removed.error());
            isRemoved = true;
        }
        return isRemoved;
    });
}

StoreResult<QSet<QString>> OptOuts::keys() const
{
    return all().map([this](const QList<OptOut> &present) {
        QSet<QString> keys;
        keys.reserve(present.size());
        for (const OptOut &each : present)
            keys.insert(keyOf(each.phone));
        return keys;
    });
}

StoreResult<bool> OptOuts::contains(const QString &phone) const
{
    return keys().map([&](const QSet<QString> &present) {
        const QString key = keyOf(phone);
        return !key.isEmpty() && present.contains(key);
    });
}

QString OptOuts::keyOf(const QString &phone) const
{
    return PhoneNumber::key(phone, m_countryPrefix);
}

} // namespace norvane
