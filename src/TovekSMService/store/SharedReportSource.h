#pragma once

#include "TovekSMService/store/ReportSource.h"

namespace norvane {

class StoreDatabase;

/// What all the engines of a database left.
class SharedReportSource : public ReportSource
{
public:
    /// @param database  is open; must outlive this object
    explicit SharedReportSource(const StoreDatabase &database) : m_database(database) {}

    StoreResult<> outcomes(const QString &since,
                           const std::function<void(const OutcomeRow &)> &take) const override;
    StoreResult<> received(const QString &since,
                           const std::function<void(const ReceivedMessage &)> &take) const override;

private:
    const StoreDatabase &m_database;
};

} // namespace norvane
