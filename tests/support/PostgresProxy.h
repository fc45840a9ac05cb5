#pragma once

#include "support/PostgresTrap.h"
#include "support/ProxiedConnection.h"
#include "support/ProxyListener.h"

#include <QString>

#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace norvane {

/// Stands between clients and a PostgreSQL server. It counts messages, and makes the line slow,
/// dead or broken, at a chosen message if need be. It lives in a thread of its own; all functions
/// may be called from any thread.
class PostgresProxy
{
public:
    using Listen = ProxyListener::Kind; ///< where it listens; encryption is declined
    using Direction = ProxiedConnection::Direction;

    /// @param serverSocket  the server's socket, which need not be there yet
    explicit PostgresProxy(QString serverSocket, Listen listen = Listen::Socket);
    ~PostgresProxy();
    PostgresProxy(const PostgresProxy &) = delete;
    PostgresProxy &operator=(const PostgresProxy &) = delete;

    /// For libpq: the way to the server through this one, host and port.
    QString address() const { return m_listener.address(); }

    /// The time that each message takes in each direction: half of a round trip. Holds for those
    /// that are on their way, too.
    void setDelay(std::chrono::microseconds delay);
    /// Cuts all connections. What is on its way is lost.
    void cut();
    /// Whether new connections are refused, as where there is no server.
    void setRefusing(bool refusing);
    /// Takes everything and passes nothing on, not even the end of a connection. New connections
    /// are taken too.
    void hold();
    /// Holds one direction alone.
    void hold(Direction direction);
    /// Passes on what was held.
    void release();

    /// Sets a trap in place of the one before. It acts once.
    void setTrap(const PostgresTrap &trap);
    void clearTrap();
    bool hasTrapActed() const { return m_hasTrapActed; }

    /// Messages that were passed on. What a client says before it has a session doesn't count.
    int messages(Direction direction) const;
    /// Messages that have come and were not passed on yet; the end of a connection is one.
    int waiting(Direction direction) const;
    /// Answers that were passed on to their end. A client that waits for each pays a round trip for
    /// it. The first one of a connection opens its session.
    int answers() const { return m_answers; }
    /// Connections that were ever taken.
    int connections() const { return m_accepted; }
    int openConnections() const;

private:
    using Clock = ProxiedConnection::Clock;
    using Connection = std::shared_ptr<ProxiedConnection>;

    struct Way
    {
        bool isHeld = false;
        int messages = 0;
    };
    /// A trap whose message has come.
    struct Sprung
    {
        Connection connection;
        int answer = 0; ///< the one to wait for, as the connection counts them
    };

    void run();
    void step();
    Clock::duration untilFirstIsDue() const;
    void acceptClients();
    void passOn(const Connection &connection);
    void passMessages(const Connection &connection, Direction direction);
    bool isTrap(const PostgresMessage &message);
    void spring(const Connection &connection);
    bool isActDue() const;
    void act();
    void disarm();
    void wake() const;

    const QString m_serverSocket;
    ProxyListener m_listener;
    const int m_wake;
    mutable std::mutex m_mutex;
    std::vector<Connection> m_connections;
    std::array<Way, 2> m_ways;
    std::chrono::microseconds m_delay{0};
    std::optional<PostgresTrap> m_trap;
    std::optional<Sprung> m_sprung;
    std::atomic<bool> m_hasTrapActed = false;
    std::atomic<int> m_answers = 0;
    std::atomic<int> m_accepted = 0;
    std::atomic<bool> m_stop = false;
    std::thread m_thread;
};

} // namespace norvane
