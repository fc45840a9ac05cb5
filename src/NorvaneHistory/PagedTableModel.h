#pragma once

#include "NorvaneHistory/HistorySource.h"
#include "NorvaneHistory/RowPages.h"

#include <QAbstractTableModel>
#include <QSet>

#include <utility>

namespace norvane {

/// A long list as a table: rows are fetched as they are scrolled to, and what is new appears at the
/// top. Rows keep their identity, so that a view can stay where its reader is.
/// @tparam Row  has an `id` and can be compared
template <typename Row>
class PagedTableModel : public QAbstractTableModel
{
public:
    /// Rows of a page; what a view shows at a time several times over.
    static constexpr quint32 pageRows = 250;

    using QAbstractTableModel::QAbstractTableModel;

    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(m_pages.rowCount());
    }

    bool canFetchMore(const QModelIndex &parent) const override
    {
        return !parent.isValid() && !m_pages.isComplete() && !m_isFetchingMore &&
               m_pages.pageCount() > 0;
    }

    void fetchMore(const QModelIndex &parent) override
    {
        if (!canFetchMore(parent))
            return;
        m_isFetchingMore = true;
        request({m_pages.next(), {}, pageRows}, [this](const SourceResult<Page<Row>> &page) {
            m_isFetchingMore = false;
            if (page)
                append(*page);
        });
    }

    /// The row, null while its page is being fetched.
    const Row *row(int at) const
    {
        const Row *const found = m_pages.find(at);
        if (!found)
            fetchAgain(at);
        return found;
    }

    std::optional<int> rowOf(qint64 id) const
    {
        const auto row = m_pages.rowOf(id);
        return row ? std::optional(static_cast<int>(*row)) : std::nullopt;
    }

    bool isComplete() const { return m_pages.isComplete(); }

    /// Whether an answer is awaited that replaces all rows.
    bool isLoading() const { return m_isLoading; }

    /// Fetches the list from its beginning; the rows stay until the new ones are there.
    void reload()
    {
        ++m_generation;
        m_isFetchingMore = false;
        m_isRefreshing = false;
        m_isLoading = true;
        m_fetchedAgain.clear();
        request({{}, {}, pageRows}, [this](const SourceResult<Page<Row>> &page) {
            m_isLoading = false;
            if (page)
                replace(*page);
            loaded(page);
        });
    }

    /// Looks for what is new at the top.
    void refresh()
    {
        if (m_isLoading || m_pages.pageCount() == 0) {
            reload();
            return;
        }
        if (std::exchange(m_isRefreshing, true)) {
            m_wantsRefresh = true;
            return;
        }
        request({{}, {}, pageRows}, [this](const SourceResult<Page<Row>> &page) {
            m_isRefreshing = false;
            if (page)
                merge(*page);
            if (std::exchange(m_wantsRefresh, false))
                refresh();
        });
    }

    /// Takes the present state of rows that are shown, wherever they stand.
    void update(const QList<Row> &rows)
    {
        for (const Row &fresh : rows) {
            if (const auto at = m_pages.rowOf(fresh.id))
                setRow(*at, fresh);
        }
    }

protected:
    using Answer = SourceAnswer<Page<Row>>;

    /// Takes a row out that doesn't belong where it stands any more.
    void remove(qint64 id)
    {
        if (const auto at = m_pages.rowOf(id))
            removeRow(*at);
    }

    /// Asks for a page under the filter of now.
    virtual void fetchPage(const PageRequest &request, const Answer &answer) = 0;
    /// Adds to the rows at the top what is to stay among them although it wasn't fetched.
    /// @param isWhole  they are the whole list
    virtual void complete(QList<Row> & /*top*/, bool /*isWhole*/) const {}
    template <typename Visit>
    void forEachHeld(Visit visit) const
    {
        m_pages.forEachHeld(visit);
    }
    /// The list was fetched from its beginning, or couldn't be.
    virtual void loaded(const SourceResult<Page<Row>> & /*page*/) {}

private:
    /// Passes the answer on unless the list has been reloaded since.
    void request(const PageRequest &request, const Answer &answer) const
    {
        auto *const self = const_cast<PagedTableModel *>(this);
        self->fetchPage(request, [self, answer,
                                  generation = m_generation](const SourceResult<Page<Row>> &page) {
            if (generation == self->m_generation)
                answer(page);
        });
    }

