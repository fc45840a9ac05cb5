#include "TovekSMService/dispatch/EngineSettings.h"

#include "TovekSMService/dispatch/DispatcherFixture.h"
#include "TovekSMService/store/EngineName.h"
#include "contract/BusTypes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QByteArray lineOf(const EngineNumber &number, const QByteArray &value)
{
    return QByteArray("[") + number.section + "]\n" + number.key + "=" + value + "\n";
}

TEST(EngineSettings, defaultsStandForAFileThatHoldsNothing)
{
    const EngineSettings settings = EngineSettings::parse({});
    EXPECT_EQ(settings, EngineSettings());
    EXPECT_EQ(settings.attempts, 4);
    EXPECT_EQ(settings.firstDelay, 30);
    EXPECT_EQ(settings.maxDelay, 3600);
    EXPECT_EQ(settings.jitter, 25);
    EXPECT_EQ(settings.answerLimit, 180);
    EXPECT_EQ(settings.validityPeriod, 0);
    EXPECT_EQ(settings.breakerFailures, 3);
    EXPECT_EQ(settings.resetInterval, 3600);
    EXPECT_EQ(settings.maxLateness, 0);
    EXPECT_EQ(settings.partsPerMinute, 0);
    EXPECT_EQ(settings.partsPerDay, 0);
    EXPECT_EQ(settings.keepDays, 90);
    EXPECT_TRUE(settings.delivery);
    EXPECT_EQ(settings.optOutWords, u"BAJA,STOP,SAIR,REMOVER,PARAR"_s);
    EXPECT_EQ(settings.optInWords, u"ALTA,START"_s);
    EXPECT_EQ(settings.countryPrefix, u"34"_s);
    EXPECT_EQ(settings.onReceived, QString());
    EXPECT_EQ(settings.onDelivery, QString());
}

struct Bounds
{
    const char *name;
    int least;
    int max;
    bool zeroIsOff;
};

