#pragma once

#include "TovekSMService/store/StoreFailure.h"

namespace norvane {

class StoreDatabase;

/// How far the search index reaches: outcomes up to an id are in it.
class IndexMark
{
public:
    /// @param database  must outlive this object
    explicit IndexMark(StoreDatabase &database) : m_database(database) {}

    /// 0 where there is no index, or one of texts that were folded in another way.
    [[nodiscard]] StoreResult<qint64> value() const;
    [[nodiscard]] StoreResult<> set(qint64 id);

private:
    StoreDatabase &m_database;
};

} // namespace norvane
