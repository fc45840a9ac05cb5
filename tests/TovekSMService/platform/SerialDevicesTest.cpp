#include "TovekSMService/platform/SerialDevices.h"

#include "TovekSMService/modem/at/PtyModem.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

void writeLock(const QTemporaryDir &folder, const char *name, const QByteArray &content)
{
    QFile file(folder.filePath(QString::fromLatin1(name)));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
}

TEST(SerialDevices, countsThePlatformsPortsFromOne)
{
    EXPECT_EQ(SerialDevices::pathOfPort(1), u"/dev/ttyS0"_s);
    EXPECT_EQ(SerialDevices::pathOfPort(3), u"/dev/ttyS2"_s);
}

TEST(SerialDevices, knowsATerminalFromOtherThings)
{
    const PtyModem device;
    EXPECT_TRUE(SerialDevices::isTerminalDevice(device.path()));
    EXPECT_TRUE(SerialDevices::mayUse(device.path()));
    for (const char *other : {"/dev/null", "/dev", "/etc/passwd", "/nowhere", ""})
        EXPECT_FALSE(SerialDevices::isTerminalDevice(QString::fromLatin1(other))) << other;
    EXPECT_FALSE(SerialDevices::mayUse(u"/nowhere"_s));
}

TEST(SerialDevices, readsTheHolderFromALockFile)
{
    QProcess program;
    program.start(u"cat"_s, {});
    ASSERT_TRUE(program.waitForStarted(hangMs));
    const QByteArray pid = QByteArray::number(program.processId());
    const struct
    {
        const char *file;
        QByteArray content;
        const char *device;
        bool held;
    } rows[] = {
        {"LCK..ttyUSB0", pid.rightJustified(10) + '\n', "/dev/ttyUSB0", true},
        {"LCK..ttyUSB0", pid + "\nminicom\nhost\n", "/dev/ttyUSB0", true},
        {"LCK..ttyUSB0", pid, "/dev/ttyUSB0", true},
        {"LCK..pts_7", pid, "/dev/pts/7", true},
        {"LCK..serial_modem", pid, "/dev/serial/modem", true},
        {"LCK..modem", pid, "/dev/serial/modem", true},
        {"LCK..7", pid, "/dev/pts/7", false},
        {"LCK..ttyUSB1", pid, "/dev/ttyUSB0", false},
        {"LCK..ttyUSB0", QByteArray::number(QCoreApplication::applicationPid()), "/dev/ttyUSB0",
         false},
        {"LCK..ttyUSB0", "", "/dev/ttyUSB0", false},
        {"LCK..ttyUSB0", "none", "/dev/ttyUSB0", false},
        {"LCK..ttyUSB0", "-1", "/dev/ttyUSB0", false},
        {"LCK..ttyUSB0", "0", "/dev/ttyUSB0", false},
        {"LCK..ttyUSB0", "99999999999999", "/dev/ttyUSB0", false},
        {"LCK..ttyUSB0", QByteArray(100000, '9'), "/dev/ttyUSB0", false},
    };
    for (const auto &row : rows) {
        const QTemporaryDir folder;
        writeLock(folder, row.file, row.content);
        const auto holder =
            SerialDevices::holderOf(QString::fromLatin1(row.device), {folder.path()});
        EXPECT_EQ(holder.has_value(), row.held)
            << row.file << ' ' << row.content.left(20).toStdString();
        if (holder) {
            EXPECT_EQ(holder->pid, program.processId());
            EXPECT_EQ(holder->name, u"cat"_s);
        }
    }

    const QTemporaryDir folder;
    writeLock(folder, "LCK..ttyUSB0", pid);
    program.closeWriteChannel();
    ASSERT_TRUE(program.waitForFinished(hangMs));
    EXPECT_FALSE(SerialDevices::holderOf(u"/dev/ttyUSB0"_s, {folder.path()}));
    EXPECT_FALSE(SerialDevices::holderOf(u"/dev/ttyUSB0"_s, {}));
}

