#include "TovekSMService/host/DeviceProcess.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <sys/ioctl.h>
#include <unistd.h>

namespace {

class DeviceLife : public DeviceProcess
{
protected:
    QString place() const { return m_place.filePath(QStringLiteral("modem")); }

    QTemporaryDir m_place;
};

TEST_F(DeviceLife, aDeviceThatIsAbsentAtTheStartIsToldOnceByItsNameAndFoundWhenItComes)
{
    startHeard();
    addSMS(QStringLiteral("600"), QStringLiteral("text"), QStringLiteral("2024-05-01T12:00:00"));
    use(place());
    call("StartEngine");
    ASSERT_TRUE(hears(QStringLiteral("WarningError -2")));
    EXPECT_TRUE(m_listener->heard.contains(QStringLiteral("WarningError -2 ") + place()));

    plugIn();
    ASSERT_TRUE(QFile::link(QFileInfo(m_device->link()).canonicalFilePath(), place()));
    ASSERT_TRUE(hears(QStringLiteral("SMSSent 600 text")));
    EXPECT_EQ(count(QStringLiteral("WarningError")), 1);
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
    ASSERT_TRUE(hears(QStringLiteral("WarningError -4")));
    const QString holder = QStringLiteral("(%1)").arg(QCoreApplication::applicationPid());
    EXPECT_TRUE(
        m_listener->heard.filter(QStringLiteral("WarningError -4")).first().contains(holder))
        << m_listener->heard.join(u'\n').toStdString();
    ASSERT_EQ(::ioctl(other.descriptor(), TIOCNXCL), 0);
    other.close();
    ASSERT_TRUE(hears(QStringLiteral("DeviceInfo")));
}

TEST_F(DeviceLife, unpluggedInMidMessageTheMessageIsReportedAndTheNextOneGoesWhenItIsBack)
{
    plugIn({QStringLiteral("--drop-after"), QStringLiteral("1"), QStringLiteral("--lose-answer")});
    ASSERT_TRUE(QFile::link(QFileInfo(m_device->link()).canonicalFilePath(), place()));
    startHeard();
    addSMS(QStringLiteral("600"), QStringLiteral("first"), QStringLiteral("2024-05-01T12:00:00"));
    addSMS(QStringLiteral("601"), QStringLiteral("second"), QStringLiteral("2024-05-01T12:00:01"));
    use(place());
    call("StartEngine");
    ASSERT_TRUE(hears(QStringLiteral("SMSSentFailed 600 first -39")));
    EXPECT_EQ(m_device->messages().size(), 1);
    plugIn();
    ASSERT_TRUE(QFile::remove(place()));
    ASSERT_TRUE(QFile::link(QFileInfo(m_device->link()).canonicalFilePath(), place()));
    ASSERT_TRUE(hears(QStringLiteral("SMSSent 601 second")));
    EXPECT_EQ(m_device->messages().size(), 1);
    EXPECT_EQ(callForNumber("GetQueueSize"), 0);
}

class DeviceInFlight : public DeviceLife, public testing::WithParamInterface<const char *>
{};

TEST_P(DeviceInFlight, isSwitchedOnAndSendsWithoutAWarning)
{
    plugIn({QStringLiteral("--functionality"), QLatin1String(GetParam()),
            QStringLiteral("--register-after"), QStringLiteral("1500"), QStringLiteral("--pin"),
            QStringLiteral("4711")});
    startHeard();
    addSMS(QStringLiteral("600"), QStringLiteral("text"), QStringLiteral("2024-05-01T12:00:00"));
    use(m_device->link(), QStringLiteral("4711"));
    call("StartEngine");
    ASSERT_TRUE(hears(QStringLiteral("SMSSent 600 text")));
    EXPECT_EQ(count(QStringLiteral("WarningError")), 0);
    EXPECT_EQ(count(QStringLiteral("DeviceInfo")), 1);
}

INSTANTIATE_TEST_SUITE_P(Levels, DeviceInFlight, testing::Values("0", "4"));

TEST_F(DeviceLife, aDeviceThatRefusesABareAtSends)
{
    plugIn({QStringLiteral("--refuse-bare-at")});
    startHeard();
    addSMS(QStringLiteral("600"), QStringLiteral("text"), QStringLiteral("2024-05-01T12:00:00"));
    use(m_device->link());
    EXPECT_EQ(callForNumber("TestDevice"), 1);
    call("StartEngine");
    ASSERT_TRUE(hears(QStringLiteral("SMSSent 600 text")));
    EXPECT_EQ(count(QStringLiteral("WarningError")), 0);
}

TEST_F(DeviceLife, messagesThatAreDueTogetherShareOneLinkToTheNetwork)
{
    plugIn();
    startHeard();
    for (const char *phone : {"600", "601", "602"})
        addSMS(QLatin1String(phone), QStringLiteral("text"), QStringLiteral("2024-05-01T12:00:00"));
    use(m_device->link());
    call("StartEngine");
    ASSERT_TRUE(hears(QStringLiteral("SMSSent 602 text")));
    const QList<QJsonObject> messages = m_device->messages();
    ASSERT_EQ(messages.size(), 3);
    const auto linkKept = [&](int at) {
        return messages.at(at).value(QStringLiteral("linkKept")).toBool();
    };
    EXPECT_FALSE(linkKept(0));
    EXPECT_TRUE(linkKept(1));
    EXPECT_TRUE(linkKept(2));
}

TEST_F(DeviceLife, threeRefusalsOfADeviceThatFailsAreToldOnceAndCostTheMessageNothing)
{
    plugIn({QStringLiteral("--fail-every"), QStringLiteral("1"), QStringLiteral("--fail-code"),
            QStringLiteral("310")});
    startHeard();
    addSMS(QStringLiteral("600"), QStringLiteral("text"), QStringLiteral("2024-05-01T12:00:00"));
    use(m_device->link());
    call("StartEngine");
    ASSERT_TRUE(hears(QStringLiteral("WarningError -29")));
    EXPECT_GE(count(QStringLiteral("DeviceInfo")), 3);
    plugIn();
    m_listener->heard.removeIf(
        [](const QString &event) { return event.startsWith(QLatin1String("DeviceInfo")); });
    EXPECT_EQ(count(QStringLiteral("WarningError -29")), 1);
    use(m_device->link());
    ASSERT_TRUE(hears(QStringLiteral("SMSSent 600 text")));
}

} // namespace
