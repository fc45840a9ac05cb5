#include "TovekSMService/history/OutcomeIndex.h"

#include "TovekSMService/history/IndexMark.h"
#include "TovekSMService/history/SearchedText.h"
#include "TovekSMService/store/StoreDatabase.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace norvane {

namespace {

/// A text to be indexed, or that was.
struct Entry
{
    qint64 id = 0;
    QString folded;
};

Entry entryOf(const StoreRow &row)
{
    return {row.value(0).toLongLong(),
            SearchedText::folded(row.value(1).toString(), row.value(2).toString())};
}

qint64 lastIdOf(const StoreRow &row)
{
    return row.value(0).toLongLong();
}

} // namespace

StoreResult<> OutcomeIndex::prepare()
{
    const bool isFile = m_database.kind() == StoreDatabase::Kind::File;
    StoreResult<> prepared = isFile ? prepareFile() : prepareServer();
    m_isUsable = prepared.has_value();
    return prepared;
}

/// Without contents: what is found is looked at once more. The texts are folded already.
StoreResult<> OutcomeIndex::prepareFile()
{
    return IndexMark(m_database).value().and_then([this](qint64 mark) -> StoreResult<> {
        if (mark > 0) // it is there
            return {};
        return m_database.together([&] {
            return m_database.write("DROP TABLE IF EXISTS outcome_search").and_then([this] {
                return m_database.write(
                    "CREATE VIRTUAL TABLE IF NOT EXISTS outcome_search USING fts5(folded, "
                    "content='', detail='none', columnsize=0, tokenize='trigram case_sensitive "
                    "1')");
            });
        });
    });
}

/// Whoever owns the tables makes it for all.
StoreResult<> OutcomeIndex::prepareServer()
{
    const auto isThere =
        m_database.row("SELECT to_regclass('outcome_search_trigrams') IS NOT NULL", {},
                       [](const StoreRow &row) { return row.value(0).toBool(); });
    if (!isThere)
        return failed(isThere.error());
    if (isThere->value_or(false))
        return {};
    return m_database.together([this] {
        return m_database.write("CREATE EXTENSION IF NOT EXISTS pg_trgm").and_then([this] {
            return m_database.write("CREATE INDEX IF NOT EXISTS outcome_search_trigrams ON "
                                    "outcome_search USING gin (folded gin_trgm_ops)");
        });
    });
}

StoreResult<int> OutcomeIndex::step(int maxRows)
{
    if (!m_isUsable && m_database.kind() == StoreDatabase::Kind::Server)
        return 0; // another engine has the index, or nobody
    const StoreResult<qint64> settled = settledId();
    if (!settled)
        return failed(settled.error());
    return m_database.together([&]() -> StoreResult<int> {
        if (const StoreResult<bool> mine = isMine(); !mine || !*mine)
            return mine.map([](bool) { return 0; });
        const StoreResult<qint64> mark = IndexMark(m_database).value();
        if (!mark)
            return failed(mark.error());
        return letGo(*mark, maxRows).and_then([&](int gone) {
            return takeIn(*mark, maxRows).map([gone](int taken) { return std::max(gone, taken); });
        });
    });
}

/// Of the engines that ask at a time, one fills the index: the key is "index" in ASCII.
StoreResult<bool> OutcomeIndex::isMine()
{
    if (m_database.kind() == StoreDatabase::Kind::File)
        return true;
    return m_database
        .row("SELECT pg_try_advisory_xact_lock(452857325944)", {},
             [](const StoreRow &row) { return row.value(0).toBool(); })
        .map([](std::optional<bool> isMine) { return isMine.value_or(false); });
}

/// Where several engines write, an outcome may be committed behind one of a higher id.
StoreResult<qint64> OutcomeIndex::settledId()
{
    if (m_database.kind() == StoreDatabase::Kind::File)
        return m_settled = std::numeric_limits<qint64>::max();
    if (m_sinceLook.isValid() && m_sinceLook.elapsed() < settleMs)
        return m_settled;
    return m_database.row("SELECT max(id) FROM outcome", {}, lastIdOf)
        .map([this](std::optional<qint64> last) {
            m_settled = m_seen;
            m_seen = last.value_or(0);
            m_sinceLook.start();
            return m_settled;
        });
}

StoreResult<int> OutcomeIndex::takeIn(qint64 mark, int maxRows)
{
    if (!m_isUsable)
        return 0;
    const auto entries = m_database.rows("SELECT id, phone, text FROM outcome WHERE id > ? AND "
                                         "id <= ? ORDER BY id LIMIT ?",
                                         {mark, m_settled, maxRows}, entryOf);
    if (!entries || entries->isEmpty())
        return entries.map([](const auto &) { return 0; });
    StoreResult<> added;
    for (auto entry = entries->cbegin(); added && entry != entries->cend(); ++entry)
        added = add(entry->id, entry->folded);
    return added.and_then([&] { return IndexMark(m_database).set(entries->constLast().id); })
        .map([&] { return static_cast<int>(entries->size()); });
}

StoreResult<int> OutcomeIndex::letGo(qint64 mark, int maxRows)
{
    const auto entries = m_database.rows(
        "SELECT id, phone, text FROM outcome_forgotten ORDER BY id LIMIT ?", {maxRows}, entryOf);
    if (!entries || entries->isEmpty())
        return entries.map([](const auto &) { return 0; });
    StoreResult<> removed;
    for (auto entry = entries->cbegin(); removed && entry != entries->cend(); ++entry) {
        removed = m_database.write("DELETE FROM outcome_forgotten WHERE id = ?", {entry->id});
        if (removed && entry->id <= mark)
            removed = remove(entry->id, entry->folded);
    }
    return removed.map([&] { return static_cast<int>(entries->size()); });
}

StoreResult<> OutcomeIndex::add(qint64 id, const QString &folded)
{
    if (m_database.kind() == StoreDatabase::Kind::File)
        return m_database.write("INSERT INTO outcome_search (rowid, folded) VALUES (?, ?)",
                                {id, folded});
    return m_database.write("INSERT INTO outcome_search (id, folded) VALUES (?, ?) "
                            "ON CONFLICT (id) DO UPDATE SET folded = excluded.folded",
                            {id, folded});
}

StoreResult<> OutcomeIndex::remove(qint64 id, const QString &folded)
{
    if (m_database.kind() == StoreDatabase::Kind::Server)
        return m_database.write("DELETE FROM outcome_search WHERE id = ?", {id});
    if (!m_isUsable)
        return {};
    return m_database.write("INSERT INTO outcome_search (outcome_search, rowid, folded) "
                            "VALUES ('delete', ?, ?)",
                            {id, folded});
}

} // namespace norvane
