#pragma once

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>

#include <algorithm>
#include <optional>

namespace norvane {

/// The pages of a long list that have been fetched, of which the ones that were read last are held.
/// A page that isn't held keeps its place and the ids of its rows; an id is 0 where it isn't known.
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
    bool isComplete() const { return !m_pages.isEmpty() && m_pages.constLast().next.isEmpty(); }
    /// Where the page behind the last one begins; empty for the first.
    QString next() const { return m_pages.isEmpty() ? QString() : m_pages.constLast().next; }

    void clear()
    {
        m_pages.clear();
        m_rowCount = 0;
    }

    void append(const QList<Row> &rows, const QString &next)
    {
        m_pages.append({++m_keys, next, rows, {}, true, ++m_reads});
        m_rowCount += rows.size();
        release(m_pages.size() - 1);
    }

    Place placeOf(qsizetype row) const
    {
        // The pages at the top are those that are read most.
        Place place{0, row};
        while (place.page < m_pages.size() && place.row >= countOf(place.page))
            place.row -= countOf(place.page++);
        return place;
    }

    /// Where a row goes in that is to stand there: between two pages to the end of the first of
    /// them, unless the second alone is held.
    Place insertionAt(qsizetype row) const
    {
        Place place{0, row};
        while (place.page + 1 < m_pages.size() && place.row > countOf(place.page))
            place.row -= countOf(place.page++);
        const bool isBorder = place.row == countOf(place.page);
        if (isBorder && !isHeld(place.page) && place.page + 1 < m_pages.size() &&
            isHeld(place.page + 1))
            return {place.page + 1, 0};
        return place;
    }

    qsizetype firstRowOf(qsizetype page) const
    {
        qsizetype first = 0;
        for (qsizetype at = 0; at < page; ++at)
            first += countOf(at);
        return first;
    }

    qsizetype countOf(qsizetype page) const { return m_pages.at(page).count(); }
    bool isHeld(qsizetype page) const { return m_pages.at(page).isHeld; }
    QString beginOf(qsizetype page) const
    {
        return page == 0 ? QString() : m_pages.at(page - 1).next;
    }
    QString endOf(qsizetype page) const { return m_pages.at(page).next; }

    /// By which a page is known while others come before it.
    quint64 keyOf(qsizetype page) const { return m_pages.at(page).key; }
    std::optional<qsizetype> pageOf(quint64 key) const
    {
        for (qsizetype at = 0; at < m_pages.size(); ++at) {
            if (m_pages.at(at).key == key)
                return at;
        }
        return std::nullopt;
    }

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

    /// The id of the row at that place, 0 if there is none or it isn't known.
    qint64 idAt(qsizetype row) const
    {
        const Place place = placeOf(row);
        return place.page < m_pages.size() ? m_pages.at(place.page).idAt(place.row) : 0;
    }

    /// Where a row stands, whether its page is held or not.
    std::optional<qsizetype> rowOf(qint64 id) const
    {
        qsizetype first = 0;
        for (const PageOfRows &page : m_pages) {
            if (const qsizetype at = page.indexOf(id); at >= 0)
                return first + at;
            first += page.count();
        }
        return std::nullopt;
    }

    /// Where those of the rows stand that are here.
    QHash<qint64, qsizetype> rowsOf(const QSet<qint64> &ids) const
    {
        QHash<qint64, qsizetype> found;
        qsizetype row = 0;
        for (const PageOfRows &page : m_pages) {
            for (qsizetype at = 0; at < page.count(); ++at, ++row) {
                if (const qint64 id = page.idAt(at); id != 0 && ids.contains(id))
                    found.insert(id, row);
            }
        }
        return found;
    }

    void set(const Place &place, const Row &value) { m_pages[place.page].set(place.row, value); }

    void insert(const Place &place, const QList<Row> &rows)
    {
        PageOfRows &page = m_pages[place.page];
        for (qsizetype at = 0; at < rows.size(); ++at)
            page.insert(place.row + at, rows.at(at));
        m_rowCount += rows.size();
    }

