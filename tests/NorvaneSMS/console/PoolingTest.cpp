#include "NorvaneSMS/console/PoolingFixture.h"

#include "NorvaneSMS/console/TerminalView.h"
#include "NorvaneSMS/queue/Fixture.h"
#include "foundation/Globals.h"

#include <QDir>

#include <cerrno>

#include <dirent.h>

TEST_F(Pooling, recordsOfAllFilesReachTheEngineAndTheFilesGo)
{
    loadAsServer();
    dropMany(3);
    writeFile(path(u"sms.bulk"_qs), fixture(u"three"_qs));
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
    for (const QString &name : {u"sms.txt"_qs, u"SMS.7"_qs, u"sms.1.bak"_qs, u"sms."_qs})
        drop(name);
    for (const QString &name : {u"sms"_qs, u"sms1"_qs, u"xsms.1"_qs, u"queue.sms"_qs})
        drop(name);
    tick();
    QStringList taken = takeMessages();
    taken.sort();
    EXPECT_EQ(taken, (QStringList{u"SMS.7"_qs, u"sms."_qs, u"sms.1.bak"_qs, u"sms.txt"_qs}));
    EXPECT_EQ(names().size(), 4);
}

TEST_F(Pooling, folderNamedLikeADropFileIsIgnoredWithEverythingInIt)
{
    loadAsServer();
    ASSERT_TRUE(QDir().mkdir(path(u"sms.1"_qs)));
    drop(u"sms.1/sms.2"_qs);
    tick();
    EXPECT_EQ(messages(), 0);
    EXPECT_TRUE(isThere(u"sms.1/sms.2"_qs));
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
    writeFile(path(u"sms.empty"_qs));
    for (const QString &name : {u"short"_qs, u"tail"_qs, u"bad_date"_qs, u"misaligned"_qs})
        writeFile(path(u"sms."_qs + name), fixture(name));
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
    writeFile(path(u"sms.0"_qs), fixture(u"one"_qs).repeated(1000));
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
    drop(u"sms.0"_qs);
    script.inAddSMS = [this] {
        drop(u"sms.1"_qs);
        script.inAddSMS = nullptr;
    };
    tick();
    EXPECT_EQ(takeMessages(), QStringList{u"sms.0"_qs});
    EXPECT_TRUE(isThere(u"sms.1"_qs));
    tick();
    EXPECT_EQ(takeMessages(), QStringList{u"sms.1"_qs});
}

TEST_F(Pooling, missingFolderIsALineAtEveryTickAndTheLinesStay)
{
    const QString folder = path(u"share"_qs);
    storeQueueFolder(folder);
    loadAsServer();
    auto *const term = control<TerminalView>("txtTerm");
    for (int ticks = 1; ticks <= 3; ++ticks) {
        term->moveCursor(QTextCursor::Start);
        tick();
        EXPECT_EQ(terminal(), (GS(3760050) + u"\r\n"_qs).repeated(ticks));
        EXPECT_TRUE(term->textCursor().atEnd());
    }
    EXPECT_TRUE(boxes.shown.isEmpty());

    ASSERT_TRUE(QDir().mkdir(folder));
    drop(u"share/sms.0"_qs);
    drop(u"share/sms.1"_qs);
    tick();
    EXPECT_EQ(messages(), 2);
    EXPECT_EQ(terminal(), (GS(3760050) + u"\r\n"_qs).repeated(3));
}

TEST_F(Pooling, fileOrLinkThatLeadsNowhereInThePlaceOfTheFolderIsAMissingFolder)
{
    writeFile(path(u"file"_qs), fixture(u"one"_qs));
    ASSERT_TRUE(QFile::link(path(u"nowhere"_qs), path(u"dangling"_qs)));
    storeQueueFolder(path(u"file"_qs));
    loadAsServer();
    int lines = 0;
    for (const QString &folder : {u"file"_qs, u"dangling"_qs}) {
        storeQueueFolder(path(folder));
        console->ApplyOperationMode();
        takeCalls();
        for (int ticks = 0; ticks < 2; ++ticks) {
            tick();
            ++lines;
            EXPECT_EQ(terminal(), (GS(3760050) + u"\r\n"_qs).repeated(lines)) << qPrintable(folder);
        }
        EXPECT_TRUE(takeCalls().isEmpty());
    }
    EXPECT_TRUE(streams.calls.isEmpty());
    EXPECT_EQ(names(), (QStringList{u"dangling"_qs, u"file"_qs}));
    EXPECT_TRUE(boxes.shown.isEmpty());

    ASSERT_TRUE(QDir().mkdir(path(u"nowhere"_qs))); // the link leads to a folder again
    drop(u"nowhere/sms.0"_qs);
    tick();
    EXPECT_EQ(takeMessages(), QStringList{u"nowhere/sms.0"_qs});
}

TEST_F(Pooling, folderWithASeparatorAtItsEndIsTheSame)
{
    storeQueueFolder(queue.path() + u'/');
    loadAsServer();
    drop(u"sms.0"_qs);
    tick();
    EXPECT_EQ(streams.calls.first(), u"open "_qs + path(u"sms.0"_qs));
    EXPECT_EQ(messages(), 1);
}

TEST_F(Pooling, fileThatCannotBeOpenedIsDeletedAndTheTickGoesOn)
{
    loadAsServer();
    dropMany(3);
    streams.onOpen = [this](const QString &file) { return file == path(u"sms.1"_qs) ? EACCES : 0; };
    tick();
    QStringList taken = takeMessages();
    taken.sort();
    EXPECT_EQ(taken, (QStringList{u"sms.0"_qs, u"sms.2"_qs}));
    EXPECT_TRUE(names().isEmpty());
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(Pooling, engineThatFailsLosesTheRestOfOneFileAndIsNotFatal)
{
    loadAsServer();
    writeFile(path(u"sms.0"_qs), fixture(u"three"_qs));
    script.failingCalls.enqueue(5); // three calls were made at load
    tick();
    EXPECT_EQ(messages(), 2) << "the second one failed";
    EXPECT_TRUE(names().isEmpty());
    EXPECT_EQ(exitCode, 0);
    EXPECT_TRUE(boxes.shown.isEmpty());
    drop(u"sms.0"_qs);
    tick();
    EXPECT_EQ(messages(), 3);
}

TEST_F(Pooling, fileThatCannotBeDeletedStopsThePollingForGood)
{
    loadAsServer();
    drop(u"sms.0"_qs);
    streams.onRemove = [](const QString &) { return EACCES; };
    tick();
    EXPECT_EQ(takeMessages(), QStringList{u"sms.0"_qs});
    EXPECT_EQ(exitCode, 0) << "it ends the tick and not the program";
    EXPECT_TRUE(boxes.shown.isEmpty());

    streams.onRemove = nullptr;
    tick();
    console->SetDeviceSettings({});
    tick();
    EXPECT_EQ(messages(), 0);
    EXPECT_TRUE(isThere(u"sms.0"_qs));
    EXPECT_EQ(terminal(), QString());
}

TEST_F(Pooling, failureThatLeavesATickIsNotTheEndOfLaterTimerEvents)
{
    loadAsServer();
    drop(u"sms.0"_qs);
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
    drop(u"sms.0"_qs);
    streams.onOpen = [](const QString &file) {
        QFile::remove(file);
        return 0;
    };
    tick();
    streams.onOpen = nullptr;
    drop(u"sms.1"_qs);
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
