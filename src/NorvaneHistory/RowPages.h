#pragma once

#include <QList>
#include <QString>

#include <algorithm>
#include <optional>

namespace norvane {

/// The pages of a long list that have been fetched, of which the ones that were read last are held.
/// A page that isn't held any more keeps its place and its number of rows.
/// @tparam Row  has an `id`
template <typename Row>
class RowPages
{
public:
    /// Pages that are held at most.
    static constexpr qsizetype maxHeld = 24;

    struct Place
    {
        qsizetype page = 0;
        qsizetype row = 0; ///< within the page
    };

    qsizetype rowCount() const { return m_rowCount; }
    qsizetype pageCount() const { return m_pages.size(); }
    /// Whether the last page has been fetched.
    bool isComplete() const { return m_isComplete; }
    /// Where the page behind the last one begins; empty for the first.
    QString next() const { return m_pages.isEmpty() ? QString() : m_pages.constLast().next; }

    void clear()
    {
        m_pages.clear();
        m_rowCount = 0;
        m_isComplete = false;
    }

    void append(const QList<Row> &rows, const QString &next)
    {
        m_pages.append({next, rows.size(), rows, true, ++m_reads});
        m_rowCount += rows.size();
        m_isComplete = next.isEmpty();
        release(m_pages.size() - 1);
    }

    Place placeOf(qsizetype row) const
    {
        // The pages at the top are those that are read most.
        Place place{0, row};
        while (place.page < m_pages.size() && place.row >= m_pages.at(place.page).count)
            place.row -= m_pages.at(place.page++).count;
        return place;
    }

    qsizetype firstRowOf(qsizetype page) const
    {
        qsizetype first = 0;
        for (qsizetype at = 0; at < page; ++at)
            first += m_pages.at(at).count;
        return first;
    }

    qsizetype countOf(qsizetype page) const { return m_pages.at(page).count; }
    bool isHeld(qsizetype page) const { return m_pages.at(page).isHeld; }
    QString beginOf(qsizetype page) const
    {
        return page == 0 ? QString() : m_pages.at(page - 1).next;
    }
    QString endOf(qsizetype page) const { return m_pages.at(page).next; }

    /// The row at that place, null if its page isn't held.
    const Row *find(qsizetype row) const
    {
        const Place place = placeOf(row);
        if (place.page >= m_pages.size())
            return nullptr;
        const PageOfRows &page = m_pages.at(place.page);
        if (!page.isHeld)
            return nullptr;
        page.lastRead = ++m_reads;
        return &page.rows.at(place.row);
    }

    /// Where a row stands whose page is held.
    std::optional<qsizetype> rowOf(qint64 id) const
    {
        qsizetype first = 0;
        for (const PageOfRows &page : m_pages) {
            const auto found = std::find_if(page.rows.cbegin(), page.rows.cend(),
                                            [id](const Row &row) { return row.id == id; });
            if (found != page.rows.cend())
                return first + (found - page.rows.cbegin());
            first += page.count;
        }
        return std::nullopt;
    }

    // Changes of single rows, of pages that are held.

    void set(qsizetype row, const Row &value)
    {
        const Place place = placeOf(row);
        m_pages[place.page].rows[place.row] = value;
    }

    /// Before the row that stands there, or behind the last one.
    void insert(qsizetype row, const Row &value)
    {
        Place place = placeOf(row);
        if (place.page == m_pages.size())
            place = {place.page - 1, m_pages.constLast().count};
        PageOfRows &page = m_pages[place.page];
        page.rows.insert(place.row, value);
        ++page.count;
        ++m_rowCount;
    }

    void remove(qsizetype row)
    {
        const Place place = placeOf(row);
        PageOfRows &page = m_pages[place.page];
        page.rows.removeAt(place.row);
        --page.count;
        --m_rowCount;
    }

    /// Gives a page that isn't held another number of rows.
    void resize(qsizetype at, qsizetype count)
    {
        m_rowCount += count - m_pages.at(at).count;
        m_pages[at].count = count;
    }

    /// Holds a page again, with as many rows as it has.
    void hold(qsizetype at, const QList<Row> &rows)
    {
        resize(at, rows.size());
        PageOfRows &page = m_pages[at];
        page.rows = rows;
        page.isHeld = true;
        page.lastRead = ++m_reads;
        release(at);
    }

    /// Calls `visit` with each row that is held.
    template <typename Visit>
    void forEachHeld(Visit visit) const
    {
        for (const PageOfRows &page : m_pages)
            std::for_each(page.rows.cbegin(), page.rows.cend(), visit);
    }

private:
    struct PageOfRows
    {
        QString next; ///< where the page behind it begins
        qsizetype count = 0;
        QList<Row> rows; ///< empty unless it is held
        bool isHeld = false;
        mutable quint64 lastRead = 0;
    };

    /// Lets go of the page that was read longest ago, if too many are held. The first stays, as
    /// what happens now appears there.
    void release(qsizetype except)
    {
        qsizetype held = 0;
        qsizetype oldest = -1;
        for (qsizetype at = 0; at < m_pages.size(); ++at) {
            if (!m_pages.at(at).isHeld)
                continue;
            ++held;
            if (at > 0 && at != except &&
                (oldest < 0 || m_pages.at(at).lastRead < m_pages.at(oldest).lastRead))
                oldest = at;
        }
        if (held <= maxHeld || oldest < 0)
            return;
        m_pages[oldest].rows = {};
        m_pages[oldest].isHeld = false;
    }

    QList<PageOfRows> m_pages;
    qsizetype m_rowCount = 0;
    bool m_isComplete = false;
    mutable quint64 m_reads = 0;
};

} // namespace norvane
