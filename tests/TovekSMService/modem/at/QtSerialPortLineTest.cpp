#include "TovekSMService/modem/at/QtSerialPortLine.h"

#include "TovekSMService/modem/at/AtChannel.h"
#include "TovekSMService/modem/at/PtyModem.h"
#include "support/TurnedTime.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Longer than any test lasts, in milliseconds.
constexpr int patience = 24 * 3'600'000;

/// Limits that no machine is too slow for.
ModemTimings patientTimings()
{
    ModemTimings timings;
    timings.probeMs = patience;
    timings.drainMs = patience;
    timings.quietMs = 5;
    return timings;
}

/// Why the line can't be opened; nothing if it can.
std::optional<LineError> refusal(SerialLine &line, const QString &device, int baud = 9600)
{
    const auto opened = line.open(device, baud);
    return opened ? std::nullopt : std::optional(opened.error().error);
}

TEST(QtSerialPortLine, carriesBytesBothWaysUnchanged)
{
    PtyModem device;
    QtSerialPortLine line;
    QByteArray received;
    QObject::connect(&line, &SerialLine::received, &line,
                     [&received](const QByteArray &bytes) { received += bytes; });
    ASSERT_EQ(refusal(line, device.path(), 115200), std::nullopt);
    EXPECT_TRUE(line.isOpen());

    QByteArray all;
    for (int byte = 0; byte < 256; ++byte)
        all.append(static_cast<char>(byte));
    ASSERT_TRUE(line.write(all));
    ASSERT_TRUE(waitUntil([&] { return device.heard.size() >= 256; }));
    EXPECT_EQ(device.heard, all);
    device.say(all);
    ASSERT_TRUE(waitUntil([&] { return received.size() >= 256; }));
    EXPECT_EQ(received, all);

    line.close();
    EXPECT_FALSE(line.isOpen());
    EXPECT_FALSE(line.write("x"));
}

TEST(QtSerialPortLine, opensADeviceThroughALinkAndAtAnySpeedThatItTakes)
{
    const QTemporaryDir folder;
    PtyModem device;
    const QString link = folder.filePath(u"the modem, at last"_s);
    ASSERT_TRUE(QFile::link(device.path(), link));
    QtSerialPortLine line;
    for (const int baud : {1200, 9600, 115200, 460800}) {
        ASSERT_EQ(refusal(line, link, baud), std::nullopt) << baud;
        // Without this the far end would see a hang-up between two openings.
        ASSERT_TRUE(line.write("x"));
    }
    ASSERT_TRUE(waitUntil([&] { return device.heard.endsWith('x'); }));
}

TEST(QtSerialPortLine, tellsWhatIsNoDeviceOfItsKind)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(u"file"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const QString dangling = folder.filePath(u"dangling"_s);
    ASSERT_TRUE(QFile::link(u"/nowhere/modem"_s, dangling));

    QtSerialPortLine line;
    const auto missing = line.open(u"/dev/no-such-modem"_s, 9600);
    ASSERT_FALSE(missing.has_value());
    EXPECT_EQ(missing.error().error, LineError::NoSuchDevice);
    EXPECT_EQ(missing.error().detail, u"/dev/no-such-modem"_s);
    EXPECT_EQ(refusal(line, dangling), LineError::NoSuchDevice);
    EXPECT_EQ(refusal(line, QString()), LineError::NoSuchDevice);
    EXPECT_EQ(refusal(line, file.fileName()), LineError::NotSerial);
    EXPECT_EQ(refusal(line, folder.path()), LineError::NotSerial);
    EXPECT_EQ(refusal(line, u"/dev/null"_s), LineError::NotSerial);
    PtyModem device;
    EXPECT_EQ(refusal(line, device.path(), 0), LineError::UnsupportedSpeed);
    EXPECT_FALSE(line.isOpen());
}

TEST(QtSerialPortLine, isExclusiveAndGivesTheDeviceBack)
{
    PtyModem device;
    QtSerialPortLine first;
    QtSerialPortLine second;
    ASSERT_EQ(refusal(first, device.path()), std::nullopt);
    EXPECT_EQ(refusal(second, device.path()), LineError::HeldByAnother);
    EXPECT_TRUE(first.isOpen());
    EXPECT_FALSE(second.isOpen());
    first.close();
    EXPECT_EQ(refusal(second, device.path()), std::nullopt);
}

TEST(QtSerialPortLine, namesTheProgramThatHoldsTheDevice)
{
    PtyModem device;
    QProcess holder;
    holder.start(u"cat"_s, {});
    ASSERT_TRUE(holder.waitForStarted(hangMs));
    QString name = device.path().mid(5);
    name.replace(u'/', u'_');
    QFile lock(u"/tmp/LCK.."_s + name);
    ASSERT_TRUE(lock.open(QIODevice::WriteOnly));
    lock.write(QByteArray::number(holder.processId()).rightJustified(10) + '\n');
    lock.close();

    QtSerialPortLine line;
    const auto held = line.open(device.path(), 9600);
    ASSERT_FALSE(held.has_value());
    EXPECT_EQ(held.error().error, LineError::HeldByAnother);
    EXPECT_EQ(held.error().detail, u"cat (%1)"_s.arg(holder.processId()));

    holder.closeWriteChannel();
    ASSERT_TRUE(holder.waitForFinished(hangMs));
    EXPECT_EQ(refusal(line, device.path()), std::nullopt);
    lock.remove();
}

TEST(QtSerialPortLine, tellsOnceThatTheDeviceHasGone)
{
    PtyModem device;
    QtSerialPortLine line;
    const QSignalSpy broken(&line, &SerialLine::broken);
    ASSERT_EQ(refusal(line, device.path()), std::nullopt);
    device.unplug();
    ASSERT_TRUE(waitUntil([&] { return !broken.isEmpty(); }));
    const auto failure = broken.first().first().value<LineFailure>();
    EXPECT_EQ(failure.error, LineError::Unplugged);
    EXPECT_EQ(failure.detail, device.path() + u" has gone"_s);
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
    ASSERT_EQ(refusal(line, device.path()), std::nullopt);
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
    ASSERT_EQ(refusal(line, device.path()), std::nullopt);
    AtChannel channel(&line, patientTimings());
    std::optional<AtAnswer> answer;
    channel.synchronise(1, [&](SyncOutcome outcome) {
        ASSERT_EQ(static_cast<int>(outcome), static_cast<int>(SyncOutcome::Answered));
        channel.submit({"AT+CMGS=13", patience, {}}, "0011", patience,
                       [&](const AtAnswer &given) { answer = given; });
    });
    ASSERT_TRUE(waitUntil([&] { return answer.has_value(); }));
    EXPECT_TRUE(answer->isOk());
    EXPECT_EQ(answer->lines, QList<QByteArray>{"+CMGS: 9"});
}

/// How fast that is, `throughput_bench` measures.
TEST(QtSerialPortLine, submitsWithoutWaitingForAnythingButTheDevice)
{
    PtyModem device;
    device.submitForever();
    QtSerialPortLine line;
    ASSERT_EQ(refusal(line, device.path(), 115200), std::nullopt);
    TurnedTime time; // which nobody turns
    AtChannel channel(&line, {}, time);
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
    next();
    ASSERT_TRUE(waitUntil([&] { return done == count; }));
    EXPECT_EQ(device.submissions, count);
    EXPECT_EQ(time.elapsed(), 0);
}

} // namespace

} // namespace norvane
