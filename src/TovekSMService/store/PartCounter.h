#pragma once

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

    /// @throws StoreFailure
    PartCounts counts(const QString &at) const;
    /// @throws StoreFailure
    void count(const QString &at);
    /// Takes back count(): the part did not leave.
    /// @throws StoreFailure
    void uncount(const QString &at);

private:
    StoreDatabase &m_database;
};

} // namespace norvane
