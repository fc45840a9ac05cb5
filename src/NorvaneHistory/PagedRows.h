#pragma once

#include "NorvaneHistory/MessageTableModel.h"
#include "NorvaneHistory/RowPages.h"

#include <optional>

namespace norvane {

/// The pages of a long list as a table. What changes is reported row by row, so that a view, a
/// selection and a current row keep to what they stood on.
/// @tparam Row  has an `id` and a moment `at`, and can be compared
template <typename Row>
class PagedRows : public MessageTableModel
{
public:
    /// Rows of a page; what a view shows at a time several times over.
    static constexpr quint32 pageRows = 250;

    using MessageTableModel::MessageTableModel;

    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(m_pages.rowCount());
    }

    std::optional<int> rowOf(qint64 id) const
    {
        const auto row = m_pages.rowOf(id);
        return row ? std::optional(static_cast<int>(*row)) : std::nullopt;
    }

    bool isComplete() const { return m_pages.isComplete(); }

    /// Takes the present state of rows that are shown, wherever they stand.
    void update(const QList<Row> &rows)
    {
        for (const Row &fresh : rows) {
            if (const auto at = m_pages.rowOf(fresh.id))
                setRow(*at, fresh);
        }
    }

protected:
    const RowPages<Row> &pages() const { return m_pages; }

    template <typename Visit>
    void forEachHeld(Visit visit) const
    {
        m_pages.forEachHeld(visit);
    }

    /// Takes a row out that doesn't belong to the list any more.
    void remove(qint64 id)
    {
        if (const auto at = m_pages.rowOf(id))
            takeOut(*at, 1);
    }

    /// Takes the present state of a row that has a later moment than before, and brings it to its
    /// place.
    void relocate(const Row &fresh)
    {
        const auto from = m_pages.rowOf(fresh.id);
        const auto to = m_pages.firstHeld([&fresh](const Row &row) { return row.at <= fresh.at; });
        if (from && to && *to < *from)
            bringUp(*from, *to, fresh, std::nullopt);
        else if (from)
            setRow(*from, fresh);
    }

    static QSet<qint64> idsOf(const QList<Row> &rows)
    {
        QSet<qint64> ids;
        for (const Row &row : rows)
            ids.insert(row.id);
        return ids;
    }

    /// Adds rows that aren't in the list yet.
    static void addNew(QList<Row> &rows, const QList<Row> &others)
    {
        QSet<qint64> ids = idsOf(rows);
        for (const Row &row : others) {
            if (!ids.contains(row.id))
                rows.append(row);
            ids.insert(row.id);
        }
    }

    void append(const Page<Row> &page)
    {
        // What moved to the top since the page before was fetched may be here once more.
        QList<Row> fresh;
        addNew(fresh, page.rows);
        const auto known = m_pages.rowsOf(idsOf(fresh));
        fresh.removeIf([&known](const Row &row) { return known.contains(row.id); });
        const int first = rowCount();
        if (!fresh.isEmpty())
            beginInsertRows({}, first, first + static_cast<int>(fresh.size()) - 1);
        m_pages.append(fresh, page.next);
        if (!fresh.isEmpty())
            endInsertRows();
    }

    void replaceAll(const Page<Row> &page)
    {
        beginResetModel();
        m_pages.clear();
        m_pages.append(page.rows, page.next);
        endResetModel();
    }

    /// Behind the last row that was fetched and stands where it stood; 0 if there is none.
    qsizetype knownEnd(const QList<Row> &fetched) const
    {
        const auto known = m_pages.rowsOf(idsOf(fetched));
        for (auto row = fetched.crbegin(); row != fetched.crend(); ++row) {
            const auto at = known.constFind(row->id);
            const Row *const present = at == known.cend() ? nullptr : m_pages.find(*at);
            if (present && present->at == row->at)
                return *at + 1;
        }
        return 0;
    }

    /// Makes the beginning of the list what was fetched, and leaves the rest.
    /// @param known  rows that have been there and are replaced; 0 where that leaves a gap
    /// @param top    what to show in their place
    /// @param pages  what was fetched of that
    void replaceTop(qsizetype known, const QList<Row> &top, const QList<Page<Row>> &pages)
    {
        const bool isGap = known == 0 && !pages.constLast().next.isEmpty();
        arrange(0, known, top, std::nullopt);
        if (isGap)
            leaveGap(cut(pages));
        else if (m_pages.countOf(0) > static_cast<qsizetype>(2 * pageRows))
            cut(pages);
    }

    /// Rows may have left the page since it was fetched first, or come into it.
    void hold(qsizetype page, const Page<Row> &answer)
    {
        const qsizetype first = m_pages.firstRowOf(page);
        QList<Row> rows;
        addNew(rows, answer.rows);
        // What stands above has moved there since.
        const auto known = m_pages.rowsOf(idsOf(rows));
        rows.removeIf(
            [&known, first](const Row &row) { return known.value(row.id, first) < first; });
        if (!answer.next.isEmpty())
            leaveRest(page, idsOf(rows), answer.next);
        arrange(first, m_pages.countOf(page), rows, page);
        m_pages.hold(page, rows);
        tellChanged(first, rows.size());
    }

private:
    void tellChanged(qsizetype first, qsizetype count)
    {
        if (count > 0)
            Q_EMIT dataChanged(index(static_cast<int>(first), 0),
                               index(static_cast<int>(first + count) - 1, columnCount() - 1));
    }