TEST(EngineSettings, everyNumberHasItsNameAndBounds)
{
    const Bounds expected[] = {
        {"Sending/Attempts", 1, 100, false},
        {"Sending/FirstDelay", 1, 86'400, false},
        {"Sending/LongestDelay", 1, 604'800, false},
        {"Sending/Jitter", 0, 100, false},
        {"Sending/AnswerLimit", 30, 195, false},
        {"Sending/ValidityPeriod", 5, 635'040, true},
        {"Device/BreakerFailures", 1, 100, false},
        {"Device/ResetInterval", 3600, 2'592'000, false},
        {"Limits/MostLate", 60, 31'536'000, true},
        {"Limits/PartsPerMinute", 1, 100'000, true},
        {"Limits/PartsPerDay", 1, 100'000'000, true},
        {"Outcomes/KeepDays", 1, 36'500, false},
        {"Queue/SameSender", 1, 86'400, true},
    };
    ASSERT_EQ(engineNumbers().size(), std::size(expected));
    for (size_t i = 0; i < std::size(expected); ++i) {
        const EngineNumber &number = engineNumbers()[i];
        EXPECT_EQ(QByteArray(number.section) + '/' + number.key, expected[i].name);
        EXPECT_EQ(number.least, expected[i].least) << expected[i].name;
        EXPECT_EQ(number.max, expected[i].max) << expected[i].name;
        EXPECT_EQ(number.zeroIsOff, expected[i].zeroIsOff) << expected[i].name;
    }
}

TEST(EngineSettings, theLeastAndTheMostAreTakenAndWhatIsBeyondThemIsLogged)
{
    for (const EngineNumber &number : engineNumbers()) {
        SCOPED_TRACE(number.key);
        const EngineSettings defaults;
        const NotedLog log;
        const auto taken = [&](qint64 value) {
            // So that the two delays don't contradict each other.
            const QByteArray frame = "[Sending]\nFirstDelay=1\nLongestDelay=604800\n";
            return EngineSettings::parse(frame + lineOf(number, QByteArray::number(value))).*
                   number.value;
        };
        EXPECT_EQ(taken(number.least), number.least);
        EXPECT_EQ(taken(number.max), number.max);
        EXPECT_EQ(log.count(QLatin1String(number.key)), 0);

        EXPECT_EQ(taken(qint64{number.max} + 1), defaults.*number.value);
        EXPECT_EQ(taken(qint64{1} << 40), defaults.*number.value);
        EXPECT_EQ(taken(-1), defaults.*number.value);
        EXPECT_EQ(log.count(QLatin1String(number.key)), 3);
        EXPECT_EQ(taken(0), number.zeroIsOff || number.least == 0 ? 0 : defaults.*number.value);
    }
}

class EngineSettingsOddValue : public testing::TestWithParam<const char *>
{};

TEST_P(EngineSettingsOddValue, isLoggedAndTheDefaultTaken)
{
    const NotedLog log;
    EXPECT_EQ(EngineSettings::parse(QByteArray("[Sending]\nAttempts=") + GetParam() +
                                    "\n[Outcomes]\nKeepDays=7\n")
                  .attempts,
              4);
    EXPECT_EQ(log.count(u"Sending/Attempts"_s), 1);
}

INSTANTIATE_TEST_SUITE_P(Values, EngineSettingsOddValue,
                         testing::Values("", "many", "3.5", "0x3", "3 s", "99999999999999999999",
                                         "-3"));

TEST(EngineSettings, aBadNumberSpoilsNoOther)
{
    const NotedLog log;
    const EngineSettings settings =
        EngineSettings::parse("; a comment\n[Sending]\nAttempts=x\n\n[Outcomes]\nKeepDays = 7\n");
    EXPECT_EQ(settings.attempts, 4);
    EXPECT_EQ(settings.keepDays, 7);
}

TEST(EngineSettings, delaysThatContradictEachOtherAreBothTheDefaults)
{
    const NotedLog log;
    const EngineSettings settings =
        EngineSettings::parse("[Sending]\nFirstDelay=100\nLongestDelay=99\n");
    EXPECT_EQ(settings, EngineSettings());
    EXPECT_EQ(log.count(u"LongestDelay"_s), 1);
    EXPECT_EQ(EngineSettings::parse("[Sending]\nFirstDelay=99\nLongestDelay=99\n").firstDelay, 99);
}

bool isDeliveryAsked(const QByteArray &value)
{
    return EngineSettings::parse("[Reports]\nDelivery=" + value + "\n").delivery;
}

TEST(EngineSettings, deliveryReportsAreAskedForUnlessToldOtherwise)
{
    const NotedLog log;
    for (const char *const off : {"false", "False", " FALSE "})
        EXPECT_FALSE(isDeliveryAsked(off)) << off;
    for (const char *const on : {"true", " TRUE ", ""})
        EXPECT_TRUE(isDeliveryAsked(on)) << on;
    EXPECT_EQ(log.count(u"settings"_s), 0);
    for (const char *const odd : {"0", "no", "falsely", "fal se"})
        EXPECT_TRUE(isDeliveryAsked(odd)) << odd;
    EXPECT_EQ(log.count(u"Reports/Delivery"_s), 4);
}

TEST(EngineSettings, theWordsOfOptOutsAreTakenAsTheyAre)
{
    const NotedLog log;
    const EngineSettings settings =
        EngineSettings::parse("[OptOut]\nWords=N\xC3\xA3o, quit\nOptIn=\n");
    EXPECT_EQ(settings.optOutWords, u"Não, quit"_s);
    EXPECT_EQ(settings.optInWords, QString());
    EXPECT_EQ(log.count(u"settings"_s), 0);
}

QString prefixFrom(const QByteArray &value)
{
    return EngineSettings::parse("[OptOut]\nCountryPrefix=" + value + "\n").countryPrefix;
}

TEST(EngineSettings, thePrefixOfACountryIsItsDigitsAlone)
{
    const NotedLog log;
    for (const char *const right : {"1", "34", "351", "1809"})
        EXPECT_EQ(prefixFrom(right), QLatin1String(right));
    EXPECT_EQ(prefixFrom(" 34 "), u"34"_s);
    EXPECT_EQ(prefixFrom(""), QString());
    EXPECT_EQ(log.count(u"settings"_s), 0);
    for (const char *const odd : {"+34", "0034", "0", "34567", "3 4", "ES", "\xD9\xA3\xD9\xA4"})
        EXPECT_EQ(prefixFrom(odd), u"34"_s) << odd;
    EXPECT_EQ(log.count(u"OptOut/CountryPrefix"_s), 7);
}

TEST(EngineSettings, aHookIsTheAbsolutePathOfAnExecutable)
{
    const NotedLog log;
    const EngineSettings settings = EngineSettings::parse(
        "[Hooks]\nOnReceived= /opt/a shop/received;1 \nOnDelivery=/opt/delivery\n");
    EXPECT_EQ(settings.onReceived, u"/opt/a shop/received;1"_s);
    EXPECT_EQ(settings.onDelivery, u"/opt/delivery"_s);
    EXPECT_EQ(EngineSettings::parse("[Hooks]\nOnReceived=\n").onReceived, QString());
    EXPECT_EQ(log.count(u"settings"_s), 0);

    const EngineSettings odd =
        EngineSettings::parse("[Hooks]\nOnReceived=received.sh\nOnDelivery=~/delivery\n");
    EXPECT_EQ(odd.onReceived, QString());
    EXPECT_EQ(odd.onDelivery, QString());
    EXPECT_EQ(log.count(u"Hooks/OnReceived"_s), 1);
    EXPECT_EQ(log.count(u"Hooks/OnDelivery"_s), 1);
}

TEST(EngineSettings, whatIsNoSettingsTextIsLogged)
{
    const NotedLog log;
    EXPECT_EQ(EngineSettings::parse(QByteArray("\xFF\xFE\x00garbage\n", 11)), EngineSettings());
    EXPECT_EQ(log.count(u"no settings text"_s), 1);
}

TEST(EngineSettings, theFileStandsBesideTheConsolesSettings)
{
    const QString file = EngineSettings::file(EngineName());
    EXPECT_TRUE(file.endsWith(u"/Norvane/TovekSMService.ini"_s));
    EXPECT_TRUE(file.startsWith(QString::fromLocal8Bit(qgetenv("XDG_CONFIG_HOME"))));
    const NotedLog log;
    QFile::remove(file);
    EXPECT_EQ(EngineSettings::load(EngineName()), EngineSettings());
    EXPECT_EQ(log.count(u"settings"_s), 0);

    ASSERT_TRUE(QDir().mkpath(QFileInfo(file).path()));
    QFile written(file);
    ASSERT_TRUE(written.open(QIODevice::WriteOnly));
    written.write("[Limits]\nPartsPerDay=500\n");
    written.close();
    EXPECT_EQ(EngineSettings::load(EngineName()).partsPerDay, 500);
    QFile::remove(file);
}

TEST(EngineSettings, aNamedEngineHasAFileOfItsOwnOrThatOfAll)
{
    const EngineName second = EngineName::parse(u"second"_s).value();
    const QString common = EngineSettings::file(EngineName());
    EXPECT_EQ(EngineSettings::file(second), common);
    const QString own = QFileInfo(common).path() + u"/TovekSMService@second.ini"_s;
    ASSERT_TRUE(QDir().mkpath(QFileInfo(common).path()));
    for (const QString &path : {common, own}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(path == own ? "[Limits]\nPartsPerDay=2\n"
                               : "[Limits]\nPartsPerDay=1\nPartsPerMinute=1\n");
    }
    EXPECT_EQ(EngineSettings::file(second), own);
    EXPECT_EQ(EngineSettings::load(second).partsPerDay, 2);
    // It holds alone: what it doesn't name has its default.
    EXPECT_EQ(EngineSettings::load(second).partsPerMinute, 0);
    EXPECT_EQ(EngineSettings::load(EngineName()).partsPerDay, 1);
    EXPECT_EQ(EngineSettings::load(EngineName::parse(u"third"_s).value()).partsPerDay, 1);
    QFile::remove(own);
    EXPECT_EQ(EngineSettings::load(second).partsPerDay, 1);
    QFile::remove(common);
}

TEST(EngineSettings, aFileThatCannotBeReadIsLogged)
{
    const QString file = EngineSettings::file(EngineName());
    ASSERT_TRUE(QDir().mkpath(file));
    const NotedLog log;
    EXPECT_EQ(EngineSettings::load(EngineName()), EngineSettings());
    EXPECT_EQ(log.count(u"can't be read"_s), 1);
    EXPECT_TRUE(QDir().rmdir(file));
}

TEST(EngineSettings, theNumbersReachTheRetriesAndTheModem)
{
    EngineSettings settings;
    settings.attempts = 2;
    settings.firstDelay = 5;
    settings.maxDelay = 7;
    settings.jitter = 50;
    settings.answerLimit = 60;
    const RetryPolicy policy([] { return 0.5; }, settings.retryTimes());
    EXPECT_TRUE(policy.mayRetry(1));
    EXPECT_FALSE(policy.mayRetry(2));
    EXPECT_EQ(policy.messageDelay(1), 6);
    EXPECT_EQ(policy.messageDelay(2), 8);
    EXPECT_EQ(settings.modemTimings().sendMs, 60'000);
    EXPECT_EQ(EngineSettings().modemTimings().sendMs, ModemTimings().sendMs);
    EXPECT_EQ(EngineSettings().retryTimes().jitterPercent, 25);
}

TEST(EngineSettings, noAnswerIsWaitedForLongerThanTheCallersWait)
{
    for (const EngineNumber &number : engineNumbers()) {
        if (number.value == &EngineSettings::answerLimit) {
            EXPECT_LT(number.max * 1000, Bus::testDeviceTimeout);
        }
    }
}

} // namespace

} // namespace norvane
