#pragma once

#include <QString>

#include <optional>

namespace norvane {

/// What the version query gives about the operating system.
struct VersionRecord
{
    quint32 platformId = 0;
    quint32 major = 0;
    quint32 minor = 0;
    quint32 build = 0;
    quint32 recordSize = 148;
    QString servicePack;
};

/// Items of the user's locale by the numbers that the suite knows them by.
namespace LocaleItem {
enum Number : qint32 {
    Language = 2,
    AbbreviatedLanguage = 3,
    AbbreviatedCountry = 7,
    NativeCountry = 8,
    Decimal = 14,
    Thousand = 15,
    ShortDate = 31,
    LongDate = 32,
};
}

/// The operating system's answers. An answer that can't be given is empty.
class Platform
{
public:
    Platform() = default;
    Platform(const Platform &) = delete;
    Platform &operator=(const Platform &) = delete;
    virtual ~Platform() = default;

    /// The folder of the program's own executable.
    virtual QString programFolder() const = 0;

    /// Nothing if the query fails.
    virtual std::optional<VersionRecord> versionRecord() const = 0;

    virtual QString localeItem(qint32 item) const = 0;

    /// The user's nation as a three-letter ISO 3166 code.
    virtual QString nation() const = 0;

    virtual QString programFilesFolder() const = 0;
    virtual QString commonAppDataFolder() const = 0;
    virtual QString documentsFolder() const = 0;
};

} // namespace norvane
