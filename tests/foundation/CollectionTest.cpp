#include "foundation/clsCollection.h"

#include "common/NumberedFailure.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString keyOf(int number)
{
    return u"K"_s + QString::number(number);
}

QStringList itemsOf(const clsCollection &collection)
{
    QStringList items;
    for (const QVariant &item : collection)
        items.append(item.toString());
    return items;
}

class Collection : public ::testing::Test
{
protected:
    bool add(const char *item, const char *key, bool overrides = false, bool ignores = false)
    {
        return collection.add(QString::fromUtf8(item), QString::fromUtf8(key), overrides, ignores);
    }
    QStringList items() const { return itemsOf(collection); }

    clsCollection collection;
};

using S = QStringList;

} // namespace

TEST_F(Collection, secondItemOfAKeyIsRefusedWithoutFlags)
{
    EXPECT_TRUE(add("first", "a"));
    EXPECT_FALSE(add("second", "a"));
    EXPECT_EQ(items(), S{u"first"_s});
}

TEST_F(Collection, ignoringTheErrorKeepsTheFirstItemAndGivesTrue)
{
    add("first", "a");
    EXPECT_TRUE(add("second", "a", false, true));
    EXPECT_EQ(items(), S{u"first"_s});
}

TEST_F(Collection, overridingPutsTheNewItemLast)
{
    add("first", "a");
    add("other", "b");
    EXPECT_TRUE(add("second", "a", true, false));
    EXPECT_EQ(items(), (S{u"other"_s, u"second"_s}));
    EXPECT_EQ(collection.Item(u"a"_s).toString(), u"second"_s);
}

TEST_F(Collection, withBothFlagsTheFirstItemStays)
{
    add("first", "a");
    add("other", "b");
    EXPECT_TRUE(add("second", "a", true, true));
    EXPECT_EQ(items(), (S{u"first"_s, u"other"_s}));
}

TEST_F(Collection, keysThatDifferInCaseOnlyAreTheSame)
{
    add("first", "Ñandú");
    EXPECT_FALSE(add("second", "ñANDÚ"));
    EXPECT_TRUE(collection.itemExists(u"ñandú"_s));
    EXPECT_TRUE(add("third", "Nandu"));
}

TEST_F(Collection, unknownItemIsTheEmptyValueOrAFailure)
{
    add("first", "a");
    EXPECT_FALSE(collection.Item(u"b"_s).isValid());
    EXPECT_FALSE(collection.Item(0).isValid());
    EXPECT_FALSE(collection.Item(2).isValid());
    EXPECT_FALSE(collection.Item(-1).isValid());
    const auto raised = [&](const clsCollection::IndexKey &key) {
        try {
            collection.Item(key, true);
        } catch (const NumberedFailure &failure) {
            EXPECT_EQ(failure.number(), -2147221500);
            EXPECT_EQ(failure.source(), u"clsCollection.item()"_s);
            return failure.description();
        }
        return QString();
    };
    EXPECT_EQ(raised(u"b"_s), u"Collection\r\nInvalid procedure call or argument"_s);
    EXPECT_EQ(raised(2), u"Collection\r\nSubscript out of range"_s);
}

TEST_F(Collection, positionsCountFromOneInOrderOfInsertion)
{
    for (int i = 1; i <= 5; ++i)
        collection.add(i, keyOf(i));
    EXPECT_EQ(collection.Item(1).toInt(), 1);
    EXPECT_EQ(collection.Item(collection.getCount()).toInt(), 5);
    EXPECT_TRUE(collection.remove(2));
    EXPECT_EQ(collection.Item(2).toInt(), 3);
    EXPECT_EQ(collection.getCount(), 4);
}

TEST_F(Collection, nothingExistsInAnEmptyCollection)
{
    EXPECT_FALSE(collection.itemExists(u"a"_s));
    EXPECT_FALSE(collection.itemExists(QString()));
    EXPECT_EQ(collection.getCount(), 0);
    EXPECT_TRUE(items().isEmpty());
}

TEST_F(Collection, removeAllOfAnEmptyCollectionDoesNothing)
{
    EXPECT_NO_THROW(collection.removeAll());
    EXPECT_EQ(collection.getCount(), 0);
}

TEST_F(Collection, removeAllEmptiesAndTheKeysAreFree)
{
    for (int i = 0; i < 100; ++i)
        collection.add(i, keyOf(i));
    collection.removeAll();
    EXPECT_EQ(collection.getCount(), 0);
    EXPECT_FALSE(collection.itemExists(keyOf(3)));
    EXPECT_TRUE(collection.add(3, keyOf(3)));
}

TEST_F(Collection, removingTellsWhetherThereWasSomething)
{
    add("first", "a");
    EXPECT_FALSE(collection.remove(u"b"_s));
    EXPECT_FALSE(collection.remove(0));
    EXPECT_FALSE(collection.remove(2));
    EXPECT_TRUE(collection.remove(u"A"_s));
    EXPECT_FALSE(collection.remove(u"a"_s));
}

TEST_F(Collection, aNewValueMovesToTheEnd)
{
    add("first", "a");
    add("other", "b");
    EXPECT_TRUE(collection.setNewValueForItem(u"a"_s, u"new"_s));
    EXPECT_EQ(items(), (S{u"other"_s, u"new"_s}));
    EXPECT_FALSE(collection.setNewValueForItem(u"c"_s, u"x"_s));
    EXPECT_EQ(items(), (S{u"other"_s, u"new"_s}));
}

