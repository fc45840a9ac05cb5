#include "foundation/clsCollection.h"

#include "common/FailureNumbers.h"

#include <QHash>

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

namespace norvane {

using namespace Qt::StringLiterals;

/// The items in order of insertion, and so of their serial numbers, which no two items ever share:
/// an enumerator goes on behind an item that is gone.
struct clsCollection::Items
{
    struct Item
    {
        qint64 serial;
        QString key; ///< folded
        QVariant value;
    };
    using Position = std::vector<Item>::const_iterator;

    /// The item of a folded key, or the end.
    Position findFolded(const QString &key) const
    {
        const auto serial = serials.constFind(key);
        return serial == serials.cend() ? all.cend()
                                        : std::ranges::lower_bound(all, *serial, {}, &Item::serial);
    }

    /// The item at a position or of a key, or the end.
    Position find(const IndexKey &indexKey) const
    {
        const qint32 *const position = indexKey.position();
        if (position == nullptr)
            return findFolded(indexKey.key().toCaseFolded());
        return *position < 1 || *position > count() ? all.cend() : all.cbegin() + (*position - 1);
    }

    qint32 count() const { return static_cast<qint32>(all.size()); }

    /// Puts an item at the end, under a folded key that isn't in use.
    void append(const QVariant &value, const QString &key)
    {
        if (all.size() == all.capacity()) // nothing below the insertion may fail
            all.reserve(qMax(std::size_t{16}, all.size() * 2));
        serials.insert(key, lastSerial + 1);
        all.push_back({++lastSerial, key, value});
    }

    void remove(Position item)
    {
        // The value ends when the collection is in order again: an object's end may look at it.
        const QVariant gone = item->value;
        serials.remove(item->key);
        all.erase(item);
    }

    std::vector<Item> all;
    QHash<QString, qint64> serials; ///< by folded key
    qint64 lastSerial = 0;
};

QString clsCollection::IndexKey::key() const
{
    const qint32 *const number = position();
    return number != nullptr ? QString::number(*number) : std::get<QString>(m_value);
}

clsCollection::Enumerator::Enumerator(std::shared_ptr<const Items> items)
    : m_items(std::move(items))
{
    ++*this;
}

clsCollection::Enumerator &clsCollection::Enumerator::operator++()
{
    const auto next = std::ranges::upper_bound(m_items->all, m_serial, {}, &Items::Item::serial);
    const bool ended = next == m_items->all.cend();
    m_serial = ended ? 0 : next->serial;
    m_current = ended ? QVariant() : next->value;
    return *this;
}

clsCollection::clsCollection() : m_items(std::make_shared<Items>()) {}

clsCollection::~clsCollection()
{
    clsCollection::removeAll();
}

bool clsCollection::add(const QVariant &vvntItem, const QString &vsKey, bool vbOverride,
                        bool vbIgnoreErrorIfAlreadyExists)
{
    try {
        const QString key = vsKey.toCaseFolded();
        for (auto old = m_items->findFolded(key); old != m_items->all.cend();
             old = m_items->findFolded(key)) {
            if (vbIgnoreErrorIfAlreadyExists || !vbOverride)
                return vbIgnoreErrorIfAlreadyExists;
            m_items->remove(old);
        }
        m_items->append(vvntItem, key);
        return true;
    } catch (const std::bad_alloc &) {
        return false;
    }
}

qint32 clsCollection::getCount() const
{
    return m_items->count();
}

QVariant clsCollection::Item(const IndexKey &vvntIndexKey, bool vbRaiseError) const
{
    const auto found = m_items->find(vvntIndexKey);
    if (found != m_items->all.cend())
        return found->value;
    if (!vbRaiseError)
        return {};
    const auto number = vvntIndexKey.position() != nullptr ? Failure::SubscriptOutOfRange
                                                           : Failure::InvalidProcedureCall;
    throw NumberedFailure(itemFailure, getClassIdAsString() + u".item()"_s,
                          u"Collection\r\n"_s + Failure::description(number));
}

bool clsCollection::itemExists(const QString &vsKey) const
{
    return m_items->serials.contains(vsKey.toCaseFolded());
}

bool clsCollection::setNewValueForItem(const IndexKey &vvntIndexKey, const QVariant &vvntValue)
{
    // Either argument may be a part of the item that goes.
    const QVariant value = vvntValue;
    const QString key = vvntIndexKey.key();
    return remove(vvntIndexKey) && add(value, key);
}

bool clsCollection::remove(const IndexKey &vvntIndexKey)
{
    const auto found = m_items->find(vvntIndexKey);
    if (found == m_items->all.cend())
        return false;
    m_items->remove(found);
    return true;
}

void clsCollection::removeAll()
{
    for (qint32 position = getCount(); position >= 1; --position)
        remove(position);
}

clsCollection::Enumerator clsCollection::NewEnum() const
{
    return Enumerator(m_items);
}

QString clsCollection::getClassIdAsString() const
{
    return u"clsCollection"_s;
}

} // namespace norvane
