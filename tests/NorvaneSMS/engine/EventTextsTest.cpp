#include "NorvaneSMS/engine/EventTexts.h"

#include "support/LoadedLanguage.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

const QDateTime Moment(QDate(2024, 3, 5), QTime(7, 8, 9), Qt::UTC);
const QDateTime Afternoon(QDate(2024, 12, 31), QTime(15, 30, 0), Qt::UTC);

EventTexts::Device device()
{
    return {u"Maker"_s, u"Type 1"_s, u"490154203237518"_s,      u"Network"_s,      87,
            -5,         u"R1A"_s,    u"24/03/05,07:08:09+04"_s, u"+34600000000"_s, u"HW2"_s};
}

TEST(TerminalTextTest, deviceInfoGivesTenLabelledLinesInOrder)
{
    EXPECT_EQ(EventTexts::terminalText(device()), u"Manufacturer: Maker\r\n"
                                                  u"Model: Type 1\r\n"
                                                  u"IMEI: 490154203237518\r\n"
                                                  u"NetworkInfo: Network\r\n"
                                                  u"BatteryLevel: 87\r\n"
                                                  u"SignalLevel: -5\r\n"
                                                  u"Firmware: R1A\r\n"
                                                  u"Time: 24/03/05,07:08:09+04\r\n"
                                                  u"SMSCNumber: +34600000000\r\n"
                                                  u"Hardware: HW2\r\n"_s);
}

TEST(TerminalTextTest, emptyValuesKeepTheirLabels)
{
    EXPECT_EQ(EventTexts::terminalText({}), u"Manufacturer: \r\nModel: \r\nIMEI: \r\n"
                                            u"NetworkInfo: \r\nBatteryLevel: 0\r\n"
                                            u"SignalLevel: 0\r\nFirmware: \r\nTime: \r\n"
                                            u"SMSCNumber: \r\nHardware: \r\n"_s);
}

TEST(TerminalTextTest, valuesAreShownAsTheyStand)
{
    EventTexts::Device odd = device();
    odd.Manufacturer = u"%1 {\\Tab}"_s;
    odd.BatteryLevel = 2'147'483'647;
    odd.SignalLevel = -2'147'483'648;
    const QString text = EventTexts::terminalText(odd);
    EXPECT_TRUE(text.startsWith(u"Manufacturer: %1 {\\Tab}\r\n"));
    EXPECT_TRUE(text.contains(u"BatteryLevel: 2147483647\r\nSignalLevel: -2147483648\r\n"));
}

TEST(DeviceStatusTest, isManufacturerAndModelCutToTwentyFiveCharacters)
{
    EXPECT_EQ(EventTexts::deviceStatus(u"Maker"_s, u"Type 1"_s), u"Maker-Type 1"_s);
    EXPECT_EQ(EventTexts::deviceStatus(QString(), QString()), u"-"_s);
    EXPECT_EQ(EventTexts::deviceStatus(QString(30, u'm'), u"Type 1"_s), QString(25, u'm'));
    EXPECT_EQ(EventTexts::deviceStatus(QString(25, u'm'), u"Type 1"_s), QString(25, u'm'));
    EXPECT_EQ(EventTexts::deviceStatus(QString(24, u'm'), u"Type 1"_s), QString(24, u'm') + u'-');
    EXPECT_EQ(EventTexts::deviceStatus(QString(12, u'm'), QString(12, u't')),
              QString(12, u'm') + u'-' + QString(12, u't'));
    EXPECT_EQ(EventTexts::deviceStatus(QString(12, u'm'), QString(13, u't')),
              QString(12, u'm') + u'-' + QString(12, u't'));
}

