#include "TovekSMService/history/HistoryCursor.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

TEST(HistoryCursorTest, aPlaceIsReadAsItWasWritten)
{
    const HistoryCursor cursor{12, 9'223'372'036'854'775'807};
    EXPECT_EQ(HistoryCursor::of(cursor.text()), cursor);
    EXPECT_EQ(HistoryCursor::of(QString()), HistoryCursor());
    EXPECT_EQ(InboxCursor::of(InboxCursor{3}.text()), InboxCursor{3});
    EXPECT_EQ(InboxCursor::of(QString()), InboxCursor());
}

TEST(HistoryCursorTest, whatWasNeverGivenIsRefused)
{
    const QString texts[] = {u"x"_s,
                             u"h"_s,
                             u"h.1"_s,
                             u"h.1.2.3"_s,
                             u"i.1.2"_s,
                             u"h.-1.2"_s,
                             u"h.+1.2"_s,
                             u"h.01.2"_s,
                             u"h.1. 2"_s,
                             u"h..2"_s,
                             u"h.1.9223372036854775808"_s,
                             u"h.1.2;DROP TABLE outcome"_s,
                             u"H.1.2"_s,
                             u"h.１.2"_s,
                             u" h.1.2"_s,
                             QString(5000, u'1')};
    for (const QString &text : texts) {
        EXPECT_FALSE(HistoryCursor::of(text)) << text.left(40).toStdString();
        EXPECT_FALSE(InboxCursor::of(text)) << text.left(40).toStdString();
    }
    EXPECT_FALSE(HistoryCursor::of(InboxCursor{3}.text()));
    EXPECT_FALSE(InboxCursor::of(HistoryCursor{1, 2}.text()));
}

} // namespace

} // namespace norvane
