#include "TovekSMService/dispatch/EngineSettings.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/store/EngineName.h"
#include "TovekSMService/store/PostgresText.h"
#include "common/SettingsText.h"
#include "common/platform/PlatformFiles.h"
#include "contract/BusTypes.h"

#include <QFile>
#include <QRegularExpression>
#include <QStandardPaths>

#include <cerrno>
#include <cstring>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 maxFileBytes = 1024 * 1024;
constexpr qsizetype maxNameLength = 200;
constexpr int second = 1000;
constexpr int hour = 3600;
constexpr int day = 24 * hour;

/// The wait for an answer stays below every time limit of those who call the engine.
constexpr int maxAnswerMs = Bus::testDeviceTimeout / second - 5;

/// The longest validity period that the network knows, in minutes: 63 weeks.
constexpr int maxValidity = 63 * 7 * 24 * 60;

using Settings = EngineSettings;

constexpr EngineNumber numbers[] = {
    {"Sending", "Attempts", &Settings::attempts, 1, 100, false},
    {"Sending", "FirstDelay", &Settings::firstDelay, 1, day, false},
    {"Sending", "LongestDelay", &Settings::maxDelay, 1, 7 * day, false},
    {"Sending", "Jitter", &Settings::jitter, 0, 100, false},
    {"Sending", "AnswerLimit", &Settings::answerLimit, 30, maxAnswerMs, false},
    {"Sending", "ValidityPeriod", &Settings::validityPeriod, 5, maxValidity, true},
    {"Device", "BreakerFailures", &Settings::breakerFailures, 1, 100, false},
    {"Device", "ResetInterval", &Settings::resetInterval, hour, 30 * day, false},
    {"Limits", "MostLate", &Settings::maxLateness, 60, 365 * day, true},
    {"Limits", "PartsPerMinute", &Settings::partsPerMinute, 1, 100'000, true},
    {"Limits", "PartsPerDay", &Settings::partsPerDay, 1, 100'000'000, true},
    {"Outcomes", "KeepDays", &Settings::keepDays, 1, 36'500, false},
    {"Queue", "SameSender", &Settings::sameSender, 1, day, true},
};

void read(const SettingsText &text, const EngineNumber &number, EngineSettings &settings)
{
    const std::optional<QString> found =
        text.value(QLatin1String(number.section), QLatin1String(number.key));
    if (!found)
        return;
    bool isNumber = false;
    const int value = found->trimmed().toInt(&isNumber);
    const bool isInBounds = value >= number.least && value <= number.max;
    if (isNumber && (isInBounds || (number.zeroIsOff && value == 0))) {
        settings.*number.value = value;
        return;
    }
    qCWarning(logDispatch).noquote()
        << u"settings: %1/%2=%3 is no number from %4 to %5%6; %7 "
           "is taken"_s
               .arg(QLatin1String(number.section), QLatin1String(number.key), found->left(40))
               .arg(number.least)
               .arg(number.max)
               .arg(number.zeroIsOff ? " or 0"_L1 : QLatin1String())
               .arg(settings.*number.value);
}

void warnOf(const char *section, const char *key, const QString &found, const QString &wanted)
{
    qCWarning(logDispatch).noquote() << u"settings: %1/%2=%3 is %4; the default is taken"_s.arg(
        QLatin1String(section), QLatin1String(key), found.left(40), wanted);
}

void readReports(const SettingsText &text, EngineSettings &settings)
{
    const QString found = text.value(u"Reports"_s, u"Delivery"_s).value_or(QString()).trimmed();
    if (found.compare("true"_L1, Qt::CaseInsensitive) == 0)
        settings.delivery = true;
    else if (found.compare("false"_L1, Qt::CaseInsensitive) == 0)
        settings.delivery = false;
    else if (!found.isEmpty())
        warnOf("Reports", "Delivery", found, u"neither true nor false"_s);
}

void readOptOut(const SettingsText &text, EngineSettings &settings)
{
    settings.optOutWords = text.value(u"OptOut"_s, u"Words"_s).value_or(settings.optOutWords);
    settings.optInWords = text.value(u"OptOut"_s, u"OptIn"_s).value_or(settings.optInWords);
    const QString prefix =
        text.value(u"OptOut"_s, u"CountryPrefix"_s).value_or(settings.countryPrefix).trimmed();
    static const QRegularExpression digits(u"\\A[1-9][0-9]{0,3}\\z"_s);
    if (prefix.isEmpty() || digits.match(prefix).hasMatch())
        settings.countryPrefix = prefix;
    else
        warnOf("OptOut", "CountryPrefix", prefix, u"no prefix of a country"_s);
}

QString readHook(const SettingsText &text, const char *key)
{
    const QString path = text.value(u"Hooks"_s, QLatin1String(key)).value_or(QString()).trimmed();
    if (path.isEmpty() || path.startsWith(u'/'))
        return path;
    warnOf("Hooks", key, path, u"no absolute path"_s);
    return {};
}

void readQueue(const SettingsText &text, EngineSettings &settings)
{
    settings.queueDatabase = text.value(u"Queue"_s, u"Database"_s).value_or(QString()).trimmed();
    const QString name = text.value(u"Queue"_s, u"Name"_s).value_or(QString()).trimmed();
    if (name.size() <= maxNameLength)
        settings.queueName = name;
    else
        warnOf("Queue", "Name", name, u"too long"_s);
}

/// A password lies in a file that others can't read, or nowhere.
void refuseOpenPassword(const QString &file, EngineSettings &settings)
{
    constexpr QFile::Permissions others =
        QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    if (PostgresText::hasPassword(settings.queueDatabase) &&
        (QFile::permissions(file) & others) != QFile::Permissions())
        settings.queueRefusal =
            u"the password in %1 is not used: the file can be read or written by others"_s.arg(
                file);
}

} // namespace

QString EngineSettings::defaultOptOutWords()
{
    return u"BAJA,STOP,SAIR,REMOVER,PARAR"_s;
}

QString EngineSettings::defaultOptInWords()
{
    return u"ALTA,START"_s;
}

QString EngineSettings::defaultCountryPrefix()
{
    return u"34"_s;
}

std::span<const EngineNumber> engineNumbers()
{
    return numbers;
}

RetryTimes EngineSettings::retryTimes() const
{
    RetryTimes times;
    times.maxAttempts = attempts;
    times.minDelay = firstDelay;
    times.maxDelay = maxDelay;
    times.jitterPercent = jitter;
    return times;
}

ModemTimings EngineSettings::modemTimings() const
{
    ModemTimings timings;
    timings.sendMs = answerLimit * second;
    return timings;
}

QString EngineSettings::file(const EngineName &name)
{
    const QString common = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                           u"/Norvane/TovekSMService"_s;
    const QString own = common + u'@' + name.text() + u".ini"_s;
    const bool hasOwn = name.isNamed() && platformFiles().kind(own) != PlatformFiles::Kind::None;
    return hasOwn ? own : common + u".ini"_s;
}

EngineSettings EngineSettings::load(const EngineName &name)
{
    QByteArray bytes;
    const QString path = file(name);
    const int error = platformFiles().read(path, maxFileBytes, bytes);
    if (error == 0) {
        EngineSettings settings = parse(bytes);
        refuseOpenPassword(path, settings);
        const bool isCommon = name.isNamed() && path == file(EngineName());
        if (isCommon && !settings.queueName.isEmpty())
            settings.queueName += u':' + name.text(); // no two engines have one name
        return settings;
    }
    if (error != ENOENT && error != ENOTDIR)
        qCWarning(logDispatch).noquote()
            << "settings:" << path << "can't be read:" << std::strerror(error);
    return {};
}

EngineSettings EngineSettings::parse(const QByteArray &bytes)
{
    EngineSettings settings;
    const std::optional<SettingsText> text = SettingsText::parse(bytes);
    if (!text) {
        qCWarning(logDispatch) << "settings: the file is no settings text; the defaults are taken";
        return settings;
    }
    for (const EngineNumber &number : numbers)
        read(*text, number, settings);
    readReports(*text, settings);
    readOptOut(*text, settings);
    readQueue(*text, settings);
    settings.onReceived = readHook(*text, "OnReceived");
    settings.onDelivery = readHook(*text, "OnDelivery");
    if (settings.maxDelay < settings.firstDelay) {
        qCWarning(logDispatch)
            << "settings: LongestDelay is below FirstDelay; the defaults are taken for both";
        settings.firstDelay = EngineSettings{}.firstDelay;
        settings.maxDelay = EngineSettings{}.maxDelay;
    }
    return settings;
}

} // namespace norvane
