#include "NorvaneSMS/import/readers/RecipientReaders.h"
#include "NorvaneSMS/queue/Fixture.h"
#include "support/RaisedFailure.h"
#include "support/ScriptedStreams.h"

#include <QTemporaryDir>

#include <cerrno>

namespace norvane {

using namespace Qt::StringLiterals;

class TextReader : public ::testing::Test
{
protected:
    QString write(const QByteArray &bytes) const
    {
        const QString path = folder.filePath(u"list.txt"_s);
        writeFile(path, bytes);
        return path;
    }
    /// Reads `bytes` and gives "key=item" of each recipient.
    QStringList read(const QByteArray &bytes, Duplicates duplicates = Duplicates::Keep)
    {
        recipients.removeAll();
        readTextRecipients(files, write(bytes), duplicates, recipients);
        return items();
    }
    QStringList items() const
    {
        QStringList found;
        for (const QVariant &item : recipients)
            found.append(item.toString());
        return found;
    }

    const QTemporaryDir folder;
    ScriptedStreams streams;
    NumberedFiles files{streams};
    clsCollection recipients;
};

using S = QStringList;

TEST_F(TextReader, anEmptyFileGivesNothing)
{
    EXPECT_EQ(read(""), S());
}

TEST_F(TextReader, aLineEndsAtACarriageReturnWithOrWithoutALineFeed)
{
    const QList<std::pair<QByteArray, S>> cases{
        {"1\r2\r\n3", {u"1"_s, u"2"_s, u"3"_s}},
        {"1\r\n2\r\n", {u"1"_s, u"2"_s}},
        {"1\n2\n", {u"1\n2\n"_s}},
        {"1\n\r2", {u"1\n"_s, u"2"_s}},
        {"1\r\n\n2", {u"1"_s, u"\n2"_s}},
        {QByteArray("1\0002\r3", 5), {QString::fromLatin1("1\0002", 3), u"3"_s}},
    };
    for (qsizetype max = 1; max < 8; ++max) {
        streams.onRead = [max](qsizetype &count) {
            count = max;
            return 0;
        };
        for (const auto &[bytes, lines] : cases)
            EXPECT_EQ(read(bytes), lines) << bytes.toPercentEncoding().toStdString() << max;
    }
}

TEST_F(TextReader, linesWithoutANumberAreSkippedAndCounted)
{
    EXPECT_EQ(read("\r\n  - \r\n|Ana\r\n - |Rui\r\n5"), S{u"5"_s});
    EXPECT_TRUE(recipients.itemExists(u"K5"_s));
}

TEST_F(TextReader, aLineStaysAsItIsUnderItsCleanedNumber)
{
    EXPECT_EQ(read("912 345 678|Ana|Lisboa", Duplicates::Remove), S{u"912 345 678|Ana|Lisboa"_s});
    EXPECT_TRUE(recipients.itemExists(u"912345678"_s));
}

TEST_F(TextReader, lettersAloneAreANumber)
{
    EXPECT_EQ(read("abc\tdef.()+"), S{u"abc\tdef.()+"_s});
}

TEST_F(TextReader, theSameNumberTwiceIsTwoItemsWithTheFlagOff)
{
    EXPECT_EQ(read("912345678\r912345678"), (S{u"912345678"_s, u"912345678"_s}));
    EXPECT_TRUE(recipients.itemExists(u"K1"_s));
    EXPECT_TRUE(recipients.itemExists(u"K2"_s));
}

TEST_F(TextReader, theFirstOfTwoLinesOfANumberStaysWithTheFlagOn)
{
    EXPECT_EQ(read("912345678|Ana\r912345678|Rui", Duplicates::Remove), S{u"912345678|Ana"_s});
    EXPECT_EQ(read("912 345-678\r912345678\rABC\rabc", Duplicates::Remove),
              (S{u"912 345-678"_s, u"ABC"_s}));
}

TEST_F(TextReader, bytesAreReadInTheAnsiCodePage)
{
    EXPECT_EQ(read("1|Jos\xE9 10\x80"), S{u"1|Jos\u00E9 10\u20AC"_s});
}

TEST_F(TextReader, aByteOrderMarkIsPartOfTheFirstLine)
{
    EXPECT_EQ(read("\xEF\xBB\xBF"
                   "912345678",
                   Duplicates::Remove),
              S{u"\u00EF\u00BB\u00BF912345678"_s});
    EXPECT_FALSE(recipients.itemExists(u"912345678"_s));
}

TEST_F(TextReader, whatWasReadBeforeAFailureStaysAndTheFilesNumberStaysInUse)
{
    int readings = 0;
    streams.onRead = [&](qsizetype &max) {
        max = 3;
        return ++readings > 3 ? EIO : 0;
    };
    EXPECT_EQ(raisedNumber([&] { read("1\r2\r3\r4\r5\r6\r7\r"); }), 57);
    EXPECT_EQ(items(), (S{u"1"_s, u"2"_s, u"3"_s, u"4"_s}));
    EXPECT_EQ(streams.openStreams, 1);

    streams.onRead = nullptr;
    EXPECT_EQ(raisedNumber([&] { read("1"); }), 55);
    files.close(textFileNumber);
    EXPECT_EQ(read("1"), S{u"1"_s});
    EXPECT_EQ(streams.openStreams, 0);
}

TEST_F(TextReader, aFileThatDoesNotOpenLeavesItsNumberFree)
{
    EXPECT_EQ(raisedNumber([&] {
                  readTextRecipients(files, folder.filePath(u"none"_s), Duplicates::Keep,
                                     recipients);
              }),
              53);
    EXPECT_EQ(read("1"), S{u"1"_s});
}

TEST_F(TextReader, aNumberThatIsNotInUseIsAFailure)
{
    EXPECT_EQ(raisedNumber([&] { files.isAtEnd(2); }), 52);
    EXPECT_EQ(raisedNumber([&] { files.lineInput(2); }), 52);
    files.openForInput(2, write(""));
    EXPECT_EQ(raisedNumber([&] { files.lineInput(2); }), 62);
}

} // namespace norvane
