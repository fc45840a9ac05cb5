#include "common/CodePages.h"

#include <QFile>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QByteArray byte(int code)
{
    return QByteArray(1, static_cast<char>(code));
}

TEST(CodePagesTest, everyByteBecomesTheOemByteOfTheTable)
{
    QFile file(QStringLiteral(NORVANE_TEST_DATA "/ansi1252_to_oem850.txt"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = file.readAll().trimmed().split('\n');
    ASSERT_EQ(lines.size(), 256);
    for (int code = 0; code < 256; ++code) {
        const QList<QByteArray> columns = lines.at(code).trimmed().split(' ');
        ASSERT_EQ(columns.size(), 2);
        ASSERT_EQ(columns.at(0).toInt(nullptr, 16), code);
        EXPECT_EQ(CodePages::ansiToOem(byte(code)), byte(columns.at(1).toInt(nullptr, 16))) << code;
    }
}

TEST(CodePagesTest, everyByteSurvivesTheWayToTextAndBack)
{
    for (int code = 0; code < 256; ++code) {
        const QString text = CodePages::fromAnsi(byte(code));
        EXPECT_EQ(text.size(), 1);
        EXPECT_EQ(CodePages::toAnsi(text), byte(code)) << code;
    }
}

TEST(CodePagesTest, specialBytesHaveTheirCharacters)
{
    // Letter by letter from 0x80 on; the five undefined bytes are control characters.
    const QString specials = u"€\x81‚ƒ„…†‡ˆ‰Š‹Œ\x8DŽ\x8F\x90‘’“”•–—˜™š›œ\x9DžŸ"_s;
    ASSERT_EQ(specials.size(), 32);
    for (int i = 0; i < 32; ++i)
        EXPECT_EQ(CodePages::fromAnsi(byte(0x80 + i)), specials.mid(i, 1)) << i;
    for (int code = 0xA0; code < 0x100; ++code)
        EXPECT_EQ(CodePages::fromAnsi(byte(code)), QString(QChar(code)));
    for (int code = 0; code < 0x80; ++code)
        EXPECT_EQ(CodePages::fromAnsi(byte(code)), QString(QChar(code)));
}

TEST(CodePagesTest, characterOutsideBecomesOneQuestionMarkForEachUnit)
{
    EXPECT_EQ(CodePages::toAnsi(u"aĀb"), "a?b");
    EXPECT_EQ(CodePages::toAnsi(u"a😀b"), "a??b");
    EXPECT_EQ(CodePages::toAnsi(u"A\u0300"), "A?");
    EXPECT_EQ(CodePages::toAnsi(QString(QChar(0xD800))), "?");
    EXPECT_EQ(CodePages::toAnsi(QString(QChar(0x80))), "?"); // its byte is the euro sign
}

TEST(CodePagesTest, nothingStaysNothing)
{
    EXPECT_EQ(CodePages::toAnsi(u""), QByteArray());
    EXPECT_EQ(CodePages::fromAnsi(QByteArray()), QString());
    EXPECT_EQ(CodePages::ansiToOem(QByteArray()), QByteArray());
}

} // namespace

} // namespace norvane
