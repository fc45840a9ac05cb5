#include "NorvaneSMS/queue/QueueFileWriter.h"

#include "NorvaneSMS/queue/Fixture.h"
#include "NorvaneSMS/queue/QueueFileReader.h"
#include "support/LoadedLanguage.h"
#include "support/NotedWaiting.h"
#include "support/RecordingEngine.h"
#include "support/RecordingMessageBoxes.h"
#include "support/ScriptedStreams.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <new>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The pauses that this thread has asked the system for, in nanoseconds; below zero while they are
/// taken and not noted.
thread_local qint64 t_pauses = -1;

bool isNoted(const timespec &pause)
{
    if (t_pauses < 0)
        return false;
    t_pauses += pause.tv_sec * Q_INT64_C(1'000'000'000) + pause.tv_nsec;
    return true;
}

} // namespace

// In the place of the C library's own, for this program and all libraries of it.
extern "C" {
int clock_nanosleep(clockid_t clock, int flags, const timespec *pause, timespec *left)
{
    if (isNoted(*pause))
        return 0;
    return ::syscall(SYS_clock_nanosleep, clock, flags, pause, left) == 0 ? 0 : errno;
}
int nanosleep(const timespec *pause, timespec *left)
{
    return isNoted(*pause) ? 0 : static_cast<int>(::syscall(SYS_nanosleep, pause, left));
}
}

namespace {

/// No file of this process grows past so many bytes while this is in scope: a write that would make
/// it grow further comes as far as that, and the next one fails.
class SmallFiles
{
public:
    explicit SmallFiles(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &m_limit), 0);
        const rlimit small{bytes, m_limit.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    }
    SmallFiles(const SmallFiles &) = delete;
    SmallFiles &operator=(const SmallFiles &) = delete;
    ~SmallFiles()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_limit);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    void (*m_handler)(int);
    rlimit m_limit{};
};

/// The number that a client draws which has just been started.
double numberOfAnotherProcess()
{
    std::array<int, 2> ends{};
    EXPECT_EQ(::pipe(ends.data()), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        realWait().seedFromClock();
        const double number = realWait().random();
        ::_exit(::write(ends[1], &number, sizeof number) == ssize_t{sizeof number} ? 0 : 1);
    }
    double number = -1;
    EXPECT_EQ(::read(ends[0], &number, sizeof number), ssize_t{sizeof number});
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    ::close(ends[0]);
    ::close(ends[1]);
    return number;
}

class QueueFileWriterTest : public ::testing::Test
{
protected:
    QString path(const QString &name) const { return m_folder.filePath(name); }
    QStringList names() const
    {
        return QDir(m_folder.path())
            .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }

    void write(const QString &message = u"Ola"_s)
    {
        WriteSMSFile(u"912345678"_s, moment, message, m_folder.path(), access);
    }
    void writeBulk(const SMSList &list) { WriteSMSFileBulk(list, moment, m_folder.path(), access); }

    /// Makes the next creations of a file lose the race against another writer.
    void loseRaces(int count)
    {
        streams.onCreate = [this, count](const QString &file) mutable {
            if (count-- > 0)
                writeFile(file);
            return 0;
        };
    }

    void expectBox(const QString &text) const
    {
        ASSERT_EQ(boxes.shown.size(), 1);
        EXPECT_EQ(boxes.shown.first(),
                  (RecordingMessageBoxes::Shown{text, MessageBoxes::Icon::Information,
                                                MessageBoxes::Buttons::Ok, u"[Norvane SMS]"_s}));
    }

    const LoadedLanguage language{{{0, u"[%1]"_s}}};
    RecordingMessageBoxes boxes;
    ScriptedStreams streams;
    NotedWaiting waiting;
    const QueueAccess access{&streams, &waiting};
    const QDateTime moment{QDate(2009, 3, 5), QTime(14, 7, 9), Qt::UTC};

private:
    const QTemporaryDir m_folder;
};

TEST_F(QueueFileWriterTest, firstFileOfAnEmptyFolderIsNumberZero)
{
    write();
    EXPECT_EQ(names(), QStringList{u"sms.0"_s});
    EXPECT_EQ(bytesOf(path(u"sms.0"_s)), fixture(u"one"_s));
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_EQ(streams.openStreams, 0);
}

