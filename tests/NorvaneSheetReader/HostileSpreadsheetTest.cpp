#include "NorvaneSMS/import/readers/HelperConnection.h"
#include "NorvaneSMS/queue/Fixture.h"
#include "NorvaneSheetReader/SheetFile.h"
#include "common/SheetFrames.h"
#include "support/RaisedFailure.h"
#include "support/WaitUntil.h"

#include <QProcess>
#include <QTemporaryDir>

namespace norvane {

using namespace Qt::StringLiterals;

/// Files from strangers, through the reader's process.
class HostileSpreadsheet : public ::testing::Test
{
protected:
    /// What opening `bytes` gives: nothing, or the failure.
    std::optional<NumberedFailure> opening(const QByteArray &bytes)
    {
        const QString path = folder.filePath(u"book.xls"_s);
        writeFile(path, bytes);
        return raisedFailure([&] { connection.open(path); });
    }
    void expectRefused(const QByteArray &bytes, const char *what)
    {
        const auto failure = opening(bytes);
        ASSERT_TRUE(failure) << what;
        EXPECT_EQ(failure->number(), SheetFailure::BadFile) << what;
        EXPECT_FALSE(failure->description().isEmpty()) << what;
        EXPECT_EQ(connection.errors(), QStringList{failure->description()}) << what;
    }
    static QByteArray real(const char *name)
    {
        return bytesOf(QStringLiteral(NORVANE_TEST_DATA "/import/") + QLatin1String(name));
    }

    /// An archive with other bytes in the header of each entry, both where its content lies and in
    /// the directory.
    static QByteArray inEachEntry(QByteArray archive, qsizetype atContent, qsizetype inDirectory,
                                  const QByteArray &bytes)
    {
        for (const auto &[mark, offset] :
             {std::pair("PK\x03\x04", atContent), std::pair("PK\x01\x02", inDirectory)}) {
            for (qsizetype entry = archive.indexOf(mark); entry >= 0;
                 entry = archive.indexOf(mark, entry + 1))
                archive.replace(entry + offset, bytes.size(), bytes);
        }
        return archive;
    }

