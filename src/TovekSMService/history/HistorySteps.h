#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "contract/History.h"

#include <QList>

namespace norvane {

class StoreDatabase;

/// What happened to one message.
class HistorySteps
{
public:
    /// @param database  must outlive this object
    explicit HistorySteps(StoreDatabase &database) : m_database(database) {}

    /// By their moments, the first one first, and those of one moment in the order of HistoryStep;
    /// none for a message that isn't known.
    /// @param message  its id in the history
    [[nodiscard]] StoreResult<QList<HistoryEvent>> of(qint64 message) const;

private:
    StoreResult<QList<HistoryEvent>> collected(qint64 message) const;
    StoreResult<QList<HistoryEvent>> ofOutcome(qint64 outcome) const;
    StoreResult<> addOutcome(const char *statement, qint64 id, QList<HistoryEvent> &events) const;
    StoreResult<> addAttempts(qint64 message, QList<HistoryEvent> &events) const;
    StoreResult<> addParts(qint64 message, QList<HistoryEvent> &events) const;

    StoreDatabase &m_database;
};

} // namespace norvane
