#include "support/ProxiedConnection.h"

#include <cerrno>
#include <utility>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace norvane {

ProxiedConnection::ProxiedConnection(int client, int server)
    : m_lanes{Lane{client, server, PostgresFraming(PostgresFraming::Side::Client)},
              Lane{server, client, PostgresFraming(PostgresFraming::Side::Server)}}
{}

void ProxiedConnection::close()
{
    if (!isOpen())
        return;
    ::close(m_lanes[ToServer].from);
    ::close(m_lanes[ToClient].from);
    for (Lane &lane : m_lanes) {
        lane.from = lane.to = -1;
        lane.waiting = {};
    }
}

pollfd ProxiedConnection::pollEntry(Direction direction) const
{
    const Lane &lane = m_lanes[direction];
    const Lane &back = m_lanes[direction == ToServer ? ToClient : ToServer];
    const int events = (lane.hasEnded ? 0 : POLLIN) | (back.outgoing.isEmpty() ? 0 : POLLOUT);
    // One that has ended reports so for ever.
    return {events == 0 ? -1 : lane.from, static_cast<short>(events), 0};
}

void ProxiedConnection::receive(Direction direction, Clock::time_point now)
{
    Lane &lane = m_lanes[direction];
    std::array<char, 16384> buffer{};
    while (isOpen() && !lane.hasEnded) {
        const ssize_t length = ::read(lane.from, buffer.data(), buffer.size());
        if (length < 0 && (errno == EAGAIN || errno == EINTR))
            return;
        lane.hasEnded = length <= 0;
        if (lane.hasEnded)
            lane.waiting.add({}, now);
        else
            for (PostgresMessage &message : lane.framing.read(QByteArray(buffer.data(), length)))
                take(direction, std::move(message), now);
    }
}

void ProxiedConnection::take(Direction direction, PostgresMessage message, Clock::time_point now)
{
    if (message.request() == PostgresMessage::Request::Encrypt) {
        m_lanes[ToClient].waiting.add({'\0', "N"}, now);
        return;
    }
    if (direction == ToClient && message.isReady())
        ++m_answersReceived;
    m_lanes[direction].waiting.add(std::move(message), now);
}

void ProxiedConnection::passFirst(Direction direction)
{
    Lane &lane = m_lanes[direction];
    const PostgresMessage message = lane.waiting.takeFirst();
    lane.isEnding = message.bytes.isEmpty();
    lane.outgoing += message.bytes;
    if (direction == ToClient && message.isReady())
        ++m_answersPassed;
    else if (direction == ToServer &&
             (message.isAnswered() || message.request() == PostgresMessage::Request::StartUp))
        ++m_answersDue;
}

void ProxiedConnection::flush(Direction direction)
{
    Lane &lane = m_lanes[direction];
    while (isOpen() && !lane.outgoing.isEmpty()) {
        const ssize_t length = ::send(lane.to, lane.outgoing.constData(),
                                      static_cast<std::size_t>(lane.outgoing.size()), MSG_NOSIGNAL);
        if (length < 0 && (errno == EAGAIN || errno == EINTR))
            return;
        if (length <= 0) {
            lane.outgoing.clear(); // its reader has gone, which the other direction tells
            return;
        }
        lane.outgoing.remove(0, length);
    }
    if (lane.isEnding)
        close();
}

} // namespace norvane