    /// A program that does this in the reader's place.
    QString readerThat(const QByteArray &acts) const
    {
        const QString script = folder.filePath(u"reader"_s);
        writeFile(script, "#!/bin/sh\n" + acts + "\n");
        QFile::setPermissions(script, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return script;
    }

    const QTemporaryDir folder;
    HelperConnection connection{QStringLiteral(NORVANE_SHEET_READER)};
};

TEST_F(HostileSpreadsheet, whatIsNoSpreadsheetIsRefused)
{
    expectRefused("", "an empty file");
    expectRefused("912345678\r\n912345679\r\n", "a text");
    expectRefused("\x89PNG\r\n\x1A\n", "a picture");
    expectRefused("PK\x03\x04", "an archive's first bytes");
    expectRefused(zipOf({{"a.txt", "x"}}), "an archive of something else");
    expectRefused("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1" + QByteArray(600, '\0'), "a bare header");
    expectRefused("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1" + QByteArray(600, '\xFF'), "a full header");
}

TEST_F(HostileSpreadsheet, aFileThatWentAwayIsThePlatformsFailure)
{
    EXPECT_EQ(raisedNumber([&] { connection.open(folder.filePath(u"none"_s)); }), 53);
    EXPECT_EQ(raisedNumber([&] { connection.open(folder.path()); }), 75);
}

TEST_F(HostileSpreadsheet, aFileThatIsTooLargeIsRefused)
{
    QFile file(folder.filePath(u"book.xls"_s));
    ASSERT_TRUE(file.open(QFile::WriteOnly) && file.resize((128 << 20) + 1));
    const auto failure = raisedFailure([&] { connection.open(file.fileName()); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->number(), SheetFailure::BadFile);
    EXPECT_EQ(failure->description(), u"The file is too large."_s);
}

TEST_F(HostileSpreadsheet, aFileCutAnywhereIsReadOrRefused)
{
    for (const char *name : {"perl.xls", "gnumeric.xlsx", "libreoffice.ods"}) {
        const QByteArray whole = real(name);
        for (qsizetype length = 0; length < whole.size(); length += whole.size() / 12 + 1) {
            const auto failure = opening(whole.first(length));
            if (failure.has_value()) {
                EXPECT_EQ(failure->number(), SheetFailure::BadFile) << name << length;
            }
        }
        expectRefused(whole.first(whole.size() / 2), name);
    }
}

TEST_F(HostileSpreadsheet, encryptedWorkbooksAreToldAsSuch)
{
    QByteArray xls = real("perl.xls");
    // The record behind the first one says that what follows is encrypted.
    const qsizetype begin = xls.indexOf(QByteArray("\x09\x08", 2));
    ASSERT_GT(begin, 0);
    const qsizetype behind = begin + 4 + static_cast<quint8>(xls.at(begin + 2));
    xls[behind] = 0x2F;
    expectRefused(xls, "an .xls with a password");
    EXPECT_TRUE(connection.errors().first().contains(u"encrypted"_s));

    expectRefused(zipOf({{"content.xml", "\x01\x02"},
                         {"META-INF/manifest.xml", "<m><encryption-data/></m>"}}),
                  "an .ods with a password");
    EXPECT_TRUE(connection.errors().first().contains(u"encrypted"_s));

    expectRefused(zipOf({{"mimetype", "application/vnd.oasis.opendocument.spreadsheet"},
                         {"encrypted-package", "\x01\x02"},
                         {"META-INF/manifest.xml", "<m><encryption-data/></m>"}}),
                  "an .ods that is encrypted as one part");
    EXPECT_TRUE(connection.errors().first().contains(u"encrypted"_s));
}

TEST_F(HostileSpreadsheet, workbooksThatAnOfficeSuiteEncryptedAreToldAsSuch)
{
    for (const char *name : {"encrypted.xls", "encrypted.xlsx", "encrypted.ods"}) {
        expectRefused(real(name), name);
        EXPECT_EQ(connection.errors(), QStringList{u"The workbook is encrypted."_s}) << name;
    }
}

TEST_F(HostileSpreadsheet, anArchiveThatUnpacksToMoreThanTheReaderMayHoldIsRefused)
{
    const QByteArray bytes = xlsxOf(QByteArray(400 << 20, ' '));
    EXPECT_LT(bytes.size(), 1 << 20);
    expectRefused(bytes, "400 MiB of blanks");
    EXPECT_EQ(connection.errors(),
              QStringList{u"A part of the archive holds more than 256 MiB."_s});
}

TEST_F(HostileSpreadsheet, aPartThatIsLongerOrShorterThanTheArchiveClaimsIsRefused)
{
    const QByteArray good = xlsxOf("<row><c><v>1</v></c></row>");
    ASSERT_FALSE(opening(good));
    constexpr char one[] = {1, 0, 0, 0};
    constexpr char million[] = {0, 0, 16, 0};
    for (const char *claimed : {one, million}) {
        expectRefused(inEachEntry(good, 22, 24, QByteArray(claimed, 4)), "a wrong length");
        EXPECT_EQ(connection.errors(), QStringList{u"The archive is damaged."_s});
    }
    expectRefused(inEachEntry(good, 22, 24, "\xF0\xFF\xFF\x7F"), "gigabytes");
    EXPECT_EQ(connection.errors(),
              QStringList{u"A part of the archive holds more than 256 MiB."_s});
}

TEST_F(HostileSpreadsheet, aPartWithAWrongChecksumIsRefused)
{
    expectRefused(inEachEntry(xlsxOf("<row><c><v>1</v></c></row>"), 14, 16, "\1\2\3\4"),
                  "wrong checksums");
    EXPECT_EQ(connection.errors(), QStringList{u"The archive is damaged."_s});
}

TEST_F(HostileSpreadsheet, anArchiveWithAPasswordIsToldAsSuch)
{
    expectRefused(inEachEntry(xlsxOf("<row><c><v>1</v></c></row>"), 6, 8, QByteArray("\1\0", 2)),
                  "encrypted entries");
    EXPECT_EQ(connection.errors(), QStringList{u"The workbook is encrypted."_s});
}

TEST_F(HostileSpreadsheet, aPartThatIsPackedInAnotherWayIsRefused)
{
    constexpr char bzip2[] = {12, 0};
    expectRefused(inEachEntry(xlsxOf("<row><c><v>1</v></c></row>"), 8, 10, QByteArray(bzip2, 2)),
                  "bzip2");
    EXPECT_EQ(connection.errors(),
              QStringList{u"The archive is packed in a way that isn't read."_s});
}

TEST_F(HostileSpreadsheet, anArchiveThatNamesAPartTwiceIsRefused)
{
    const QByteArray sheet = "<document-content><body><spreadsheet/></body></document-content>";
    ASSERT_FALSE(opening(zipOf({{"content.xml", sheet}, {"other.xml", sheet}})));
    expectRefused(zipOf({{"content.xml", sheet}, {"content.xml", sheet}}), "a name twice");
    EXPECT_EQ(connection.errors(), QStringList{u"The archive is damaged."_s});
}

TEST_F(HostileSpreadsheet, anArchiveOfMoreEntriesThanItClaimsOrFewerIsRefused)
{
    const QByteArray good = xlsxOf("<row><c><v>1</v></c></row>");
    for (const char claimed : {'\1', '\x7F'}) {
        QByteArray bytes = good;
        bytes[bytes.size() - 12] = claimed;
        bytes[bytes.size() - 14] = claimed;
        expectRefused(bytes, "a wrong count of entries");
    }
}

TEST_F(HostileSpreadsheet, anArchiveOfTooManyPartsIsRefused)
{
    QList<ZipEntry> entries{{"content.xml", "<document-content/>"}};
    while (entries.size() <= 65536)
        entries.append({QByteArray::number(entries.size()), {}});
    expectRefused(zip64Of(entries), "65,537 parts");
    EXPECT_EQ(connection.errors(), QStringList{u"The archive holds too many parts."_s});
}

TEST_F(HostileSpreadsheet, entitiesThatMultiplyAreRefused)
{
    QByteArray entities = "<!DOCTYPE x [<!ENTITY e0 \"lol\">";
    for (int i = 1; i < 12; ++i) {
        const QByteArray before = "&e" + QByteArray::number(i - 1) + ";";
        entities += "<!ENTITY e" + QByteArray::number(i) + " \"" + before.repeated(10) + "\">";
    }
    expectRefused(odsOf("<t:table-row><t:table-cell o:value-type=\"string\"><x:p>&e11;</x:p>"
                        "</t:table-cell></t:table-row>",
                        entities + "]>"),
                  "a billion laughs");
}

TEST_F(HostileSpreadsheet, anOutsideEntityIsNotFetched)
{
    const QByteArray prologue = "<!DOCTYPE x [<!ENTITY f SYSTEM \"file:///etc/passwd\">]>";
    const auto failure =
        opening(odsOf("<t:table-row><t:table-cell o:value-type=\"string\"><x:p>&f;</x:p>"
                      "</t:table-cell></t:table-row>",
                      prologue));
    if (!failure.has_value()) {
        EXPECT_TRUE(connection.describe(u"Hoja1"_s).fields.join(u"").startsWith(u'F'));
    }
}

TEST_F(HostileSpreadsheet, aMillionDeclaredRowsCostNothing)
{
    const QByteArray cell = "<t:table-cell o:value-type=\"float\" o:value=\"1\"/>";
    const QByteArray empty = "<t:table-row t:number-rows-repeated=\"1048575\"><t:table-cell "
                             "t:number-columns-repeated=\"16384\"/></t:table-row>";
    EXPECT_FALSE(opening(odsOf("<t:table-row>" + cell + "</t:table-row>" + empty)));
    EXPECT_EQ(connection.describe(u"Hoja1"_s).rows, 0);
}

TEST_F(HostileSpreadsheet, valuesRepeatedWithoutEndAreRefused)
{
    const QByteArray all = "<t:table-row t:number-rows-repeated=\"1048576\"><t:table-cell "
                           "o:value-type=\"float\" o:value=\"1\" "
                           "t:number-columns-repeated=\"16384\"/></t:table-row>";
    expectRefused(odsOf(all), "17 thousand million values");
    expectRefused(odsOf("<t:table-row t:number-rows-repeated=\"2147483647\"/>" + all), "far away");
    expectRefused(xlsxOf("<row r=\"99999999\"><c r=\"A99999999\"><v>1</v></c></row>"),
                  "a row that can't be");
    expectRefused(xlsxOf("<row><c r=\"ZZZZZZ1\"><v>1</v></c></row>"), "a column that can't be");
}

TEST_F(HostileSpreadsheet, aLongTextNamedByEveryRowIsAFailureOfTheReading)
{
    const QByteArray row = "<row><c t=\"s\"><v>0</v></c></row>";
    ASSERT_FALSE(
        opening(xlsxOf(row.repeated(20'000), "<si><t>" + QByteArray(30'000, 'x') + "</t></si>")));
    const auto rows = connection.rows(u"Hoja1"_s);
    const QString field = connection.describe(u"Hoja1"_s).fields.first();
    EXPECT_EQ(raisedNumber([&] {
                  for (; !rows->isAtEnd(); rows->moveNext())
                      rows->value(field);
              }),
              SheetFailure::BadFile);
}

TEST(SheetReader, givesItselfAGibibyteOfMemoryAndALimitedTime)
{
    QProcess reader;
    reader.start(QStringLiteral(NORVANE_BIN_DIR "/NorvaneSheetReader"), QStringList());
    ASSERT_TRUE(reader.waitForStarted(hangMs));
    reader.write(SheetFrames::framed(
        SheetFrames::encode({SheetFrames::Operation::Open, u"/nowhere"_s, {}, 0})));
    ASSERT_TRUE(reader.waitForReadyRead(hangMs)) << "it has come up";
    QFile file(u"/proc/%1/limits"_s.arg(reader.processId()));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString limits = QString::fromLatin1(file.readAll()).simplified();
    EXPECT_TRUE(limits.contains(u"Max cpu time 25 25 seconds"_s)) << qPrintable(limits);
#ifndef __SANITIZE_ADDRESS__
    EXPECT_TRUE(limits.contains(u"Max address space 1073741824 1073741824 bytes"_s))
        << qPrintable(limits);
#endif
    reader.closeWriteChannel();
    EXPECT_TRUE(reader.waitForFinished(hangMs));
}

TEST_F(HostileSpreadsheet, aReaderThatHangsIsEndedAtItsTimeLimit)
{
    HelperConnection hanging(readerThat("exec sleep 1000"), std::chrono::milliseconds(200));
    const auto failure = raisedFailure([&] { hanging.open(u"x"_s); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->number(), SheetFailure::BadFile);
    EXPECT_EQ(raisedNumber([&] { hanging.sheets(); }), 3704);
}

TEST_F(HostileSpreadsheet, aReaderThatAnswersNonsenseIsAFailure)
{
    for (const char *answer : {"printf '\\377\\377\\377\\377'", // longer than an answer can be
                               "printf '\\0\\0\\0\\1\\0'",      // an answer that is cut short
                               "printf '\\0\\0\\0\\11\\0'"}) {  // and ends before its length
        HelperConnection nonsense(readerThat(answer), std::chrono::seconds(20));
        EXPECT_EQ(raisedNumber([&] { nonsense.open(u"x"_s); }), SheetFailure::BadFile) << answer;
        EXPECT_EQ(nonsense.errors().size(), 1);
        EXPECT_EQ(raisedNumber([&] { nonsense.sheets(); }), 3704);
    }
}

TEST_F(HostileSpreadsheet, aReaderThatDiesIsAFailure)
{
    HelperConnection dying(u"/bin/false"_s);
    EXPECT_EQ(raisedNumber([&] { dying.open(u"x"_s); }), SheetFailure::BadFile);
}

} // namespace norvane
