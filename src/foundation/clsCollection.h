#pragma once

#include "foundation/IObject.h"

#include <QString>
#include <QVariant>

#include <iterator>
#include <memory>
#include <variant>

namespace norvane {

/// An ordered collection with keys, whose operations report failures by their results. Positions
/// count from 1 in order of insertion; keys are unique without regard to case, by their Unicode
/// case folding. An item is any simple value, or an object as a shared pointer, of which `Item`
/// gives the same one.
class clsCollection : public IObject
{
    struct Items;

public:
    /// A position, or the key of an item.
    class IndexKey
    {
    public:
        IndexKey(qint32 position) : m_value(position) {}
        IndexKey(const QString &key) : m_value(key) {}

        const qint32 *position() const { return std::get_if<qint32>(&m_value); }
        /// The key; of a position, its number as text.
        QString key() const;

    private:
        std::variant<qint32, QString> m_value;
    };

    /// Goes through the items in order. It holds on to them: items that are added or removed on the
    /// way, and even the end of the collection, do no harm.
    class Enumerator
    {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = QVariant;
        using difference_type = std::ptrdiff_t;
        using pointer = const QVariant *;
        using reference = const QVariant &;

        /// The end of every enumeration.
        Enumerator() = default;
        explicit Enumerator(std::shared_ptr<const Items> items);

        const QVariant &operator*() const { return m_current; }
        Enumerator &operator++();
        bool operator==(const Enumerator &other) const { return m_serial == other.m_serial; }

        Enumerator begin() const { return *this; }
        Enumerator end() const { return {}; }

    private:
        std::shared_ptr<const Items> m_items;
        qint64 m_serial = 0; ///< of the current item, which needn't be there any more
        QVariant m_current;
    };

    static constexpr qint32 itemFailure = -2147221500; // 0x80040004

    clsCollection();
    ~clsCollection() override;

    /// Puts an item at the end.
    /// @param vbOverride                     an item of that key is removed first
    /// @param vbIgnoreErrorIfAlreadyExists   an item of that key stays, and the new one is dropped;
    ///                                       this wins over `vbOverride`
    /// @return false if the key is in use and neither flag is set
    bool add(const QVariant &vvntItem, const QString &vsKey, bool vbOverride = false,
             bool vbIgnoreErrorIfAlreadyExists = false);

    qint32 getCount() const;

    /// @return the item; the empty value if there is none
    /// @throws NumberedFailure itemFailure, if there is none and `vbRaiseError` is set
    QVariant Item(const IndexKey &vvntIndexKey, bool vbRaiseError = false) const;

    bool itemExists(const QString &vsKey) const;

    /// Removes an item and adds `vvntValue` at the end, under `vvntIndexKey` as key.
    /// @return false if there was nothing to remove, or if the key, as the text of a position, is
    ///         another item's; in the latter case the old item is gone
    bool setNewValueForItem(const IndexKey &vvntIndexKey, const QVariant &vvntValue);

    /// @return false if there was nothing to remove
    bool remove(const IndexKey &vvntIndexKey);
    void removeAll();

    Enumerator NewEnum() const;
    Enumerator begin() const { return NewEnum(); }
    Enumerator end() const { return {}; }

    QString getClassIdAsString() const override;

private:
    std::shared_ptr<Items> m_items;
};

} // namespace norvane