TEST_F(Collection, aNewValueByPositionBearsThePositionAsKey)
{
    add("first", "a");
    EXPECT_TRUE(collection.setNewValueForItem(1, u"new"_s));
    EXPECT_FALSE(collection.itemExists(u"a"_s));
    EXPECT_EQ(collection.Item(u"1"_s).toString(), u"new"_s);

    // The key "1" is in use now: the old item is gone and the new one isn't added.
    add("second", "b");
    EXPECT_TRUE(collection.setNewValueForItem(2, u"newer"_s));
    add("third", "c");
    EXPECT_TRUE(collection.remove(1));
    EXPECT_FALSE(collection.setNewValueForItem(2, u"lost"_s));
    EXPECT_EQ(items(), S{u"newer"_s});
}

TEST_F(Collection, anObjectComesBackAsTheSameObject)
{
    const auto object = std::make_shared<clsCollection>();
    collection.add(QVariant::fromValue<std::shared_ptr<IObject>>(object), u"o"_s);
    EXPECT_EQ(collection.Item(1).value<std::shared_ptr<IObject>>(), object);
}

TEST_F(Collection, enumerationOutlivesRemovalAdditionAndTheCollection)
{
    auto other = std::make_unique<clsCollection>();
    for (int i = 0; i < 100; ++i)
        other->add(i, keyOf(i));
    clsCollection::Enumerator enumerator = other->NewEnum();
    EXPECT_EQ((*enumerator).toInt(), 0);
    for (int i = 0; i < 90; ++i)
        other->remove(keyOf(i));
    other->add(1000, u"late"_s);
    ++enumerator;
    EXPECT_EQ((*enumerator).toInt(), 90);
    other.reset();
    ++enumerator;
    EXPECT_EQ(enumerator, clsCollection::Enumerator());
}

TEST_F(Collection, anItemsEndMayLookAtTheCollection)
{
    struct Looker : IObject
    {
        explicit Looker(std::function<void()> look) : m_look(std::move(look)) {}
        ~Looker() override { m_look(); }
        std::function<void()> m_look;
    };
    qint32 seen = -1;
    collection.add(QVariant::fromValue<std::shared_ptr<IObject>>(
                       std::make_shared<Looker>([&] { seen = collection.getCount(); })),
                   u"o"_s);
    add("other", "b");
    collection.removeAll();
    EXPECT_EQ(seen, 0);
}

TEST_F(Collection, agreesWithAPlainListWhateverIsDone)
{
    std::mt19937 random(7);
    QList<std::pair<QString, int>> plain;
    for (int step = 0; step < 20'000; ++step) {
        const QString key = keyOf(static_cast<int>(random() % 300));
        const auto found = std::find_if(plain.begin(), plain.end(),
                                        [&](const auto &item) { return item.first == key; });
        if (random() % 3 == 0 && !plain.isEmpty()) {
            const auto position = static_cast<qint32>(random() % plain.size());
            ASSERT_EQ(collection.Item(position + 1).toInt(), plain.at(position).second);
            ASSERT_TRUE(collection.remove(position + 1));
            plain.removeAt(position);
        } else {
            ASSERT_EQ(collection.add(step, key), found == plain.end());
            if (found == plain.end())
                plain.append({key, step});
        }
        ASSERT_EQ(collection.getCount(), plain.size());
    }
    QStringList expected;
    for (const auto &item : plain)
        expected.append(QString::number(item.second));
    EXPECT_EQ(items(), expected);
}

TEST_F(Collection, itemsAreReachedByPositionAfterRemovals)
{
    constexpr int count = 10'000;
    for (int i = 0; i < count; ++i)
        collection.add(i, keyOf(i));
    for (int i = 0; i < count / 2; ++i)
        collection.remove(i + 1); // every other one
    EXPECT_EQ(collection.getCount(), count / 2);
    for (qint32 position = 1; position <= collection.getCount(); ++position) {
        ASSERT_EQ(collection.Item(position).toInt(), position * 2 - 1);
        ASSERT_EQ(collection.Item(keyOf(position * 2 - 1)).toInt(), position * 2 - 1);
    }
}

/// A walk for each position would take more than an hour, and so fail by the test's own limit.
TEST_F(Collection, millionsOfItemsAreReachedByPositionAndRemoved)
{
    constexpr int count = 2'000'000;
    for (int i = 0; i < count; ++i)
        collection.add(i, keyOf(i));
    for (qint32 position = 1; position <= collection.getCount(); ++position)
        ASSERT_EQ(collection.Item(position).toInt(), position - 1);
    collection.removeAll();
    EXPECT_EQ(collection.getCount(), 0);
}

TEST_F(Collection, isAnObjectThatCopiesNothing)
{
    add("first", "a");
    const auto other = std::make_shared<clsCollection>();
    EXPECT_EQ(collection.getClassIdAsString(), u"clsCollection"_s);
    collection.copyToObject(other, 3);
    collection.copyObject(other);
    EXPECT_EQ(other->getCount(), 0);
    EXPECT_EQ(collection.getCount(), 1);
    EXPECT_EQ(collection.generateCopy(), nullptr);
    EXPECT_FALSE(collection.getParameterValue(u"x"_s).isValid());
}

TEST(PlainObject, hasNothingToTell)
{
    IObject object;
    const auto other = std::make_shared<clsCollection>();
    other->add(1, u"a"_s);
    object.copyObject(other, 1);
    object.copyToObject(other);
    EXPECT_EQ(other->getCount(), 1);
    EXPECT_EQ(object.getClassIdAsString(), QString());
    EXPECT_EQ(object.generateCopy(1), nullptr);
    EXPECT_FALSE(object.getParameterValue(u"x"_s).isValid());
}

} // namespace norvane
