#include "support/PostgresProxy.h"

#include <QFile>

#include <algorithm>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace norvane {

namespace {

/// @return a socket that doesn't block; -1 if there is no server
int connectTo(const QString &path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(path);
    if (name.size() >= static_cast<qsizetype>(sizeof address.sun_path))
        return -1;
    std::memcpy(address.sun_path, name.constData(), static_cast<std::size_t>(name.size()));
    const int server = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::connect(server, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 &&
        ::fcntl(server, F_SETFL, O_NONBLOCK) == 0)
        return server;
    ::close(server);
    return -1;
}

timespec timespecOf(std::chrono::nanoseconds time)
{
    constexpr qint64 second = 1'000'000'000;
    return {time.count() / second, time.count() % second};
}

} // namespace

PostgresProxy::PostgresProxy(QString serverSocket, Listen listen)
    : m_serverSocket(std::move(serverSocket)), m_listener(listen),
      m_wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    m_thread = std::thread([this] { run(); });
}

PostgresProxy::~PostgresProxy()
{
    m_stop = true;
    wake();
    m_thread.join();
    ::close(m_wake);
}

void PostgresProxy::wake() const
{
    const quint64 one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_wake, &one, sizeof one);
}

void PostgresProxy::setDelay(std::chrono::microseconds delay)
{
    const std::lock_guard lock(m_mutex);
    m_delay = delay;
    wake();
}

void PostgresProxy::cut()
{
    const std::lock_guard lock(m_mutex);
    for (const Connection &connection : m_connections)
        connection->close();
    wake();
}

void PostgresProxy::setRefusing(bool refusing)
{
    const std::lock_guard lock(m_mutex);
    m_listener.setRefusing(refusing);
    wake();
}

void PostgresProxy::hold()
{
    const std::lock_guard lock(m_mutex);
    for (Way &way : m_ways)
        way.isHeld = true;
}

void PostgresProxy::hold(Direction direction)
{
    const std::lock_guard lock(m_mutex);
    m_ways[direction].isHeld = true;
}

void PostgresProxy::release()
{
    const std::lock_guard lock(m_mutex);
    for (Way &way : m_ways)
        way.isHeld = false;
    wake();
}

void PostgresProxy::setTrap(const PostgresTrap &trap)
{
    const std::lock_guard lock(m_mutex);
    disarm();
    m_trap = trap;
    m_hasTrapActed = false;
    wake();
}

void PostgresProxy::clearTrap()
{
    const std::lock_guard lock(m_mutex);
    disarm();
    wake();
}

int PostgresProxy::messages(Direction direction) const
{
    const std::lock_guard lock(m_mutex);
    return m_ways[direction].messages;
}

int PostgresProxy::waiting(Direction direction) const
{
    const std::lock_guard lock(m_mutex);
    int count = 0;
    for (const Connection &connection : m_connections)
        count += connection->waiting(direction).count();
    return count;
}

int PostgresProxy::openConnections() const
{
    const std::lock_guard lock(m_mutex);
    return static_cast<int>(
        std::count_if(m_connections.begin(), m_connections.end(),
                      [](const Connection &connection) { return connection->isOpen(); }));
}

void PostgresProxy::run()
{
    while (!m_stop)
        step();
}

void PostgresProxy::step()
{
    std::vector<pollfd> entries{{m_wake, POLLIN, 0}};
    std::vector<Connection> connections;
    timespec limit{};
    {
        const std::lock_guard lock(m_mutex);
        entries.push_back({m_listener.descriptor(), POLLIN, 0});
        for (const Connection &connection : m_connections)
            for (const Direction direction : {Direction::ToServer, Direction::ToClient})
                entries.push_back(connection->pollEntry(direction));
        connections = m_connections;
        limit = timespecOf(untilFirstIsDue());
    }
    ::ppoll(entries.data(), entries.size(), &limit, nullptr);
    const std::lock_guard lock(m_mutex);
    quint64 count = 0;
    [[maybe_unused]] const ssize_t length = ::read(m_wake, &count, sizeof count);
    for (std::size_t i = 0; i < connections.size(); ++i) {
        for (const Direction direction : {Direction::ToServer, Direction::ToClient}) {
            if (entries[2 + 2 * i + direction].revents != 0)
                connections[i]->receive(direction, Clock::now());
        }
        passOn(connections[i]);
    }
    std::erase_if(m_connections,
                  [](const Connection &connection) { return !connection->isOpen(); });
    acceptClients();
}

