#pragma once

#include "NorvaneHistory/PagedRows.h"

#include <utility>

namespace norvane {

/// A long list as a table: rows are fetched as they are scrolled to, and what is new appears at the
/// top. Rows keep their identity, so that a view can stay where its reader is.
/// @tparam Row  as PagedRows has it
/// @tparam Filter  what is asked for; can be compared
template <typename Row, typename Filter>
class PagedTableModel : public PagedRows<Row>
{
public:
    using PagedRows<Row>::pageRows;
    using PagedRows<Row>::rowCount;
    /// Pages that are fetched at the top until one of them has a known row.
    static constexpr qsizetype maxTopPages = 8;

    using PagedRows<Row>::PagedRows;

    const Filter &filter() const { return m_filter; }

    /// Shows what this lets through, which is fetched unless it is shown already; until that is
    /// done, the rows are those of the former one.
    void setFilter(const Filter &filter)
    {
        if (filter == m_filter)
            return;
        m_filter = filter;
        m_isOfFilter = false;
        reload();
    }

    QVariant data(const QModelIndex &index, int role) const override
    {
        if (!index.isValid())
            return {};
        if (const Row *const shown = row(index.row()))
            return dataOf(*shown, index.column(), role);
        return this->dataOfUnfetched(index.column(), role);
    }

    bool canFetchMore(const QModelIndex &parent) const override
    {
        return !parent.isValid() && !this->pages().isComplete() && !m_isFetchingMore &&
               m_isOfFilter && this->pages().pageCount() > 0;
    }

    void fetchMore(const QModelIndex &parent) override
    {
        if (!canFetchMore(parent))
            return;
        m_isFetchingMore = true;
        request({this->pages().next(), {}, pageRows}, [this](const SourceResult<Page<Row>> &page) {
            m_isFetchingMore = false;
            if (page)
                this->append(*page);
            else
                tellFailure(page.error());
        });
    }

    /// The row, null while its page is being fetched.
    const Row *row(int at) const
    {
        const Row *const found = this->pages().find(at);
        if (!found)
            fetchAgain(at);
        return found;
    }

    /// Whether an answer is awaited that replaces all rows.
    bool isLoading() const { return m_isLoading; }

    /// Fetches the list from its beginning; the rows stay until the new ones are there.
    void reload()
    {
        startAnew();
        m_isLoading = true;
        request({{}, {}, pageRows}, [this](const SourceResult<Page<Row>> &page) {
            m_isLoading = false;
            const bool isWanted = std::exchange(m_wantsRefresh, false);
            if (page) {
                replace(*page);
                Q_EMIT this->reloaded();
            } else {
                Q_EMIT this->reloadFailed(page.error());
            }
            if (isWanted)
                refresh();
        });
    }

    /// Looks for what is new at the top.
    void refresh()
    {
        if (m_isLoading || m_isRefreshing) {
            m_wantsRefresh = true;
            return;
        }
        if (this->pages().pageCount() == 0 || !m_isOfFilter) {
            reload();
            return;
        }
        m_isRefreshing = true;
        fetchTop({});
    }

protected:
    using Answer = SourceAnswer<Page<Row>>;

    bool isOfFilter() const { return m_isOfFilter; }

    /// Asks for a page under the filter of now.
    virtual void fetchPage(const PageRequest &request, const Answer &answer) = 0;
    /// Adds to the rows at the top what is to stay among them although it wasn't fetched.
    /// @param isWhole  they are the whole list
    virtual void complete(QList<Row> & /*top*/, bool /*isWhole*/) const {}
    /// What a column shows of a row.
    virtual QVariant dataOf(const Row &row, int column, int role) const = 0;

private:
    /// Passes the answer on unless the list has been reloaded since.
    void request(const PageRequest &request, const Answer &answer) const
    {
        auto *const self = const_cast<PagedTableModel *>(this);
        self->fetchPage(request, [self, answer,
                                  generation = m_generation](const SourceResult<Page<Row>> &page) {
            if (generation != self->m_generation)
                return;
            const bool hadFailed = self->m_hasFailed;
            if (page || page.error().kind != SourceFailure::Kind::Superseded)
                self->m_hasFailed = !page;
            answer(page);
            if (hadFailed && page)
                Q_EMIT self->recovered();
        });
    }