TEST_F(QueueFileWriterTest, firstFreeNumberIsTaken)
{
    writeFile(path(u"sms.0"_s), "x");
    writeFile(path(u"sms.2"_s), "y");
    write();
    EXPECT_EQ(bytesOf(path(u"sms.1"_s)), fixture(u"one"_s));
    write();
    EXPECT_EQ(bytesOf(path(u"sms.3"_s)), fixture(u"one"_s));
    EXPECT_EQ(bytesOf(path(u"sms.0"_s)), "x");
    EXPECT_EQ(bytesOf(path(u"sms.2"_s)), "y");
}

TEST_F(QueueFileWriterTest, numberOfADeletedFileIsUsedAgain)
{
    write();
    write();
    ASSERT_TRUE(QFile::remove(path(u"sms.0"_s)));
    write();
    EXPECT_EQ(names(), (QStringList{u"sms.0"_s, u"sms.1"_s}));
}

TEST_F(QueueFileWriterTest, recordIsWrittenInOneWrite)
{
    write();
    EXPECT_EQ(streams.calls, (QStringList{u"create "_s + path(u"sms.0"_s), u"write 199"_s,
                                          u"close"_s, u"release"_s}));
}

TEST_F(QueueFileWriterTest, messageIsNormalisedAndThenCut)
{
    write(u"Coração nº "_s + QString(159, u'é'));
    const QByteArray record = bytesOf(path(u"sms.0"_s));
    EXPECT_EQ(record.size(), 199);
    EXPECT_EQ(record.mid(39), "Coracao n\xA7 " + QByteArray(149, 'e'));
}

TEST_F(QueueFileWriterTest, bulkFileOfThreeIs597BytesLong)
{
    SMSList list;
    list.Add(u"912345678"_s, u"Ola"_s);
    list.Add(u"+34 600-123 456"_s, u"Adéus"_s);
    list.Add(QString(), QString());
    writeBulk(list);
    const QByteArray date = "05032009140709";
    EXPECT_EQ(bytesOf(path(u"sms.0"_s)),
              fixture(u"one"_s) + "+34 600-123 456" + QByteArray(10, ' ') + date + "Adeus" +
                  QByteArray(155, ' ') + QByteArray(25, ' ') + date + QByteArray(160, ' '));
    EXPECT_EQ(names(), QStringList{u"sms.0"_s});
    EXPECT_EQ(streams.calls.filter(u"write 199"_s).size(), 3);
}

