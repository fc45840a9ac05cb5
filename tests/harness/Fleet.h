#pragma once

#include "harness/DoubtJudge.h"
#include "harness/QueueDatabase.h"
#include "harness/SharingEngine.h"
#include "harness/World.h"
#include "support/PostgresServer.h"

#include <QHash>
#include <QSet>

#include <array>
#include <functional>
#include <optional>

namespace norvane {

/// Engines that share a queue, and the account of what was queued.
class Fleet
{
public:
    static constexpr int size = 4;

    explicit Fleet(const RunOptions &options);

    PostgresServer server{PostgresServer::Durability::Flushed};

    /// Starts all of them.
    bool begin();
    SharingEngine &engine(int index) { return *m_engines.at(static_cast<std::size_t>(index)); }
    int random(int least, int max);

    /// What is done from here on belongs to this cycle.
    void beginCycle(int cycle);
    /// Adds to the words that faults of the cycle's messages are explained by.
    void note(const QString &deed) { m_deeds += u' ' + deed; }
    /// Queues messages that are due, in one call, and doesn't wait for the answer.
    void queue(int index, const QList<Shape> &shapes);
    /// Waits until a part of the engine's is leaving, or nothing waits that it could send.
    void waitForPart(int index);
    /// Holds what the engine says in the middle of beginning a part, until it has come back by
    /// another connection, and carries it out then.
    void holdBeginning(int index);
    /// Cuts the engine off until it keeps at home what became of a part, and kills it twice before
    /// it can hand that over.
    void killTwice(int index);
    /// Makes an engine look as if it had been silent until others have taken over what it holds.
    void waitForTakeover(int index);
    void kill(int index);
    /// The database and all engines are well again, but for one if that is given.
    void letGo(int except = -1);
    /// Lets everything go, and waits until the queue is worked off.
    void recover();
    /// Whether something did not come that was waited for. Nothing is worth waiting for then.
    bool isStuck() const { return m_problems.stuck > 0; }

    /// Ends all engines, and counts.
    Tally close(int cycles);

private:
    /// A call that was not answered yet, and the messages of the account that it queues.
    struct Call
    {
        QDBusPendingCall answer;
        qsizetype first = 0;
        qsizetype count = 0;
    };

    void stuck(const QString &what);
    int limit() const;
    /// Waits for what only a hang keeps from coming. That it did not come is a fault.
    bool await(const QString &what, const std::function<bool()> &condition);
    void takeAnswers();
    bool isQuiet();
    /// @return nothing while the database is away
    std::optional<QSet<QString>> knownInDoubt();
    QHash<QString, QSet<int>> receivedParts() const;
    void restartWithConsoles();
    void hearRest();
    void account();
    void accountTold();
    void explain(Tally &tally) const;

    const RunOptions m_options;
    QueueDatabase m_database{server};
    std::array<std::unique_ptr<SharingEngine>, size> m_engines;
    Account m_account;
    Tally m_problems;
    DoubtJudge m_doubts{m_database, m_problems};
    QList<Call> m_calls;
    QString m_deeds;
    QHash<QString, QString> m_deedsOf; ///< of each message's cycle, by its phone
    QSet<QString> m_known;             ///< messages in doubt whose engine knows that they were sent
    int m_made = 0;
    std::mt19937 m_random;
};

} // namespace norvane
