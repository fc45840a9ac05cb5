#include "contract/SMSList.h"

#include "support/RaisedFailure.h"

#include <gtest/gtest.h>

#include <limits>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

TEST(SMSListTest, entriesAreCountedFromZeroInTheOrderOfAdding)
{
    SMSList list;
    EXPECT_EQ(list.Count(), 0);
    EXPECT_TRUE(list.Add(u"600111222"_s, u"first"_s));
    EXPECT_TRUE(list.Add(u"600333444"_s, u"second"_s));
    EXPECT_TRUE(list.Add(u"600111222"_s, u"first"_s)); // the same once more is an entry of its own
    EXPECT_EQ(list.Count(), 3);
    EXPECT_EQ(list.Phone(0), u"600111222"_s);
    EXPECT_EQ(list.Message(0), u"first"_s);
    EXPECT_EQ(list.Phone(1), u"600333444"_s);
    EXPECT_EQ(list.Message(1), u"second"_s);
    EXPECT_EQ(list.Phone(2), u"600111222"_s);
    EXPECT_EQ(list.entries().size(), 3);
}

TEST(SMSListTest, contentIsTakenAsItComes)
{
    SMSList list;
    EXPECT_TRUE(list.Add(QString(), QString()));
    EXPECT_TRUE(list.Add(u"+34 600-111"_s, QString(1000, u'ñ')));
    EXPECT_EQ(list.Phone(0), QString());
    EXPECT_EQ(list.Phone(1), u"+34 600-111"_s);
    EXPECT_EQ(list.Message(1).size(), 1000);
}

TEST(SMSListTest, indexOutsideTheListFails)
{
    SMSList list;
    EXPECT_EQ(raisedNumber([&] { list.Phone(0); }), 9);
    EXPECT_EQ(raisedNumber([&] { list.Message(0); }), 9);
    list.Add(u"1"_s, u"m"_s);
    list.Add(u"2"_s, u"m"_s);
    EXPECT_EQ(raisedNumber([&] { list.Phone(1); }), 0);
    for (const qint16 index : {qint16{2}, qint16{-1}, std::numeric_limits<qint16>::max(),
                               std::numeric_limits<qint16>::min()}) {
        EXPECT_EQ(raisedNumber([&] { list.Phone(index); }), 9) << index;
        EXPECT_EQ(raisedNumber([&] { list.Message(index); }), 9) << index;
    }
}

TEST(SMSListTest, entryBeyondTheSixteenBitCountOverflows)
{
    SMSList list;
    const QString phone = u"600111222"_s;
    for (int n = 0; n < 32'767; ++n)
        ASSERT_TRUE(list.Add(phone, QString::number(n)));
    EXPECT_EQ(list.Count(), 32'767);
    EXPECT_EQ(list.Message(32'766), u"32766"_s);
    EXPECT_EQ(raisedNumber([&] { list.Add(phone, u"one too many"_s); }), 6);
    EXPECT_EQ(list.Count(), 32'767);
    EXPECT_EQ(list.Message(32'766), u"32766"_s);
}

} // namespace

} // namespace norvane
