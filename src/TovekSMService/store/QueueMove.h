#pragma once

#include "TovekSMService/store/StoreFailure.h"

#include <QList>
#include <QString>
#include <QVariant>

namespace norvane {

class Store;
class StoreDatabase;

/// Carries the waiting messages between the engine's own file and the database that it shares. Each
/// is in one of them, or on its way: a move that was cut short, at whatever point, loses nothing
/// and sends nothing twice, and is finished by the next one.
///
/// A message goes in steps, a batch at a time: out of the queue and into a place where nothing is
/// sent from; into the other queue, once; out of that place. It takes with it when it was queued,
/// its attempts, and what is known of parts that were sent.
class QueueMove
{
public:
    /// Messages that go together.
    static constexpr int batchRows = 1000;

    /// @param store  is shared, open, and of an engine that doesn't run; must outlive this object
    explicit QueueMove(Store &store) : m_store(store) {}

    /// Moves the file's messages, and copies its list of opt-outs. One of which a part may have
    /// left when the engine ended fails by that.
    /// @return how many messages
    [[nodiscard]] StoreResult<int> intoDatabase();
    /// Moves the messages of the database that wait, and that no other engine holds, into the file,
    /// and copies the list of opt-outs. One of this engine's that may have left fails by that.
    [[nodiscard]] StoreResult<int> intoFile();

    /// Messages of the file that are not moved, and those that are on their way into the database.
    [[nodiscard]] static StoreResult<int> left(const Store &store);

private:
    StoreResult<int> takeOut();
    StoreResult<int> putIn();
    StoreResult<> insert(const QVariantList &row, const QList<QVariantList> &parts);
    StoreResult<> failInDoubt(qint64 id);
    StoreResult<> insertIntoFile(const QVariantList &row, const QList<QVariantList> &parts);
    StoreResult<int> takeFromDatabase();
    StoreResult<int> putIntoFile(const QString &token);
    StoreResult<> finishInterrupted();
    StoreResult<QString> pendingToken() const;
    StoreResult<> copyOptOuts(const StoreDatabase &from, StoreDatabase &to);

    Store &m_store;
};

} // namespace norvane
