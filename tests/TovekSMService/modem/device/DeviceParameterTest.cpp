#include "TovekSMService/modem/device/DeviceParameter.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString managedBy(const char *text)
{
    const std::optional<DeviceParameter> parameter = parseDeviceParameter(QLatin1String(text));
    const auto *const manager = parameter ? std::get_if<ManagerParameter>(&*parameter) : nullptr;
    return manager == nullptr ? u"not managed"_s : manager->imei;
}

TEST(DeviceParameter, theModemManagersFirstDeviceIsMeantByItsName)
{
    for (const char *const text : {"ModemManager", "modemmanager", " MODEMMANAGER "})
        EXPECT_EQ(managedBy(text), QString()) << text;
}

TEST(DeviceParameter, oneOfTheModemManagersDevicesIsMeantByItsImei)
{
    for (const char *const text :
         {"ModemManager, 490154203237518", "modemmanager,490154203237518  "})
        EXPECT_EQ(managedBy(text), u"490154203237518"_s) << text;
}

TEST(DeviceParameter, nothingElseMeansTheModemManager)
{
    for (const char *const text :
         {"ModemManager,", "ModemManager, 49015420323751", "ModemManager, 4901542032375189",
          "ModemManager, 49015420323751X", "ModemManager 490154203237518", "ModemManager2",
          "ModemManager, 9600", "XModemManager"}) {
        EXPECT_EQ(managedBy(text), u"not managed"_s) << text;
        EXPECT_FALSE(parseDeviceParameter(QLatin1String(text))) << text;
    }
}

TEST(DeviceParameter, anythingElseIsAPort)
{
    const std::optional<DeviceParameter> parameter =
        parseDeviceParameter(u"/dev/ModemManager, 9600"_s);
    ASSERT_TRUE(parameter);
    EXPECT_EQ(std::get<PortParameter>(*parameter), (PortParameter{u"/dev/ModemManager"_s, 9600}));
    EXPECT_FALSE(parseDeviceParameter(u"LPT1, 9600"_s));
}

} // namespace

} // namespace norvane
