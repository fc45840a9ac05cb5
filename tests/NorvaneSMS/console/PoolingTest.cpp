#include "NorvaneSMS/console/PoolingFixture.h"

#include "NorvaneSMS/console/TerminalView.h"
#include "NorvaneSMS/queue/Fixture.h"
#include "foundation/Globals.h"

#include <QDir>

#include <cerrno>

#include <dirent.h>

namespace norvane {

using namespace Qt::StringLiterals;

TEST_F(Pooling, recordsOfAllFilesReachTheEngineAndTheFilesGo)
{
    loadAsServer();
    dropMany(3);
    writeFile(path(u"sms.bulk"_s), fixture(u"three"_s));
    tick();
    EXPECT_EQ(messages(), 6);
    EXPECT_TRUE(names().isEmpty());
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_EQ(terminal(), QString());
}

TEST_F(Pooling, emptyFolderChangesNothing)
{
    loadAsServer();
    tick();
    EXPECT_TRUE(takeCalls().isEmpty());
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_EQ(terminal(), QString());
}

TEST_F(Pooling, everyFileNamedSmsDotIsTaken)
{
    loadAsServer();
    for (const QString &name : {u"sms.txt"_s, u"SMS.7"_s, u"sms.1.bak"_s, u"sms."_s})
        drop(name);
    for (const QString &name : {u"sms"_s, u"sms1"_s, u"xsms.1"_s, u"queue.sms"_s})
        drop(name);
    tick();
    QStringList taken = takeMessages();
    taken.sort();
    EXPECT_EQ(taken, (QStringList{u"SMS.7"_s, u"sms."_s, u"sms.1.bak"_s, u"sms.txt"_s}));
    EXPECT_EQ(names().size(), 4);
}

TEST_F(Pooling, folderNamedLikeADropFileIsIgnoredWithEverythingInIt)
{
    loadAsServer();
    ASSERT_TRUE(QDir().mkdir(path(u"sms.1"_s)));
    drop(u"sms.1/sms.2"_s);
    tick();
    EXPECT_EQ(messages(), 0);
    EXPECT_TRUE(isThere(u"sms.1/sms.2"_s));
}

TEST_F(Pooling, filesAreTakenInTheOrderOfTheFileSystem)
{
    loadAsServer();
    dropMany(40);
    QStringList listed;
    DIR *const folder = ::opendir(QFile::encodeName(queue.path()).constData());
    ASSERT_NE(folder, nullptr);
    while (const dirent *entry = ::readdir(folder)) {
        if (entry->d_name[0] != '.')
            listed.append(QFile::decodeName(entry->d_name));
    }
    ::closedir(folder);
    ASSERT_EQ(listed.size(), 40);
    tick();
    EXPECT_EQ(takeMessages(), listed);
}

TEST_F(Pooling, shortEmptyAndBadFilesGoToo)
{
    loadAsServer();
    writeFile(path(u"sms.empty"_s));
    for (const QString &name : {u"short"_s, u"tail"_s, u"bad_date"_s, u"misaligned"_s})
        writeFile(path(u"sms."_s + name), fixture(name));
    tick();
    EXPECT_EQ(messages(), 2 + 1 + 2);
    EXPECT_TRUE(names().isEmpty());
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_EQ(terminal(), QString());
}

TEST_F(Pooling, with45FilesEventsAreProcessedAfterTheFirstThe21stAndThe41st)
{
    loadAsServer();
    dropMany(45);
    QList<qsizetype> processed;
    script.inAddSMS = [&] {
        QMetaObject::invokeMethod(
            qApp,
            [&] {
                if (processed.isEmpty() || processed.last() != messages())
                    processed.append(messages());
            },
            Qt::QueuedConnection);
    };
    tick();
    script.inAddSMS = nullptr;
    EXPECT_EQ(messages(), 45);
    EXPECT_EQ(processed.mid(0, 3), (QList<qsizetype>{1, 21, 41}));
    EXPECT_LE(processed.size(), 4) << "but for those that waited for the end of the tick";
}

TEST_F(Pooling, aThousandRecordsAreTakenWithoutProcessingEventsBetweenThem)
{
    loadAsServer();
    writeFile(path(u"sms.0"_s), fixture(u"one"_s).repeated(1000));
    QList<qsizetype> processed;
    script.inAddSMS = [&] {
        QMetaObject::invokeMethod(
            qApp, [&] { processed.append(messages()); }, Qt::QueuedConnection);
    };
    tick();
    script.inAddSMS = nullptr;
    EXPECT_EQ(messages(), 1000);
    EXPECT_EQ(processed, QList<qsizetype>(1000, 1000));
}

TEST_F(Pooling, fileThatArrivesDuringTheTickWaitsForTheNext)
{
    loadAsServer();
    drop(u"sms.0"_s);
    script.inAddSMS = [this] {
        drop(u"sms.1"_s);
        script.inAddSMS = nullptr;
    };
    tick();
    EXPECT_EQ(takeMessages(), QStringList{u"sms.0"_s});
    EXPECT_TRUE(isThere(u"sms.1"_s));
    tick();
    EXPECT_EQ(takeMessages(), QStringList{u"sms.1"_s});
}

TEST_F(Pooling, missingFolderIsALineAtEveryTickAndTheLinesStay)
{
    const QString folder = path(u"share"_s);
    storeQueueFolder(folder);
    loadAsServer();
    auto *const term = control<TerminalView>("txtTerm");
    for (int ticks = 1; ticks <= 3; ++ticks) {
        term->moveCursor(QTextCursor::Start);
        tick();
        EXPECT_EQ(terminal(), (GS(3760050) + u"\r\n"_s).repeated(ticks));
        EXPECT_TRUE(term->textCursor().atEnd());
    }
    EXPECT_TRUE(boxes.shown.isEmpty());

    ASSERT_TRUE(QDir().mkdir(folder));
    drop(u"share/sms.0"_s);
    drop(u"share/sms.1"_s);
    tick();
    EXPECT_EQ(messages(), 2);
    EXPECT_EQ(terminal(), (GS(3760050) + u"\r\n"_s).repeated(3));
}

TEST_F(Pooling, fileOrLinkThatLeadsNowhereInThePlaceOfTheFolderIsAMissingFolder)
{
    writeFile(path(u"file"_s), fixture(u"one"_s));
    ASSERT_TRUE(QFile::link(path(u"nowhere"_s), path(u"dangling"_s)));
    storeQueueFolder(path(u"file"_s));
    loadAsServer();
    int lines = 0;
    for (const QString &folder : {u"file"_s, u"dangling"_s}) {
        storeQueueFolder(path(folder));
        console->ApplyOperationMode();
        takeCalls();
        for (int ticks = 0; ticks < 2; ++ticks) {
            tick();
            ++lines;
            EXPECT_EQ(terminal(), (GS(3760050) + u"\r\n"_s).repeated(lines)) << qPrintable(folder);
        }
        EXPECT_TRUE(takeCalls().isEmpty());
    }
    EXPECT_TRUE(streams.calls.isEmpty());
    EXPECT_EQ(names(), (QStringList{u"dangling"_s, u"file"_s}));
    EXPECT_TRUE(boxes.shown.isEmpty());

    ASSERT_TRUE(QDir().mkdir(path(u"nowhere"_s))); // the link leads to a folder again
    drop(u"nowhere/sms.0"_s);
    tick();
    EXPECT_EQ(takeMessages(), QStringList{u"nowhere/sms.0"_s});
}

TEST_F(Pooling, folderWithASeparatorAtItsEndIsTheSame)
{
    storeQueueFolder(queue.path() + u'/');
    loadAsServer();
    drop(u"sms.0"_s);
    tick();
    EXPECT_EQ(streams.calls.first(), u"open "_s + path(u"sms.0"_s));
    EXPECT_EQ(messages(), 1);
}

TEST_F(Pooling, fileThatCannotBeOpenedIsDeletedAndTheTickGoesOn)
{
    loadAsServer();
    dropMany(3);
    streams.onOpen = [this](const QString &file) { return file == path(u"sms.1"_s) ? EACCES : 0; };
    tick();
    QStringList taken = takeMessages();
    taken.sort();
    EXPECT_EQ(taken, (QStringList{u"sms.0"_s, u"sms.2"_s}));
    EXPECT_TRUE(names().isEmpty());
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(Pooling, engineThatFailsLosesTheRestOfOneFileAndIsNotFatal)
{
    loadAsServer();
    writeFile(path(u"sms.0"_s), fixture(u"three"_s));
    script.failingCalls.enqueue(5); // three calls were made at load
    tick();
    EXPECT_EQ(messages(), 2) << "the second one failed";
    EXPECT_TRUE(names().isEmpty());
    EXPECT_EQ(exitCode, 0);
    EXPECT_TRUE(boxes.shown.isEmpty());
    drop(u"sms.0"_s);
    tick();
    EXPECT_EQ(messages(), 3);
}

TEST_F(Pooling, fileThatCannotBeDeletedStopsThePollingForGood)
{
    loadAsServer();
    drop(u"sms.0"_s);
    streams.onRemove = [](const QString &) { return EACCES; };
    tick();
    EXPECT_EQ(takeMessages(), QStringList{u"sms.0"_s});
    EXPECT_EQ(exitCode, 0) << "it ends the tick and not the program";
    EXPECT_TRUE(boxes.shown.isEmpty());

    streams.onRemove = nullptr;
    tick();
    console->SetDeviceSettings({});
    tick();
    EXPECT_EQ(messages(), 0);
    EXPECT_TRUE(isThere(u"sms.0"_s));
    EXPECT_EQ(terminal(), QString());
}

TEST_F(Pooling, failureThatLeavesATickIsNotTheEndOfLaterTimerEvents)
{
    loadAsServer();
    drop(u"sms.0"_s);
    streams.onRemove = [](const QString &) { return EACCES; };
    tick();
    timers.now += 10'000;
    tick();
    timers.now += 10'000;
    tick();
    EXPECT_EQ(exitCode, 0);
    EXPECT_EQ(messages(), 1);
}

TEST_F(Pooling, fileThatIsGoneBeforeItIsReadStopsThePollingToo)
{
    loadAsServer();
    drop(u"sms.0"_s);
    streams.onOpen = [](const QString &file) {
        QFile::remove(file);
        return 0;
    };
    tick();
    streams.onOpen = nullptr;
    drop(u"sms.1"_s);
    tick();
    EXPECT_EQ(messages(), 0);
    EXPECT_EQ(exitCode, 0);
}

TEST_F(Pooling, filesBetweenTwoProcessingsOfEventsReachTheEngineTogether)
{
    loadAsServer();
    dropMany(45);
    QList<qsizetype> batches;
    QList<qsizetype> left;
    script.inCommit = [&](qsizetype messages) {
        batches.append(messages);
        left.append(names().size());
        return messages;
    };
    tick();
    EXPECT_EQ(batches, (QList<qsizetype>{1, 20, 20, 4}));
    EXPECT_EQ(left, (QList<qsizetype>{45, 44, 24, 4})) << "none goes before it is stored";
    EXPECT_TRUE(names().isEmpty());
}

} // namespace norvane
