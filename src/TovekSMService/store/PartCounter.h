#pragma once

#include "TovekSMService/store/StoreFailure.h"

#include <QString>

namespace norvane {

class StoreDatabase;

/// How many parts have left, or may have.
struct PartCounts
{
    qint64 inMinute = 0;
    qint64 inDay = 0;
};

/// Counts the parts that leave, by the minute and the day of the wall clock. A moment is
/// "yyyy-MM-ddTHH:mm:ss".
class PartCounter
{
public:
    /// @param database  must outlive this object
    explicit PartCounter(StoreDatabase &database) : m_database(database) {}

    [[nodiscard]] StoreResult<PartCounts> counts(const QString &at) const;
    [[nodiscard]] StoreResult<> count(const QString &at, int parts = 1);
    /// Takes back count(): the parts did not leave.
    [[nodiscard]] StoreResult<> uncount(const QString &at, int parts = 1);

private:
    StoreResult<> forgetOthers(const QString &at);

    StoreDatabase &m_database;
};

} // namespace norvane
