#pragma once

#include "TovekSMService/store/Settlement.h"
#include "TovekSMService/store/StoreFailure.h"

#include <QList>

namespace norvane {

class StoreDatabase;

/// What became of messages of a shared queue while that could not be reached, kept in the engine's
/// own file until it is handed over.
class KeptSettlements
{
public:
    /// @param database  the engine's own; must outlive this object
    explicit KeptSettlements(StoreDatabase &database) : m_database(database) {}

    /// The engine's own.
    StoreDatabase &database() { return m_database; }

    /// Keeps these in place of what was kept before.
    [[nodiscard]] StoreResult<> keep(const QList<Settlement> &settlements);
    [[nodiscard]] StoreResult<QList<Settlement>> all() const;
    [[nodiscard]] StoreResult<> clear() { return keep({}); }

private:
    StoreDatabase &m_database;
};

} // namespace norvane
