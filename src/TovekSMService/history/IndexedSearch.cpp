#include "TovekSMService/history/IndexedSearch.h"

#include "TovekSMService/history/HistoryStatements.h"
#include "TovekSMService/history/QueryLimit.h"
#include "TovekSMService/history/SearchedText.h"

#include <QList>
#include <QStringList>

#include <algorithm>
#include <string>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype pieceLength = 3;
constexpr qsizetype maxPieces = 24; ///< that are asked for; the rest is left to the comparison
constexpr int maxTerms = 1000;      ///< of a file's index that begin with a shorter text
constexpr int rowsAtOnce = 2000;    ///< of the server

struct SearchStatements
{
    const char *terms;
    const char *inFile;
    const char *inServer;
};

// Terms are looked up one behind the other, as each of them stands there once for each of its rows.
// They are of three characters: no other one is between one of them and the same with a fourth.
// "+ 0" leaves the choice to the server's index of texts. As what that gives is in order, for which
// "OFFSET 0" stands, no more rows are looked up than are wanted. A text that is too long for it is
// compared in each search.
#define NORVANE_SEARCH(table, filter)                                                              \
    {                                                                                              \
        "WITH RECURSIVE found(term) AS (SELECT (SELECT term FROM " table "_search_terms "          \
        "WHERE term >= ? AND term <= ? ORDER BY term LIMIT 1) UNION ALL "                          \
        "SELECT (SELECT term FROM " table "_search_terms "                                         \
        "WHERE term >= found.term || char(1) AND term <= ? ORDER BY term LIMIT 1) FROM found "     \
        "WHERE found.term IS NOT NULL) SELECT term FROM found WHERE term IS NOT NULL LIMIT ?",     \
            "SELECT " table NORVANE_COMPARED " FROM " table "_search CROSS JOIN " table " "        \
            "ON " table ".id = " table "_search.rowid WHERE " table "_search MATCH ? "             \
            "AND " table "_search.rowid < ? AND " table "_search.rowid >= ? AND " filter           \
            " ORDER BY " table "_search.rowid DESC",                                               \
            "SELECT " table NORVANE_COMPARED " FROM (SELECT id + 0 AS id FROM " table "_search "   \
            "WHERE search_pieces(folded) @@ ?::tsquery AND id + 0 < ? AND id + 0 >= ? "            \
            "ORDER BY id + 0 DESC OFFSET 0) AS newest JOIN " table " ON " table ".id = newest.id " \
            "WHERE " filter " ORDER BY " table ".id DESC LIMIT ?"                                  \
    }
constexpr SearchStatements outcomeSearch = NORVANE_SEARCH("outcome", NORVANE_OUTCOME_FILTER);
constexpr SearchStatements receivedSearch = NORVANE_SEARCH("received", NORVANE_RECEIVED_FILTER);
#undef NORVANE_SEARCH

const SearchStatements &searchOf(HistoryTable table)
{
    return table == HistoryTable::Outcomes ? outcomeSearch : receivedSearch;
}

/// The pieces of a text, whatever characters they are of; of a shorter one itself.
QStringList piecesOf(const QString &text)
{
    const std::u32string characters = text.toStdU32String();
    const qsizetype length = static_cast<qsizetype>(characters.size());
    const qsizetype pieces = std::clamp(length - pieceLength + 1, qsizetype{1}, maxPieces);
    QStringList all;
    for (qsizetype at = 0; at < pieces; ++at)
        all.append(QString::fromUcs4(characters.data() + at, std::min(length - at, pieceLength)));
    all.removeDuplicates();
    return all;
}

bool isWhole(const QString &piece)
{
    return piece.toUcs4().size() == pieceLength;
}

/// As the index of a file has it.
QString quotedInFile(QString piece)
{
    return u'"' + piece.replace(u'"', u"\"\""_s) + u'"';
}

/// As the index of a server has it, with what a shorter text is the beginning of.
QString quotedInServer(QString piece)
{
    const QString end = isWhole(piece) ? u"'"_s : u"':*"_s;
    for (const QChar special : {u'\\', u'\''})
        piece.replace(special, QString(2, special));
    return u'\'' + piece + end;
}

QString joined(const QStringList &pieces, const QString &word, QString (*quoted)(QString))
{
    QStringList all;
    for (const QString &piece : pieces)
        all.append(quoted(piece));
    return all.join(word);
}

} // namespace

StoreResult<std::optional<QString>> IndexedSearch::questionOf(const SearchedText &text) const
{
    using Question = std::optional<QString>;
    const QStringList pieces = piecesOf(text.inIndex());
    if (m_database.kind() == StoreDatabase::Kind::Server)
        return Question(u'(' + joined(pieces, u" & "_s, quotedInServer) + u") | 'long'"_s);
    if (isWhole(pieces.constFirst()))
        return Question(joined(pieces, u" AND "_s, quotedInFile));
    return beginningWith(pieces.constFirst());
}

/// What a file's index is asked for a text that is shorter than its terms.
StoreResult<std::optional<QString>> IndexedSearch::beginningWith(const QString &piece) const
{
    const QString last = piece + QString::fromUcs4(U"\U0010FFFF\U0010FFFF");
    QStringList terms;
    StoreResult<> goesOn;
    const StoreResult<> found = m_database.each(
        searchOf(m_table).terms, {piece, last, last, maxTerms + 1}, [&](const StoreRow &row) {
            terms.append(row.value(0).toString());
            goesOn = m_limit.check();
            return goesOn.has_value();
        });
    if (!found || !goesOn)
        return failed(found ? goesOn.error() : found.error());
    return terms.size() > maxTerms ? std::nullopt
                                   : std::optional(joined(terms, u" OR "_s, quotedInFile));
}

StoreResult<> IndexedSearch::walk(const QString &question, NewestFirst::Range range,
                                  const NewestFirst::Take &take) const
{
    if (range.isEmpty() || question.isEmpty())
        return {};
    return m_database.kind() == StoreDatabase::Kind::File ? walkFile(question, range, take)
                                                          : walkServer(question, range, take);
}

StoreResult<> IndexedSearch::walkFile(const QString &question, NewestFirst::Range range,
                                      const NewestFirst::Take &take) const
{
    StoreResult<> goesOn = m_limit.check();
    const StoreResult<> walked = m_database.each(
        searchOf(m_table).inFile, QVariantList{question, range.below, range.low} + m_filter,
        [&](const StoreRow &row) {
            goesOn = m_limit.check();
            return goesOn && take(row);
        });
    return walked ? goesOn : walked;
}

StoreResult<> IndexedSearch::walkServer(const QString &question, NewestFirst::Range range,
                                        const NewestFirst::Take &take) const
{
    for (;;) {
        if (const StoreResult<> goesOn = m_limit.check(); !goesOn)
            return goesOn;
        int rows = 0;
        bool wantsMore = true;
        const StoreResult<> walked = m_database.each(
            searchOf(m_table).inServer,
            QVariantList{question, range.below, range.low} + m_filter + QVariantList{rowsAtOnce},
            [&](const StoreRow &row) {
                ++rows;
                range.below = row.value(0).toLongLong();
                return wantsMore = take(row);
            });
        if (!walked || !wantsMore || rows < rowsAtOnce)
            return walked;
    }
}

} // namespace norvane
