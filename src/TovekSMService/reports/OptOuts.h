#pragma once

#include "TovekSMService/store/OptOutList.h"

#include <QSet>
#include <QString>

namespace norvane {

/// Who wants no campaigns, whichever way a number is written: the list is as they were given, and
/// numbers are compared with and without the prefix of the country.
class OptOuts
{
public:
    /// @param list           must outlive this object
    /// @param countryPrefix  digits; empty for none
    OptOuts(OptOutList &list, const QString &countryPrefix)
        : m_list(list), m_countryPrefix(countryPrefix)
    {}

    /// @return false for one who is on the list already, and for a phone without a character
    [[nodiscard]] StoreResult<bool> add(const QString &phone, const QString &at);
    /// @return false for one who isn't on the list
    [[nodiscard]] StoreResult<bool> remove(const QString &phone);
    /// In the order in which they came.
    [[nodiscard]] StoreResult<QList<OptOut>> all() const { return m_list.all(); }
    [[nodiscard]] StoreResult<bool> contains(const QString &phone) const;
    /// What keyOf() gives for each of them.
    [[nodiscard]] StoreResult<QSet<QString>> keys() const;
    /// The form in which a number is compared.
    QString keyOf(const QString &phone) const;
    const QString &countryPrefix() const { return m_countryPrefix; }

private:
    OptOutList &m_list;
    const QString m_countryPrefix;
};

} // namespace norvane
