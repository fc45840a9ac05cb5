#include "foundation/PlatformHelpers.h"

#include "foundation/MessageBoxes.h"

#include <array>
#include <exception>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype maxLocaleTextLength = 255;

struct KnownSystem
{
    quint32 platformId;
    std::optional<quint32> major;
    std::optional<quint32> minor;
    qint32 identifier;
};

constexpr std::array knownSystems{
    KnownSystem{0, std::nullopt, std::nullopt, 32},
    KnownSystem{1, std::nullopt, 0, 95},
    KnownSystem{1, std::nullopt, 10, 98},
    KnownSystem{1, std::nullopt, 90, 99},
    KnownSystem{2, 3, std::nullopt, 351},
    KnownSystem{2, 4, std::nullopt, 40},
    KnownSystem{2, 5, 0, 2000},
    KnownSystem{2, 5, 1, 2002},
    KnownSystem{2, 5, 2, 2003},
    KnownSystem{2, 6, std::nullopt, 2007},
};

void cutAtNul(QString &text)
{
    const qsizetype nul = text.indexOf(QChar::Null);
    if (nul >= 0)
        text.truncate(nul);
}

QString debugText(const VersionRecord &version)
{
    return u"RUNNING IN DEBUG MODE !! OS INFO ID:\r\n"
           ".dwMajorVersion = %1\r\n"
           ".dwMinorVersion = %2\r\n"
           ".dwOSVersionInfoSize = %3\r\n"
           ".dwBuildNumber = %4\r\n"
           ".szCSDVersion = "_s.arg(version.major)
               .arg(version.minor)
               .arg(version.recordSize)
               .arg(version.build) +
           version.servicePack;
}

} // namespace

QString withoutBlanks(QStringView text)
{
    while (text.startsWith(u' '))
        text = text.sliced(1);
    while (text.endsWith(u' '))
        text.chop(1);
    return text.toString();
}

QString StripNulls(QString &text)
{
    cutAtNul(text);
    return withoutBlanks(text);
}

qint32 osIdentifier(const VersionRecord &record)
{
    for (const KnownSystem &system : knownSystems) {
        if (system.platformId == record.platformId &&
            system.major.value_or(record.major) == record.major &&
            system.minor.value_or(record.minor) == record.minor)
            return system.identifier;
    }
    return 0;
}

PlatformHelpers::PlatformHelpers(const Platform &platform) : m_platform(platform) {}

QString PlatformHelpers::programFolder() const
{
    return m_platform.programFolder();
}

qint32 PlatformHelpers::GetOSIdentifier(bool debugMode)
{
    if (m_osQueryFailed)
        return 0;
    if (m_osIdentifier == 0) {
        const auto version = m_platform.versionRecord();
        if (!version) {
            m_osQueryFailed = true;
            return 0;
        }
        m_version = *version;
        m_osIdentifier = osIdentifier(m_version);
    }
    if (debugMode)
        messageBoxes().show(debugText(m_version), MessageBoxes::Icon::None,
                            MessageBoxes::Buttons::Ok, u"Norvane SMS"_s);
    return m_osIdentifier;
}

QString PlatformHelpers::GetLocaleText(qint32 item) const
{
    const QString text = m_platform.localeItem(item);
    return text.size() <= maxLocaleTextLength ? text : QString();
}

QString PlatformHelpers::GetNationISO3() const
{
    QString nation = m_platform.nation();
    cutAtNul(nation);
    return nation;
}

QString PlatformHelpers::GetProgramFilesFolder() const
{
    return folderOrProgramFolder(&Platform::programFilesFolder);
}

QString PlatformHelpers::GetCommonAppDataFolder() const
{
    return folderOrProgramFolder(&Platform::commonAppDataFolder);
}

QString PlatformHelpers::folderOrProgramFolder(QString (Platform::*query)() const) const
{
    QString folder;
    try {
        folder = (m_platform.*query)();
    } catch (const std::exception &) {
        folder.clear();
    }
    cutAtNul(folder);
    return withoutBlanks(folder).isEmpty() ? m_platform.programFolder() : folder;
}

} // namespace norvane