/// Texts that show which number was taken and where each argument went.
class EventLinesTest : public ::testing::Test
{
private:
    LoadedLanguage m_language{QHash<qint32, QString>{{3760009, u"sent"_s},
                                                     {3760013, u"none"_s},
                                                     {3760014, u"running"_s},
                                                     {3760023, u"23 [%1] [%2]"_s},
                                                     {3760024, u"24 [%1] [%2] [%3] [%4]"_s},
                                                     {3760025, u"25 [%1] [%2]"_s},
                                                     {3760026, u"stopped"_s},
                                                     {3760032, u"no port"_s},
                                                     {3760054, u"54 [%1] [%2] [%3] [%4]"_s}}};
};

TEST_F(EventLinesTest, sentLineNamesThePhone)
{
    EXPECT_EQ(EventTexts::sentLine(u"600111222"_s), u"23 [600111222] [%2]"_s);
}

TEST_F(EventLinesTest, failedLineHasPhoneCodeAndWord)
{
    EXPECT_EQ(EventTexts::failedLine(u"600"_s, -39), u"24 [600] [-39] [ERR_NO_RESPOND] [%4]"_s);
    EXPECT_EQ(EventTexts::failedLine(u"600"_s, -2), u"24 [600] [-2] [no port] [%4]"_s);
    EXPECT_EQ(EventTexts::failedLine(u"600"_s, -63), u"24 [600] [-63] [] [%4]"_s);
    EXPECT_EQ(EventTexts::failedLine(QString(), 0), u"24 [] [0] [] [%4]"_s);
}

TEST_F(EventLinesTest, warningLineHasCodeWordAndFurtherInformation)
{
    EXPECT_EQ(EventTexts::warningLine(1, u"more"_s), u"54 [1] [Ok] [more] [%4]"_s);
    EXPECT_EQ(EventTexts::warningLine(-4, QString()), u"54 [-4] [ERR_PORT_OPENED] [] [%4]"_s);
    EXPECT_EQ(EventTexts::warningLine(7, u"x"_s), u"54 [7] [] [x] [%4]"_s);
}

TEST_F(EventLinesTest, placeholderInAnEarlierArgumentIsReplacedByALaterOne)
{
    EXPECT_EQ(EventTexts::failedLine(u"%2"_s, -1), u"24 [-1] [-1] [ERR_FAIL] [%4]"_s);
}

TEST_F(EventLinesTest, captionOfTheSentFrameHasTheCountBehindIt)
{
    EXPECT_EQ(EventTexts::sentCaption(0), u"sent ( 0 )"_s);
    EXPECT_EQ(EventTexts::sentCaption(4), u"sent ( 4 )"_s);
    EXPECT_EQ(EventTexts::sentCaption(12345), u"sent ( 12345 )"_s);
}

