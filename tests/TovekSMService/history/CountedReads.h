#pragma once

#include "TovekSMService/store/StoreDatabase.h"

namespace norvane {

/// A database that is read through another one, and counts the statements.
class CountedReads : public StoreDatabase
{
public:
    /// @param database  must outlive this object
    explicit CountedReads(const StoreDatabase &database) : m_database(database) {}

    /// How many there were since the last call.
    int takeCount() { return std::exchange(m_count, 0); }

    Kind kind() const override { return m_database.kind(); }
    Access access() const override { return Access::Reading; }
    Reopening reopening() const override { return m_database.reopening(); }
    StoreResult<> probe() override { return {}; }
    StoreResult<bool> mayDoChores() override { return false; }

private:
    StoreResult<> begin() override { return {}; }
    StoreResult<> beginLook() override { return {}; }
    StoreResult<> commit() override { return {}; }
    void rollBack() override {}
    StoreResult<> carryOut(const char * /*text*/, const QVariantList & /*values*/) override
    {
        return failed(refusal());
    }
    StoreResult<int> carryOutAndCount(const char * /*text*/,
                                      const QVariantList & /*values*/) override
    {
        return failed(refusal());
    }
    StoreResult<qint64> carryOutInsert(const char * /*text*/,
                                       const QVariantList & /*values*/) override
    {
        return failed(refusal());
    }
    StoreResult<> query(const char *text, const QVariantList &values,
                        const Take &take) const override
    {
        ++m_count;
        return m_database.each(text, values, take);
    }
    static StoreFailure refusal()
    {
        return {StoreFailure::Kind::ReadOnly, QStringLiteral("it is only read")};
    }

    const StoreDatabase &m_database;
    mutable int m_count = 0;
};

} // namespace norvane
