#include "common/SheetFrames.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

TEST(SheetFrames, anAnswerArrivesAsItWasGiven)
{
    const SheetFrames::Answer answer{{u"phone"_s, u"text"_s}, 7, {u"600"_s, std::nullopt, u""_s}};
    const auto reply = SheetFrames::decodeReply(SheetFrames::encode(SheetFrames::Reply(answer)));
    ASSERT_TRUE(reply && reply->has_value());
    EXPECT_EQ((*reply)->names, answer.names);
    EXPECT_EQ((*reply)->rows, 7);
    EXPECT_EQ((*reply)->values, answer.values);
}

TEST(SheetFrames, aFailureArrivesWithNumberSourceAndDescription)
{
    const SheetFrames::Reply given = failed(SheetFailure::noSuchSheet(u"May"_s));
    const auto reply = SheetFrames::decodeReply(SheetFrames::encode(given));
    ASSERT_TRUE(reply && !reply->has_value());
    EXPECT_EQ(reply->error().number(), SheetFailure::NoSuchSheet);
    EXPECT_EQ(reply->error().source(), u"Spreadsheet"_s);
    EXPECT_EQ(reply->error().description(), u"There is no sheet 'May' in this file."_s);
}

TEST(SheetFrames, aReplyThatIsCutShortIsNone)
{
    const SheetFrames::Reply replies[] = {SheetFrames::Answer{{u"phone"_s}, 1, {u"600"_s}},
                                          failed(SheetFailure::noSuchField())};
    for (const SheetFrames::Reply &reply : replies) {
        const QByteArray body = SheetFrames::encode(reply);
        for (qsizetype length = 0; length < body.size(); ++length)
            EXPECT_FALSE(SheetFrames::decodeReply(body.first(length)).has_value()) << length;
    }
}

} // namespace norvane
