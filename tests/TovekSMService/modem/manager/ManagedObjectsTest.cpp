#include "TovekSMService/modem/manager/ManagedObjects.h"

#include "TovekSMService/modem/manager/ManagerNames.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int locked = 2;
constexpr int registered = 8;
constexpr int disabled = 3;
constexpr int failedState = -1;

enum class Messages { None, Some };

/// What the modem manager has, device by device.
class ManagedObjectsTest : public testing::Test
{
protected:
    QString add(int number, const QString &imei, int state, Messages messages = Messages::Some)
    {
        const QString path = Manager::path + u"/Modem/%1"_s.arg(number);
        const QDBusObjectPath sim(Manager::path + u"/SIM/%1"_s.arg(number));
        ManagedInterfaces interfaces;
        interfaces[Manager::modem] = {{u"State"_s, state},
                                      {u"EquipmentIdentifier"_s, imei},
                                      {u"Manufacturer"_s, u"Maker"_s},
                                      {u"Sim"_s, QVariant::fromValue(sim)}};
        if (messages == Messages::Some)
            interfaces[Manager::messaging] = {};
        m_objects[QDBusObjectPath(path)] = interfaces;
        m_objects[sim] = {{Manager::sim, {{u"SimIdentifier"_s, u"8934%1"_s.arg(number)}}}};
        return path;
    }
    QString found(const QString &imei = {}) const
    {
        const auto device = ManagedDevice::find(m_objects, imei);
        return device ? device->path() : QString();
    }

    ManagedObjects m_objects;
};

TEST_F(ManagedObjectsTest, theFirstDeviceThatCanSendIsMeantWithoutAnImei)
{
    EXPECT_EQ(found(), QString());
    const QString tenth = add(10, u"1"_s, registered);
    EXPECT_EQ(found(), tenth);
    const QString second = add(2, u"2"_s, registered);
    EXPECT_EQ(found(), second) << "by number, not by letter";
    add(1, u"3"_s, registered, Messages::None);
    EXPECT_EQ(found(), second) << "one that can't send is none";
}

TEST_F(ManagedObjectsTest, oneWhoseSimIsLockedMayTurnOutToBeAbleTo)
{
    const QString lockedOne = add(1, u"1"_s, locked, Messages::None);
    EXPECT_EQ(found(), lockedOne);
    const QString open = add(5, u"2"_s, disabled);
    EXPECT_EQ(found(), open) << "one that is able to goes first";
}

TEST_F(ManagedObjectsTest, oneThatHasFailedIsTakenOnlyWhereThereIsNoOther)
{
    const QString broken = add(0, u"1"_s, failedState, Messages::None);
    EXPECT_EQ(found(), broken) << "so that its reason is told";
    const QString lockedOne = add(1, u"2"_s, locked, Messages::None);
    EXPECT_EQ(found(), lockedOne);
}

TEST_F(ManagedObjectsTest, aDeviceIsFoundByItsImeiWhateverItsState)
{
    add(1, u"111"_s, registered);
    const QString wanted = add(2, u"222"_s, failedState, Messages::None);
    EXPECT_EQ(found(u"222"_s), wanted);
    EXPECT_EQ(found(u"333"_s), QString());
}

TEST_F(ManagedObjectsTest, anObjectThatIsNoDeviceIsPassedOver)
{
    m_objects[QDBusObjectPath(u"/org/freedesktop/ModemManager1/Bearer/1"_s)] = {{u"x"_s, {}}};
    EXPECT_EQ(found(), QString());
}

TEST_F(ManagedObjectsTest, theDetailsAreThoseOfDeviceNetworkAndSim)
{
    const QString path = add(1, u"490154203237518"_s, registered);
    ManagedInterfaces &interfaces = m_objects[QDBusObjectPath(path)];
    const struct
    {
        QVariant registration;
        QString name;
        QString info;
    } rows[] = {{1U, u"Norvane Mobile"_s, u"Norvane Mobile (home)"_s},
                {5U, u"Norvane Mobile"_s, u"Norvane Mobile (roaming)"_s},
                {2U, QString(), u"(searching)"_s},
                {99U, u"Norvane Mobile"_s, u"Norvane Mobile"_s},
                {QVariant(), QString(), QString()}};
    for (const auto &row : rows) {
        interfaces[Manager::modem3gpp] = {{u"RegistrationState"_s, row.registration},
                                          {u"OperatorName"_s, row.name}};
        const DeviceDetails details = ManagedDevice(path, m_objects).details();
        EXPECT_EQ(details.networkInfo, row.info);
        EXPECT_EQ(details.manufacturer, u"Maker"_s);
        EXPECT_EQ(details.imei, u"490154203237518"_s);
        EXPECT_EQ(details.simId, u"89341"_s);
        EXPECT_EQ(details.signal, -1);
        EXPECT_EQ(details.battery, -1);
    }
}

TEST_F(ManagedObjectsTest, aSimWithoutANumberIsKnownByItsDevice)
{
    const QString path = add(1, u"490154203237518"_s, registered);
    m_objects[QDBusObjectPath(u"/org/freedesktop/ModemManager1/SIM/1"_s)].clear();
    EXPECT_EQ(ManagedDevice(path, m_objects).details().simId, u"490154203237518"_s);
}

} // namespace

} // namespace norvane
