#include "foundation/clsCollection.h"

#include "common/FailureNumbers.h"
#include "foundation/OrderedItems.h"

#include <utility>

QString clsCollection::IndexKey::key() const
{
    const qint32 *const number = position();
    return number != nullptr ? QString::number(*number) : std::get<QString>(m_value);
}

clsCollection::Enumerator::Enumerator(std::shared_ptr<const OrderedItems> items)
    : m_items(std::move(items))
{
    ++*this;
}

clsCollection::Enumerator &clsCollection::Enumerator::operator++()
{
    m_serial = m_items->behind(m_serial);
    m_current = m_serial != OrderedItems::NoSerial ? m_items->value(m_serial) : QVariant();
    return *this;
}

clsCollection::clsCollection() : m_items(std::make_shared<OrderedItems>()) {}

clsCollection::~clsCollection()
{
    clsCollection::removeAll();
}

bool clsCollection::add(const QVariant &vvntItem, const QString &vsKey, bool vbOverride,
                        bool vbIgnoreErrorIfAlreadyExists)
{
    try {
        qint64 old = OrderedItems::NoSerial;
        while ((old = m_items->append(vvntItem, vsKey)) != OrderedItems::NoSerial) {
            if (vbIgnoreErrorIfAlreadyExists)
                return true;
            if (!vbOverride)
                Failure::raise(Failure::KeyAlreadyUsed, QStringLiteral("Collection"));
            m_items->take(old);
        }
        return true;
    } catch (const std::exception &) {
        return false;
    }
}

qint32 clsCollection::getCount() const
{
    return m_items->count();
}

qint64 clsCollection::fetch(const IndexKey &vvntIndexKey) const
{
    const QString source = QStringLiteral("Collection");
    if (const qint32 *const position = vvntIndexKey.position()) {
        const qint64 found = m_items->at(*position);
        if (found == OrderedItems::NoSerial)
            Failure::raise(Failure::SubscriptOutOfRange, source);
        return found;
    }
    const qint64 found = m_items->find(vvntIndexKey.key());
    if (found == OrderedItems::NoSerial)
        Failure::raise(Failure::InvalidProcedureCall, source);
    return found;
}

QVariant clsCollection::Item(const IndexKey &vvntIndexKey, bool vbRaiseError) const
{
    try {
        return m_items->value(fetch(vvntIndexKey));
    } catch (const NumberedFailure &failure) {
        if (!vbRaiseError)
            return {};
        throw NumberedFailure(ItemFailure, getClassIdAsString() + QStringLiteral(".item()"),
                              failure.source() + QStringLiteral("\r\n") + failure.description());
    }
}

bool clsCollection::itemExists(const QString &vsKey) const
{
    return m_items->find(vsKey) != OrderedItems::NoSerial;
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
    try {
        // The item ends when the collection is in order again: an object's end may look at it.
        const QVariant gone = m_items->take(fetch(vvntIndexKey));
        return true;
    } catch (const std::exception &) {
        return false;
    }
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
    return QStringLiteral("clsCollection");
}