PostgresProxy::Clock::duration PostgresProxy::untilFirstIsDue() const
{
    constexpr Clock::duration idle = std::chrono::seconds(1);
    const Clock::time_point now = Clock::now();
    Clock::time_point first = now + idle - m_delay;
    for (const Connection &connection : m_connections) {
        for (const Direction direction : {Direction::ToServer, Direction::ToClient}) {
            if (!m_ways[direction].isHeld && !connection->isBlocked(direction))
                first = std::min(first, connection->waiting(direction).firstArrival());
        }
    }
    return std::max(first + m_delay - now, Clock::duration(0));
}

void PostgresProxy::acceptClients()
{
    while (m_listener.descriptor() >= 0) {
        const int client = m_listener.accept();
        if (client < 0)
            return;
        ++m_accepted;
        const int server = connectTo(m_serverSocket);
        if (server >= 0)
            m_connections.push_back(std::make_shared<ProxiedConnection>(client, server));
        else
            ::close(client);
    }
}

void PostgresProxy::passOn(const Connection &connection)
{
    for (const Direction direction : {Direction::ToServer, Direction::ToClient}) {
        passMessages(connection, direction);
        connection->flush(direction);
    }
    if (isActDue())
        act();
}

void PostgresProxy::passMessages(const Connection &connection, Direction direction)
{
    Way &way = m_ways[direction];
    const DelayedMessages &waiting = connection->waiting(direction);
    const Clock::time_point arrivedUntil = Clock::now() - m_delay;
    while (!way.isHeld && !connection->isBlocked(direction) && waiting.isFirstDue(arrivedUntil)) {
        const bool isTrapped = direction == Direction::ToServer && isTrap(waiting.first());
        if (isTrapped && m_trap->moment == PostgresTrap::Moment::BeforeMessage) {
            spring(connection);
            return;
        }
        way.messages += waiting.first().type != 0 ? 1 : 0;
        m_answers += waiting.first().isReady() ? 1 : 0;
        const bool isAnswered = waiting.first().isAnswered();
        connection->passFirst(direction);
        if (isTrapped) {
            spring(connection);
            m_sprung->answer = isAnswered ? connection->answersDue() : 0;
        }
    }
}

/// Counts the message if the trap counts it.
bool PostgresProxy::isTrap(const PostgresMessage &message)
{
    if (!m_trap || m_sprung || message.type == 0 || !message.bytes.contains(m_trap->containing))
        return false;
    return --m_trap->message == 0;
}

/// From here on, the client's next messages don't reach the server.
void PostgresProxy::spring(const Connection &connection)
{
    m_sprung = Sprung{connection, 0};
    connection->setBlocked(Direction::ToServer, true);
    connection->setBlocked(Direction::ToClient,
                           m_trap->moment == PostgresTrap::Moment::AfterMessage);
    m_hasTrapActed = m_trap->act == PostgresTrap::Act::HoldClient;
}

bool PostgresProxy::isActDue() const
{
    if (!m_sprung || m_trap->act == PostgresTrap::Act::HoldClient)
        return false;
    const ProxiedConnection &connection = *m_sprung->connection;
    const bool isAnswerAwaited = m_trap->moment == PostgresTrap::Moment::AfterAnswer;
    if (!connection.isOpen() || (connection.hasServerEnded() && !isAnswerAwaited))
        return true;
    const bool isAnswered = isAnswerAwaited ? connection.answersPassed() >= m_sprung->answer &&
                                                  connection.isFlushed(Direction::ToClient)
                                            : connection.answersReceived() >= m_sprung->answer;
    return isAnswered && connection.isFlushed(Direction::ToServer);
}

void PostgresProxy::act()
{
    if (m_trap->act == PostgresTrap::Act::Cut)
        m_sprung->connection->close();
    for (Way &way : m_ways)
        way.isHeld = way.isHeld || m_trap->act == PostgresTrap::Act::Hold;
    disarm();
    m_hasTrapActed = true;
}

void PostgresProxy::disarm()
{
    if (m_sprung) {
        for (const Direction direction : {Direction::ToServer, Direction::ToClient})
            m_sprung->connection->setBlocked(direction, false);
    }
    m_sprung.reset();
    m_trap.reset();
}

} // namespace norvane
