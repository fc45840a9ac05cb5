#pragma once

#include "TovekSMService/history/HistoryTable.h"
#include "TovekSMService/store/StoreFailure.h"

namespace norvane {

class StoreDatabase;

/// How far the search index of a table reaches: rows up to an id are in it.
class IndexMark
{
public:
    /// @param database  must outlive this object
    IndexMark(StoreDatabase &database, HistoryTable table) : m_database(database), m_table(table) {}

    /// 0 where there is no index, or one of texts that were folded in another way.
    [[nodiscard]] StoreResult<qint64> value() const;
    /// Whether a later version of Unicode folded the texts of the index.
    [[nodiscard]] StoreResult<bool> isOfLaterFolding() const;
    [[nodiscard]] StoreResult<> set(qint64 id);

private:
    StoreDatabase &m_database;
    const HistoryTable m_table;
};

} // namespace norvane
