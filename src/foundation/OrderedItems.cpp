#include "foundation/OrderedItems.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace {

std::size_t lowestBit(std::size_t number)
{
    return number & (~number + 1);
}

} // namespace

qint64 OrderedItems::find(const QString &key) const
{
    return m_serials.value(key.toCaseFolded(), NoSerial);
}

qint64 OrderedItems::at(qint32 position) const
{
    if (position < 1 || position > m_count)
        return NoSerial;
    std::size_t slot = 0;
    qint32 missing = position;
    for (std::size_t step = std::bit_floor(m_slots.size()); step > 0; step /= 2) {
        if (slot + step <= m_slots.size() && m_tree[slot + step] < missing) {
            slot += step;
            missing -= m_tree[slot];
        }
    }
    return m_slots[slot].serial;
}

qint64 OrderedItems::behind(qint64 serial) const
{
    auto found = std::ranges::upper_bound(m_slots, serial, {}, &Slot::serial);
    found = std::find_if(found, m_slots.end(), [](const Slot &slot) { return slot.used; });
    return found != m_slots.end() ? found->serial : NoSerial;
}

const QVariant &OrderedItems::value(qint64 serial) const
{
    return m_slots[slotOf(serial)].value;
}

qint64 OrderedItems::append(const QVariant &value, const QString &key)
{
    makeRoom(); // nothing below the look-up may fail
    const QString folded = key.toCaseFolded();
    qint64 &serial = m_serials[folded];
    if (serial != 0)
        return serial;
    serial = m_nextSerial++;
    m_slots.push_back({serial, folded, value, true});
    growTree();
    ++m_count;
    return NoSerial;
}

QVariant OrderedItems::take(qint64 serial)
{
    const std::size_t slot = slotOf(serial);
    Slot &gone = m_slots[slot];
    m_serials.remove(std::exchange(gone.key, {}));
    gone.used = false;
    QVariant value = std::exchange(gone.value, {});
    addToTree(slot, -1);
    --m_count;
    if (m_slots.size() > 32 && m_slots.size() / 2 > static_cast<std::size_t>(m_count))
        compact();
    return value;
}

std::size_t OrderedItems::slotOf(qint64 serial) const
{
    const auto found = std::ranges::lower_bound(m_slots, serial, {}, &Slot::serial);
    return static_cast<std::size_t>(found - m_slots.begin());
}

void OrderedItems::addToTree(std::size_t slot, qint32 difference)
{
    for (std::size_t node = slot + 1; node < m_tree.size(); node += lowestBit(node))
        m_tree[node] += difference;
}

void OrderedItems::makeRoom()
{
    if (m_slots.size() == m_slots.capacity())
        m_slots.reserve(qMax(std::size_t{16}, m_slots.size() * 2));
    m_tree.reserve(m_slots.capacity() + 1);
}

void OrderedItems::growTree()
{
    const std::size_t node = m_tree.size();
    const std::size_t first = node - lowestBit(node);
    qint32 sum = 1;
    for (std::size_t part = node - 1; part > first; part -= lowestBit(part))
        sum += m_tree[part];
    m_tree.push_back(sum);
}

void OrderedItems::compact()
{
    std::erase_if(m_slots, [](const Slot &slot) { return !slot.used; });
    m_tree.assign(1, 0);
    while (m_tree.size() <= m_slots.size())
        growTree();
}
