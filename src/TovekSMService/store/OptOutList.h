#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "contract/Messages.h"

#include <QList>
#include <QString>

namespace norvane {

class StoreDatabase;

/// Those who want no campaigns.
class OptOutList
{
public:
    /// @param database  must outlive this object
    explicit OptOutList(StoreDatabase &database) : m_database(database) {}

    /// Adds a number that isn't there.
    [[nodiscard]] StoreResult<> add(const OptOut &optOut);
    [[nodiscard]] StoreResult<> remove(const QString &phone);
    /// In the order in which they came.
    [[nodiscard]] StoreResult<QList<OptOut>> all() const;

private:
    StoreDatabase &m_database;
};

} // namespace norvane
