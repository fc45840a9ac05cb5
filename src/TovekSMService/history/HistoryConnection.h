#pragma once

#include "TovekSMService/history/OutcomeIndex.h"
#include "TovekSMService/store/StoreFailure.h"
#include "TovekSMService/time/Deadline.h"

#include <QString>

#include <memory>
#include <optional>

namespace norvane {

class StoreDatabase;

/// Where messages are kept, for a connection beside the engine's own.
struct HistoryStorage
{
    QString file;     ///< of a queue that is the engine's own
    QString conninfo; ///< of one that is shared, as libpq takes it; empty for none
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
    bool isOpen() const { return m_database != nullptr; }
    /// A step of OutcomeIndex.
    [[nodiscard]] StoreResult<int> index(int maxRows);

private:
    StoreResult<> connect();
    void prepareIndex();

    const HistoryStorage m_source;
    TimeSource &m_time;
    std::unique_ptr<StoreDatabase> m_database;
    std::unique_ptr<OutcomeIndex> m_index;
    std::optional<StoreFailure> m_failure; ///< of the last attempt
    Deadline m_again;
    bool m_isPrepared = false; ///< the index, or it can't be
    bool m_isWarned = false;   ///< that there is no index
};

} // namespace norvane
