#pragma once

#include "TovekSMService/store/PinHistory.h"
#include "TovekSMService/store/StoreFailure.h"

#include <QString>

namespace norvane {

class StoreDatabase;

/// Which PINs were tried on which SIMs, and with what result.
class PinRecord
{
public:
    /// @param database  must outlive this object
    explicit PinRecord(StoreDatabase &database) : m_database(database) {}

    [[nodiscard]] StoreResult<PinHistory> history(const QString &simId, const QString &pin) const;
    /// @param at  the moment, "yyyy-MM-ddTHH:mm:ss"
    [[nodiscard]] StoreResult<> setHistory(const QString &simId, const QString &pin,
                                           PinHistory history, const QString &at);

private:
    StoreDatabase &m_database;
};

} // namespace norvane
