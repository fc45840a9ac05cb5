#include "service/modem/QtSerialPortLine.h"

#include "PtyModem.h"
#include "service/modem/AtChannel.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

template <typename Condition>
bool until(Condition condition, int milliseconds = 5000)
{
    QDeadlineTimer deadline(milliseconds);
    QTimer alarm;
    alarm.start(milliseconds);
    while (!condition() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return condition();
}

int asInt(LineError error)
{
    return static_cast<int>(error);
}

TEST(QtSerialPortLine, carriesBytesBothWaysUnchanged)
{
    PtyModem device;
    QtSerialPortLine line;
    QByteArray received;
    QObject::connect(&line, &SerialLine::received, &line,
                     [&received](const QByteArray &bytes) { received += bytes; });
    ASSERT_EQ(asInt(line.open(device.path(), 115200)), asInt(LineError::None))
        << line.errorDetail().toStdString();
    EXPECT_TRUE(line.isOpen());

    QByteArray all;
    for (int byte = 0; byte < 256; ++byte)
        all.append(static_cast<char>(byte));
    ASSERT_TRUE(line.write(all));
    ASSERT_TRUE(until([&] { return device.heard.size() >= 256; }));
    EXPECT_EQ(device.heard, all);
    device.say(all);
    ASSERT_TRUE(until([&] { return received.size() >= 256; }));
    EXPECT_EQ(received, all);

    line.close();
    EXPECT_FALSE(line.isOpen());
    EXPECT_FALSE(line.write("x"));
}

TEST(QtSerialPortLine, opensADeviceThroughALinkAndAtAnySpeedThatItTakes)
{
    const QTemporaryDir folder;
    PtyModem device;
    const QString link = folder.filePath(QStringLiteral("the modem, at last"));
    ASSERT_TRUE(QFile::link(device.path(), link));
    QtSerialPortLine line;
    for (const int baud : {1200, 9600, 115200, 460800}) {
        ASSERT_EQ(asInt(line.open(link, baud)), asInt(LineError::None))
            << baud << line.errorDetail().toStdString();
        // Without this the far end would see a hang-up between two openings.
        ASSERT_TRUE(line.write("x"));
    }
    ASSERT_TRUE(until([&] { return device.heard.endsWith('x'); }));
}

TEST(QtSerialPortLine, tellsWhatIsNoDeviceOfItsKind)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("file")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const QString dangling = folder.filePath(QStringLiteral("dangling"));
    ASSERT_TRUE(QFile::link(QStringLiteral("/nowhere/modem"), dangling));

    QtSerialPortLine line;
    EXPECT_EQ(asInt(line.open(QStringLiteral("/dev/no-such-modem"), 9600)),
              asInt(LineError::NoSuchDevice));
    EXPECT_EQ(line.errorDetail(), QStringLiteral("/dev/no-such-modem"));
    EXPECT_EQ(asInt(line.open(dangling, 9600)), asInt(LineError::NoSuchDevice));
    EXPECT_EQ(asInt(line.open(QString(), 9600)), asInt(LineError::NoSuchDevice));
    EXPECT_EQ(asInt(line.open(file.fileName(), 9600)), asInt(LineError::NotSerial));
    EXPECT_EQ(asInt(line.open(folder.path(), 9600)), asInt(LineError::NotSerial));
    EXPECT_EQ(asInt(line.open(QStringLiteral("/dev/null"), 9600)), asInt(LineError::NotSerial));
    PtyModem device;
    EXPECT_EQ(asInt(line.open(device.path(), 0)), asInt(LineError::UnsupportedSpeed));
    EXPECT_FALSE(line.isOpen());
}

TEST(QtSerialPortLine, isExclusiveAndGivesTheDeviceBack)
{
    PtyModem device;
    QtSerialPortLine first;
    QtSerialPortLine second;
    ASSERT_EQ(asInt(first.open(device.path(), 9600)), asInt(LineError::None));
    EXPECT_EQ(asInt(second.open(device.path(), 9600)), asInt(LineError::HeldByAnother));
    EXPECT_TRUE(first.isOpen());
    EXPECT_FALSE(second.isOpen());
    first.close();
    EXPECT_EQ(asInt(second.open(device.path(), 9600)), asInt(LineError::None));
}

