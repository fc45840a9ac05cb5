#include "TovekSMService/history/HistoryConnection.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/store/PostgresDatabase.h"
#include "TovekSMService/store/SqliteDatabase.h"

#include <utility>

namespace norvane {

namespace {

constexpr qint64 againMs = 1000;

} // namespace

HistoryConnection::HistoryConnection(const HistoryStorage &source, TimeSource &time)
    : m_source(source), m_time(time), m_again(time)
{}

HistoryConnection::~HistoryConnection() = default;

void HistoryConnection::close()
{
    m_index.reset();
    m_database.reset();
    m_failure.reset();
}

StoreResult<StoreDatabase *> HistoryConnection::open()
{
    if (m_database)
        return m_database.get();
    if (m_failure && !m_again.hasExpired())
        return failed(*m_failure);
    m_failure.reset();
    if (const StoreResult<> connected = connect(); !connected) {
        m_database.reset();
        m_failure = connected.error();
        m_again.setRemainingTime(againMs);
        return failed(connected.error());
    }
    m_index = std::make_unique<OutcomeIndex>(*m_database, m_time);
    m_isPrepared = false;
    return m_database.get();
}

StoreResult<int> HistoryConnection::index(int maxRows)
{
    return open().and_then([&](StoreDatabase *) {
        if (!m_isPrepared)
            prepareIndex();
        return m_index->step(maxRows);
    });
}

/// One that can't be made is not tried again while the connection stands.
void HistoryConnection::prepareIndex()
{
    const StoreResult<> prepared = m_index->prepare();
    m_isPrepared = prepared || prepared.error().kind() != StoreFailure::Kind::Busy;
    if (!prepared && m_isPrepared && !std::exchange(m_isWarned, true))
        qCWarning(logStore).noquote()
            << "messages are looked for without an index:" << prepared.error().text();
}

StoreResult<> HistoryConnection::connect()
{
    if (m_source.conninfo.isEmpty()) {
        auto file = std::make_unique<SqliteDatabase>(m_source.file);
        StoreResult<> opened = file->openBeside();
        m_database = std::move(file);
        return opened;
    }
    auto server = std::make_unique<PostgresDatabase>(m_source.conninfo, m_time);
    StoreResult<> opened = server->open();
    m_database = std::move(server);
    // Nobody takes the notifications of this one.
    return opened.and_then([this] { return m_database->write("UNLISTEN norvane_queue"); });
}

} // namespace norvane