TEST(SerialDevices, aLockOlderThanTheProcessOfItsNumberIsADeadOnes)
{
    QProcess program;
    program.start(u"cat"_s, {});
    ASSERT_TRUE(program.waitForStarted(hangMs));
    const QTemporaryDir folder;
    const QString device = u"/dev/ttyUSB0"_s;
    writeLock(folder, "LCK..ttyUSB0", QByteArray::number(program.processId()));
    SerialDevices::removeDeadLocks(device, {folder.path()});
    ASSERT_TRUE(SerialDevices::holderOf(device, {folder.path()}));

    QFile lock(folder.filePath(u"LCK..ttyUSB0"_s));
    ASSERT_TRUE(lock.open(QIODevice::ReadWrite));
    const QDateTime before = QDateTime::currentDateTime().addSecs(-60);
    ASSERT_TRUE(lock.setFileTime(before, QFileDevice::FileModificationTime));
    EXPECT_FALSE(SerialDevices::holderOf(device, {folder.path()}));
    SerialDevices::removeDeadLocks(device, {folder.path()});
    EXPECT_FALSE(lock.exists());
    program.closeWriteChannel();
    EXPECT_TRUE(program.waitForFinished(hangMs));
}

TEST(SerialDevices, listsThePortsByTheirNamesFirstAndEachDeviceOnce)
{
    const QTemporaryDir folder;
    const QDir dev(folder.path());
    ASSERT_TRUE(dev.mkpath(u"serial/by-id"_s));
    for (const char *const name :
         {"ttyS0", "ttyS1", "ttyUSB0", "ttyUSB1", "ttyACM0", "rfcomm0", "tty1", "null"})
        ASSERT_TRUE(QFile(dev.filePath(QLatin1String(name))).open(QIODevice::WriteOnly));
    const QString link = dev.filePath(u"serial/by-id/usb-modem"_s);
    ASSERT_TRUE(QFile::link(dev.filePath(u"ttyUSB1"_s), link));
    ASSERT_TRUE(QFile::link(u"/nowhere"_s, dev.filePath(u"serial/by-id/usb-gone"_s)));
    QStringList expected = {link};
    for (const char *const name : {"ttyUSB0", "ttyACM0", "rfcomm0", "ttyS0", "ttyS1"})
        expected << dev.filePath(QLatin1String(name));
    EXPECT_EQ(SerialDevices::serialPorts(folder.path()), expected);
    EXPECT_TRUE(SerialDevices::serialPorts(u"/nowhere"_s).isEmpty());
}

TEST(SerialDevices, tellsADeviceFromALaterOneOfTheSamePath)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"ttyUSB0"_s);
    EXPECT_EQ(SerialDevices::nodeOf(path), 0u);
    ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly));
    const quint64 node = SerialDevices::nodeOf(path);
    EXPECT_NE(node, 0u);
    ASSERT_TRUE(QFile::rename(path, path + u'x'));
    ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly));
    EXPECT_NE(SerialDevices::nodeOf(path), node);
}

TEST(SerialDevices, describesAHolder)
{
    EXPECT_EQ(SerialDevices::describe({12, u"minicom"_s}), u"minicom (12)"_s);
    EXPECT_EQ(SerialDevices::describe({12, {}}), u"12"_s);
}

TEST(SerialDevices, knowsWhetherADeviceIsStillThere)
{
    PtyModem device;
    const int handle = ::open(device.path().toLocal8Bit().constData(), O_RDWR | O_NOCTTY);
    ASSERT_GE(handle, 0);
    EXPECT_TRUE(SerialDevices::isPresent(handle));
    EXPECT_EQ(SerialDevices::speedOf(handle), 38400); // what a pseudo-terminal begins with
    device.unplug();
    EXPECT_FALSE(SerialDevices::isPresent(handle));
    EXPECT_FALSE(SerialDevices::speedOf(handle).has_value());
    ::close(handle);
}

} // namespace

} // namespace norvane