TEST(QtSerialPortLine, namesTheProgramThatHoldsTheDevice)
{
    PtyModem device;
    QProcess holder;
    holder.start(QStringLiteral("cat"), {});
    ASSERT_TRUE(holder.waitForStarted());
    QString name = device.path().mid(5);
    name.replace(u'/', u'_');
    QFile lock(QStringLiteral("/tmp/LCK..") + name);
    ASSERT_TRUE(lock.open(QIODevice::WriteOnly));
    lock.write(QByteArray::number(holder.processId()).rightJustified(10) + '\n');
    lock.close();

    QtSerialPortLine line;
    EXPECT_EQ(asInt(line.open(device.path(), 9600)), asInt(LineError::HeldByAnother));
    EXPECT_EQ(line.errorDetail(), QStringLiteral("cat (%1)").arg(holder.processId()));

    holder.closeWriteChannel();
    ASSERT_TRUE(holder.waitForFinished());
    EXPECT_EQ(asInt(line.open(device.path(), 9600)), asInt(LineError::None));
    lock.remove();
}

TEST(QtSerialPortLine, tellsOnceThatTheDeviceHasGone)
{
    PtyModem device;
    QtSerialPortLine line;
    const QSignalSpy broken(&line, &SerialLine::broken);
    ASSERT_EQ(asInt(line.open(device.path(), 9600)), asInt(LineError::None))
        << line.errorDetail().toStdString();
    device.unplug();
    ASSERT_TRUE(until([&] { return !broken.isEmpty(); }));
    EXPECT_EQ(asInt(broken.first().first().value<LineError>()), asInt(LineError::Unplugged));
    EXPECT_EQ(line.errorDetail(), device.path() + QStringLiteral(" has gone"));
    EXPECT_FALSE(line.isOpen());
    EXPECT_FALSE(line.write("AT\r"));
    QCoreApplication::processEvents();
    EXPECT_EQ(broken.count(), 1);
}

TEST(QtSerialPortLine, closedByItsOwnerItSaysNothing)
{
    PtyModem device;
    QtSerialPortLine line;
    const QSignalSpy broken(&line, &SerialLine::broken);
    ASSERT_EQ(asInt(line.open(device.path(), 9600)), asInt(LineError::None))
        << line.errorDetail().toStdString();
    device.unplug();
    line.close();
    QCoreApplication::processEvents();
    EXPECT_TRUE(broken.isEmpty());
}

TEST(QtSerialPortLine, speaksThroughTheChannel)
{
    PtyModem device;
    device.play({{"\x1B\r", ""},
                 {"AT\r", "AT\r\r\nOK\r\n"},
                 {"AT+CMGS=13\r", "AT+CMGS=13\r\r\n> "},
                 {"0011\x1A", "0011\r\n+CMGS: 9\r\n\r\nOK\r\n"}});
    QtSerialPortLine line;
    ASSERT_EQ(asInt(line.open(device.path(), 9600)), asInt(LineError::None))
        << line.errorDetail().toStdString();
    ModemTimings timings;
    timings.quietMs = 5;
    AtChannel channel(&line, timings);
    std::optional<AtAnswer> answer;
    channel.synchronise(1, [&](SyncOutcome outcome) {
        ASSERT_EQ(static_cast<int>(outcome), static_cast<int>(SyncOutcome::Answered));
        channel.submit({"AT+CMGS=13", 5000, {}}, "0011", 5000,
                       [&](const AtAnswer &given) { answer = given; });
    });
    ASSERT_TRUE(until([&] { return answer.has_value(); }));
    EXPECT_TRUE(answer->isOk());
    EXPECT_EQ(answer->lines, QList<QByteArray>{"+CMGS: 9"});
}

TEST(QtSerialPortLine, submitsWithoutDelaysOfItsOwn)
{
    PtyModem device;
    device.submitForever();
    QtSerialPortLine line;
    ASSERT_EQ(asInt(line.open(device.path(), 115200)), asInt(LineError::None))
        << line.errorDetail().toStdString();
    AtChannel channel(&line, {});
    constexpr int count = 2000;
    int done = 0;
    std::function<void()> next = [&] {
        channel.submit({"AT+CMGS=153", 5000, {}}, QByteArray(308, '0'), 5000,
                       [&](const AtAnswer &answer) {
                           ASSERT_TRUE(answer.isOk());
                           if (++done < count)
                               next();
                       });
    };
    QElapsedTimer clock;
    clock.start();
    next();
    ASSERT_TRUE(until([&] { return done == count; }, 20000));
    const double rate = count * 1000.0 / static_cast<double>(std::max<qint64>(1, clock.elapsed()));
    RecordProperty("submissionsASecond", static_cast<int>(rate));
    std::cout << "submissions a second: " << rate << '\n';
    EXPECT_EQ(device.submissions, count);
    // One delay of a millisecond at each step would show, even on a busy machine.
    EXPECT_GT(rate, 300);
}

} // namespace