    void tellFailure(const SourceFailure &failure)
    {
        if (failure.kind != SourceFailure::Kind::Superseded)
            Q_EMIT this->fetchFailed(failure);
    }

    /// Drops what is on its way.
    void startAnew()
    {
        ++m_generation;
        m_isFetchingMore = false;
        m_isRefreshing = false;
        m_wantsRefresh = false;
        m_fetchedAgain.clear();
        m_top.clear();
    }

    /// What was asked for under the pages of before is of no use to the new ones.
    void replace(const Page<Row> &page)
    {
        startAnew();
        this->replaceAll(page);
        if (!std::exchange(m_isOfFilter, true))
            Q_EMIT this->searched();
    }

    /// Fetches the top of the list, page by page until a known row is met.
    void fetchTop(const QString &after)
    {
        request({after, {}, pageRows}, [this](const SourceResult<Page<Row>> &page) {
            if (page) {
                m_top.append(*page);
                if (isGap() && m_top.size() < maxTopPages) {
                    fetchTop(page->next);
                    return;
                }
            }
            m_isRefreshing = false;
            const bool isWanted = std::exchange(m_wantsRefresh, false);
            const QList<Page<Row>> top = std::exchange(m_top, {});
            if (page)
                merge(top);
            else
                tellFailure(page.error());
            if (isWanted)
                refresh();
        });
    }

    QList<Row> fetchedTop(const QList<Page<Row>> &pages) const
    {
        QList<Row> rows;
        for (const Page<Row> &page : pages)
            this->addNew(rows, page.rows);
        return rows;
    }

    /// Whether rows may be missing between those that were fetched at the top and the known ones.
    bool isGap() const
    {
        return !m_top.constLast().next.isEmpty() && rowCount() > 0 &&
               this->knownEnd(fetchedTop(m_top)) == 0;
    }

    /// Makes the beginning of the list what was fetched, and leaves the rest.
    void merge(const QList<Page<Row>> &pages)
    {
        const bool isWhole = pages.constLast().next.isEmpty();
        if (rowCount() == 0 && !isWhole) {
            replace(pages.constFirst());
            return;
        }
        QList<Row> top = fetchedTop(pages);
        const qsizetype known = isWhole ? rowCount() : this->knownEnd(top);
        complete(top, isWhole);
        this->replaceTop(known, top, pages);
    }

    /// Fetches the page of a row again that isn't held any more.
    void fetchAgain(qsizetype row) const
    {
        if (row < 0 || row >= rowCount() || !m_isOfFilter)
            return;
        const qsizetype page = this->pages().placeOf(row).page;
        const quint64 key = this->pages().keyOf(page);
        if (m_fetchedAgain.contains(key))
            return;
        m_fetchedAgain.insert(key);
        const auto limit = static_cast<quint32>(this->pages().countOf(page));
        request({this->pages().beginOf(page), this->pages().endOf(page), std::max(limit, pageRows)},
                [self = const_cast<PagedTableModel *>(this),
                 key](const SourceResult<Page<Row>> &answer) {
                    if (const auto at = self->pages().pageOf(key); at && answer)
                        self->hold(*at, *answer);
                    self->m_fetchedAgain.remove(key);
                    if (!answer)
                        self->tellFailure(answer.error());
                });
    }

    Filter m_filter;
    mutable QSet<quint64> m_fetchedAgain; ///< the keys of pages that are on their way
    QList<Page<Row>> m_top;               ///< what a refresh has fetched so far
    quint64 m_generation = 0;
    bool m_isOfFilter = true; ///< the rows are what the filter of now lets through
    bool m_hasFailed = false; ///< the last answer was a failure
    bool m_isFetchingMore = false;
    bool m_isLoading = false;
    bool m_isRefreshing = false;
    bool m_wantsRefresh = false;
};

} // namespace norvane
