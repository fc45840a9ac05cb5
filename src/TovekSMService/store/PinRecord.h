#pragma once

#include "TovekSMService/store/PinHistory.h"

#include <QString>

namespace norvane {

class StoreDatabase;

/// Which PINs were tried on which SIMs, and with what result.
class PinRecord
{
public:
    /// @param database  must outlive this object
    explicit PinRecord(StoreDatabase &database) : m_database(database) {}

    /// @throws StoreFailure
    PinHistory history(const QString &simId, const QString &pin) const;
    /// @param at  the moment, "yyyy-MM-ddTHH:mm:ss"
    /// @throws StoreFailure
    void setHistory(const QString &simId, const QString &pin, PinHistory history,
                    const QString &at);

private:
    StoreDatabase &m_database;
};

} // namespace norvane
