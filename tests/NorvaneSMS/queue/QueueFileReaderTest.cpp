#include "NorvaneSMS/queue/QueueFileReader.h"

#include "NorvaneSMS/platform/Removal.h"
#include "NorvaneSMS/queue/Fixture.h"
#include "NorvaneSMS/queue/RecordHandover.h"
#include "common/FailureNumbers.h"
#include "support/RaisedFailure.h"
#include "support/RecordingEngine.h"
#include "support/RecordingMessageBoxes.h"
#include "support/ScriptedStreams.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

const QString first = u"AddSMS(912345678|Ola|2009-03-05T14:07:09)"_s;
const QString second = u"AddSMS(+34600123456|Su pedido\r\nesta listo|2026-12-31T23:59:58)"_s;
const QString third = u"AddSMS(1|"_s + QString(160, u'a') + u"|0100-01-01T00:00:00)"_s;

class QueueFileReaderTest : public ::testing::Test
{
protected:
    QueueFileReaderTest() { m_script.calls.clear(); }

    QString path() const { return m_folder.filePath(u"sms.0"_s); }

    /// Reads a file of these bytes.
    /// @return what the engine was asked
    QStringList import(const QByteArray &bytes, const QString &footer = {})
    {
        writeFile(path(), bytes);
        return importPath(footer);
    }
    QStringList importPath(const QString &footer = {})
    {
        ImportSMSFile(path(), m_engine, footer, access);
        return std::exchange(m_script.calls, {});
    }
    bool isThere() const { return QFileInfo::exists(path()); }

    RecordingMessageBoxes boxes;
    ScriptedStreams streams;
    const QueueAccess access{&streams, nullptr};

    RecordingEngine::Script m_script;
    RecordingEngine m_engine{m_script};
    QTemporaryDir m_folder;
};

TEST_F(QueueFileReaderTest, recordsReachTheEngineInFileOrderAndTheFileGoes)
{
    EXPECT_EQ(import(fixture(u"three"_s)), (QStringList{first, second, third}));
    EXPECT_FALSE(isThere());
}

TEST_F(QueueFileReaderTest, fileIsClosedBeforeItIsDeleted)
{
    import(fixture(u"three"_s));
    EXPECT_EQ(streams.calls,
              (QStringList{u"open "_s + path(), u"close"_s, u"release"_s, u"remove "_s + path()}));
}

TEST_F(QueueFileReaderTest, fileWhoseReadingFailedIsClosedBeforeItIsDeleted)
{
    import(fixture(u"bad_date"_s));
    EXPECT_EQ(streams.calls,
              (QStringList{u"open "_s + path(), u"release"_s, u"remove "_s + path()}));
}

TEST_F(QueueFileReaderTest, recordsAreOnTheEnginesDiskBeforeTheirFileIsDeleted)
{
    bool stored = false;
    m_script.inCommit = [&](qsizetype messages) {
        stored = true;
        return messages;
    };
    streams.onRemove = [&](const QString &) {
        EXPECT_TRUE(stored);
        EXPECT_FALSE(m_script.batchIsOpen);
        return 0;
    };
    for (const QString &name : {u"three"_s, u"tail"_s, u"bad_date"_s}) {
        stored = false;
        import(fixture(name));
        EXPECT_FALSE(isThere());
    }
}

TEST_F(QueueFileReaderTest, longFileReachesTheEngineInSeveralBatches)
{
    QList<qsizetype> batches;
    m_script.inCommit = [&](qsizetype messages) {
        batches.append(messages);
        return messages;
    };
    import(fixture(u"one"_s).repeated(1001));
    EXPECT_EQ(batches, (QList<qsizetype>{500, 500, 1}));
}

TEST_F(QueueFileReaderTest, batchThatIsTakenInPartEndsItsFile)
{
    m_script.inCommit = [](qsizetype messages) { return qMin<qsizetype>(messages, 300); };
    EXPECT_EQ(import(fixture(u"one"_s).repeated(2000)).size(), 500)
        << "what stands behind the record that failed is lost";
    EXPECT_FALSE(isThere());
    EXPECT_EQ(streams.openStreams, 0);
}

TEST_F(QueueFileReaderTest, engineThatFailsForABatchLosesTheRestOfTheFile)
{
    m_script.inCommit = [](qsizetype) -> qsizetype {
        Failure::raise(Failure::RemoteServerUnavailable, u"SMSManager"_s);
    };
    EXPECT_EQ(import(fixture(u"one"_s).repeated(2000)).size(), 500);
    EXPECT_FALSE(isThere());
    EXPECT_FALSE(m_script.batchIsOpen);
}

