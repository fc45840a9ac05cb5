#include "TovekSMService/history/IndexedSearch.h"

#include "TovekSMService/history/HistoryStatements.h"
#include "TovekSMService/history/QueryLimit.h"
#include "TovekSMService/history/SearchedText.h"

#include <QList>
#include <QStringList>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype pieceLength = 3;
constexpr qsizetype maxPieces = 24; ///< that are asked for; the rest is left to the comparison
constexpr int rowsAtOnce = 2000;    ///< of the server

constexpr char inFile[] =
    "SELECT " NORVANE_COMPARED " FROM outcome_search CROSS JOIN outcome "
    "ON outcome.id = outcome_search.rowid WHERE outcome_search MATCH ? "
    "AND outcome_search.rowid < ? AND outcome_search.rowid >= ? AND " NORVANE_OUTCOME_FILTER
    " ORDER BY outcome_search.rowid DESC";

// "+ 0" leaves the choice to the index of texts; the operator is that of LIKE.
constexpr char inServer[] =
    "WITH found AS MATERIALIZED (SELECT id FROM outcome_search WHERE folded ~~ ? "
    "AND id + 0 < ? AND id + 0 >= ?), newest AS MATERIALIZED (SELECT id FROM found "
    "ORDER BY id DESC) SELECT " NORVANE_COMPARED " FROM newest JOIN outcome "
    "ON outcome.id = newest.id WHERE " NORVANE_OUTCOME_FILTER " ORDER BY outcome.id DESC LIMIT ?";

/// The text as the index's language has it: all of its pieces, whatever characters they are of.
QString piecesOf(const QString &folded)
{
    const QList<uint> characters = folded.toUcs4();
    QStringList pieces;
    for (qsizetype at = 0; at + pieceLength <= characters.size() && pieces.size() < maxPieces;
         ++at) {
        QString piece;
        for (qsizetype next = at; next < at + pieceLength; ++next)
            piece += QString::fromUcs4(reinterpret_cast<const char32_t *>(&characters.at(next)), 1);
        pieces.append(u'"' + piece.replace(u'"', u"\"\""_s) + u'"');
    }
    pieces.removeDuplicates();
    return pieces.join(u" AND "_s);
}

/// A pattern for what contains the text as it is.
QString patternOf(const QString &folded)
{
    QString pattern = folded;
    for (const QChar special : {u'\\', u'%', u'_'})
        pattern.replace(special, u"\\"_s + special);
    return u'%' + pattern + u'%';
}

} // namespace

bool IndexedSearch::canFind(const SearchedText &text)
{
    return text.folded().toUcs4().size() >= pieceLength;
}

StoreResult<> IndexedSearch::walk(const SearchedText &text, NewestFirst::Range range,
                                  const NewestFirst::Take &take) const
{
    if (range.isEmpty())
        return {};
    return m_database.kind() == StoreDatabase::Kind::File ? walkFile(text, range, take)
                                                          : walkServer(text, range, take);
}

StoreResult<> IndexedSearch::walkFile(const SearchedText &text, NewestFirst::Range range,
                                      const NewestFirst::Take &take) const
{
    StoreResult<> goesOn = m_limit.check();
    const StoreResult<> walked = m_database.each(
        inFile, QVariantList{piecesOf(text.folded()), range.below, range.low} + m_filter,
        [&](const StoreRow &row) {
            goesOn = m_limit.check();
            return goesOn && take(row);
        });
    return walked ? goesOn : walked;
}

StoreResult<> IndexedSearch::walkServer(const SearchedText &text, NewestFirst::Range range,
                                        const NewestFirst::Take &take) const
{
    for (;;) {
        if (const StoreResult<> goesOn = m_limit.check(); !goesOn)
            return goesOn;
        int rows = 0;
        bool wantsMore = true;
        const StoreResult<> walked =
            m_database.each(inServer,
                            QVariantList{patternOf(text.folded()), range.below, range.low} +
                                m_filter + QVariantList{rowsAtOnce},
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