TEST_F(QueueFileWriterTest, emptyListMakesAnEmptyFile)
{
    writeBulk({});
    EXPECT_EQ(names(), QStringList{u"sms.0"_s});
    EXPECT_EQ(bytesOf(path(u"sms.0"_s)), QByteArray());
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(QueueFileWriterTest, textThatComesNormalisedMovesASecondTimeInABulkFile)
{
    SMSList list;
    list.Add(u"1"_s, u"§"_s); // what "º" became at the first time
    writeBulk(list);
    EXPECT_EQ(bytesOf(path(u"sms.0"_s)).at(39), '\xF5');
}

TEST_F(QueueFileWriterTest, dateInThePastIsWrittenLikeAnyOther)
{
    WriteSMSFile(u"1"_s, {QDate(100, 1, 1), QTime(0, 0), Qt::UTC}, {}, path({}), access);
    EXPECT_EQ(bytesOf(path(u"sms.0"_s)).mid(25, 14), "01010100000000");
}

TEST_F(QueueFileWriterTest, lostRaceSkipsANumber)
{
    loseRaces(1);
    write();
    EXPECT_EQ(names(), (QStringList{u"sms.0"_s, u"sms.2"_s}));
    EXPECT_EQ(bytesOf(path(u"sms.2"_s)), fixture(u"one"_s));
    EXPECT_EQ(waiting.sleeps.size(), 1);
    EXPECT_EQ(waiting.seeds, 1);
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(QueueFileWriterTest, nameThatIsFreeAgainAfterThePauseIsTakenUnderItsOldNumber)
{
    loseRaces(1);
    waiting.whileAsleep = [this] { ASSERT_TRUE(QFile::remove(path(u"sms.0"_s))); };
    write();
    EXPECT_EQ(names(), QStringList{u"sms.0"_s});
    EXPECT_EQ(bytesOf(path(u"sms.0"_s)), fixture(u"one"_s));
}

TEST_F(QueueFileWriterTest, thirdLostRaceIsSurvivedAndTheFourthIsNot)
{
    loseRaces(3);
    write();
    EXPECT_EQ(names(), (QStringList{u"sms.0"_s, u"sms.2"_s, u"sms.4"_s, u"sms.6"_s}));
    EXPECT_EQ(bytesOf(path(u"sms.6"_s)), fixture(u"one"_s));
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_EQ(waiting.sleeps.size(), 3);

    waiting.sleeps.clear();
    loseRaces(4);
    write();
    expectBox(u"File already exists - 58"_s);
    EXPECT_EQ(waiting.sleeps.size(), 3) << "no pause before the end";
    EXPECT_FALSE(streams.calls.last().startsWith(u"write"_s));
}

TEST_F(QueueFileWriterTest, pauseIsFrom1To250Milliseconds)
{
    waiting.numbers = {0, 0.999999999, 0.5};
    loseRaces(3);
    write();
    EXPECT_EQ(waiting.sleeps, (QList<int>{1, 250, 126}));
    EXPECT_EQ(waiting.seeds, 3);
}

TEST_F(QueueFileWriterTest, realPausesStayWithinTheirLimits)
{
    for (int i = 0; i < 1000; ++i) {
        realWait().seedFromClock();
        const double number = realWait().random();
        ASSERT_TRUE(number >= 0 && number < 1) << number;
    }
}

TEST_F(QueueFileWriterTest, realPauseIsAskedOfTheSystemAsLongAsItWasTold)
{
    t_pauses = 0;
    realWait().sleep(30);
    EXPECT_EQ(t_pauses, 30'000'000);
    realWait().sleep(251);
    EXPECT_EQ(t_pauses, 281'000'000);
    t_pauses = -1;
}

TEST_F(QueueFileWriterTest, eachSeedBeginsElsewhereInThisProcessAndInOthers)
{
    const auto draw = [] {
        realWait().seedFromClock();
        return realWait().random();
    };
    const double own = draw();
    EXPECT_NE(draw(), own);
    EXPECT_NE(numberOfAnotherProcess(), numberOfAnotherProcess());
}

TEST_F(QueueFileWriterTest, folderOfTheNameIsACollisionThatNoPauseEnds)
{
    ASSERT_TRUE(QDir().mkdir(path(u"sms.0"_s)));
    write();
    expectBox(u"File already exists - 58"_s);
    EXPECT_EQ(streams.calls.filter(u"create "_s), QStringList(4, u"create "_s + path(u"sms.0"_s)));
    EXPECT_EQ(names(), QStringList{u"sms.0"_s});
}

TEST_F(QueueFileWriterTest, linkOfTheNameIsNotWrittenThrough)
{
    ASSERT_TRUE(QFile::link(path(u"elsewhere"_s), path(u"sms.0"_s)));
    write();
    expectBox(u"File already exists - 58"_s);
    EXPECT_EQ(names().size(), 1) << "only the link, which leads nowhere still";
}

TEST_F(QueueFileWriterTest, folderOf32768FilesIsFull)
{
    for (int number = 0; number <= 32767; ++number)
        writeFile(path(u"sms."_s + QString::number(number)));
    write();
    expectBox(u"Overflow - 6"_s);
    EXPECT_TRUE(streams.calls.isEmpty());

    boxes.shown.clear();
    ASSERT_TRUE(QFile::remove(path(u"sms.32767"_s)));
    write();
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_EQ(bytesOf(path(u"sms.32767"_s)), fixture(u"one"_s));

    ASSERT_TRUE(QFile::remove(path(u"sms.32767"_s)));
    loseRaces(1);
    write();
    expectBox(u"Overflow - 6"_s);
}

TEST_F(QueueFileWriterTest, folderThatIsGoneIsAPathNotFound)
{
    WriteSMSFile(u"1"_s, moment, u"x"_s, path(u"none"_s), access);
    expectBox(u"Path not found - 76"_s);
}

TEST_F(QueueFileWriterTest, creationThatFailsShowsItsOwnNumber)
{
    const QList<std::pair<int, QString>> cases{{EACCES, u"Permission denied - 70"_s},
                                               {EROFS, u"Permission denied - 70"_s},
                                               {ENOSPC, u"Disk full - 61"_s},
                                               {EIO, u"Device I/O error - 57"_s}};
    for (const auto &[error, text] : cases) {
        boxes.shown.clear();
        streams.onCreate = [number = error](const QString &) { return number; };
        write();
        expectBox(text);
        writeBulk({});
        EXPECT_EQ(boxes.shown.size(), 2);
        EXPECT_EQ(boxes.shown.last(), boxes.shown.first());
    }
    EXPECT_TRUE(names().isEmpty());
    EXPECT_TRUE(waiting.sleeps.isEmpty());
}

TEST_F(QueueFileWriterTest, whatWasWrittenBeforeAFailureStays)
{
    SMSList list;
    for (int i = 0; i < 3; ++i)
        list.Add(u"912345678"_s, u"Ola"_s);
    int writes = 0;
    streams.onWrite = [&](const QByteArray &) { return ++writes == 3 ? ENOSPC : 0; };
    writeBulk(list);
    expectBox(u"Disk full - 61"_s);
    EXPECT_EQ(bytesOf(path(u"sms.0"_s)), fixture(u"one"_s) + fixture(u"one"_s));
    EXPECT_EQ(streams.openStreams, 0);
}

TEST_F(QueueFileWriterTest, writeThatBreaksOffWithinARecordLeavesATailThatTheReaderDrops)
{
    SMSList list;
    for (int i = 0; i < 3; ++i)
        list.Add(u"912345678"_s, u"Ola"_s);
    {
        const SmallFiles small(299);
        WriteSMSFileBulk(list, moment, path({}), {});
    }
    expectBox(u"Path/File access error - 75"_s);
    const QByteArray bytes = bytesOf(path(u"sms.0"_s));
    EXPECT_EQ(bytes, fixture(u"one"_s) + fixture(u"one"_s).first(100));

    RecordingEngine::Script script;
    RecordingEngine engine(script);
    script.calls.clear();
    ImportSMSFile(path(u"sms.0"_s), engine, {});
    EXPECT_EQ(script.calls, QStringList{u"AddSMS(912345678|Ola|2009-03-05T14:07:09)"_s});
    EXPECT_TRUE(names().isEmpty());
    EXPECT_EQ(boxes.shown.size(), 1) << "of the tail nobody is told";
}

TEST_F(QueueFileWriterTest, writeThatEndsShortIsAFailureThoughNoOtherFollows)
{
    {
        const SmallFiles small(100);
        WriteSMSFile(u"912345678"_s, moment, u"Ola"_s, path({}), {});
    }
    expectBox(u"Path/File access error - 75"_s);
    EXPECT_EQ(bytesOf(path(u"sms.0"_s)), fixture(u"one"_s).first(100));
}

TEST_F(QueueFileWriterTest, singleFileWhoseWriteFailsStaysEmpty)
{
    streams.onWrite = [](const QByteArray &) { return ENOSPC; };
    write();
    expectBox(u"Disk full - 61"_s);
    EXPECT_EQ(bytesOf(path(u"sms.0"_s)), QByteArray());
}

TEST_F(QueueFileWriterTest, closingThatFailsIsShown)
{
    streams.onClose = [] { return EIO; };
    write();
    expectBox(u"Device I/O error - 57"_s);
    EXPECT_EQ(bytesOf(path(u"sms.0"_s)), fixture(u"one"_s));
}

TEST_F(QueueFileWriterTest, closingAListsFileThatFailsIsShown)
{
    SMSList list;
    list.Add(u"912345678"_s, u"Ola"_s);
    streams.onClose = [] { return EIO; };
    writeBulk(list);
    expectBox(u"Device I/O error - 57"_s);
    EXPECT_EQ(bytesOf(path(u"sms.0"_s)), fixture(u"one"_s));
    EXPECT_EQ(streams.openStreams, 0);
}

TEST_F(QueueFileWriterTest, failureWithoutANumberOfItsOwnIsTrappedToo)
{
    streams.onCreate = [](const QString &) -> int { throw std::bad_alloc(); };
    write();
    expectBox(u"Out of memory - 7"_s);
}

} // namespace

} // namespace norvane