    void append(const Page<Row> &page)
    {
        const int first = rowCount();
        // What moved to the top since the page before was fetched may be here once more.
        QList<Row> fresh = page.rows;
        fresh.removeIf([this](const Row &row) { return m_pages.rowOf(row.id).has_value(); });
        if (!fresh.isEmpty())
            beginInsertRows({}, first, first + static_cast<int>(fresh.size()) - 1);
        m_pages.append(fresh, page.next);
        if (!fresh.isEmpty())
            endInsertRows();
    }

    void replace(const Page<Row> &page)
    {
        beginResetModel();
        m_pages.clear();
        m_pages.append(page.rows, page.next);
        endResetModel();
    }

    void setRow(qsizetype at, const Row &fresh)
    {
        const Row *const present = m_pages.find(at);
        if (!present || *present == fresh)
            return;
        m_pages.set(at, fresh);
        const int row = static_cast<int>(at);
        Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
    }

    void removeRow(qsizetype at)
    {
        beginRemoveRows({}, static_cast<int>(at), static_cast<int>(at));
        m_pages.remove(at);
        endRemoveRows();
    }

    void insertRow(qsizetype at, const Row &fresh)
    {
        beginInsertRows({}, static_cast<int>(at), static_cast<int>(at));
        m_pages.insert(at, fresh);
        endInsertRows();
    }

    /// Makes the beginning of the list what was fetched, and leaves the rest.
    void merge(const Page<Row> &page)
    {
        const bool isWhole = page.next.isEmpty();
        QList<Row> top = page.rows;
        complete(top, isWhole);
        // Where the known part goes on behind what was fetched; there is a gap if it doesn't.
        const qsizetype last = top.isEmpty() ? -1 : m_pages.rowOf(top.constLast().id).value_or(-1);
        if (!isWhole && (last < 0 || last > static_cast<qsizetype>(2 * pageRows))) {
            replace(page);
            return;
        }
        QSet<qint64> fetched;
        for (const Row &row : top)
            fetched.insert(row.id);
        removeGone(fetched, isWhole ? m_pages.rowCount() : last);
        for (qsizetype at = 0; at < top.size(); ++at)
            mergeRow(at, top.at(at));
    }

    /// Removes what stands before `end` and wasn't fetched: it has changed its place, or is gone.
    void removeGone(const QSet<qint64> &fetched, qsizetype end)
    {
        for (qsizetype at = end - 1; at >= 0; --at) {
            const Row *const row = m_pages.find(at);
            if (row && !fetched.contains(row->id))
                removeRow(at);
        }
    }

    void mergeRow(qsizetype at, const Row &fresh)
    {
        const auto present = m_pages.rowOf(fresh.id);
        if (present == at) {
            setRow(at, fresh);
            return;
        }
        if (present)
            removeRow(*present);
        insertRow(at, fresh);
    }

    /// Fetches the page of a row again that isn't held any more.
    void fetchAgain(qsizetype row) const
    {
        if (row >= m_pages.rowCount())
            return;
        const qsizetype page = m_pages.placeOf(row).page;
        if (m_fetchedAgain.contains(page))
            return;
        m_fetchedAgain.insert(page);
        const auto limit = static_cast<quint32>(std::max<qsizetype>(m_pages.countOf(page), 1));
        request({m_pages.beginOf(page), m_pages.endOf(page), std::max(limit, pageRows)},
                [this, page](const SourceResult<Page<Row>> &answer) {
                    m_fetchedAgain.remove(page);
                    if (answer)
                        const_cast<PagedTableModel *>(this)->hold(page, answer->rows);
                });
    }

    /// Rows may have left the page since it was fetched first, or come into it.
    void hold(qsizetype page, const QList<Row> &rows)
    {
        const int first = static_cast<int>(m_pages.firstRowOf(page));
        const int had = static_cast<int>(m_pages.countOf(page));
        const int has = static_cast<int>(rows.size());
        if (has < had) {
            beginRemoveRows({}, first + has, first + had - 1);
            m_pages.resize(page, has);
            endRemoveRows();
        } else if (has > had) {
            beginInsertRows({}, first + had, first + has - 1);
            m_pages.resize(page, has);
            endInsertRows();
        }
        m_pages.hold(page, rows);
        if (has > 0)
            Q_EMIT dataChanged(index(first, 0), index(first + has - 1, columnCount() - 1));
    }

    RowPages<Row> m_pages;
    mutable QSet<qsizetype> m_fetchedAgain; ///< pages that are on their way
    quint64 m_generation = 0;
    bool m_isFetchingMore = false;
    bool m_isLoading = false;
    bool m_isRefreshing = false;
    bool m_wantsRefresh = false;
};

} // namespace norvane
