#include "TovekSMService/store/StoreFixture.h"

#include <QFile>

#include <limits>

namespace {

class StoreSettings : public StoreFixture
{};

QString sim()
{
    return QStringLiteral("8934071100275844103");
}

QString pin()
{
    return QStringLiteral("73915");
}

TEST_F(StoreSettings, untilSomeoneSetsAnythingTheyAreWhatTheDeviceDialogProposes)
{
    const DeviceSettings proposed = {0, QString(), 1, 1, QStringLiteral("COM1, 9600")};
    EXPECT_EQ(m_store->deviceSettings(), proposed);
    EXPECT_FALSE(m_store->isToRun());
}

TEST_F(StoreSettings, areKeptAsTheyCome)
{
    const DeviceSettings records[] = {
        {0, QStringLiteral("1234"), 3, 2, QStringLiteral("/dev/rfcomm0, 115200")},
        {0, QString(), 0, 0, QString()},
        {std::numeric_limits<qint32>::min(), QStringLiteral("not a PIN ñ€"), -1,
         std::numeric_limits<qint32>::max(), QString(10'000, u'x')},
    };
    for (const DeviceSettings &record : records) {
        m_store->setDeviceSettings(record);
        EXPECT_EQ(m_store->deviceSettings(), record);
        reopen();
        EXPECT_EQ(m_store->deviceSettings(), record);
    }
}

TEST_F(StoreSettings, whetherTheEngineIsToRunSurvivesReopening)
{
    m_store->setToRun(true);
    reopen();
    EXPECT_TRUE(m_store->isToRun());
    m_store->setToRun(false);
    reopen();
    EXPECT_FALSE(m_store->isToRun());
}

TEST_F(StoreSettings, pinsAreRememberedForEachSimAndPin)
{
    EXPECT_EQ(m_store->pinHistory(sim(), pin()), PinHistory::NeverTried);
    for (const PinHistory history :
         {PinHistory::Tried, PinHistory::Refused, PinHistory::Accepted, PinHistory::NeverTried}) {
        m_store->setPinHistory(sim(), pin(), history, noon());
        reopen();
        EXPECT_EQ(m_store->pinHistory(sim(), pin()), history);
    }
    m_store->setPinHistory(sim(), pin(), PinHistory::Refused, noon());
    EXPECT_EQ(m_store->pinHistory(sim(), QStringLiteral("73916")), PinHistory::NeverTried);
    EXPECT_EQ(m_store->pinHistory(QStringLiteral("other"), pin()), PinHistory::NeverTried);
}

TEST_F(StoreSettings, simAndPinAreKeptApart)
{
    m_store->setPinHistory(QStringLiteral("12"), QStringLiteral("345"), PinHistory::Refused,
                           noon());
    EXPECT_EQ(m_store->pinHistory(QStringLiteral("123"), QStringLiteral("45")),
              PinHistory::NeverTried);
}

TEST_F(StoreSettings, recordsOfAttemptsDoNotTellThePin)
{
    m_store->setPinHistory(sim(), pin(), PinHistory::Refused, noon());
    m_store.reset();
    QFile written(file());
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    const QByteArray bytes = written.readAll();
    EXPECT_TRUE(bytes.contains(sim().toLatin1()));
    EXPECT_FALSE(bytes.contains(pin().toLatin1()));
}

} // namespace
