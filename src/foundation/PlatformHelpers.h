#pragma once

#include "foundation/platform/Platform.h"

#include <QString>
#include <QStringView>

namespace norvane {

/// `text` without the spaces in front of it and behind it. No other blank is one.
QString withoutBlanks(QStringView text);

/// Cuts `text` at its first NUL, in place.
/// @return the cut text without leading and trailing blanks
QString StripNulls(QString &text);

/// The suite's identifier for the system that `record` describes; 0 for one that it doesn't list.
qint32 osIdentifier(const VersionRecord &record);

/// Questions to the operating system in the forms that the console asks them.
class PlatformHelpers
{
public:
    explicit PlatformHelpers(const Platform &platform);

    /// The folder of the program's own executable.
    QString programFolder() const;

    /// The identifier of the operating system. The system is asked until it has given one; a query
    /// that fails isn't repeated.
    /// @param debugMode  also show what the query gave, in a message box
    qint32 GetOSIdentifier(bool debugMode);

    /// The item of the user's locale; empty for an unknown one and for one longer than 255
    /// characters.
    QString GetLocaleText(qint32 item) const;

    /// The user's nation as a three-letter code, empty if it isn't known.
    QString GetNationISO3() const;

    // Either folder is the program's own one if the system has none to give.
    QString GetProgramFilesFolder() const;
    QString GetCommonAppDataFolder() const;

private:
    QString folderOrProgramFolder(QString (Platform::*query)() const) const;

    const Platform &m_platform;
    VersionRecord m_version;
    qint32 m_osIdentifier = 0;
    bool m_osQueryFailed = false;
};

} // namespace norvane
