#pragma once

#include <QHash>
#include <QString>
#include <QVariant>

#include <vector>

/// Items in order of insertion, each with a key of its own. Keys take constant time, positions
/// logarithmic time, however many items came and went. Keys are compared by their Unicode case
/// folding (QString::toCaseFolded).
///
/// An item bears a serial number that no other one ever had, so that a reader can go on behind an
/// item that is gone.
class OrderedItems
{
public:
    /// Nothing of this serial number.
    static constexpr qint64 NoSerial = -1;

    qint32 count() const { return m_count; }

    /// The item under `key`, or NoSerial.
    qint64 find(const QString &key) const;
    /// The item at `position`, counted from 1, or NoSerial.
    qint64 at(qint32 position) const;
    /// The first item behind `serial`, which needn't be there any more, or NoSerial.
    qint64 behind(qint64 serial) const;

    const QVariant &value(qint64 serial) const;

    /// Puts an item at the end, unless its key is in use.
    /// @return the item that has the key already, or NoSerial
    qint64 append(const QVariant &value, const QString &key);
    /// Takes an item out.
    QVariant take(qint64 serial);

private:
    struct Slot
    {
        qint64 serial;
        QString key; ///< folded
        QVariant value;
        bool used;
    };

    std::size_t slotOf(qint64 serial) const;
    void addToTree(std::size_t slot, qint32 difference);
    void makeRoom();
    void growTree();
    void compact();

    std::vector<Slot> m_slots;
    /// A binary indexed tree over the slots in use: entry i counts those of the slots up to i,
    /// as many as the lowest set bit of i says.
    std::vector<qint32> m_tree{0};
    QHash<QString, qint64> m_serials; ///< by folded key
    qint64 m_nextSerial = 1;
    qint32 m_count = 0;
};
