#include "TovekSMService/history/TextIndex.h"

#include "TovekSMService/history/IndexMark.h"
#include "TovekSMService/history/SearchedText.h"
#include "TovekSMService/store/StoreDatabase.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

namespace norvane {

namespace {

struct IndexStatements
{
    std::array<const char *, 4> makeInFile;
    const char *last;
    const char *next;
    const char *forgotten;
    const char *endForgotten;
    const char *addInFile;
    const char *addInServer;
    const char *removeInFile;
    const char *removeInServer;
};

// The index of a file is without contents: what is found is looked at once more. Its texts are
// folded already.
#define NORVANE_INDEX(table)                                                                       \
    {                                                                                              \
        {"DROP TABLE IF EXISTS " table "_search_terms", "DROP TABLE IF EXISTS " table "_search",   \
         "CREATE VIRTUAL TABLE " table "_search USING fts5(folded, content='', detail='none', "    \
         "columnsize=0, tokenize='trigram case_sensitive 1')",                                     \
         "CREATE VIRTUAL TABLE " table "_search_terms USING fts5vocab(" table                      \
         "_search, instance)"},                                                                    \
            "SELECT max(id) FROM " table,                                                          \
            "SELECT id, phone, text FROM " table " WHERE id > ? AND id <= ? ORDER BY id LIMIT ?",  \
            "SELECT id, phone, text FROM " table "_forgotten ORDER BY id LIMIT ?",                 \
            "DELETE FROM " table "_forgotten WHERE id = ?",                                        \
            "INSERT INTO " table "_search (rowid, folded) VALUES (?, ?)",                          \
            "INSERT INTO " table "_search (id, folded) VALUES (?, ?) "                             \
            "ON CONFLICT (id) DO UPDATE SET folded = excluded.folded",                             \
            "INSERT INTO " table "_search (" table "_search, rowid, folded) "                      \
            "VALUES ('delete', ?, ?)",                                                             \
            "DELETE FROM " table "_search WHERE id = ?"                                            \
    }
constexpr IndexStatements outcomeIndex = NORVANE_INDEX("outcome");
constexpr IndexStatements receivedIndex = NORVANE_INDEX("received");
#undef NORVANE_INDEX

const IndexStatements &statementsFor(HistoryTable table)
{
    return table == HistoryTable::Outcomes ? outcomeIndex : receivedIndex;
}

/// A text to be indexed, or that was.
struct Entry
{
    qint64 id = 0;
    QString text;
};

Entry entryOf(const StoreRow &row)
{
    return {row.value(0).toLongLong(),
            SearchedText::index(row.value(1).toString(), row.value(2).toString())};
}

qint64 lastIdOf(const StoreRow &row)
{
    return row.value(0).toLongLong();
}

} // namespace

/// A server has it with its tables.
StoreResult<> TextIndex::prepare()
{
    const bool isFile = m_database.kind() == StoreDatabase::Kind::File;
    StoreResult<> prepared = isFile ? prepareFile() : StoreResult<>();
    m_isUsable = prepared.has_value();
    return prepared;
}

StoreResult<> TextIndex::prepareFile()
{
    return IndexMark(m_database, m_table).value().and_then([this](qint64 mark) -> StoreResult<> {
        if (mark > 0) // it is there
            return {};
        return m_database.together([this] {
            StoreResult<> made;
            for (const char *const statement : statementsFor(m_table).makeInFile) {
                if (made)
                    made = m_database.write(statement);
            }
            return made;
        });
    });
}

StoreResult<int> TextIndex::step(int maxRows)
{
    const StoreResult<qint64> settled = settledId();
    if (!settled)
        return failed(settled.error());
    return m_database.together([&]() -> StoreResult<int> {
        if (const StoreResult<bool> mine = isMine(); !mine || !*mine)
            return mine.map([](bool) { return 0; });
        const StoreResult<qint64> mark = IndexMark(m_database, m_table).value();
        if (!mark)
            return failed(mark.error());
        return removeForgotten(*mark, maxRows).and_then([&](int gone) {
            return indexNext(*mark, maxRows).map([gone](int taken) {
                return std::max(gone, taken);
            });
        });
    });
}

/// Of the engines that ask at a time, one fills the index: the key is "index" in ASCII.
StoreResult<bool> TextIndex::isMine()
{
    if (m_database.kind() == StoreDatabase::Kind::File)
        return true;
    return m_database
        .row("SELECT pg_try_advisory_xact_lock(452857325944)", {},
             [](const StoreRow &row) { return row.value(0).toBool(); })
        .and_then([this](std::optional<bool> isMine) {
            return isMine.value_or(false) ? isOfThisFolding() : StoreResult<bool>(false);
        });
}

/// Engines of two versions would begin the index anew in turns: the later one has it.
StoreResult<bool> TextIndex::isOfThisFolding()
{
    return IndexMark(m_database, m_table).isOfLaterFolding().map([](bool isLater) {
        return !isLater;
    });
}

/// Where several engines write, a row may be committed behind one of a higher id.
StoreResult<qint64> TextIndex::settledId()
{
    if (m_database.kind() == StoreDatabase::Kind::File)
        return m_settled = std::numeric_limits<qint64>::max();
    if (m_sinceLook.isValid() && m_sinceLook.elapsed() < settleMs)
        return m_settled;
    return m_database.row(statementsFor(m_table).last, {}, lastIdOf)
        .map([this](std::optional<qint64> last) {
            m_settled = m_seen;
            m_seen = last.value_or(0);
            m_sinceLook.start();
            return m_settled;
        });
}

StoreResult<int> TextIndex::indexNext(qint64 mark, int maxRows)
{
    if (!m_isUsable)
        return 0;
    const auto entries =
        m_database.rows(statementsFor(m_table).next, {mark, m_settled, maxRows}, entryOf);
    if (!entries || entries->isEmpty())
        return entries.map([](const auto &) { return 0; });
    StoreResult<> added;
    for (auto entry = entries->cbegin(); added && entry != entries->cend(); ++entry)
        added = add(entry->id, entry->text);
    return added
        .and_then([&] { return IndexMark(m_database, m_table).set(entries->constLast().id); })
        .map([&] { return static_cast<int>(entries->size()); });
}

StoreResult<int> TextIndex::removeForgotten(qint64 mark, int maxRows)
{
    const IndexStatements &statements = statementsFor(m_table);
    const auto entries = m_database.rows(statements.forgotten, {maxRows}, entryOf);
    if (!entries || entries->isEmpty())
        return entries.map([](const auto &) { return 0; });
    StoreResult<> removed;
    for (auto entry = entries->cbegin(); removed && entry != entries->cend(); ++entry) {
        removed = m_database.write(statements.endForgotten, {entry->id});
        // A server may hold what was indexed before the index was begun anew.
        if (removed && (entry->id <= mark || m_database.kind() == StoreDatabase::Kind::Server))
            removed = remove(entry->id, entry->text);
    }
    return removed.map([&] { return static_cast<int>(entries->size()); });
}

StoreResult<> TextIndex::add(qint64 id, const QString &text)
{
    const bool isFile = m_database.kind() == StoreDatabase::Kind::File;
    const IndexStatements &statements = statementsFor(m_table);
    return m_database.write(isFile ? statements.addInFile : statements.addInServer, {id, text});
}

StoreResult<> TextIndex::remove(qint64 id, const QString &text)
{
    if (m_database.kind() == StoreDatabase::Kind::Server)
        return m_database.write(statementsFor(m_table).removeInServer, {id});
    if (!m_isUsable)
        return {};
    return m_database.write(statementsFor(m_table).removeInFile, {id, text});
}

} // namespace norvane
