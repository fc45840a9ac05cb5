#pragma once

#include "foundation/platform/Platform.h"

#include <QHash>

#include <functional>

namespace norvane {

/// An operating system whose answers a test sets.
class MadeUpPlatform : public Platform
{
public:
    QString programFolder() const override { return ownFolder; }
    std::optional<VersionRecord> versionRecord() const override
    {
        return onVersion ? onVersion() : std::nullopt;
    }
    QString localeItem(qint32 item) const override
    {
        if (onLocaleItem)
            onLocaleItem(item);
        return items.value(item);
    }
    QString nation() const override { return onNation ? onNation() : QString(); }
    QString programFilesFolder() const override { return programFiles; }
    QString commonAppDataFolder() const override
    {
        if (onCommonAppDataFolder)
            onCommonAppDataFolder();
        return commonData;
    }
    QString documentsFolder() const override { return {}; }

    QString ownFolder;
    QString programFiles;
    QString commonData;
    QHash<qint32, QString> items;
    std::function<std::optional<VersionRecord>()> onVersion;
    std::function<QString()> onNation;
    std::function<void(qint32)> onLocaleItem;
    std::function<void()> onCommonAppDataFolder;
};

} // namespace norvane
