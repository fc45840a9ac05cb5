#include "TovekSMService/host/DeviceProcess.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <sys/ioctl.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class DeviceLife : public DeviceProcess
{
protected:
    QString place() const { return m_place.filePath(u"modem"_s); }

    QTemporaryDir m_place;
};

TEST_F(DeviceLife, aDeviceThatIsAbsentAtTheStartIsToldOnceByItsNameAndFoundWhenItComes)
{
    startHeard();
    addSMS(u"600"_s, u"text"_s, u"2024-05-01T12:00:00"_s);
    use(place());
    call("StartEngine");
    ASSERT_TRUE(hears(u"WarningError -2"_s));
    EXPECT_TRUE(m_listener->heard.contains(u"WarningError -2 "_s + place()));

    plugIn();
    ASSERT_TRUE(QFile::link(QFileInfo(m_device->link()).canonicalFilePath(), place()));
    ASSERT_TRUE(hears(u"SMSSent 600 text"_s));
    EXPECT_EQ(count(u"WarningError"_s), 1);
    EXPECT_EQ(m_device->messages().size(), 1);
}

TEST_F(DeviceLife, aProgramThatHoldsTheDeviceIsNamed)
{
    plugIn();
    PortClient other(m_device->link());
    ASSERT_EQ(::ioctl(other.descriptor(), TIOCEXCL), 0);
    startHeard();
    use(m_device->link());
    call("StartEngine");
    ASSERT_TRUE(hears(u"WarningError -4"_s));
    const QString holder = u"(%1)"_s.arg(QCoreApplication::applicationPid());
    EXPECT_TRUE(m_listener->heard.filter(u"WarningError -4"_s).first().contains(holder))
        << m_listener->heard.join(u'\n').toStdString();
    ASSERT_EQ(::ioctl(other.descriptor(), TIOCNXCL), 0);
    other.close();
    ASSERT_TRUE(hears(u"DeviceInfo"_s));
}

TEST_F(DeviceLife, unpluggedInMidMessageTheMessageIsReportedAndTheNextOneGoesWhenItIsBack)
{
    plugIn({u"--drop-after"_s, u"1"_s, u"--lose-answer"_s});
    ASSERT_TRUE(QFile::link(QFileInfo(m_device->link()).canonicalFilePath(), place()));
    startHeard();
    addSMS(u"600"_s, u"first"_s, u"2024-05-01T12:00:00"_s);
    addSMS(u"601"_s, u"second"_s, u"2024-05-01T12:00:01"_s);
    use(place());
    call("StartEngine");
    ASSERT_TRUE(hears(u"SMSSentFailed 600 first -39"_s));
    EXPECT_EQ(m_device->messages().size(), 1);
    plugIn();
    ASSERT_TRUE(QFile::remove(place()));
    ASSERT_TRUE(QFile::link(QFileInfo(m_device->link()).canonicalFilePath(), place()));
    ASSERT_TRUE(hears(u"SMSSent 601 second"_s));
    EXPECT_EQ(m_device->messages().size(), 1);
    EXPECT_EQ(callForNumber("GetQueueSize"), 0);
}

class DeviceInFlight : public DeviceLife, public testing::WithParamInterface<const char *>
{};

TEST_P(DeviceInFlight, isSwitchedOnAndSendsWithoutAWarning)
{
    plugIn({u"--functionality"_s, QLatin1String(GetParam()), u"--register-after"_s, u"1500"_s,
            u"--pin"_s, u"4711"_s});
    startHeard();
    addSMS(u"600"_s, u"text"_s, u"2024-05-01T12:00:00"_s);
    use(m_device->link(), u"4711"_s);
    call("StartEngine");
    ASSERT_TRUE(hears(u"SMSSent 600 text"_s));
    EXPECT_EQ(count(u"WarningError"_s), 0);
    EXPECT_EQ(count(u"DeviceInfo"_s), 1);
}

INSTANTIATE_TEST_SUITE_P(Levels, DeviceInFlight, testing::Values("0", "4"));

TEST_F(DeviceLife, aDeviceThatRefusesABareAtSends)
{
    plugIn({u"--refuse-bare-at"_s});
    startHeard();
    addSMS(u"600"_s, u"text"_s, u"2024-05-01T12:00:00"_s);
    use(m_device->link());
    EXPECT_EQ(callForNumber("TestDevice"), 1);
    call("StartEngine");
    ASSERT_TRUE(hears(u"SMSSent 600 text"_s));
    EXPECT_EQ(count(u"WarningError"_s), 0);
}

TEST_F(DeviceLife, messagesThatAreDueTogetherShareOneLinkToTheNetwork)
{
    plugIn();
    startHeard();
    for (const char *phone : {"600", "601", "602"})
        addSMS(QLatin1String(phone), u"text"_s, u"2024-05-01T12:00:00"_s);
    use(m_device->link());
    call("StartEngine");
    ASSERT_TRUE(hears(u"SMSSent 602 text"_s));
    const QList<QJsonObject> messages = m_device->messages();
    ASSERT_EQ(messages.size(), 3);
    const auto linkKept = [&](int at) { return messages.at(at).value(u"linkKept"_s).toBool(); };
    EXPECT_FALSE(linkKept(0));
    EXPECT_TRUE(linkKept(1));
    EXPECT_TRUE(linkKept(2));
}

TEST_F(DeviceLife, threeRefusalsOfADeviceThatFailsAreToldOnceAndCostTheMessageNothing)
{
    plugIn({u"--fail-every"_s, u"1"_s, u"--fail-code"_s, u"310"_s});
    startHeard();
    addSMS(u"600"_s, u"text"_s, u"2024-05-01T12:00:00"_s);
    use(m_device->link());
    call("StartEngine");
    ASSERT_TRUE(hears(u"WarningError -29"_s));
    EXPECT_GE(count(u"DeviceInfo"_s), 3);
    plugIn();
    m_listener->heard.removeIf(
        [](const QString &event) { return event.startsWith("DeviceInfo"_L1); });
    EXPECT_EQ(count(u"WarningError -29"_s), 1);
    use(m_device->link());
    ASSERT_TRUE(hears(u"SMSSent 600 text"_s));
}

} // namespace

} // namespace norvane