TEST_F(EventLinesTest, queueSizeIsToldFromOneOn)
{
    EXPECT_EQ(EventTexts::queueSize(1), u"25 [1] [%2]"_s);
    EXPECT_EQ(EventTexts::queueSize(2'147'483'647), u"25 [2147483647] [%2]"_s);
    EXPECT_EQ(EventTexts::queueSize(0), u"none"_s);
    EXPECT_EQ(EventTexts::queueSize(-1), u"none"_s);
}

TEST_F(EventLinesTest, oneIsTheOnlyStatusThatRuns)
{
    EXPECT_EQ(EventTexts::engineStatus(1), u"running"_s);
    for (const qint32 status : {0, 2, -1, 257})
        EXPECT_EQ(EventTexts::engineStatus(status), u"stopped"_s) << status;
}

TEST(MomentTest, failedRowsHaveAFixedForm)
{
    EXPECT_EQ(EventTexts::failedMoment(Moment), u"05-03-2024 07:08:09"_s);
    EXPECT_EQ(EventTexts::failedMoment(Afternoon), u"31-12-2024 15:30:00"_s);
    EXPECT_EQ(EventTexts::failedMoment(QDateTime(QDate(2024, 1, 1), QTime(0, 0), Qt::UTC)),
              u"01-01-2024 00:00:00"_s);
}

TEST(MomentTest, sentRowsHaveTheLocalesForm)
{
    const struct
    {
        const char *locale;
        QString moment;
        QString afternoon;
    } rows[] = {
        {"es_ES", u"5/3/24 7:08:09"_s, u"31/12/24 15:30:00"_s},
        {"pt_PT", u"05/03/24 07:08:09"_s, u"31/12/24 15:30:00"_s},
        {"ca_ES", u"5/3/24 7:08:09"_s, u"31/12/24 15:30:00"_s},
        {"C", u"5 Mar 2024 07:08:09"_s, u"31 Dec 2024 15:30:00"_s},
    };
    for (const auto &row : rows) {
        const QLocale locale(QLatin1String(row.locale));
        EXPECT_EQ(EventTexts::sentMoment(Moment, locale), row.moment) << row.locale;
        EXPECT_EQ(EventTexts::sentMoment(Afternoon, locale), row.afternoon) << row.locale;
    }
}

TEST(MomentTest, wholeMomentHasTheLocalesFormWithTheCentury)
{
    const std::pair<const char *, QString> rows[] = {{"es_ES", u"5/3/2024 7:08:09"_s},
                                                     {"pt_PT", u"05/03/2024 07:08:09"_s},
                                                     {"ca_ES", u"5/3/2024 7:08:09"_s},
                                                     {"C", u"5 Mar 2024 07:08:09"_s}};
    for (const auto &[locale, moment] : rows)
        EXPECT_EQ(EventTexts::wholeMoment(Moment, QLocale(QLatin1String(locale))), moment);
}

TEST(MomentTest, timeOfDayHasTheLocalesForm)
{
    EXPECT_EQ(EventTexts::timeText(QTime(9, 5, 45), QLocale(u"es_ES"_s)), u"9:05:45"_s);
    EXPECT_EQ(EventTexts::timeText(QTime(9, 5, 45), QLocale(u"pt_PT"_s)), u"09:05:45"_s);
    EXPECT_EQ(EventTexts::timeText(QTime(9, 5, 45), QLocale(u"ca_ES"_s)), u"9:05:45"_s);
    EXPECT_EQ(EventTexts::timeText(QTime(9, 5, 45), QLocale::c()), u"09:05:45"_s);
    EXPECT_EQ(EventTexts::timeText(QTime(0, 0, 10), QLocale::c()), u"00:00:10"_s);
    EXPECT_EQ(EventTexts::timeText(QTime(0, 0, 0), QLocale(u"es_ES"_s)), u"0:00:00"_s);
}

TEST(MomentTest, timeHasNoZoneInAnyLocale)
{
    // Some locales name the zone in front, some in brackets, some behind a comma.
    const QTime time(1, 2, 3);
    EXPECT_EQ(EventTexts::timeText(time, QLocale(u"my_MM"_s)).size(), 8);
    EXPECT_EQ(EventTexts::timeText(time, QLocale(u"be_BY"_s)), u"01:02:03"_s);
    EXPECT_EQ(EventTexts::timeText(time, QLocale(u"fr_CA"_s)), u"01 h 02 min 03 s"_s);
    const auto all =
        QLocale::matchingLocales(QLocale::AnyLanguage, QLocale::AnyScript, QLocale::AnyTerritory);
    ASSERT_GT(all.size(), 100);
    const QString zone = QDateTime(Moment.date(), time).timeZoneAbbreviation();
    for (const QLocale &locale : all) {
        const QString text = EventTexts::timeText(time, locale);
        EXPECT_FALSE(text.contains(zone)) << qPrintable(locale.name()) << qPrintable(text);
        EXPECT_EQ(text, text.trimmed()) << qPrintable(locale.name());
        EXPECT_FALSE(text.endsWith(u',') || text.contains(u'(') || text.contains(u'['))
            << qPrintable(locale.name()) << ' ' << qPrintable(text);
    }
}

} // namespace

} // namespace norvane
