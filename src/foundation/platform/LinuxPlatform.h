#pragma once

#include "foundation/platform/Platform.h"

#include <QLocale>

namespace norvane {

/// Linux with the folders of the XDG base directories.
class LinuxPlatform : public Platform
{
public:
    explicit LinuxPlatform(const QLocale &locale = QLocale::system());

    QString programFolder() const override;
    std::optional<VersionRecord> versionRecord() const override;
    QString localeItem(qint32 item) const override;
    QString nation() const override;
    QString programFilesFolder() const override;
    QString commonAppDataFolder() const override;
    QString documentsFolder() const override;

private:
    QLocale m_locale;
};

} // namespace norvane