    void setRow(qsizetype at, const Row &fresh)
    {
        const Row *const present = m_pages.find(at);
        if (!present || *present == fresh)
            return;
        m_pages.set(m_pages.placeOf(at), fresh);
        tellChanged(at, 1);
    }

    void takeOut(qsizetype first, qsizetype count)
    {
        beginRemoveRows({}, static_cast<int>(first), static_cast<int>(first + count) - 1);
        m_pages.remove(first, count);
        endRemoveRows();
    }

    /// Where a row goes in: into that page, or into the one that fits.
    typename RowPages<Row>::Place placeFor(qsizetype row, std::optional<qsizetype> page) const
    {
        return page ? typename RowPages<Row>::Place{*page, row - m_pages.firstRowOf(*page)}
                    : m_pages.insertionAt(row);
    }

    void putIn(qsizetype first, const QList<Row> &rows, std::optional<qsizetype> page)
    {
        beginInsertRows({}, static_cast<int>(first), static_cast<int>(first + rows.size()) - 1);
        m_pages.insert(placeFor(first, page), rows);
        endInsertRows();
    }

    /// @param from  not before `to`; the same for a row that only gets into another page
    void bringUp(qsizetype from, qsizetype to, const Row &fresh, std::optional<qsizetype> page)
    {
        const int source = static_cast<int>(from);
        const bool isMoved =
            from != to && beginMoveRows({}, source, source, {}, static_cast<int>(to));
        m_pages.remove(from);
        m_pages.insert(placeFor(to, page), {fresh});
        if (isMoved)
            endMoveRows();
        tellChanged(to, 1);
    }

    /// Makes some rows what was fetched in their place, row by row, so that each keeps its
    /// identity.
    /// @param fresh  of which none stands before `first`
    /// @param page   to which they belong; nothing if that follows from where they stand
    void arrange(qsizetype first, qsizetype count, const QList<Row> &fresh,
                 std::optional<qsizetype> page)
    {
        const QSet<qint64> ids = idsOf(fresh);
        removeOthers(first, first + count, ids);
        const auto known = m_pages.rowsOf(ids);
        for (qsizetype at = 0; at < fresh.size();) {
            QList<Row> unknown;
            for (; at < fresh.size() && !known.contains(fresh.at(at).id); ++at)
                unknown.append(fresh.at(at));
            if (!unknown.isEmpty())
                putIn(first + at - unknown.size(), unknown, page);
            else {
                putRow(first + at, fresh.at(at), page);
                ++at;
            }
        }
    }

    /// Removes what changed its place, or is gone.
    void removeOthers(qsizetype first, qsizetype end, const QSet<qint64> &ids)
    {
        for (qsizetype at = end; at > first; --at) {
            const qsizetype behind = at;
            while (at > first && !ids.contains(m_pages.idAt(at - 1)))
                --at;
            if (at < behind)
                takeOut(at, behind - at);
        }
    }

    /// Brings a known row to its place.
    void putRow(qsizetype at, const Row &fresh, std::optional<qsizetype> page)
    {
        const qsizetype from = m_pages.rowOf(fresh.id).value_or(at);
        if (from != at || (page && m_pages.placeOf(from).page != *page))
            bringUp(from, at, fresh, page);
        else
            setRow(at, fresh);
    }

    /// Cuts the first page where those that were fetched ended, so that it doesn't grow for ever.
    /// @return the page behind the last cut
    qsizetype cut(const QList<Page<Row>> &pages)
    {
        qsizetype last = 0;
        qsizetype first = 0;
        const qsizetype end = m_pages.countOf(0);
        for (const Page<Row> &page : pages) {
            if (page.rows.isEmpty() || page.next.isEmpty())
                continue;
            const qsizetype border = m_pages.rowOf(page.rows.constLast().id).value_or(-1) + 1;
            if (border <= first || border > end)
                continue;
            m_pages.split({last++, border - first}, page.next);
            first = border;
        }
        return last;
    }

    /// More is new than was fetched: the rest is fetched with its page, when that is seen.
    void leaveGap(qsizetype page)
    {
        m_pages.letGo(page);
        insertUnknown(page);
    }

    void insertUnknown(qsizetype page)
    {
        const int first = static_cast<int>(m_pages.firstRowOf(page));
        beginInsertRows({}, first, first);
        m_pages.insertUnknown(page);
        endInsertRows();
    }

    /// Leaves those rows of a page that are still to be fetched to a page of their own.
    /// @param fetched  the ids of its rows before `next`
    void leaveRest(qsizetype page, const QSet<qint64> &fetched, const QString &next)
    {
        const qsizetype first = m_pages.firstRowOf(page);
        qsizetype known = m_pages.countOf(page);
        while (known > 0 && !fetched.contains(m_pages.idAt(first + known - 1)))
            --known;
        m_pages.split({page, known}, next);
        const bool isEmpty = m_pages.countOf(page + 1) == 0;
        if (isEmpty || (known == 0 && m_pages.idAt(first) != 0))
            insertUnknown(page + 1);
    }

    RowPages<Row> m_pages;
};

} // namespace norvane
