#include "foundation/platform/LinuxPlatform.h"

#include <QCoreApplication>
#include <QStandardPaths>
#include <QSysInfo>
#include <QVersionNumber>

#include <unicode/uloc.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

// None of the numbers that the suite's table of systems lists.
constexpr quint32 unixPlatformId = 4;

QString threeLetterCountry(const QLocale &locale)
{
    return QString::fromLatin1(uloc_getISO3Country(locale.name().toLatin1().constData()));
}

QString threeLetterLanguage(const QLocale &locale)
{
    return QString::fromLatin1(uloc_getISO3Language(locale.name().toLatin1().constData()));
}

} // namespace

LinuxPlatform::LinuxPlatform(const QLocale &locale) : m_locale(locale) {}

QString LinuxPlatform::programFolder() const
{
    return QCoreApplication::applicationDirPath();
}

std::optional<VersionRecord> LinuxPlatform::versionRecord() const
{
    const QVersionNumber kernel = QVersionNumber::fromString(QSysInfo::kernelVersion());
    if (kernel.isNull())
        return std::nullopt;
    VersionRecord record;
    record.platformId = unixPlatformId;
    record.major = static_cast<quint32>(kernel.majorVersion());
    record.minor = static_cast<quint32>(kernel.minorVersion());
    record.build = static_cast<quint32>(kernel.microVersion());
    return record;
}

QString LinuxPlatform::localeItem(qint32 item) const
{
    switch (item) {
    case LocaleItem::Language:
        return QLocale::languageToString(m_locale.language());
    case LocaleItem::AbbreviatedLanguage:
        return threeLetterLanguage(m_locale).toUpper();
    case LocaleItem::AbbreviatedCountry:
        return threeLetterCountry(m_locale);
    case LocaleItem::NativeCountry:
        return m_locale.nativeTerritoryName();
    case LocaleItem::Decimal:
        return m_locale.decimalPoint();
    case LocaleItem::Thousand:
        return m_locale.groupSeparator();
    case LocaleItem::ShortDate:
        return m_locale.dateFormat(QLocale::ShortFormat);
    case LocaleItem::LongDate:
        return m_locale.dateFormat(QLocale::LongFormat);
    default:
        return {};
    }
}

QString LinuxPlatform::nation() const
{
    return threeLetterCountry(m_locale);
}

QString LinuxPlatform::programFilesFolder() const
{
    return u"/opt"_s;
}

QString LinuxPlatform::commonAppDataFolder() const
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
}

QString LinuxPlatform::documentsFolder() const
{
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

} // namespace norvane
