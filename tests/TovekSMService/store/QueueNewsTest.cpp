#include "TovekSMService/store/QueueNews.h"

#include "TovekSMService/store/QueueJournal.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

TEST(QueueNews, namesIdsAndRangesOfThem)
{
    EXPECT_EQ(QueueNews::of({7}), u"7"_s);
    EXPECT_EQ(QueueNews::of({9, 7, 8, 12}), u"7-9,12"_s);
    EXPECT_EQ(QueueNews::of({5, 5, 6}), u"5-6"_s) << "one that changed twice";
    EXPECT_EQ(QueueNews::of({}), QString());
}

TEST(QueueNews, areReadAsTheyWereWritten)
{
    for (const QList<qint64> &ids :
         {QList<qint64>{1}, QList<qint64>{1, 2, 3, 9}, QList<qint64>{4'000'000'000, 4'000'000'001}})
        EXPECT_EQ(QueueNews::idsOf(QueueNews::of(ids)), ids);
    EXPECT_EQ(QueueNews::idsOf(QString()), QList<qint64>());
}

TEST(QueueNews, thatWouldBeTooLongAreThatAnythingMayBeDifferent)
{
    QList<qint64> ids;
    for (qint64 id = 0; id < 5000; id += 2)
        ids.append(1'000'000 + id);
    EXPECT_EQ(QueueNews::of(ids), QueueNews::ofAll());
    EXPECT_FALSE(QueueNews::idsOf(QueueNews::ofAll()));
}

TEST(QueueNews, thatCannotBeReadAreTooThatAnythingMayBeDifferent)
{
    for (const char *const odd : {"x", "1-", "-1", "3-2", "1,x", "1-2-3", "99999999999999999999"})
        EXPECT_FALSE(QueueNews::idsOf(QString::fromLatin1(odd))) << odd;
    EXPECT_FALSE(QueueNews::idsOf(u"1-%1"_s.arg(QueueJournal::maxNotes + 1)));
    EXPECT_FALSE(QueueNews::idsOf(u"1-9000000000000000000"_s)) << "without taking all memory";
}

} // namespace

} // namespace norvane
