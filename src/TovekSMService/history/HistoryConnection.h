#pragma once

#include "TovekSMService/history/TextIndex.h"
#include "TovekSMService/store/StoreFailure.h"
#include "TovekSMService/time/Deadline.h"

#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace norvane {

class StoreDatabase;

/// Where messages are kept, for a connection beside the engine's own.
struct HistoryStorage
{
    QString file;          ///< of a queue that is the engine's own
    QString conninfo = {}; ///< of one that is shared, as libpq takes it; empty for none
    QString refusal = {};  ///< why there is to be no connection to a shared one; empty if there is

    /// Whether it is the file that is read.
    bool isFile() const { return conninfo.isEmpty() && refusal.isEmpty(); }
};

/// A connection of its own to where messages are kept. Belongs to the thread that opens it.
class HistoryConnection
{
public:
    /// @param time  must outlive this object
    HistoryConnection(const HistoryStorage &source, TimeSource &time);
    ~HistoryConnection();

    /// Opens it where it isn't open, but not at once again where that failed.
    /// @return the database, until close()
    [[nodiscard]] StoreResult<StoreDatabase *> open();
    void close();
    /// Closes one that has failed. Where it could not be opened it is left alone for a while.
    void giveUp();
    bool isOpen() const { return m_database != nullptr; }
    /// A step of TextIndex for each table.
    /// @return the rows of the larger one
    [[nodiscard]] StoreResult<int> index(int maxRows);
    /// The file is damaged somewhere: its search indexes are made anew.
    /// @return whether they were in use, and may be what is damaged
    bool giveUpIndexes();

private:
    StoreResult<> connect();
    StoreResult<> prepareIndexes();

    const HistoryStorage m_source;
    TimeSource &m_time;
    std::unique_ptr<StoreDatabase> m_database;
    std::vector<TextIndex> m_indexes;
    std::optional<StoreFailure> m_failure; ///< of the last attempt
    Deadline m_again;
    Deadline m_prepareAgain; ///< the indexes, where that was refused
    bool m_isWarned = false; ///< that there is none
};

} // namespace norvane
