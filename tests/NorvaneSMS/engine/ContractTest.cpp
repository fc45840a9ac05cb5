#include "NorvaneSMS/engine/ErrorText.h"
#include "contract/BusTypes.h"
#include "contract/ErrorCodes.h"
#include "contract/SMSManager.h"

#include <QDBusMetaType>
#include <QFile>
#include <QMetaMethod>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

namespace {

TEST(DeviceSettingsTest, emptyRecordIsZerosAndEmptyStrings)
{
    const DeviceSettings empty;
    EXPECT_EQ(empty.DeviceType, 0);
    EXPECT_EQ(empty.PINCode, QString());
    EXPECT_EQ(empty.ConnectionMode, 0);
    EXPECT_EQ(empty.Protocol, 0);
    EXPECT_EQ(empty.Parameter, QString());
}

TEST(DeviceSettingsTest, recordIsAValueOfFiveFieldsInOrder)
{
    const DeviceSettings settings{0, u"1234"_qs, 1, 2, u"COM1, 9600"_qs};
    DeviceSettings copy = settings;
    EXPECT_EQ(copy, settings);
    copy.PINCode = u"0000"_qs;
    EXPECT_NE(copy, settings);
    EXPECT_EQ(settings.PINCode, u"1234"_qs);
    EXPECT_EQ(settings.ConnectionMode, 1);
    EXPECT_EQ(settings.Protocol, 2);
    EXPECT_EQ(settings.Parameter, u"COM1, 9600"_qs);
}

TEST(EngineStatusTest, valuesAreThoseOfTheContract)
{
    EXPECT_EQ(SMSManager::Running, 1);
    EXPECT_EQ(SMSManager::Stopped, 0);
}

TEST(ErrorCodesTest, eachCodeBearsTheNameOfItsWord)
{
    const std::pair<qint32, const char *> rows[] = {
        {ErrorCode::Ok, "Ok"},
        {ErrorCode::Fail, "ERR_FAIL"},
        {ErrorCode::PortProperty, "ERR_PORT_PROPERTY"},
        {ErrorCode::PortOpened, "ERR_PORT_OPENED"},
        {ErrorCode::PortClosed, "ERR_PORT_CLOSED"},
        {ErrorCode::PortWrite, "ERR_PORT_WRITE"},
        {ErrorCode::PortRead, "ERR_PORT_READ"},
        {ErrorCode::PhoneInit, "ERR_PHONE_INIT"},
        {ErrorCode::PhoneBusy, "ERR_PHONE_BUSY"},
        {ErrorCode::MethodParam, "ERR_METHOD_PARAM"},
        {ErrorCode::TextTooLong, "ERR_TEXT_TOO_LONG"},
        {ErrorCode::NumberTooLong, "ERR_NUMBER_TOO_LONG"},
        {ErrorCode::InvalidCharacters, "ERR_INVALID_CHARACTERS"},
        {ErrorCode::NoRespond, "ERR_NO_RESPOND"},
        {ErrorCode::NotSupported, "ERR_NOT_SUPPORT"},
        {ErrorCode::UnknownCode, "ERR_UNKNOWN_CODE"},
    };
    for (const auto &[code, word] : rows)
        EXPECT_EQ(GetErrorText(code), QLatin1String(word));
    EXPECT_EQ(ErrorCode::PortNotFound, -2);
}

QStringList signalsOf(const QMetaObject &type)
{
    QStringList result;
    for (int n = type.methodOffset(); n < type.methodCount(); ++n) {
        const QMetaMethod method = type.method(n);
        if (method.methodType() != QMetaMethod::Signal)
            continue;
        QStringList arguments;
        for (int i = 0; i < method.parameterCount(); ++i)
            arguments.append(QLatin1String(method.parameterMetaType(i).name()) + u' ' +
                             QLatin1String(method.parameterNames().at(i)));
        result.append(QLatin1String(method.name()) + u'(' + arguments.join(u", ") + u')');
    }
    return result;
}

TEST(ContractTest, sixEventsWithTheirArguments)
{
    EXPECT_EQ(
        signalsOf(SMSManager::staticMetaObject),
        (QStringList{u"DeviceInfo(QString Manufacturer, QString Model, QString IMEI, "
                     u"QString NetworkInfo, int BatteryLevel, int SignalLevel, QString FirmWare, "
                     u"QString Time, QString SMSCNumber, QString Hardware)"_qs,
                     u"EngineStatus(int status)"_qs, u"SMSQueueChanged(int currentSize)"_qs,
                     u"SMSSent(QString phone, QString Message, int QueueCount)"_qs,
                     u"SMSSentFailed(QString phone, QString Message, int errorCode)"_qs,
                     u"WarningError(int errCode, QString ExtraInfo)"_qs}));
}

/// "name in(types) out(types)" for each method and "name(types)" for each signal of the
/// introspection file, in its order.
QStringList busInterface()
{
    QFile file(QStringLiteral(NORVANE_SOURCE_DIR "/src/contract/com.tovek.SMService.xml"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    QXmlStreamReader xml(&file);
    QStringList result;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QString name = xml.attributes().value(u"name"_qs).toString();
        if (xml.name() == u"method" || xml.name() == u"signal")
            result.append(name + u':');
        else if (xml.name() == u"arg")
            result.last() +=
                (xml.attributes().value(u"direction"_qs) == u"out" ? u" >"_qs : u" "_qs) +
                xml.attributes().value(u"type"_qs).toString();
    }
    EXPECT_FALSE(xml.hasError());
    return result;
}

TEST(BusInterfaceTest, operationsInSlotOrderThenTheReportsThenTheEvents)
{
    EXPECT_EQ(busInterface(), (QStringList{u"StartEngine:"_qs,
                                           u"StopEngine:"_qs,
                                           u"TestDevice: >i"_qs,
                                           u"GetEngineStatus: >i"_qs,
                                           u"AddSMS: s s s"_qs,
                                           u"AddSMSList: a(ss) s"_qs,
                                           u"GetQueueSize: >i"_qs,
                                           u"ClearQueue:"_qs,
                                           u"GetQueue: t u >t >u >a(sssx)"_qs,
                                           u"UpdateQueue: a(sssx) ax"_qs,
                                           u"ApplySettings:"_qs,
                                           u"GetDeviceSettings: >(isiis)"_qs,
                                           u"SetDeviceSettings: (isiis) >b"_qs,
                                           u"ReportState:"_qs,
                                           u"GetQueueChanges: t >t >b >a(sssx) >ax"_qs,
                                           u"AddSMSBatch: s a(sssx) >u"_qs,
                                           u"AcknowledgeReports: ax"_qs,
                                           u"GetState: >a{sv}"_qs,
                                           u"DeviceInfo: s s s s i i s s s s"_qs,
                                           u"EngineStatus: i"_qs,
                                           u"SMSQueueChanged: i"_qs,
                                           u"SMSSent: s s i"_qs,
                                           u"SMSSentFailed: s s i"_qs,
                                           u"WarningError: i s"_qs,
                                           u"ReportRaised: x"_qs}));
}

TEST(BusTypesTest, recordsHaveTheirBusForms)
{
    Bus::registerTypes();
    const auto signature = [](QMetaType type) {
        return QByteArray(QDBusMetaType::typeToSignature(type));
    };
    EXPECT_EQ(signature(QMetaType::fromType<DeviceSettings>()), "(isiis)");
    EXPECT_EQ(signature(QMetaType::fromType<BusSMSList>()), "a(ss)");
    EXPECT_EQ(signature(QMetaType::fromType<BusQueueRows>()), "a(sssx)");
}

TEST(BusTypesTest, engineIsFoundUnderItsName)
{
    EXPECT_EQ(QLatin1String(Bus::ServiceName), u"com.tovek.SMService"_qs);
    EXPECT_EQ(QLatin1String(Bus::ObjectPath), u"/com/tovek/SMService"_qs);
    EXPECT_EQ(QLatin1String(Bus::InterfaceName), u"com.tovek.SMService.SMSManager1"_qs);
}

TEST(BusTypesTest, deliveryDateIsAWallClockMomentWithoutZone)
{
    const QDate date(2024, 3, 5);
    EXPECT_EQ(Bus::dateText(QDateTime(date, QTime(7, 8, 9), Qt::UTC)), u"2024-03-05T07:08:09"_qs);
    EXPECT_EQ(Bus::dateText(QDateTime(date, QTime(23, 59, 59, 999), Qt::UTC)),
              u"2024-03-05T23:59:59"_qs);
    EXPECT_EQ(Bus::dateText(QDateTime(QDate(100, 1, 1), QTime(0, 0), Qt::UTC)),
              u"0100-01-01T00:00:00"_qs);
    // Inside the hour that a summer time skips, in the zones that do.
    EXPECT_EQ(Bus::dateText(QDateTime(QDate(2024, 3, 31), QTime(2, 30), Qt::UTC)),
              u"2024-03-31T02:30:00"_qs);
}

TEST(BusTypesTest, nulBecomesASpace)
{
    const QChar nul(QChar::Null);
    EXPECT_EQ(Bus::withoutNul(u"a"_qs + nul + u"b"_qs + nul + nul), u"a b  "_qs);
    EXPECT_EQ(Bus::withoutNul(u"plain ñ\r\n"_qs), u"plain ñ\r\n"_qs);
    EXPECT_EQ(Bus::withoutNul(QString()), QString());
}

TEST(BusTypesTest, engineAnswersADeviceTestBeforeItsCallerGivesUp)
{
    EXPECT_EQ(Bus::CallTimeout, 15'000);
    EXPECT_EQ(Bus::TestDeviceTimeout, 200'000);
    EXPECT_LT(Bus::TestDeviceAnswer, Bus::TestDeviceTimeout);
}

} // namespace
