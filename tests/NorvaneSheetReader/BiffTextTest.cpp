#include "NorvaneSheetReader/BiffRecords.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

// Texts of a workbook of version 8: flags, counts of what follows the characters, the characters.

namespace {

QString firstOf(const QByteArray &bytes, qsizetype length, QString *next = nullptr)
{
    Biff::Record record(Biff::SharedStrings, bytes);
    const QString text = record.takeText(length);
    if (next)
        *next = record.takeText(length);
    return text;
}

} // namespace

TEST(BiffText, phoneticAidsAreNoPartOfTheText)
{
    const QByteArray aided("\x04\x03\x00\x00\x00" // four bytes of count: three of phonetics
                           "abXYZ",
                           10);
    QString next;
    EXPECT_EQ(firstOf(aided + QByteArray("\x00"
                                         "cd",
                                         3),
                      2, &next),
              u"ab"_s);
    EXPECT_EQ(next, u"cd"_s);
}

TEST(BiffText, runsOfLettersComeBeforeThePhoneticAids)
{
    const QByteArray both("\x0D\x01\x00\x02\x00\x00\x00" // wide, one run of four bytes, two of aids
                          "\xE1\x00\x62\x00"
                          "runsPP",
                          17);
    QString next;
    EXPECT_EQ(firstOf(both + QByteArray("\x00"
                                        "cd",
                                        3),
                      2, &next),
              u"áb"_s);
    EXPECT_EQ(next, u"cd"_s);
}

TEST(BiffText, aCountThatReachesBehindTheRecordEndsIt)
{
    const QByteArray lying("\x04\xFF\xFF\xFF\x7F"
                           "ab",
                           7);
    Biff::Record record(Biff::SharedStrings, lying);
    EXPECT_EQ(record.takeText(2), u"ab"_s);
    EXPECT_TRUE(record.atEnd());
    EXPECT_EQ(record.takeLong(), 0u);
}

} // namespace norvane
