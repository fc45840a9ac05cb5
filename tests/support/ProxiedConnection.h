#pragma once

#include "support/DelayedMessages.h"

#include <array>

struct pollfd;

namespace norvane {

/// A client and a server with a proxy between them: two sockets, and for each direction what has
/// been taken from one and not yet been given to the other.
class ProxiedConnection
{
public:
    using Clock = DelayedMessages::Clock;
    enum Direction { ToServer, ToClient };

    /// Takes over two sockets that don't block.
    ProxiedConnection(int client, int server);
    ~ProxiedConnection() { close(); }
    ProxiedConnection(const ProxiedConnection &) = delete;
    ProxiedConnection &operator=(const ProxiedConnection &) = delete;

    bool isOpen() const { return m_lanes[ToServer].from >= 0; }
    void close();

    /// What to wait for at the end where messages in this direction come from.
    pollfd pollEntry(Direction direction) const;

    /// Takes what has come for this direction. An offer to encrypt is declined; an end waits behind
    /// what came before it.
    void receive(Direction direction, Clock::time_point now);
    const DelayedMessages &waiting(Direction direction) const { return m_lanes[direction].waiting; }
    /// Passes on the first message that waits.
    void passFirst(Direction direction);
    /// Writes what was passed on, as far as the socket takes it. Closes behind an end.
    void flush(Direction direction);
    bool isFlushed(Direction direction) const { return m_lanes[direction].outgoing.isEmpty(); }

    /// Nothing is passed on in this direction any more, until it is unblocked.
    void setBlocked(Direction direction, bool blocked) { m_lanes[direction].isBlocked = blocked; }
    bool isBlocked(Direction direction) const { return m_lanes[direction].isBlocked; }

    bool hasServerEnded() const { return m_lanes[ToClient].hasEnded; }

    /// Answers that the server owes for what was passed on to it, that have come from it, and that
    /// were passed on to the client, each counted to its end and from the beginning.
    int answersDue() const { return m_answersDue; }
    int answersReceived() const { return m_answersReceived; }
    int answersPassed() const { return m_answersPassed; }

private:
    struct Lane
    {
        int from;
        int to;
        PostgresFraming framing;
        DelayedMessages waiting = {};
        QByteArray outgoing = {};
        bool hasEnded = false; ///< nothing more comes
        bool isEnding = false; ///< the end was passed on
        bool isBlocked = false;
    };

    void take(Direction direction, PostgresMessage message, Clock::time_point now);

    std::array<Lane, 2> m_lanes;
    int m_answersDue = 0;
    int m_answersReceived = 0;
    int m_answersPassed = 0;
};

} // namespace norvane
