#include "TovekSMService/store/StoreFixture.h"

#include <QFile>

#include <limits>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class StoreSettings : public StoreFixture
{};

QString sim()
{
    return u"8934071100275844103"_s;
}

QString pin()
{
    return u"73915"_s;
}

TEST_F(StoreSettings, untilSomeoneSetsAnythingTheyAreWhatTheDeviceDialogProposes)
{
    const DeviceSettings proposed = {0, QString(), 1, 1, u"COM1, 9600"_s};
    EXPECT_EQ(m_store->deviceSettings(), proposed);
    EXPECT_FALSE(m_store->isToRun());
}

TEST_F(StoreSettings, areKeptAsTheyCome)
{
    const DeviceSettings records[] = {
        {0, u"1234"_s, 3, 2, u"/dev/rfcomm0, 115200"_s},
        {0, QString(), 0, 0, QString()},
        {std::numeric_limits<qint32>::min(), u"not a PIN ñ€"_s, -1,
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
    EXPECT_EQ(m_store->pinHistory(sim(), u"73916"_s), PinHistory::NeverTried);
    EXPECT_EQ(m_store->pinHistory(u"other"_s, pin()), PinHistory::NeverTried);
}

TEST_F(StoreSettings, simAndPinAreKeptApart)
{
    m_store->setPinHistory(u"12"_s, u"345"_s, PinHistory::Refused, noon());
    EXPECT_EQ(m_store->pinHistory(u"123"_s, u"45"_s), PinHistory::NeverTried);
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

} // namespace norvane
