#include "TovekSMService/history/HistoryConnection.h"

#include "TovekSMService/history/IndexMark.h"
#include "TovekSMService/log/Categories.h"
#include "TovekSMService/store/PostgresDatabase.h"
#include "TovekSMService/store/SqliteDatabase.h"

#include <algorithm>
#include <array>
#include <utility>

namespace norvane {

namespace {

constexpr qint64 againMs = 1000;
constexpr qint64 prepareAgainMs = 3'600'000; ///< in which what kept it from being made may be over

constexpr std::array historyTables = {HistoryTable::Outcomes, HistoryTable::Received};

/// Whether what failed may be done the next time.
bool isPassing(StoreFailure::Kind kind)
{
    return kind == StoreFailure::Kind::Busy || kind == StoreFailure::Kind::Away ||
           kind == StoreFailure::Kind::Exists;
}

} // namespace

HistoryConnection::HistoryConnection(const HistoryStorage &source, TimeSource &time)
    : m_source(source), m_time(time), m_again(time), m_prepareAgain(time)
{}

HistoryConnection::~HistoryConnection() = default;

void HistoryConnection::close()
{
    giveUp();
    m_failure.reset();
}

void HistoryConnection::giveUp()
{
    m_indexes.clear();
    m_database.reset();
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
    m_indexes.clear();
    for (const HistoryTable table : historyTables)
        m_indexes.emplace_back(*m_database, table, m_time);
    m_prepareAgain.setRemainingTime(0);
    return m_database.get();
}

StoreResult<int> HistoryConnection::index(int maxRows)
{
    return open().and_then([&](StoreDatabase *) { return prepareIndexes(); }).and_then([&] {
        int rows = 0;
        for (TextIndex &index : m_indexes) {
            const StoreResult<int> taken = index.step(maxRows);
            if (!taken)
                return taken;
            rows = std::max(rows, *taken);
        }
        return StoreResult<int>(rows);
    });
}

/// Those that can't be made are tried again now and then; where another engine is about to make
/// them, at once.
StoreResult<> HistoryConnection::prepareIndexes()
{
    if (!m_prepareAgain.hasExpired())
        return {};
    StoreResult<> prepared;
    for (TextIndex &index : m_indexes) {
        if (prepared && !index.isUsable())
            prepared = index.prepare();
    }
    if (prepared || isPassing(prepared.error().kind()))
        return prepared;
    m_prepareAgain.setRemainingTime(prepareAgainMs);
    if (!std::exchange(m_isWarned, true))
        qCWarning(logStore).noquote()
            << "messages are looked for without an index:" << prepared.error().text();
    return {};
}

bool HistoryConnection::giveUpIndexes()
{
    if (!m_database || m_database->kind() != StoreDatabase::Kind::File)
        return false;
    m_indexes.clear();
    m_prepareAgain.setRemainingTime(0);
    bool wereInUse = false;
    for (const HistoryTable table : historyTables) {
        m_indexes.emplace_back(*m_database, table, m_time);
        IndexMark mark(*m_database, table);
        const StoreResult<qint64> value = mark.value();
        if (value && *value > 0 && mark.set(0))
            wereInUse = true;
    }
    if (wereInUse)
        qCWarning(logStore) << "the search index is made anew: the file is damaged";
    return wereInUse;
}

StoreResult<> HistoryConnection::connect()
{
    if (!m_source.refusal.isEmpty())
        return failed(StoreFailure(StoreFailure::Kind::Other, m_source.refusal));
    if (m_source.isFile()) {
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
