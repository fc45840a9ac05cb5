#include "contract/BusTypes.h"
#include "contract/ErrorCodes.h"
#include "contract/SMSManager.h"
#include "foundation/ErrorText.h"

#include <QDBusMetaType>
#include <QFile>
#include <QMetaMethod>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

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
    const DeviceSettings settings{0, u"1234"_s, 1, 2, u"COM1, 9600"_s};
    DeviceSettings copy = settings;
    EXPECT_EQ(copy, settings);
    copy.PINCode = u"0000"_s;
    EXPECT_NE(copy, settings);
    EXPECT_EQ(settings.PINCode, u"1234"_s);
    EXPECT_EQ(settings.ConnectionMode, 1);
    EXPECT_EQ(settings.Protocol, 2);
    EXPECT_EQ(settings.Parameter, u"COM1, 9600"_s);
}

TEST(EngineStatusTest, valuesAreThoseOfTheContract)
{
    EXPECT_EQ(SMSManager::running, 1);
    EXPECT_EQ(SMSManager::stopped, 0);
}

TEST(ErrorCodesTest, eachCodeBearsTheNameOfItsWord)
{
    const std::pair<qint32, const char *> rows[] = {
        {ErrorCode::ok, "Ok"},
        {ErrorCode::fail, "ERR_FAIL"},
        {ErrorCode::portProperty, "ERR_PORT_PROPERTY"},
        {ErrorCode::portOpened, "ERR_PORT_OPENED"},
        {ErrorCode::portClosed, "ERR_PORT_CLOSED"},
        {ErrorCode::portWrite, "ERR_PORT_WRITE"},
        {ErrorCode::portRead, "ERR_PORT_READ"},
        {ErrorCode::phoneInit, "ERR_PHONE_INIT"},
        {ErrorCode::phoneBusy, "ERR_PHONE_BUSY"},
        {ErrorCode::methodParam, "ERR_METHOD_PARAM"},
        {ErrorCode::textTooLong, "ERR_TEXT_TOO_LONG"},
        {ErrorCode::numberTooLong, "ERR_NUMBER_TOO_LONG"},
        {ErrorCode::invalidCharacters, "ERR_INVALID_CHARACTERS"},
        {ErrorCode::noRespond, "ERR_NO_RESPOND"},
        {ErrorCode::notSupported, "ERR_NOT_SUPPORT"},
        {ErrorCode::unknownCode, "ERR_UNKNOWN_CODE"},
    };
    for (const auto &[code, word] : rows)
        EXPECT_EQ(GetErrorText(code), QLatin1String(word));
    EXPECT_EQ(ErrorCode::portNotFound, -2);
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
                     u"QString Time, QString SMSCNumber, QString Hardware)"_s,
                     u"EngineStatus(int status)"_s, u"SMSQueueChanged(int currentSize)"_s,
                     u"SMSSent(QString phone, QString Message, int QueueCount)"_s,
                     u"SMSSentFailed(QString phone, QString Message, int errorCode)"_s,
                     u"WarningError(int errCode, QString ExtraInfo)"_s}));
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
        const QString name = xml.attributes().value(u"name"_s).toString();
        if (xml.name() == u"method" || xml.name() == u"signal")
            result.append(name + u':');
        else if (xml.name() == u"arg")
            result.last() += (xml.attributes().value(u"direction"_s) == u"out" ? u" >"_s : u" "_s) +
                             xml.attributes().value(u"type"_s).toString();
    }
    EXPECT_FALSE(xml.hasError());
    return result;
}

TEST(BusInterfaceTest, operationsInSlotOrderThenTheReportsThenTheEvents)
{
    EXPECT_EQ(busInterface(), (QStringList{u"StartEngine:"_s,
                                           u"StopEngine:"_s,
                                           u"TestDevice: >i"_s,
                                           u"GetEngineStatus: >i"_s,
                                           u"AddSMS: s s s"_s,
                                           u"AddSMSList: a(ss) s"_s,
                                           u"GetQueueSize: >i"_s,
                                           u"ClearQueue:"_s,
                                           u"GetQueue: t u >t >u >a(sssx)"_s,
                                           u"UpdateQueue: a(sssx) ax"_s,
                                           u"ApplySettings:"_s,
                                           u"GetDeviceSettings: >(isiis)"_s,
                                           u"SetDeviceSettings: (isiis) >b"_s,
                                           u"ReportState:"_s,
                                           u"GetQueueChanges: t >t >b >a(sssx) >ax"_s,
                                           u"AddSMSBatch: s a(sssx) >u"_s,
                                           u"AcknowledgeReports: ax"_s,
                                           u"GetState: >a{sv}"_s,
                                           u"DeviceInfo: s s s s i i s s s s"_s,
                                           u"EngineStatus: i"_s,
                                           u"SMSQueueChanged: i"_s,
                                           u"SMSSent: s s i"_s,
                                           u"SMSSentFailed: s s i"_s,
                                           u"WarningError: i s"_s,
                                           u"ReportRaised: x"_s}));
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
    EXPECT_EQ(QLatin1String(Bus::serviceName), u"com.tovek.SMService"_s);
    EXPECT_EQ(QLatin1String(Bus::objectPath), u"/com/tovek/SMService"_s);
    EXPECT_EQ(QLatin1String(Bus::interfaceName), u"com.tovek.SMService.SMSManager1"_s);
}

TEST(BusTypesTest, deliveryDateIsAWallClockMomentWithoutZone)
{
    const QDate date(2024, 3, 5);
    EXPECT_EQ(Bus::dateText(QDateTime(date, QTime(7, 8, 9), Qt::UTC)), u"2024-03-05T07:08:09"_s);
    EXPECT_EQ(Bus::dateText(QDateTime(date, QTime(23, 59, 59, 999), Qt::UTC)),
              u"2024-03-05T23:59:59"_s);
    EXPECT_EQ(Bus::dateText(QDateTime(QDate(100, 1, 1), QTime(0, 0), Qt::UTC)),
              u"0100-01-01T00:00:00"_s);
    // Inside the hour that a summer time skips, in the zones that do.
    EXPECT_EQ(Bus::dateText(QDateTime(QDate(2024, 3, 31), QTime(2, 30), Qt::UTC)),
              u"2024-03-31T02:30:00"_s);
}

TEST(BusTypesTest, nulBecomesASpace)
{
    const QChar nul(QChar::Null);
    EXPECT_EQ(Bus::withoutNul(u"a"_s + nul + u"b"_s + nul + nul), u"a b  "_s);
    EXPECT_EQ(Bus::withoutNul(u"plain ñ\r\n"_s), u"plain ñ\r\n"_s);
    EXPECT_EQ(Bus::withoutNul(QString()), QString());
}

TEST(BusTypesTest, engineAnswersADeviceTestBeforeItsCallerGivesUp)
{
    EXPECT_EQ(Bus::callTimeout, 15'000);
    EXPECT_EQ(Bus::testDeviceTimeout, 200'000);
    EXPECT_LT(Bus::testDeviceAnswer, Bus::testDeviceTimeout);
}

} // namespace

} // namespace norvane