TEST_F(QueueFileReaderTest, emptyFileIsDeleted)
{
    EXPECT_TRUE(import({}).isEmpty());
    EXPECT_FALSE(isThere());
}

TEST_F(QueueFileReaderTest, shortTailIsDroppedWithoutAWord)
{
    EXPECT_EQ(import(fixture(u"tail"_s)), (QStringList{first, second}));
    EXPECT_TRUE(import(fixture(u"short"_s)).isEmpty());
    EXPECT_FALSE(isThere());
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(QueueFileReaderTest, misalignedContentIsDecodedAsItComes)
{
    EXPECT_EQ(
        import(fixture(u"misaligned"_s)),
        (QStringList{u"AddSMS(x912345678|9Ola|3204-02-03T19:41:10)"_s,
                     u"AddSMS(+34600123456|8Su pedido\r\nesta listo|2202-11-05T14:36:35)"_s}));
    EXPECT_FALSE(isThere());
}

TEST_F(QueueFileReaderTest, badDateLosesItsRecordAndAllAfterIt)
{
    EXPECT_EQ(import(fixture(u"bad_date"_s)), QStringList{first});
    EXPECT_FALSE(isThere());
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_EQ(streams.openStreams, 0);
}

TEST_F(QueueFileReaderTest, footerIsPutBehindEachMessage)
{
    EXPECT_EQ(import(fixture(u"one"_s), u" -- Norvane é"_s),
              QStringList{u"AddSMS(912345678|Ola -- Norvane é|2009-03-05T14:07:09)"_s});
}

TEST_F(QueueFileReaderTest, messageIsNotNormalisedAgain)
{
    QByteArray record = fixture(u"one"_s);
    record.replace(39, 4, "\xA7\xE9\x80 ");
    EXPECT_EQ(import(record), QStringList{u"AddSMS(912345678|§é€|2009-03-05T14:07:09)"_s});
}

TEST_F(QueueFileReaderTest, recordsThatCrossAReadingAreWhole)
{
    const QByteArray bytes = fixture(u"three"_s);
    for (const qsizetype max : {1, 2, 25, 198, 199, 200, 597, 600}) {
        streams.onRead = [max](qsizetype &asked) {
            asked = qMin(asked, max);
            return 0;
        };
        EXPECT_EQ(import(bytes), (QStringList{first, second, third})) << max;
    }
}

TEST_F(QueueFileReaderTest, longFileIsTakenWhole)
{
    EXPECT_EQ(import(fixture(u"one"_s).repeated(1000)), QStringList(1000, first));
}

TEST_F(QueueFileReaderTest, everyByteIsRead)
{
    const QByteArray bytes = fixture(u"bytes"_s);
    const QStringList calls = import(bytes + fixture(u"one"_s));
    ASSERT_EQ(calls.size(), 2) << "a NUL or a 0x1A doesn't end a file";
    EXPECT_TRUE(calls.first().contains(QChar(QChar::Null)));
    EXPECT_TRUE(calls.first().contains(QChar(0x1A)));
}

TEST_F(QueueFileReaderTest, readOnlyFileIsDeleted)
{
    writeFile(path(), fixture(u"one"_s));
    ASSERT_EQ(::chmod(QFile::encodeName(path()).constData(), 0400), 0);
    EXPECT_EQ(importPath(), QStringList{first});
    EXPECT_FALSE(isThere());
}

TEST_F(QueueFileReaderTest, fileThatCannotBeOpenedIsDeleted)
{
    streams.onOpen = [](const QString &) { return EACCES; };
    EXPECT_TRUE(import(fixture(u"one"_s)).isEmpty());
    EXPECT_FALSE(isThere());
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(QueueFileReaderTest, recordsBeforeAFailedReadingAreWithTheEngine)
{
    int readings = 0;
    streams.onRead = [&](qsizetype &asked) {
        asked = qMin<qsizetype>(asked, 250);
        return ++readings == 3 ? EIO : 0;
    };
    EXPECT_EQ(import(fixture(u"three"_s)), (QStringList{first, second}));
    EXPECT_FALSE(isThere());
    EXPECT_EQ(streams.openStreams, 0);
}

TEST_F(QueueFileReaderTest, engineThatFailsLosesTheRestOfTheFile)
{
    m_script.failingCalls.enqueue(2);
    EXPECT_EQ(import(fixture(u"three"_s)), (QStringList{first, second}));
    EXPECT_FALSE(isThere());
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(QueueFileReaderTest, closingThatFailsStillDeletes)
{
    int closings = 0;
    streams.onClose = [&] {
        ++closings;
        return EIO;
    };
    EXPECT_EQ(import(fixture(u"one"_s)), QStringList{first});
    EXPECT_EQ(closings, 1);
    EXPECT_FALSE(isThere());
    EXPECT_EQ(streams.calls,
              (QStringList{u"open "_s + path(), u"close"_s, u"release"_s, u"remove "_s + path()}));

    streams.onRemove = [](const QString &) { return EROFS; };
    streams.calls.clear();
    writeFile(path(), fixture(u"one"_s));
    EXPECT_EQ(raisedNumber([this] { importPath(); }), 70);
    EXPECT_EQ(streams.calls.filter(u"remove "_s).size(), 1)
        << "a deletion behind a failure is not tried again";
}

TEST_F(QueueFileReaderTest, deletionThatFailsIsTriedOnceMore)
{
    int removals = 0;
    streams.onRemove = [&](const QString &) { return ++removals == 1 ? EBUSY : 0; };
    EXPECT_EQ(import(fixture(u"one"_s)), QStringList{first});
    EXPECT_FALSE(isThere());
    EXPECT_EQ(removals, 2);
    EXPECT_EQ(streams.openStreams, 0);
}

TEST_F(QueueFileReaderTest, fileThatCannotBeDeletedIsAFailure)
{
    streams.onRemove = [](const QString &) { return EROFS; };
    writeFile(path(), fixture(u"one"_s));
    EXPECT_EQ(raisedNumber([this] { importPath(); }), 70);
    EXPECT_EQ(m_script.calls, QStringList{first});
    EXPECT_TRUE(isThere());
    EXPECT_EQ(streams.openStreams, 0);
}

TEST_F(QueueFileReaderTest, fileThatIsGoneIsAFailure)
{
    EXPECT_EQ(raisedNumber([this] { importPath(); }), 53);
}

TEST_F(QueueFileReaderTest, whatTookTheFilesPlaceIsNotWaitedFor)
{
    // Whoever waits for one of them waits for ever.
    ASSERT_EQ(::mkfifo(QFile::encodeName(path()).constData(), 0600), 0);
    EXPECT_TRUE(importPath().isEmpty());
    EXPECT_FALSE(isThere());
    ASSERT_TRUE(QFile::link(u"/dev/zero"_s, path()));
    EXPECT_TRUE(importPath().isEmpty());
    EXPECT_FALSE(QFileInfo(path()).isSymLink());
    EXPECT_TRUE(QFileInfo::exists(u"/dev/zero"_s));

    ASSERT_TRUE(QDir().mkdir(path()));
    EXPECT_NE(raisedNumber([this] { importPath(); }), 0) << "a folder is not taken away";
    EXPECT_TRUE(isThere());
}

TEST_F(QueueFileReaderTest, linkThatTookTheFilesPlaceIsNotFollowed)
{
    const QTemporaryDir elsewhere;
    const QString other = elsewhere.filePath(u"sms.0"_s);
    writeFile(other, fixture(u"one"_s));
    ASSERT_TRUE(QFile::link(other, path()));
    EXPECT_TRUE(importPath().isEmpty());
    EXPECT_FALSE(QFileInfo(path()).isSymLink()) << "the link goes";
    EXPECT_EQ(bytesOf(other), fixture(u"one"_s));
}

TEST_F(QueueFileReaderTest, whatAWriterAddsWhileTheFileIsReadIsReadToo)
{
    writeFile(path(), fixture(u"one"_s).repeated(3));
    QFile writer(path());
    ASSERT_TRUE(writer.open(QIODevice::Append | QIODevice::Unbuffered));
    int readings = 0;
    streams.onRead = [&](qsizetype &) {
        if (++readings <= 2)
            writer.write(fixture(u"one"_s).repeated(100));
        return 0;
    };
    EXPECT_EQ(importPath(), QStringList(203, first));
}

TEST_F(QueueFileReaderTest, fileThatGrowsForEverIsFollowedOnlySoFar)
{
    constexpr qsizetype followed = FileStreams::maxFollowed / 199;
    const QByteArray chunk = fixture(u"one"_s).repeated(1000);
    writeFile(path(), chunk);
    QFile writer(path());
    ASSERT_TRUE(writer.open(QIODevice::Append | QIODevice::Unbuffered));
    streams.onRead = [&, written = 0](qsizetype &) mutable {
        if (++written < 100) // a reader that can't get away fails this test and goes on
            writer.write(chunk);
        return 0;
    };
    EXPECT_EQ(importPath(), QStringList(followed, first));
    EXPECT_FALSE(isThere());
}

TEST_F(QueueFileReaderTest, fileThatIsLongerWhenItIsOpenedIsReadToItsEnd)
{
    constexpr qsizetype records = FileStreams::maxFollowed / 199 + 1000;
    writeFile(path(), fixture(u"one"_s).repeated(records));
    EXPECT_EQ(importPath(), QStringList(records, first));
}

TEST_F(QueueFileReaderTest, fileThatIsCutWhileItIsReadEndsThere)
{
    writeFile(path(), fixture(u"three"_s));
    int readings = 0;
    streams.onRead = [&](qsizetype &asked) {
        asked = qMin<qsizetype>(asked, 199);
        return ++readings == 2 && !QFile::resize(path(), 250) ? EIO : 0;
    };
    EXPECT_EQ(importPath(), QStringList{first});
    EXPECT_FALSE(isThere());
}

TEST_F(QueueFileReaderTest, partlyWrittenFileIsReadAsFarAsItHasCome)
{
    QFile writer(path());
    ASSERT_TRUE(writer.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    writer.write(fixture(u"tail"_s));
    EXPECT_EQ(importPath(), (QStringList{first, second}));
    EXPECT_FALSE(isThere());
    writer.write(fixture(u"three"_s).mid(455)); // what is written from now on is lost
    writer.close();
    EXPECT_FALSE(isThere());
}

/// Several files that are taken together, each with records that bear its number.
class QueueFilesReaderTest : public QueueFileReaderTest
{
protected:
    QString fileOf(int number) const { return m_folder.filePath(u"sms.%1"_s.arg(number)); }

    /// Files of these many records.
    QStringList filesOf(const QList<int> &records) const
    {
        QStringList files;
        for (const int count : records) {
            const int number = static_cast<int>(files.size());
            files.append(fileOf(number));
            writeFile(files.last(), recordOf(number).repeated(count));
        }
        return files;
    }
    static QByteArray recordOf(int number)
    {
        return QByteArray::number(number).leftJustified(25) + "05032009140709" +
               QByteArray("text").leftJustified(160);
    }

    /// The numbers of the files whose records reached the engine, one for each record.
    QList<int> importAll(const QStringList &files)
    {
        ImportSMSFiles(files, m_engine, QString(), access);
        return taken();
    }
    QList<int> taken()
    {
        QList<int> numbers;
        const QStringList calls = std::exchange(m_script.calls, {});
        for (const QString &call : calls)
            numbers.append(call.section(u'(', 1).section(u'|', 0, 0).toInt());
        return numbers;
    }
    QStringList left() const { return QDir(m_folder.path()).entryList(QDir::Files, QDir::Name); }
};

TEST_F(QueueFilesReaderTest, reachTheEngineInOneBatchAndInTheirOrder)
{
    QList<qsizetype> batches;
    m_script.inCommit = [&](qsizetype messages) {
        EXPECT_EQ(left().size(), 4) << "none has gone before";
        batches.append(messages);
        return messages;
    };
    EXPECT_EQ(importAll(filesOf({2, 1, 0, 3})), (QList<int>{0, 0, 1, 3, 3, 3}));
    EXPECT_EQ(batches, QList<qsizetype>{6});
    EXPECT_TRUE(left().isEmpty());
    EXPECT_EQ(streams.calls.filter(u"remove "_s),
              (QStringList{u"remove "_s + fileOf(0), u"remove "_s + fileOf(1),
                           u"remove "_s + fileOf(2), u"remove "_s + fileOf(3)}));
}

TEST_F(QueueFilesReaderTest, aBadOneLosesItsOwnRestAlone)
{
    QStringList files = filesOf({1, 1, 1});
    writeFile(files.at(1), recordOf(1) + recordOf(1).replace("05032009", "xx032009") + recordOf(1));
    streams.onOpen = [&](const QString &file) { return file == files.at(2) ? EACCES : 0; };
    EXPECT_EQ(importAll(files), (QList<int>{0, 1}));
    EXPECT_TRUE(left().isEmpty());
}

TEST_F(QueueFilesReaderTest, aRecordThatTheEngineFailsForCostsTheRestOfItsFileAndNoOtherFile)
{
    bool failed = false;
    m_script.inCommit = [&](qsizetype messages) {
        return std::exchange(failed, true) ? messages : 4; // the second record of the second file
    };
    QList<qsizetype> leftThen;
    streams.onRemove = [&](const QString &) {
        leftThen.append(left().size());
        return 0;
    };
    EXPECT_EQ(importAll(filesOf({3, 3, 2, 1})), (QList<int>{0, 0, 0, 1, 1, 1, 2, 2, 3, 2, 2, 3}))
        << "the files behind it are handed over once more";
    EXPECT_TRUE(left().isEmpty());
    EXPECT_EQ(leftThen, (QList<qsizetype>{4, 3, 2, 1}));
}

TEST_F(QueueFilesReaderTest, aFirstRecordThatTheEngineFailsForIsNotHandedOverOnceMore)
{
    bool failed = false;
    m_script.inCommit = [&](qsizetype messages) {
        return std::exchange(failed, true) ? messages : 1; // all of the first file
    };
    EXPECT_EQ(importAll(filesOf({1, 1, 1})), (QList<int>{0, 1, 2, 2}));
    EXPECT_TRUE(left().isEmpty());
}

TEST_F(QueueFilesReaderTest, noneIsReadBehindOneThatTheEngineFailsForBeforeItIsDeleted)
{
    const QStringList files = filesOf({RecordHandover::batchRecords, 1});
    m_script.inCommit = [](qsizetype messages) { return messages - 1; };
    streams.onRemove = [](const QString &) { return EROFS; };
    EXPECT_EQ(raisedNumber([&] { ImportSMSFiles(files, m_engine, QString(), access); }), 70);
    EXPECT_FALSE(streams.calls.contains(u"open "_s + files.at(1)));
}

TEST_F(QueueFilesReaderTest, anEngineThatTakesNothingLosesEachOfThem)
{
    m_script.inCommit = [](qsizetype) -> qsizetype { return 0; };
    importAll(filesOf({1, 2, 1}));
    EXPECT_TRUE(left().isEmpty());
}

TEST_F(QueueFilesReaderTest, whatBecameOfABatchThatTheEngineEndedInIsNotTriedAgain)
{
    int batches = 0;
    m_script.inCommit = [&](qsizetype) -> qsizetype {
        ++batches;
        Failure::raise(Failure::RemoteServerUnavailable, u"SMSManager"_s);
    };
    EXPECT_EQ(importAll(filesOf({1, 2, 1})), (QList<int>{0, 1, 1, 2}));
    EXPECT_EQ(batches, 1);
    EXPECT_TRUE(left().isEmpty());
}

TEST_F(QueueFilesReaderTest, oneThatMayStayIsTakenAloneAndNothingIsReadBehindIt)
{
    const QStringList files = filesOf({1, 1, 1, 1});
    ASSERT_TRUE(QFile::remove(files.at(2)));
    ASSERT_TRUE(QDir().mkdir(files.at(2))); // what took its place is not taken away
    EXPECT_NE(raisedNumber([&] { ImportSMSFiles(files, m_engine, QString(), access); }), 0);
    EXPECT_EQ(taken(), (QList<int>{0, 1}));
    EXPECT_EQ(left(), QStringList{u"sms.3"_s});
    EXPECT_FALSE(streams.calls.contains(u"open "_s + files.at(3)));
}

TEST_F(QueueFilesReaderTest, oneThatMayStayIsReadOnceThoseBeforeItHaveGone)
{
    const QStringList files = filesOf({1, 1, 1});
    ASSERT_TRUE(QFile::remove(files.at(1)));
    ASSERT_TRUE(QDir().mkdir(files.at(1)));
    QStringList leftThen;
    streams.onOpen = [&](const QString &file) {
        if (file == files.at(1))
            leftThen = left();
        return 0;
    };
    EXPECT_NE(raisedNumber([&] { ImportSMSFiles(files, m_engine, QString(), access); }), 0);
    EXPECT_EQ(leftThen, QStringList{u"sms.2"_s});
}

TEST(RemovalTest, whatTheRightsOfFileAndFolderSay)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"sms.0"_s);
    EXPECT_FALSE(isRemovable(file)) << "nothing is there";
    writeFile(file, "x");
    EXPECT_TRUE(isRemovable(file));
    ASSERT_TRUE(QFile::setPermissions(file, QFile::ReadOwner));
    EXPECT_TRUE(isRemovable(file)) << "read-only is no matter";
    EXPECT_FALSE(isRemovable(folder.path())) << "a folder";
    ASSERT_TRUE(QFile::link(u"/nowhere"_s, folder.filePath(u"sms.1"_s)));
    EXPECT_TRUE(isRemovable(folder.filePath(u"sms.1"_s)));

    if (::geteuid() == 0) {
        const QByteArray name = QFile::encodeName(folder.path());
        constexpr uid_t nobody = 65534;
        ASSERT_EQ(::chmod(name.constData(), 01777), 0);
        ASSERT_EQ(::seteuid(nobody), 0);
        const bool othersInStickyFolder = isRemovable(file);
        ASSERT_EQ(::seteuid(0), 0);
        ASSERT_EQ(::chown(QFile::encodeName(file).constData(), nobody, nobody), 0);
        ASSERT_EQ(::seteuid(nobody), 0);
        const bool ownInStickyFolder = isRemovable(file);
        ASSERT_EQ(::seteuid(0), 0);
        ASSERT_EQ(::chmod(name.constData(), 0755), 0);
        ASSERT_EQ(::seteuid(nobody), 0);
        const bool inFolderOfAnother = isRemovable(file);
        ASSERT_EQ(::seteuid(0), 0);
        EXPECT_FALSE(othersInStickyFolder);
        EXPECT_TRUE(ownInStickyFolder);
        EXPECT_FALSE(inFolderOfAnother);
    } else {
        EXPECT_FALSE(isRemovable(u"/usr/bin/env"_s));
    }
}

TEST(RemovalTest, aStickyBitKeepsAFileForItsOwnerTheFoldersAndTheAdministrator)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "this account can't make files of another one";
    constexpr uid_t nobody = 65534;
    const QTemporaryDir folder;
    const QByteArray place = QFile::encodeName(folder.path());
    const QString path = folder.filePath(u"sms.0"_s);
    writeFile(path);
    const auto isRemovableByNobody = [&path] {
        EXPECT_EQ(::seteuid(nobody), 0);
        const bool result = isRemovable(path);
        EXPECT_EQ(::seteuid(0), 0);
        return result;
    };
    ASSERT_EQ(::chmod(place.constData(), 0777), 0);
    EXPECT_TRUE(isRemovableByNobody()) << "there is none";
    ASSERT_EQ(::chmod(place.constData(), 01777), 0);
    EXPECT_FALSE(isRemovableByNobody());
    ASSERT_EQ(::chown(place.constData(), nobody, nobody), 0);
    EXPECT_TRUE(isRemovableByNobody()) << "the folder's owner";
    ASSERT_EQ(::chown(QFile::encodeName(path).constData(), nobody, nobody), 0);
    EXPECT_TRUE(isRemovable(path)) << "the administrator";
}

TEST_F(QueueFilesReaderTest, oneThatCannotBeDeletedKeepsNoOtherThatIsQueued)
{
    const QStringList files = filesOf({1, 1, 1});
    streams.onRemove = [&](const QString &file) { return file == files.at(1) ? EROFS : 0; };
    EXPECT_EQ(raisedNumber([&] { ImportSMSFiles(files, m_engine, QString(), access); }), 70);
    EXPECT_EQ(taken(), (QList<int>{0, 1, 2}));
    EXPECT_EQ(left(), QStringList{u"sms.1"_s});
}

TEST_F(QueueFilesReaderTest, noneIsReadBehindOneThatCannotBeDeleted)
{
    const QStringList files = filesOf({1, 1, 1});
    m_script.inCommit = [](qsizetype) -> qsizetype { return 0; };
    streams.onRemove = [](const QString &) { return EROFS; };
    EXPECT_EQ(raisedNumber([&] { ImportSMSFiles(files, m_engine, QString(), access); }), 70);
    EXPECT_EQ(left(), (QStringList{u"sms.0"_s, u"sms.1"_s, u"sms.2"_s}));
    EXPECT_EQ(streams.calls.filter(u"remove "_s), QStringList{u"remove "_s + fileOf(0)});
}

TEST_F(QueueFilesReaderTest, noneIsNone)
{
    ImportSMSFiles({}, m_engine, QString(), access);
    EXPECT_TRUE(streams.calls.isEmpty());
}

} // namespace

} // namespace norvane
