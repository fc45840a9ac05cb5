#include "TovekSMService/store/StoreFixture.h"

#include <limits>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class EngineSettingsStoreTest : public StoreFixture
{};

TEST_F(EngineSettingsStoreTest, untilSomeoneSetsAnythingTheyAreWhatTheDeviceDialogProposes)
{
    const DeviceSettings proposed = {0, QString(), 1, 1, u"COM1, 9600"_s};
    EXPECT_EQ(given(m_store->settings().deviceSettings()), proposed);
    EXPECT_FALSE(given(m_store->settings().isToRun()));
}

TEST_F(EngineSettingsStoreTest, areKeptAsTheyCome)
{
    const DeviceSettings records[] = {
        {0, u"1234"_s, 3, 2, u"/dev/rfcomm0, 115200"_s},
        {0, QString(), 0, 0, QString()},
        {std::numeric_limits<qint32>::min(), u"not a PIN ñ€"_s, -1,
         std::numeric_limits<qint32>::max(), QString(10'000, u'x')},
    };
    for (const DeviceSettings &record : records) {
        done(m_store->settings().setDeviceSettings(record));
        EXPECT_EQ(given(m_store->settings().deviceSettings()), record);
        reopen();
        EXPECT_EQ(given(m_store->settings().deviceSettings()), record);
    }
}

TEST_F(EngineSettingsStoreTest, whetherTheEngineIsToRunSurvivesReopening)
{
    done(m_store->settings().setToRun(true));
    reopen();
    EXPECT_TRUE(given(m_store->settings().isToRun()));
    done(m_store->settings().setToRun(false));
    reopen();
    EXPECT_FALSE(given(m_store->settings().isToRun()));
}

TEST_F(EngineSettingsStoreTest, referencesCountOnAcrossReopeningAndWrap)
{
    const quint16 first = given(m_store->settings().nextReference());
    reopen();
    EXPECT_EQ(given(m_store->settings().nextReference()), first + 1);
    OtherConnection(file()).run(
        u"UPDATE setting SET value = '65534' WHERE name = 'concatenation_reference'"_s);
    EXPECT_EQ(given(m_store->settings().nextReference()), 65535);
    EXPECT_EQ(given(m_store->settings().nextReference()), 0);
    EXPECT_EQ(given(m_store->settings().nextReference()), 1);
}

TEST_F(EngineSettingsStoreTest, anImeiBelongsToTheParameterOfItsDevice)
{
    const QString parameter = u"/dev/ttyUSB0, 9600"_s;
    EXPECT_EQ(given(m_store->settings().deviceImei(parameter)), QString());
    done(m_store->settings().setDeviceImei(parameter, u"490154203237518"_s));
    reopen();
    EXPECT_EQ(given(m_store->settings().deviceImei(parameter)), u"490154203237518"_s);
    EXPECT_EQ(given(m_store->settings().deviceImei(u"COM1, 9600"_s)), QString());
}

TEST_F(EngineSettingsStoreTest, theLastResetSurvivesReopening)
{
    EXPECT_EQ(given(m_store->settings().lastReset()), QString());
    done(m_store->settings().setLastReset(noon()));
    reopen();
    EXPECT_EQ(given(m_store->settings().lastReset()), noon());
}

} // namespace

} // namespace norvane