    void remove(qsizetype row, qsizetype count = 1)
    {
        for (qsizetype left = count; left > 0;) {
            const Place place = placeOf(row);
            const qsizetype here = std::min(left, countOf(place.page) - place.row);
            m_pages[place.page].remove(place.row, here);
            left -= here;
        }
        m_rowCount -= count;
    }

    /// Cuts a page in two.
    /// @param place  of the first row of the second one; may be behind the last row
    /// @param next   where the second one begins
    void split(const Place &place, const QString &next)
    {
        PageOfRows &page = m_pages[place.page];
        PageOfRows second{
            ++m_keys,    page.next,    page.rows.mid(place.row), page.ids.mid(place.row),
            page.isHeld, page.lastRead};
        page.remove(place.row, page.count() - place.row);
        page.next = next;
        m_pages.insert(place.page + 1, second);
        release(place.page);
    }

    /// Holds a page no longer.
    void letGo(qsizetype at)
    {
        PageOfRows &page = m_pages[at];
        for (const Row &row : std::as_const(page.rows))
            page.ids.append(row.id);
        page.rows = {};
        page.isHeld = false;
    }

    /// Adds a row to the front of a page that isn't held, of which nothing is known but that there
    /// may be rows.
    void insertUnknown(qsizetype page)
    {
        m_pages[page].ids.prepend(0);
        ++m_rowCount;
    }

    /// Holds a page again.
    void hold(qsizetype at, const QList<Row> &rows)
    {
        m_rowCount += rows.size() - countOf(at);
        PageOfRows &page = m_pages[at];
        page.rows = rows;
        page.ids = {};
        page.isHeld = true;
        page.lastRead = ++m_reads;
        release(at);
    }

    /// Where the first row stands that is held and matches.
    template <typename Matches>
    std::optional<qsizetype> firstHeld(Matches matches) const
    {
        qsizetype first = 0;
        for (const PageOfRows &page : m_pages) {
            const auto found = std::find_if(page.rows.cbegin(), page.rows.cend(), matches);
            if (found != page.rows.cend())
                return first + (found - page.rows.cbegin());
            first += page.count();
        }
        return std::nullopt;
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
        quint64 key = 0;
        QString next;      ///< where the page behind it begins
        QList<Row> rows;   ///< empty unless it is held
        QList<qint64> ids; ///< empty if it is held
        bool isHeld = false;
        mutable quint64 lastRead = 0;

        qsizetype count() const { return isHeld ? rows.size() : ids.size(); }
        qint64 idAt(qsizetype at) const { return isHeld ? rows.at(at).id : ids.at(at); }
        qsizetype indexOf(qint64 id) const
        {
            if (!isHeld)
                return ids.indexOf(id);
            const auto found = std::find_if(rows.cbegin(), rows.cend(),
                                            [id](const Row &row) { return row.id == id; });
            return found == rows.cend() ? -1 : found - rows.cbegin();
        }
        void set(qsizetype at, const Row &value)
        {
            if (isHeld)
                rows[at] = value;
            else
                ids[at] = value.id;
        }
        void insert(qsizetype at, const Row &value)
        {
            if (isHeld)
                rows.insert(at, value);
            else
                ids.insert(at, value.id);
        }
        void remove(qsizetype at, qsizetype number)
        {
            if (isHeld)
                rows.remove(at, number);
            else
                ids.remove(at, number);
        }
    };

    /// Lets go of the pages that were read longest ago, if too many are held. The first stays, as
    /// what happens now appears there.
    void release(qsizetype except)
    {
        qsizetype held = std::count_if(m_pages.cbegin(), m_pages.cend(),
                                       [](const PageOfRows &page) { return page.isHeld; });
        for (; held > maxHeld; --held) {
            qsizetype oldest = -1;
            for (qsizetype at = 1; at < m_pages.size(); ++at) {
                if (isHeld(at) && at != except &&
                    (oldest < 0 || m_pages.at(at).lastRead < m_pages.at(oldest).lastRead))
                    oldest = at;
            }
            if (oldest < 0)
                return;
            letGo(oldest);
        }
    }

    QList<PageOfRows> m_pages;
    qsizetype m_rowCount = 0;
    quint64 m_keys = 0;
    mutable quint64 m_reads = 0;
};

} // namespace norvane
