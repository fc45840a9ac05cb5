#include "NorvaneSMS/console/PoolingFixture.h"

#include "NorvaneSMS/queue/Fixture.h"

#include <QDir>

#include <cerrno>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

// A queue folder is open to others: whatever they put there.

class HostileFolder : public Pooling
{
protected:
    QByteArray local(const QString &name) const { return QFile::encodeName(path(name)); }

    void makeSocket(const QString &name) const
    {
        const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        const QByteArray file = local(name);
        ASSERT_LT(static_cast<std::size_t>(file.size()), sizeof address.sun_path);
        std::copy(file.begin(), file.end(), address.sun_path);
        ASSERT_EQ(::bind(descriptor, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        ::close(descriptor);
    }
};

TEST_F(HostileFolder, whatIsNoRegularFileIsNeitherReadNorTakenAway)
{
    loadAsServer();
    const QTemporaryDir elsewhere;
    const QString other = elsewhere.filePath(u"sms.0"_s);
    writeFile(other, fixture(u"one"_s));
    ASSERT_TRUE(QFile::link(other, path(u"sms.link"_s)));
    ASSERT_TRUE(QFile::link(elsewhere.path(), path(u"sms.folderlink"_s)));
    ASSERT_TRUE(QFile::link(path(u"nowhere"_s), path(u"sms.dangling"_s)));
    ASSERT_TRUE(QFile::link(path(u"sms.loop"_s), path(u"sms.loop"_s)));
    ASSERT_TRUE(QFile::link(u"/dev/zero"_s, path(u"sms.devicelink"_s)));
    ASSERT_EQ(::mkfifo(local(u"sms.fifo"_s).constData(), 0666), 0);
    ASSERT_TRUE(QDir().mkdir(path(u"sms.folder"_s)));
    makeSocket(u"sms.socket"_s);
    // The right to make a device is not everyone's.
    const bool device =
        ::mknod(local(u"sms.device"_s).constData(), S_IFCHR | 0666, makedev(1, 5)) == 0;
    ASSERT_TRUE(device || errno == EPERM);
    drop(u"sms.1"_s);

    tick(); // and nothing is waited for: nobody would ever write to the pipe
    EXPECT_EQ(takeMessages(), QStringList{u"sms.1"_s});
    EXPECT_EQ(streams.calls.filter(u"open "_s).size(), 1);
    EXPECT_EQ(names().size(), device ? 9 : 8);
    EXPECT_TRUE(QFile::exists(other));
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_EQ(exitCode, 0);
}

TEST_F(HostileFolder, namesWithLineBreaksAndOtherSignsAreTakenLikeAnyOther)
{
    loadAsServer();
    for (const QString &name : {u"sms.\n1"_s, u"sms.a\r\nb"_s, u"sms.\t"_s, u"sms.'; rm -rf"_s,
                                u"sms.ñ😀"_s, u"sms.*"_s, u"sms.?"_s, u"sms.\\"_s})
        drop(name);
    drop(u"sms."_s + QString(251, u'x'));
    tick();
    EXPECT_EQ(messages(), 9);
    EXPECT_TRUE(names().isEmpty());
    EXPECT_EQ(exitCode, 0);
}

TEST_F(HostileFolder, nameThatIsNoTextIsPassedOver)
{
    loadAsServer();
    const QByteArray file = QFile::encodeName(queue.path()) + "/sms.\xFF";
    const int descriptor = ::creat(file.constData(), 0600);
    ASSERT_GE(descriptor, 0);
    ::close(descriptor);
    drop(u"sms.1"_s);
    tick();
    EXPECT_EQ(takeMessages(), QStringList{u"sms.1"_s});
    EXPECT_EQ(::unlink(file.constData()), 0) << "it is there still";
}

TEST_F(HostileFolder, blankBehindANameHidesTheFile)
{
    loadAsServer();
    drop(u"sms.1 "_s); // cut at its end it would be another file's name
    tick();
    EXPECT_EQ(messages(), 0);
    EXPECT_TRUE(isThere(u"sms.1 "_s));
    EXPECT_EQ(exitCode, 0);
}

TEST_F(HostileFolder, nameThatEndsInABlankStopsNothing)
{
    loadAsServer();
    for (int round = 1; round <= 2; ++round) {
        drop(u"sms.1"_s);
        drop(u"sms.1 "_s);
        drop(u"sms.2"_s);
        tick();
        EXPECT_EQ(messages(), 2 * round);
        EXPECT_EQ(names(), QStringList{u"sms.1 "_s});
    }
}

TEST_F(HostileFolder, unreadableFilesAreDeletedUnread)
{
    loadAsServer();
    dropMany(50);
    int readings = 0;
    streams.onRead = [&](qsizetype &) { return ++readings % 2 == 0 ? EIO : 0; };
    streams.onOpen = [](const QString &file) { return file.endsWith(u'7') ? EACCES : 0; };
    tick();
    EXPECT_TRUE(names().isEmpty());
    EXPECT_EQ(messages(), 45);
    EXPECT_EQ(streams.openStreams, 0);
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(HostileFolder, endlessFileIsReadNoFurtherThanItsFirstBadRecord)
{
    loadAsServer();
    qsizetype read = 0;
    streams.onRead = [&](qsizetype &max) {
        read += max;
        return 0;
    };
    writeFile(path(u"sms.0"_s), fixture(u"one"_s).repeated(3) + QByteArray(40'000 * 199, '\xFF'));
    tick();
    EXPECT_EQ(messages(), 3);
    EXPECT_GT(read, 0);
    EXPECT_LT(read, 400 * 199);
    EXPECT_TRUE(names().isEmpty());
}

TEST_F(HostileFolder, ofAHundredThousandFilesAsManyAsTheCounterHoldsAreTaken)
{
    loadAsServer();
    constexpr int count = 100'000;
    for (int number = 0; number < count; ++number)
        writeFile(path(u"sms."_s + QString::number(number)));
    tick();
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first(),
              (RecordingMessageBoxes::Shown{u" 6 - Overflow"_s, MessageBoxes::Icon::Critical,
                                            MessageBoxes::Buttons::Ok, u"Error"_s}));
    EXPECT_EQ(streams.calls.filter(u"open "_s).size(), 32767);
    EXPECT_EQ(names().size(), count - 32767);
    tick();
    EXPECT_EQ(boxes.shown.size(), 2);
    EXPECT_EQ(names().size(), count - 2 * 32767);
}

TEST_F(HostileFolder, modeThatChangesWhileTheBoxIsOpenEndsTheTick)
{
    loadAsServer();
    for (int number = 0; number < 32768; ++number)
        writeFile(path(u"sms."_s + QString::number(number)));
    boxes.whileShown = [this] {
        storeMode(false);
        console->SetDeviceSettings({});
    };
    tick();
    EXPECT_EQ(boxes.shown.size(), 1);
    EXPECT_TRUE(streams.calls.isEmpty());
    EXPECT_EQ(names().size(), 32768);
}

TEST_F(HostileFolder, windowThatClosesWhileTheBoxIsOpenEndsTheTick)
{
    loadAsServer();
    for (int number = 0; number < 32768; ++number)
        writeFile(path(u"sms."_s + QString::number(number)));
    boxes.whileShown = [this] { console->close(); };
    tick();
    EXPECT_EQ(boxes.shown.size(), 1);
    EXPECT_TRUE(streams.calls.isEmpty());
    EXPECT_EQ(names().size(), 32768);
    EXPECT_EQ(exitCode, 0);
    EXPECT_TRUE(timers.events.isEmpty()) << "nothing ticks any more";
    EXPECT_EQ(takeCalls(), (QStringList{u"release 1"_s, u"ReleaseGlobals"_s}));
}

} // namespace norvane
